// Arbitrary bytes as a FlexData packet: whatever deserializes must survive
// a walk of its metadata, every getter, its attributes, nested packets and
// waveforms, and serialize back to the bytes it came from (an odd size word
// made even, with the zero pad byte after it).
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "FuzzCheck.h"
#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/Waveform.h"
#include "zo/kel/fd.h"

using fuzzcheck::Require;
using zo::kel::FlexData;

namespace {

// Nested packets are values of their own; a few levels show the same code.
constexpr int kMaxVisitDepth = 4;

template <typename Read>
void Try(Read read) {
    try {
        read();
    } catch (const zo::kel::exception::Exception&) {
    }
}

void WalkMetadata(const FlexData& value) {
    const unsigned char* end = value.end();
    const unsigned char* type = zo::kel::fd::GetTypeFromPacket(value.begin(), end);
    for (const unsigned char* md = value.begin() + 4; md < type;) md = zo::kel::fd::GetNextElt(md, end);
    Require(zo::kel::fd::GetDataFromType(value.begin(), type, end) == value.getDataBuffer().Data());
    Try([&] { Require(zo::kel::fd::GetDataSize(type, nullptr, end) != 0xFFFFFFFFu); });
    Try([&] { Require(zo::kel::fd::GetDataSize(type, value.getDataBuffer().Data(), end) != 0xFFFFFFFFu); });
}

void CallGetters(const FlexData& value) {
    Try([&] { (void)value.getBool(); });
    Try([&] { (void)value.getI8(); });
    Try([&] { (void)value.getUI8(); });
    Try([&] { (void)value.getI16(); });
    Try([&] { (void)value.getUI16(); });
    Try([&] { (void)value.getI32(); });
    Try([&] { (void)value.getUI32(); });
    Try([&] { (void)value.getI64(); });
    Try([&] { (void)value.getUI64(); });
    Try([&] { (void)value.getF32(); });
    Try([&] { (void)value.getF64(); });
    Try([&] { (void)value.getTime(); });
    Try([&] { (void)value.getAString(); });
    Try([&] { (void)value.getUnicode(); });
    Try([&] {
        bool isSigned, hasStatus, overflowed;
        unsigned short wordLength;
        int integerWordLength;
        unsigned long bits;
        value.getFixedPoint(isSigned, hasStatus, wordLength, integerWordLength, bits, &overflowed);
    });
    Try([&] {
        zo::kel::Waveform waveform;
        value.getWaveform(waveform);
    });
    Try([&] {
        zo::kel::Vector<zo::kel::Waveform> waves;
        value.getWaves(waves);
    });
}

void Visit(const FlexData& value, int depth) {
    if (value.isEmpty() || depth > kMaxVisitDepth) return;
    Try([&] { WalkMetadata(value); });
    CallGetters(value);
    Try([&] { Visit(value.getFlexData(), depth + 1); });
    Try([&] {
        for (const zo::kel::NarrowString& name : value.getAttributeNames()) {
            Require(value.hasAttribute(name));
            Visit(value.getAttribute(name), depth + 1);
        }
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzzcheck::ExactInput input(data, size);
    FlexData value;
    const unsigned char* cursor = input.begin();
    try {
        value.deserialize(cursor, input.end());
    } catch (const zo::kel::exception::Exception&) {
        Require(value.isEmpty());
        return 0;
    }
    Require(cursor <= input.end());
    Visit(value, 0);

    std::vector<unsigned char> expected(4, 0);
    if (!value.isEmpty()) {
        std::uint32_t packetSize;
        std::memcpy(&packetSize, input.begin(), 4);
        expected.assign(input.begin(), input.begin() + packetSize);
        if (packetSize % 2 != 0) {
            expected.push_back(0);
            std::memcpy(expected.data(), &++packetSize, 4);
        }
    }
    Require(fuzzcheck::Encode(value) == expected);
    Require(fuzzcheck::Reread<FlexData>(expected) == value);
    return 0;
}
