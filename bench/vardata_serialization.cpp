// The VarData byte form against msgpack packing and unpacking the same data
// in the same run, and a 1 MiB byte block against a plain memcpy.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <msgpack.hpp>
#include <string>
#include <vector>

#include "support/RatioReporter.h"
#include "tavlo/qkstatic/vardata.h"

namespace {

constexpr const char* kFieldNames[16] = {"Pressure", "Temperature", "Flow",    "Level",   "Running", "Alarm",
                                         "Mode",     "Operator",    "Started", "Stopped", "Setpoint", "Speed",
                                         "Torque",   "Valve",       "Comment", "Sampled"};

// The same telemetry record in both forms: numbers, logicals, texts, times.
VarData TelemetryRecord() {
    VarData record = VarData::dict();
    for (int i = 0; i < 16; ++i) {
        VarData value;
        switch (i % 4) {
            case 0: value = 1000.0 + i * 0.25; break;
            case 1: value = (i % 3) == 0; break;
            case 2: value = "nominal"; break;
            default: value = VarData(zo::kel::AbsTime::fromWords(3800000000 + i, 0x4000000000000000ull)); break;
        }
        record.setValue(kFieldNames[i], value);
    }
    return record;
}

void PackTelemetryRecord(msgpack::packer<msgpack::sbuffer>& packer) {
    packer.pack_map(16);
    for (int i = 0; i < 16; ++i) {
        packer.pack(kFieldNames[i]);
        switch (i % 4) {
            case 0: packer.pack(1000.0 + i * 0.25); break;
            case 1: packer.pack((i % 3) == 0); break;
            case 2: packer.pack("nominal"); break;
            default: {
                const std::int64_t time[2] = {3800000000 + i, 0x4000000000000000};
                packer.pack_ext(16, 1);
                packer.pack_ext_body(reinterpret_cast<const char*>(time), 16);
                break;
            }
        }
    }
}

VarData NumberSequence() {
    VarData list = VarData::sequence();
    for (unsigned int i = 0; i < 10000; ++i) list.SetElement(i, VarData::num(i * 0.5));
    return list;
}

void RoundTrip(benchmark::State& state, const VarData& value) {
    for (auto _ : state) {
        zo::kel::AutoBuffer buffer;
        value.SerializeWithSize(buffer);
        const unsigned char* cursor = buffer.Data();
        VarData back = VarData::DeserializeWithSize(cursor, buffer.Len());
        benchmark::DoNotOptimize(back);
    }
}

template <class Pack>
void MsgpackRoundTrip(benchmark::State& state, Pack pack) {
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        pack(packer);
        msgpack::object_handle back = msgpack::unpack(buffer.data(), buffer.size());
        benchmark::DoNotOptimize(back.get());
    }
}

void BM_VarDataTelemetryRecord(benchmark::State& state) { RoundTrip(state, TelemetryRecord()); }
void BM_MsgpackTelemetryRecord(benchmark::State& state) { MsgpackRoundTrip(state, PackTelemetryRecord); }

void BM_VarDataNumberSequence(benchmark::State& state) { RoundTrip(state, NumberSequence()); }
void BM_MsgpackNumberSequence(benchmark::State& state) {
    MsgpackRoundTrip(state, [](msgpack::packer<msgpack::sbuffer>& packer) {
        packer.pack_array(10000);
        for (unsigned int i = 0; i < 10000; ++i) packer.pack(i * 0.5);
    });
}

constexpr unsigned int kBlockSize = 1 << 20;

void BM_VarDataRawSerialize(benchmark::State& state) {
    const std::vector<unsigned char> bytes(kBlockSize, 0x5A);
    const VarData block(bytes.data(), kBlockSize);
    for (auto _ : state) {
        zo::kel::AutoBuffer buffer;
        block.SerializeWithSize(buffer);
        benchmark::DoNotOptimize(buffer.Data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kBlockSize);
}

void BM_MemcpyRaw(benchmark::State& state) {
    const std::vector<unsigned char> bytes(kBlockSize, 0x5A);
    for (auto _ : state) {
        // A fresh destination each time, as a serialization gets.
        std::unique_ptr<unsigned char[]> copy(new unsigned char[kBlockSize]);
        std::memcpy(copy.get(), bytes.data(), kBlockSize);
        benchmark::DoNotOptimize(copy.get());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kBlockSize);
}

BENCHMARK(BM_VarDataTelemetryRecord);
BENCHMARK(BM_MsgpackTelemetryRecord);
BENCHMARK(BM_VarDataNumberSequence)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MsgpackNumberSequence)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_VarDataRawSerialize)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MemcpyRaw)->Unit(benchmark::kMicrosecond);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_VarDataTelemetryRecord", "BM_MsgpackTelemetryRecord"},
                        {"BM_VarDataNumberSequence", "BM_MsgpackNumberSequence"},
                        {"BM_VarDataRawSerialize", "BM_MemcpyRaw"}})
