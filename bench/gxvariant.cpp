// The host-variant bridge against peers doing the same work in the same run:
// a 16-field record (numbers, booleans, strings, a timestamp) taken VarData ->
// host variant -> VarData against msgpack packing and unpacking the same
// record (both big-endian typed encodings), and an array of doubles against
// a plain byte-swapping loop over the same doubles, there and back.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <msgpack.hpp>
#include <vector>

#include "support/RatioReporter.h"
#include "tavlo/qkstatic/GXVariantToVarData.h"
#include "tavlo/qkstatic/VarDataToGXVariant.h"

namespace {

constexpr const char* kFieldNames[16] = {"Pressure", "Temperature", "Flow",    "Level",   "Running", "Alarm",
                                         "Mode",     "Operator",    "Started", "Stopped", "Setpoint", "Speed",
                                         "Torque",   "Valve",       "Comment", "Sampled"};

VarData Field(int i) {
    VarData value;
    switch (i % 5) {
        case 0:
        case 3: value = 1000.0 + i * 0.25; break;
        case 1: value = (i % 3) == 0; break;
        case 2: value = "nominal"; break;
        default: value = i == 14 ? VarData(zo::kel::AbsTime::fromWords(3800000000, 1ull << 62)) : VarData("ok"); break;
    }
    return value;
}

VarData Record() {
    VarData record = VarData::dict();
    for (int i = 0; i < 16; ++i) record.setValue(kFieldNames[i], Field(i));
    return record;
}

// Host buffers sized once, reused by every iteration, as a caller would.
struct HostBuffers {
    std::vector<unsigned short> descriptor;
    std::vector<unsigned char> data;

    explicit HostBuffers(const VarData& value) {
        unsigned int words = 0, bytes = 0;
        vek::VarDataToGXVariantLength(value, zo::kel::NarrowString(), vek::ClustersToDictionaries, words, bytes);
        descriptor.resize(words);
        data.resize(bytes);
    }
};

VarData RoundTrip(const VarData& value, HostBuffers& host) {
    unsigned int words = 0, bytes = 0;
    vek::VarDataToGXVariantLength(value, zo::kel::NarrowString(), vek::ClustersToDictionaries, words, bytes);
    vek::VarDataToGXVariant(value, zo::kel::NarrowString(), vek::ClustersToDictionaries, host.descriptor.data(),
                            host.descriptor.data() + words, host.data.data(), host.data.data() + bytes);
    zo::kel::NarrowString name;
    return vek::GXVariantToVarData(host.descriptor.data(), host.descriptor.data() + words, host.data.data(),
                                   host.data.data() + bytes, vek::ClustersToDictionaries, name, false);
}

void BM_GXVariantRecordRoundTrip(benchmark::State& state) {
    const VarData record = Record();
    HostBuffers host(record);
    for (auto _ : state) benchmark::DoNotOptimize(RoundTrip(record, host));
}
BENCHMARK(BM_GXVariantRecordRoundTrip);

void BM_MsgpackRecordRoundTrip(benchmark::State& state) {
    msgpack::sbuffer buffer;
    for (auto _ : state) {
        buffer.clear();
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        packer.pack_map(16);
        for (int i = 0; i < 16; ++i) {
            packer.pack(kFieldNames[i]);
            switch (i % 5) {
                case 0:
                case 3: packer.pack(1000.0 + i * 0.25); break;
                case 1: packer.pack((i % 3) == 0); break;
                case 2: packer.pack("nominal"); break;
                default:
                    if (i == 14) {
                        const std::uint64_t time[2] = {3800000000, 1ull << 62};
                        packer.pack_ext(16, 1);
                        packer.pack_ext_body(reinterpret_cast<const char*>(time), 16);
                    } else {
                        packer.pack("ok");
                    }
            }
        }
        const msgpack::object_handle unpacked = msgpack::unpack(buffer.data(), buffer.size());
        benchmark::DoNotOptimize(unpacked.get().via.map.size);
    }
}
BENCHMARK(BM_MsgpackRecordRoundTrip);

void BM_GXVariantDoubleArray(benchmark::State& state) {
    VarData array = VarData::sequence();
    for (int i = static_cast<int>(state.range(0)) - 1; i >= 0; --i) array.SetElement(i, VarData::num(i * 0.5));
    HostBuffers host(array);
    for (auto _ : state) benchmark::DoNotOptimize(RoundTrip(array, host));
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(BM_GXVariantDoubleArray)->Arg(10000);

// The floor: the same doubles swapped to big-endian and back into a new array.
void BM_ByteSwapDoubles(benchmark::State& state) {
    std::vector<double> values(static_cast<std::size_t>(state.range(0)));
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i) * 0.5;
    std::vector<unsigned char> wire(values.size() * 8);
    for (auto _ : state) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            std::uint64_t bits;
            std::memcpy(&bits, &values[i], 8);
            bits = __builtin_bswap64(bits);
            std::memcpy(&wire[8 * i], &bits, 8);
        }
        std::vector<double> back(values.size());
        for (std::size_t i = 0; i < back.size(); ++i) {
            std::uint64_t bits;
            std::memcpy(&bits, &wire[8 * i], 8);
            bits = __builtin_bswap64(bits);
            std::memcpy(&back[i], &bits, 8);
        }
        benchmark::DoNotOptimize(back.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(BM_ByteSwapDoubles)->Arg(10000);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_GXVariantRecordRoundTrip", "BM_MsgpackRecordRoundTrip"},
                        {"BM_GXVariantDoubleArray", "BM_ByteSwapDoubles"}})
