// Waveforms and arrays of waveforms in a FlexData (layout in FlexData.h).
// They are recognised by their metadata alone: the waveform cluster's bytes
// with a numeric sample type.
#include <algorithm>
#include <cstring>

#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/Waveform.h"
#include "zo/kel/fd.h"

namespace zo::kel {

namespace {

using Size = SafeInteger<unsigned int>;

constexpr unsigned int kWaveformMDSize = 42;
constexpr unsigned int kSampleTypeOffset = 28;
constexpr unsigned char kWaveformMD[kWaveformMDSize] = {
    0x01, 0x08, 0x05, 0x00,                                                  // cluster of 5
    0x06, 0x00, 0x00, 0x00, 0x04, 0x05,                                      // start
    0x06, 0x00, 0x00, 0x00, 0x02, 0x04,                                      // interval
    0x0E, 0x00, 0x00, 0x00, 0x00, 0x08, 0x01, 0x00, 0x06, 0x00, 0x00, 0x00,  // samples: 1-D array
    0x00, 0x00,                                                              // (sample type)
    0x06, 0x00, 0x00, 0x00, 0x00, 0x03,                                      // status
    0x06, 0x00, 0x00, 0x00, 0x02, 0x09,                                      // extra
};
// An array of one dimension whose element descriptor holds the waveform's metadata.
constexpr unsigned int kWavesHeadSize = 8;
constexpr unsigned char kWavesHead[kWavesHeadSize] = {0x00, 0x08, 0x01, 0x00, 4 + kWaveformMDSize, 0x00, 0x00, 0x00};
// Time, interval, sample count, status and the smallest nested packet's size word.
constexpr unsigned int kLeastWaveformData = 16 + 8 + 4 + 4 + 4;

constexpr fd::FlexType kSampleTypes[] = {fd::kInt8,  fd::kUInt8,  fd::kInt16, fd::kUInt16,  fd::kInt32,
                                         fd::kUInt32, fd::kInt64, fd::kUInt64, fd::kFloat32, fd::kFloat64};

bool IsSampleType(std::uint16_t type) { return std::ranges::find(kSampleTypes, type) != std::end(kSampleTypes); }

[[noreturn]] void ThrowNotAWaveform(unsigned int line) { throw exception::InvalidArgument(line, ZO_SOURCE_FILE); }

void CheckWaveform(const Waveform& waveform, fd::FlexType sampleType) {
    if (waveform.sampleType != sampleType || !IsSampleType(sampleType) ||
        waveform.samples.Len() % fd::GetDataSize(sampleType) != 0) {
        ThrowNotAWaveform(__LINE__);
    }
}

const FlexData& StoredExtra(const Waveform& waveform) {
    static const FlexData empty = [] {
        FlexData marker;
        marker.setEmpty();
        return marker;
    }();
    return waveform.extra.isEmpty() ? empty : waveform.extra;
}

unsigned int PaddedSamples(unsigned int bytes) { return (Size(bytes) + (bytes & 1u)).get(); }

unsigned int WaveformDataSize(const Waveform& waveform) {
    return (Size(16u + 8u + 4u) + PaddedSamples(waveform.samples.Len()) + 4u + StoredExtra(waveform).getPacketSize())
        .get();
}

void WriteWaveformMD(unsigned char* at, fd::FlexType sampleType) {
    std::memcpy(at, kWaveformMD, kWaveformMDSize);
    const auto type = static_cast<std::uint16_t>(sampleType);
    std::memcpy(at + kSampleTypeOffset, &type, 2);
}

bool IsWaveformMD(const unsigned char* md, const unsigned char* mdEnd, fd::FlexType& sampleType) {
    if (mdEnd - md != kWaveformMDSize || std::memcmp(md, kWaveformMD, kSampleTypeOffset) != 0 ||
        std::memcmp(md + kSampleTypeOffset + 2, kWaveformMD + kSampleTypeOffset + 2,
                    kWaveformMDSize - kSampleTypeOffset - 2) != 0) {
        return false;
    }
    const auto type = fd::GetVal<std::uint16_t>(md + kSampleTypeOffset, mdEnd);
    sampleType = static_cast<fd::FlexType>(type);
    return IsSampleType(type);
}

unsigned char* WriteWaveformData(unsigned char* at, const unsigned char* end, const Waveform& waveform) {
    const unsigned int sampleBytes = waveform.samples.Len();
    at += fd::SetTime(at, waveform.start, end);
    at += fd::SetVal(at, waveform.interval, end);
    at += fd::SetVal(at, sampleBytes / fd::GetDataSize(waveform.sampleType), end);
    fd::MemCpy(at, end, waveform.samples.Data(), waveform.samples.Data() + sampleBytes, sampleBytes);
    at += PaddedSamples(sampleBytes);  // the pad byte is already zero
    at += fd::SetVal(at, waveform.status, end);
    StoredExtra(waveform).serialize(at, end);
    return at;
}

// Reads one waveform's data at p; returns where the next data begins.
const unsigned char* ReadWaveformData(const unsigned char* p, const unsigned char* end, fd::FlexType sampleType,
                                      Waveform& waveform) {
    if (!fd::HasRoom(p, end, kLeastWaveformData)) fd::internal::ThrowShortPacket();
    waveform.start = fd::GetTime(p, end);
    waveform.interval = fd::GetVal<double>(p + 16, end);
    waveform.sampleType = sampleType;
    const unsigned int sampleBytes = (Size(fd::GetVal<std::uint32_t>(p + 24, end)) * fd::GetDataSize(sampleType)).get();
    p += 28;
    if (!fd::HasRoom(p, end, std::size_t{PaddedSamples(sampleBytes)} + 8)) fd::internal::ThrowShortPacket();
    waveform.samples = AutoBuffer(p, sampleBytes);
    p += PaddedSamples(sampleBytes);
    waveform.status = fd::GetVal<std::int32_t>(p, end);
    p += 4;
    const unsigned char* next = fd::GetNextFD(p, end);
    waveform.extra.copyFrom(p, next);
    return next;
}

}  // namespace

void FlexData::setWaveform(const Waveform& waveform) {
    if (&waveform.extra == this) return setWaveform(Waveform(waveform));
    CheckWaveform(waveform, waveform.sampleType);
    setTypeAndDataSize(kWaveformMDSize, WaveformDataSize(waveform), true);
    WriteWaveformMD(type_, waveform.sampleType);
    WriteWaveformData(data_, end(), waveform);
}

void FlexData::getWaveform(Waveform& waveform) const {
    fd::FlexType sampleType;
    if (!packet_ || !IsWaveformMD(type_, data_, sampleType)) ThrowNotAWaveform(__LINE__);
    Waveform read;
    ReadWaveformData(data_, end(), sampleType, read);
    waveform = std::move(read);
}

void FlexData::setWaves(const Vector<Waveform>& waves) {
    if (std::ranges::any_of(waves, [this](const Waveform& wave) { return &wave.extra == this; })) {
        return setWaves(Vector<Waveform>(waves));
    }
    const fd::FlexType sampleType = waves.empty() ? fd::kFloat64 : waves[0].sampleType;
    Size dataSize = 4u;
    for (const Waveform& wave : waves) {
        CheckWaveform(wave, sampleType);
        dataSize += WaveformDataSize(wave);
    }
    setTypeAndDataSize(kWavesHeadSize + kWaveformMDSize, dataSize.get(), true);
    std::memcpy(type_, kWavesHead, kWavesHeadSize);
    WriteWaveformMD(type_ + kWavesHeadSize, sampleType);
    unsigned char* at = data_ + fd::SetVal(data_, waves.size(), end());
    for (const Waveform& wave : waves) at = WriteWaveformData(at, end(), wave);
}

void FlexData::getWaves(Vector<Waveform>& waves) const {
    fd::FlexType sampleType;
    if (!packet_ || data_ - type_ != kWavesHeadSize + kWaveformMDSize ||
        std::memcmp(type_, kWavesHead, kWavesHeadSize) != 0 ||
        !IsWaveformMD(type_ + kWavesHeadSize, data_, sampleType)) {
        ThrowNotAWaveform(__LINE__);
    }
    const auto count = fd::GetVal<std::uint32_t>(data_, end());
    // Every waveform takes bytes: the count cannot promise more than are here.
    if (count > (dataSize_ - 4) / kLeastWaveformData) fd::internal::ThrowShortPacket();
    Vector<Waveform> read;
    read.reserve(count);
    const unsigned char* p = data_ + 4;
    for (unsigned int i = 0; i < count; ++i) p = ReadWaveformData(p, end(), sampleType, read.emplace_back());
    waves.swap(read);
}

}  // namespace zo::kel
