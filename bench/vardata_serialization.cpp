// The VarData byte form against three peers doing the same round trip in the
// same run: msgpack unpacked into its zone (no owned values), msgpack packed
// from and unpacked into an owned std::map of std::variant values (the data
// model of a dictionary: owned, ordered values), and nlohmann-json's msgpack
// form; and a 1 MiB byte block against a plain memcpy.
#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <msgpack.hpp>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <variant>
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

// The owned-map peer: the telemetry record as an ordered map of owned values.
using OwnedTime = std::array<std::int64_t, 2>;
using OwnedValue = std::variant<double, bool, std::string, OwnedTime>;
using OwnedRecord = std::map<std::string, OwnedValue>;

OwnedValue TelemetryValue(int i) {
    switch (i % 4) {
        case 0: return 1000.0 + i * 0.25;
        case 1: return (i % 3) == 0;
        case 2: return std::string("nominal");
        default: return OwnedTime{3800000000 + i, 0x4000000000000000};
    }
}

OwnedRecord OwnedTelemetryRecord() {
    OwnedRecord record;
    for (int i = 0; i < 16; ++i) record.emplace(kFieldNames[i], TelemetryValue(i));
    return record;
}

void PackOwned(msgpack::packer<msgpack::sbuffer>& packer, const OwnedRecord& record) {
    packer.pack_map(static_cast<std::uint32_t>(record.size()));
    for (const auto& [key, value] : record) {
        packer.pack(key);
        if (const auto* time = std::get_if<OwnedTime>(&value)) {
            packer.pack_ext(16, 1);
            packer.pack_ext_body(reinterpret_cast<const char*>(time->data()), 16);
        } else {
            std::visit([&](const auto& plain) { packer.pack(plain); }, value);
        }
    }
}

OwnedValue UnpackOwned(const msgpack::object& object) {
    switch (object.type) {
        case msgpack::type::FLOAT32:
        case msgpack::type::FLOAT64: return object.via.f64;
        case msgpack::type::POSITIVE_INTEGER: return static_cast<double>(object.via.u64);
        case msgpack::type::NEGATIVE_INTEGER: return static_cast<double>(object.via.i64);
        case msgpack::type::BOOLEAN: return object.via.boolean;
        case msgpack::type::STR: return std::string(object.via.str.ptr, object.via.str.size);
        case msgpack::type::EXT: {
            OwnedTime time{};
            std::memcpy(time.data(), object.via.ext.data(), sizeof time);
            return time;
        }
        default: throw std::runtime_error("unexpected msgpack type");
    }
}

OwnedRecord UnpackOwnedRecord(const msgpack::object& object) {
    OwnedRecord record;
    for (const msgpack::object_kv& entry : msgpack::object_map(object.via.map)) {
        record.insert_or_assign(std::string(entry.key.via.str.ptr, entry.key.via.str.size), UnpackOwned(entry.val));
    }
    return record;
}

nlohmann::json JsonTelemetryRecord() {
    nlohmann::json record = nlohmann::json::object();
    for (int i = 0; i < 16; ++i) {
        std::visit(
            [&](const auto& value) {
                if constexpr (std::is_same_v<std::decay_t<decltype(value)>, OwnedTime>) {
                    std::vector<std::uint8_t> bytes(16);
                    std::memcpy(bytes.data(), value.data(), 16);
                    record[kFieldNames[i]] = nlohmann::json::binary(std::move(bytes), 1);
                } else {
                    record[kFieldNames[i]] = value;
                }
            },
            TelemetryValue(i));
    }
    return record;
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

void BM_MsgpackOwnedMapTelemetryRecord(benchmark::State& state) {
    const OwnedRecord record = OwnedTelemetryRecord();
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        PackOwned(packer, record);
        const msgpack::object_handle handle = msgpack::unpack(buffer.data(), buffer.size());
        OwnedRecord back = UnpackOwnedRecord(handle.get());
        benchmark::DoNotOptimize(back);
    }
}

void BM_NlohmannMsgpackTelemetryRecord(benchmark::State& state) {
    const nlohmann::json record = JsonTelemetryRecord();
    for (auto _ : state) {
        const std::vector<std::uint8_t> bytes = nlohmann::json::to_msgpack(record);
        nlohmann::json back = nlohmann::json::from_msgpack(bytes);
        benchmark::DoNotOptimize(back);
    }
}

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
BENCHMARK(BM_MsgpackOwnedMapTelemetryRecord);
BENCHMARK(BM_NlohmannMsgpackTelemetryRecord);
BENCHMARK(BM_VarDataNumberSequence)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MsgpackNumberSequence)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_VarDataRawSerialize)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MemcpyRaw)->Unit(benchmark::kMicrosecond);

}  // namespace

QKDYNAM_BENCHMARK_MAIN({{"BM_VarDataTelemetryRecord", "BM_MsgpackTelemetryRecord"},
                        {"BM_VarDataTelemetryRecord", "BM_MsgpackOwnedMapTelemetryRecord"},
                        {"BM_VarDataTelemetryRecord", "BM_NlohmannMsgpackTelemetryRecord"},
                        {"BM_VarDataNumberSequence", "BM_MsgpackNumberSequence"},
                        {"BM_VarDataRawSerialize", "BM_MemcpyRaw"}})
