// A FlexData packet holding one double with two attributes, a 32-character
// text and a time, built, serialized and read back, against msgpack packing
// and unpacking the same three values and two names in the same run. A
// second benchmark sets a double on a double and counts the allocator calls
// it makes (the link wraps malloc and realloc): it must make none.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <msgpack.hpp>
#include <vector>

#include "support/RatioReporter.h"
#include "zo/kel/FlexData.h"

namespace {

std::atomic<unsigned long> allocatorCalls{0};

}  // namespace

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __real_realloc(void* block, std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    allocatorCalls.fetch_add(1, std::memory_order_relaxed);
    return __real_malloc(size);
}
extern "C" void* __wrap_realloc(void* block, std::size_t size) {
    allocatorCalls.fetch_add(1, std::memory_order_relaxed);
    return __real_realloc(block, size);
}

namespace {

constexpr char kTag[] = "Plant3.Line2.Pump7.OutletPressur";  // 32 characters
static_assert(sizeof kTag == 33);
constexpr double kValue = 4.25;
const zo::kel::AbsTime kTime = zo::kel::AbsTime::fromWords(3800000000, 0x4000000000000000ull);

void BM_FlexDataRoundTrip(benchmark::State& state) {
    std::vector<unsigned char> wire(256);
    for (auto _ : state) {
        zo::kel::FlexData reading(kValue);
        reading.setAttribute("Tag", zo::kel::FlexData(kTag, 32));
        reading.setAttribute("Time", zo::kel::FlexData(kTime));
        unsigned char* write = wire.data();
        reading.serialize(write, wire.data() + wire.size());

        zo::kel::FlexData back;
        const unsigned char* read = wire.data();
        back.deserialize(read, write);
        unsigned int length = 0;
        const zo::kel::FlexData tag = back.getAttribute("Tag");
        const char* text = tag.getAString(length);
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(back.getF64());
        benchmark::DoNotOptimize(back.getAttribute("Time").getTime());
    }
}

void BM_MsgpackRoundTrip(benchmark::State& state) {
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        packer.pack_array(5);
        packer.pack(kValue);
        packer.pack("Tag");
        packer.pack_str(32);
        packer.pack_str_body(kTag, 32);
        packer.pack("Time");
        const std::int64_t words[2] = {kTime.secondsWord(), static_cast<std::int64_t>(kTime.fractionWord())};
        packer.pack_ext(16, 1);
        packer.pack_ext_body(reinterpret_cast<const char*>(words), 16);

        const msgpack::object_handle handle = msgpack::unpack(buffer.data(), buffer.size());
        const msgpack::object_array& fields = handle.get().via.array;
        benchmark::DoNotOptimize(fields.ptr[0].via.f64);
        benchmark::DoNotOptimize(fields.ptr[2].via.str.ptr);
        std::int64_t time[2];
        std::memcpy(time, fields.ptr[4].via.ext.data(), sizeof time);
        benchmark::DoNotOptimize(time);
    }
}

void BM_FlexDataSetSameType(benchmark::State& state) {
    zo::kel::FlexData value(0.0);
    value.setAttribute("Tag", zo::kel::FlexData(kTag, 32));
    double next = 0.0;
    const unsigned long before = allocatorCalls.load();
    for (auto _ : state) {
        value.setF64(next);
        next += 1.0;
        benchmark::ClobberMemory();
    }
    const unsigned long calls = allocatorCalls.load() - before;
    state.counters["allocator_calls"] = static_cast<double>(calls);
    if (calls != 0) state.SkipWithError("setting a double on a double allocated");
}

// The peer of the setter: a plain store into a double that lives in a block.
void BM_PlainDoubleStore(benchmark::State& state) {
    std::vector<unsigned char> block(16);
    double next = 0.0;
    for (auto _ : state) {
        std::memcpy(block.data() + 6, &next, sizeof next);
        next += 1.0;
        benchmark::ClobberMemory();
    }
}

}  // namespace

BENCHMARK(BM_FlexDataRoundTrip);
BENCHMARK(BM_MsgpackRoundTrip);
BENCHMARK(BM_FlexDataSetSameType);
BENCHMARK(BM_PlainDoubleStore);

QKDYNAM_BENCHMARK_MAIN({{"BM_FlexDataRoundTrip", "BM_MsgpackRoundTrip"}, {"BM_FlexDataSetSameType", "BM_PlainDoubleStore"}})
