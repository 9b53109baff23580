// FlexData arrays and the FlexData payload of VarData, each against peers in
// the same run:
//   - setScalarArray + getScalarArray of 1,000,000 doubles in host order,
//     against two memcpy calls of the same bytes (the limit) and a plain
//     element loop doing the same two copies;
//   - the same with a byte swap on the way in and out (big-endian host
//     arrays), against the same memcpy limit and a plain swapping loop;
//   - a 16-element cluster (numbers, a text, a time) built, put in a
//     VarData, sent with SerializeWithSize and read back element by element,
//     against msgpack packing and unpacking the same record.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <msgpack.hpp>
#include <vector>

#include "support/RatioReporter.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/FlexData.h"

namespace {

using zo::kel::FlexData;
namespace fd = zo::kel::fd;

constexpr unsigned int kCount = 1000000;

const std::vector<double>& Source() {
    static const std::vector<double> values = [] {
        std::vector<double> out(kCount);
        for (unsigned int i = 0; i < kCount; ++i) out[i] = i * 0.25 - 1000.0;
        return out;
    }();
    return values;
}

// The host array in `order`: the packet holds host order, so a big-endian
// array is swapped on the way in and on the way out.
template <fd::TAEndian Order>
void ScalarArray(benchmark::State& state) {
    const std::vector<double>& source = Source();
    std::vector<double> out(kCount);
    const zo::kel::Vector<unsigned int> dims{kCount};
    FlexData array;
    for (auto _ : state) {
        array.setScalarArray(fd::kFloat64, dims, source.data(), source.data() + kCount, Order);
        array.getScalarArray(fd::kFloat64, out.data(), out.data() + kCount, Order);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * 2 * std::int64_t{kCount} * 8);
}
void BM_ScalarArrayHost(benchmark::State& state) { ScalarArray<fd::kHostEndian>(state); }
void BM_ScalarArraySwapped(benchmark::State& state) { ScalarArray<fd::kBigEndian>(state); }

// The limit: the same bytes into a packet-sized block and out again.
void BM_Memcpy(benchmark::State& state) {
    const std::vector<double>& source = Source();
    std::vector<unsigned char> block(kCount * 8 + 32);
    std::vector<double> out(kCount);
    for (auto _ : state) {
        std::memcpy(block.data() + 22, source.data(), kCount * 8);
        std::memcpy(out.data(), block.data() + 22, kCount * 8);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * 2 * std::int64_t{kCount} * 8);
}

template <bool Swap>
void ElementLoop(benchmark::State& state) {
    const std::vector<double>& source = Source();
    std::vector<unsigned char> block(kCount * 8 + 32);
    std::vector<double> out(kCount);
    for (auto _ : state) {
        unsigned char* packet = block.data() + 22;
        for (unsigned int i = 0; i < kCount; ++i) {
            std::uint64_t bits;
            std::memcpy(&bits, &source[i], 8);
            if constexpr (Swap) bits = __builtin_bswap64(bits);
            std::memcpy(packet + 8 * std::size_t{i}, &bits, 8);
        }
        for (unsigned int i = 0; i < kCount; ++i) {
            std::uint64_t bits;
            std::memcpy(&bits, packet + 8 * std::size_t{i}, 8);
            if constexpr (Swap) bits = __builtin_bswap64(bits);
            std::memcpy(&out[i], &bits, 8);
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * 2 * std::int64_t{kCount} * 8);
}
void BM_ElementLoop(benchmark::State& state) { ElementLoop<false>(state); }
void BM_SwappingLoop(benchmark::State& state) { ElementLoop<true>(state); }

constexpr char kTag[] = "Plant3.Line2.Pump7";
const zo::kel::AbsTime kTime = zo::kel::AbsTime::fromWords(3800000000, 0x4000000000000000ull);
constexpr int kNumbers = 14;

void BM_ClusterThroughVarData(benchmark::State& state) {
    zo::kel::Vector<FlexData> fields(16u);
    for (auto _ : state) {
        for (int i = 0; i < kNumbers; ++i) fields[i].setF64(i * 1.5);
        fields[kNumbers].setAString(kTag, sizeof kTag - 1);
        fields[kNumbers + 1].setTime(kTime);
        const VarData value(FlexData{fields});
        zo::kel::AutoBuffer wire;
        value.SerializeWithSize(wire);

        const unsigned char* cursor = wire.Data();
        const VarData back = VarData::DeserializeWithSize(cursor, wire.Len());
        zo::kel::Vector<FlexData> read;
        back.getFlexData().getClusterElements(read);
        double sum = 0;
        for (int i = 0; i < kNumbers; ++i) sum += read[i].getF64();
        unsigned int length = 0;
        benchmark::DoNotOptimize(read[kNumbers].getAString(length));
        benchmark::DoNotOptimize(read[kNumbers + 1].getTime());
        benchmark::DoNotOptimize(sum);
    }
}

void BM_MsgpackCluster(benchmark::State& state) {
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        packer.pack_array(16);
        for (int i = 0; i < kNumbers; ++i) packer.pack(i * 1.5);
        packer.pack_str(sizeof kTag - 1);
        packer.pack_str_body(kTag, sizeof kTag - 1);
        const std::int64_t words[2] = {kTime.secondsWord(), static_cast<std::int64_t>(kTime.fractionWord())};
        packer.pack_ext(16, 1);
        packer.pack_ext_body(reinterpret_cast<const char*>(words), 16);

        const msgpack::object_handle handle = msgpack::unpack(buffer.data(), buffer.size());
        const msgpack::object_array& fields = handle.get().via.array;
        double sum = 0;
        for (int i = 0; i < kNumbers; ++i) sum += fields.ptr[i].via.f64;
        benchmark::DoNotOptimize(fields.ptr[kNumbers].via.str.ptr);
        std::int64_t time[2];
        std::memcpy(time, fields.ptr[kNumbers + 1].via.ext.data(), sizeof time);
        benchmark::DoNotOptimize(time);
        benchmark::DoNotOptimize(sum);
    }
}

}  // namespace

BENCHMARK(BM_ScalarArrayHost);
BENCHMARK(BM_ScalarArraySwapped);
BENCHMARK(BM_Memcpy);
BENCHMARK(BM_ElementLoop);
BENCHMARK(BM_SwappingLoop);
BENCHMARK(BM_ClusterThroughVarData);
BENCHMARK(BM_MsgpackCluster);

QKDYNAM_BENCHMARK_MAIN({{"BM_ScalarArrayHost", "BM_Memcpy"},
                        {"BM_ScalarArrayHost", "BM_ElementLoop"},
                        {"BM_ScalarArraySwapped", "BM_Memcpy"},
                        {"BM_ScalarArraySwapped", "BM_SwappingLoop"},
                        {"BM_ClusterThroughVarData", "BM_MsgpackCluster"}})
