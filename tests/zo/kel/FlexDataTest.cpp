#include "zo/kel/FlexData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "zo/kel/FlexDataTestSupport.h"
#include "zo/kel/Waveform.h"
#include "zo/kel/fd.h"

namespace {

using namespace kel_test;
using zo::kel::AbsTime;
using zo::kel::FlexData;
using zo::kel::NarrowString;
using zo::kel::WideString;
namespace fd = zo::kel::fd;
namespace exception = zo::kel::exception;

TEST(FlexDataWire, ScalarsStringsAndTimeAsPackets) {
    const struct {
        FlexData value;
        Bytes packet;
    } kRows[] = {
        {FlexData(true), {8, 0, 0, 0, 0x02, 0x01, 0xFF, 0}},
        {FlexData(static_cast<signed char>(-2)), {8, 0, 0, 0, 0x00, 0x01, 0xFE, 0}},
        {FlexData(static_cast<unsigned short>(0x1234)), {8, 0, 0, 0, 0x01, 0x02, 0x34, 0x12}},
        {FlexData(-2), {10, 0, 0, 0, 0x00, 0x03, 0xFE, 0xFF, 0xFF, 0xFF}},
        {FlexData(1.5f), {10, 0, 0, 0, 0x02, 0x03, 0x00, 0x00, 0xC0, 0x3F}},
        {FlexData(1L << 40), {14, 0, 0, 0, 0x00, 0x04, 0, 0, 0, 0, 0, 1, 0, 0}},
        {FlexData(-0.5), {14, 0, 0, 0, 0x02, 0x04, 0, 0, 0, 0, 0, 0, 0xE0, 0xBF}},
        {FlexData(AbsTime::fromWords(1, 2)), {22, 0, 0, 0, 0x04, 0x05, 2, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}},
        {FlexData("abc", 3), {14, 0, 0, 0, 0x00, 0x09, 3, 0, 0, 0, 'a', 'b', 'c', 0}},
        {FlexData(NarrowString("ab")), {12, 0, 0, 0, 0x00, 0x09, 2, 0, 0, 0, 'a', 'b'}},
        {FlexData(WideString(L"h\u00E9")), {14, 0, 0, 0, 0x00, 0x0A, 2, 0, 0, 0, 'h', 0, 0xE9, 0}},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(Packet(row.value), row.packet) << std::hex << row.value.getType();
        EXPECT_EQ(Form(row.value), row.packet);
        FlexData back;
        EXPECT_EQ(Read(back, row.packet), row.packet.size());
        EXPECT_TRUE(back == row.value);
    }
    FlexData flag;
    flag.setBool(5);
    EXPECT_EQ(Packet(flag), Packet(FlexData(true)));
    flag.setVoid();
    EXPECT_EQ(Packet(flag), (Bytes{6, 0, 0, 0, 0x01, 0x00}));
    flag.setEmpty();
    EXPECT_EQ(Packet(flag), (Bytes{10, 0, 0, 0, 0x05, 0x03, 0, 0, 0, 0}));
    EXPECT_EQ(flag.getMetaDataBuffer().Len(), 2u);
    EXPECT_EQ(flag.getDataBuffer().Len(), 4u);
}

TEST(FlexDataScalars, SameTypeIsWrittenInPlaceAndPrefixElementsStay) {
    FlexData value(7);
    const unsigned char* block = value.begin();
    value.setI32(-1);
    EXPECT_EQ(value.begin(), block);
    EXPECT_EQ(Packet(value), (Bytes{10, 0, 0, 0, 0x00, 0x03, 0xFF, 0xFF, 0xFF, 0xFF}));

    value.setAttribute("u", FlexData(true));
    const Bytes attribute = {0x00, 0x40, 0x12, 0, 0, 0, 1, 0, 0, 0, 'u', 0, 8, 0, 0, 0, 0x02, 0x01, 0xFF, 0};
    value.setF64(2.0);
    Bytes expected = {34, 0, 0, 0};
    expected.insert(expected.end(), attribute.begin(), attribute.end());
    expected.insert(expected.end(), {0x02, 0x04, 0, 0, 0, 0, 0, 0, 0, 0x40});
    EXPECT_EQ(Packet(value), expected);
    value.setAString("xyz", 3);
    EXPECT_TRUE(value.hasAttribute("u"));
    EXPECT_EQ(value.getAString(), "xyz");
    EXPECT_EQ(value.getPacketSize(), 4 + attribute.size() + 2 + 8);
}

TEST(FlexDataGetters, CoercionTable) {
    EXPECT_EQ(FlexData(300).getI8(), 44);
    EXPECT_EQ(FlexData(-1).getUI16(), 65535);
    EXPECT_EQ(FlexData(-2.9).getI32(), -2);
    EXPECT_EQ(FlexData(9223372036854775808.0).getUI64(), 9223372036854775808ull);
    EXPECT_EQ(FlexData(1e20).getI32(), std::numeric_limits<int>::min());
    EXPECT_EQ(FlexData(1e20).getI16(), 0);  // INT32_MIN cut to 16 bits
    EXPECT_EQ(FlexData(std::nan("")).getI64(), std::numeric_limits<long>::min());
    EXPECT_EQ(FlexData(-1.0).getUI32(), 0xFFFFFFFFu);
    EXPECT_EQ(FlexData(5e9).getUI32(), 705032704u);  // low 32 bits of 5,000,000,000
    EXPECT_EQ(FlexData(1e30).getUI64(), 0x8000000000000000ull);
    EXPECT_EQ(FlexData(static_cast<signed char>(-1)).getUI64(), 0xFFFFFFFFFFFFFFFFull);
    EXPECT_EQ(FlexData(static_cast<unsigned char>(0xFF)).getI32(), 255);
    EXPECT_EQ(FlexData(0xFFFFFFFFFFFFFFFFul).getF64(), 18446744073709551616.0);
    EXPECT_EQ(FlexData(-3L).getF32(), -3.0f);
    EXPECT_EQ(FlexData(0.1f).getF64(), double{0.1f});
    EXPECT_EQ(FlexData(0.1).getF32(), 0.1f);

    EXPECT_FALSE(FlexData(0).getBool());
    EXPECT_TRUE(FromBytes({8, 0, 0, 0, 0x02, 0x01, 0x01, 0}).getBool());
    EXPECT_TRUE(FromBytes({8, 0, 0, 0, 0x02, 0x02, 0x00, 0x01}).getBool());
    for (const FlexData& notBool : {FlexData(1.0), FlexData(), FlexData(1u)}) {
        EXPECT_FALSE(notBool.canCoerceToBool());
        EXPECT_STREQ(ThrownBy<exception::InvalidArgument>([&] { notBool.getBool(); }).file, "zo/kel/FlexData");
    }
    // Neither Booleans, times nor strings are numbers.
    for (const FlexData& notNumber : {FlexData(true), FlexData(AbsTime()), FlexData("1", 1), FlexData()}) {
        EXPECT_THROW(notNumber.getF64(), exception::InvalidArgument);
        EXPECT_THROW(notNumber.getI32(), exception::InvalidArgument);
    }
    EXPECT_THROW(FlexData(1).getTime(), exception::InvalidArgument);
    EXPECT_THROW(FlexData(1).getAString(), exception::InvalidArgument);
    // An I32 whose packet holds two data bytes only.
    EXPECT_THROW(FromBytes({8, 0, 0, 0, 0x00, 0x03, 1, 0}).getI32(), exception::SyntaxError);
}

TEST(FlexDataStrings, NarrowAndUtf16ReadEitherWay) {
    const FlexData narrow("odd", 3);
    unsigned int length = 0;
    const char* text = narrow.getAString(length);
    EXPECT_EQ(NarrowString(text, length).exactCompare("odd"), 0);
    EXPECT_EQ(narrow.getUnicode().exactCompare(L"odd"), 0);
    const FlexData wide(WideString(L"caf\u00E9 \U0001F600"));
    EXPECT_EQ(wide.getUnicode().exactCompare(L"caf\u00E9 \U0001F600"), 0);
    EXPECT_EQ(fd::GetVal<std::uint32_t>(wide.getDataBuffer().Data(), wide.end()), 7u);  // UTF-16 units
    EXPECT_EQ(FlexData(WideString(L"ascii")).getAString(), "ascii");
    EXPECT_THROW(wide.getAString(length), exception::InvalidArgument);

    const FlexData second = FromBytes({12, 0, 0, 0, 0x01, 0x09, 1, 0, 0, 0, 'q', 0});
    EXPECT_EQ(second.getAString(), "q");
    // The count promises more bytes than the packet holds.
    const FlexData truncated = FromBytes({12, 0, 0, 0, 0x00, 0x09, 9, 0, 0, 0, 'q', 0});
    EXPECT_THROW(truncated.getAString(), exception::SyntaxError);
    EXPECT_THROW(FlexData().setAString("x", 0xFFFFFFFCu), exception::OutOfRange);

    FlexData self("abcd", 4);
    self.setAString(self.getAString(length) + 1, 2);  // from its own packet
    EXPECT_EQ(self.getAString(), "bc");
}

TEST(FlexDataPacket, CopyFromRules) {
    FlexData value = FromBytes({7, 0, 0, 0, 0x00, 0x01, 0x41});  // odd size: a pad byte is added
    EXPECT_EQ(Packet(value), (Bytes{8, 0, 0, 0, 0x00, 0x01, 0x41, 0}));
    EXPECT_EQ(value.getI8(), 0x41);
    const Bytes zero = {0, 0, 0, 0};
    value.copyFrom(zero.data(), zero.data() + 4);  // size 0: unchanged
    EXPECT_EQ(value.getI8(), 0x41);
    for (const Bytes& bad : {Bytes{8, 0, 0}, Bytes{9, 0, 0, 0, 0x00, 0x01, 0x41}}) {
        EXPECT_THROW(value.copyFrom(bad.data(), bad.data() + bad.size()), exception::DeserializationError);
    }
    const Bytes noType = {4, 0, 0, 0};
    EXPECT_THROW(value.copyFrom(noType.data(), noType.data() + 4), exception::SyntaxError);
    EXPECT_EQ(value.getI8(), 0x41);
    value.copyFrom(nullptr, nullptr);
    EXPECT_TRUE(value.isEmpty());
    EXPECT_EQ(value.getPacketSize(), 0u);
    EXPECT_EQ(value.getType(), 0);
}

TEST(FlexDataPacket, DeserializeMovesTheCursorWithinTheInput) {
    FlexData empty;
    EXPECT_EQ(Form(empty), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(Read(empty, Bytes{0, 0, 0, 0, 9}), 4u);
    EXPECT_TRUE(empty.isEmpty());

    FlexData held(1.0);  // a zero size keeps the packet; the cursor stops at the end
    EXPECT_EQ(Read(held, Bytes{0, 0, 0, 0}), 4u);
    EXPECT_EQ(Read(held, Bytes{0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), 14u);
    EXPECT_EQ(held.getF64(), 1.0);

    FlexData odd;
    EXPECT_EQ(Read(odd, Bytes{7, 0, 0, 0, 0x00, 0x01, 0x41, 0xEE}), 8u);  // over the pad byte
    EXPECT_EQ(Read(odd, Bytes{7, 0, 0, 0, 0x00, 0x01, 0x41}), 7u);        // never past the end
    const Bytes bad = {6, 0, 0, 0, 0x00, 0x40};
    EXPECT_THROW(Read(odd, bad), exception::SyntaxError);
    EXPECT_TRUE(odd.isEmpty());
    ExpectOverflow(FlexData(1), 9);
}

TEST(FlexDataPacket, CompareIsTheByteDifference) {
    EXPECT_EQ(FlexData(0x10).compare(FlexData(0x13)), -3);
    EXPECT_EQ(FlexData(0x13).compare(FlexData(0x10)), 3);
    EXPECT_TRUE(FlexData(0x10) < FlexData(0x13));
    // The size word's low byte comes first: a short I8 packet sorts before an I32.
    EXPECT_EQ(FlexData(static_cast<signed char>(9)).compare(FlexData(1)), 8 - 10);
    EXPECT_EQ(FlexData().compare(FlexData(1)), -10);
    EXPECT_EQ(FlexData(1).compare(FlexData()), 10);
    const FlexData a(2.5);
    FlexData b;
    b = a;
    EXPECT_TRUE(a == b);
    EXPECT_NE(a.begin(), b.begin());
    FlexData moved(std::move(b));
    EXPECT_TRUE(b.isEmpty());
    EXPECT_EQ(moved.getF64(), 2.5);
}

TEST(FlexDataNested, InnerPacketsAndTheEmptyMarker) {
    FlexData outer;
    outer.setFlexData(FlexData(3));
    EXPECT_EQ(Packet(outer), (Bytes{16, 0, 0, 0, 0x02, 0x09, 10, 0, 0, 0, 0x00, 0x03, 3, 0, 0, 0}));
    EXPECT_EQ(outer.getFlexData().getI32(), 3);
    outer.setFlexData(FlexData());
    EXPECT_EQ(outer.getFlexData().getType(), fd::kEmpty);
    outer.setFlexData(outer);
    EXPECT_EQ(outer.getFlexData().getFlexData().getType(), fd::kEmpty);
    EXPECT_THROW(FlexData(1).getFlexData(), exception::InvalidArgument);
}

TEST(FlexDataFixedPoint, LayoutAndSignExtension) {
    FlexData value;
    value.setFixedPoint(true, false, 12, 4, 0x0FFFul, false);
    EXPECT_EQ(Packet(value), (Bytes{16, 0, 0, 0, 0x02, 0x08, 0xFF, 0x00, 0x0C, 0x00, 4, 0, 0, 0, 0xFF, 0x0F}));
    bool isSigned = false, hasStatus = true, overflowed = false;
    unsigned short wordLength = 0;
    int integerWordLength = 0;
    unsigned long bits = 0;
    value.getFixedPoint(isSigned, hasStatus, wordLength, integerWordLength, bits, &overflowed);
    EXPECT_EQ(static_cast<long>(bits), -1);
    EXPECT_TRUE(isSigned);
    EXPECT_FALSE(hasStatus);
    EXPECT_EQ(wordLength, 12);
    EXPECT_EQ(integerWordLength, 4);

    value.setFixedPoint(false, true, 12, 0, 0x0FFFul, true);
    EXPECT_EQ(value.getDataBuffer().Len(), 4u);
    value.getFixedPoint(isSigned, hasStatus, wordLength, integerWordLength, bits, &overflowed);
    EXPECT_EQ(bits, 0x0FFFul);
    EXPECT_TRUE(overflowed && hasStatus && !isSigned);
    value.setFixedPoint(false, true, 8, 8, 0xABul, false);
    EXPECT_EQ(Bytes(value.getDataBuffer().Data(), value.end()), (Bytes{0xAB, 0x00}));
    value.setFixedPoint(true, false, 64, 1, 0x8000000000000000ul, false);
    value.getFixedPoint(isSigned, hasStatus, wordLength, integerWordLength, bits, nullptr);
    EXPECT_EQ(bits, 0x8000000000000000ul);
    EXPECT_EQ(value.getFixedPointDatasizeInBytes(), 8u);

    EXPECT_EQ(ThrownBy<exception::InvalidArgument2>([&] { value.setFixedPoint(true, false, 65, 0, 1ul, false); }).what,
              "Invalid argument(s): Can't specify word length of > 64 bits with a function that takes a 64-bit type "
              "for the type");
    const unsigned char wide[16] = {1};
    EXPECT_THROW(value.setFixedPoint(true, false, 65, 0, zo::kel::BufferWrapper(wide, 15), false),
                 exception::BufferUnderflow);
    value.setFixedPoint(true, false, 65, 0, zo::kel::BufferWrapper(wide, 16), false);
    EXPECT_EQ(ThrownBy<exception::OutOfRange2>([&] {
                  value.getFixedPoint(isSigned, hasStatus, wordLength, integerWordLength, bits, nullptr);
              }).what,
              "Out of range: Fixed-point number has word-length > 64");
    unsigned char out[16];
    EXPECT_THROW(value.getFixedPoint(isSigned, hasStatus, wordLength, integerWordLength, out, 15, nullptr),
                 exception::BufferOverflow);
    const Thrown notFixed = ThrownBy<exception::InvalidArgument2>([] { FlexData(1).getFixedPointDatasizeInBytes(); });
    EXPECT_EQ(notFixed.what, "Invalid argument(s): Not a fixed-point FlexData");
    EXPECT_STREQ(notFixed.file, "zo/kel/FlexData");
}

TEST(FlexDataAttributes, NamedValuesBeforeTheType) {
    FlexData value(1.5);
    EXPECT_FALSE(value.hasAttributes());
    value.setAttribute("units", FlexData(NarrowString("bar")));
    value.setAttribute("ok", FlexData(true));
    value.setAttribute("units", FlexData(NarrowString("Pa")));  // replaced where it stands
    const auto names = value.getAttributeNames();
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0].exactCompare("units"), 0);
    EXPECT_EQ(names[1].exactCompare("ok"), 0);
    EXPECT_EQ(value.getAttribute("units").getAString(), "Pa");
    EXPECT_EQ(value.getF64(), 1.5);
    EXPECT_FALSE(value.hasAttribute("UNITS"));
    EXPECT_THROW(value.getAttribute("UNITS"), exception::NotFound);

    FlexData carrier;  // an empty value becomes void to carry one
    carrier.setAttribute("", FlexData());
    EXPECT_EQ(Packet(carrier), (Bytes{20, 0, 0, 0, 0x00, 0x40, 0x0C, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01, 0x00}));
    EXPECT_TRUE(carrier.getAttribute("").isEmpty());
    value.setAttribute("nested", value);
    EXPECT_EQ(value.getAttribute("nested").getAttribute("ok").getBool(), true);

    EXPECT_TRUE(value.deleteAttribute("units"));
    EXPECT_FALSE(value.deleteAttribute("units"));
    EXPECT_TRUE(value.deleteAttribute("ok"));
    EXPECT_TRUE(value.deleteAttribute("nested"));
    EXPECT_FALSE(value.hasAttributes());
    EXPECT_EQ(Packet(value), Packet(FlexData(1.5)));
}

TEST(FlexDataWaveform, LayoutAndRoundTrips) {
    zo::kel::Waveform wave;
    wave.start = AbsTime::fromWords(100, 0);
    wave.interval = 0.5;
    wave.sampleType = fd::kInt16;
    const short samples[3] = {1, -1, 2};
    wave.samples = zo::kel::AutoBuffer(reinterpret_cast<const unsigned char*>(samples), sizeof samples);
    wave.status = 7;
    FlexData value;
    value.setAttribute("a", FlexData(1));
    value.setWaveform(wave);
    EXPECT_TRUE(value.hasAttribute("a"));
    const Bytes metadata = {0x01, 0x08, 0x05, 0x00, 0x06, 0x00, 0x00, 0x00, 0x04, 0x05, 0x06, 0x00, 0x00, 0x00,
                            0x02, 0x04, 0x0E, 0x00, 0x00, 0x00, 0x00, 0x08, 0x01, 0x00, 0x06, 0x00, 0x00, 0x00,
                            0x00, 0x02, 0x06, 0x00, 0x00, 0x00, 0x00, 0x03, 0x06, 0x00, 0x00, 0x00, 0x02, 0x09};
    const auto* md = value.getDataBuffer().Data() - metadata.size();
    EXPECT_EQ(Bytes(md, md + metadata.size()), metadata);
    const Bytes data = {0,    0,    0, 0, 0,    0,    0, 0, 100, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE0, 0x3F,
                        3,    0,    0, 0, 1,    0,    0xFF, 0xFF, 2, 0, 7, 0, 0, 0, 10, 0, 0, 0,
                        0x05, 0x03, 0, 0, 0, 0};
    EXPECT_EQ(Contents(value.getDataBuffer()), data);

    zo::kel::Waveform back;
    value.getWaveform(back);
    EXPECT_EQ(back.start, wave.start);
    EXPECT_EQ(back.interval, 0.5);
    EXPECT_EQ(back.sampleType, fd::kInt16);
    EXPECT_EQ(Contents(back.samples), Contents(wave.samples));
    EXPECT_EQ(back.status, 7);
    EXPECT_EQ(back.extra.getType(), fd::kEmpty);

    zo::kel::Waveform second = wave;
    second.extra = FlexData(NarrowString("V"));
    FlexData waves;
    waves.setWaves({wave, second});
    zo::kel::Vector<zo::kel::Waveform> read;
    waves.getWaves(read);
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(read[1].extra.getAString(), "V");
    EXPECT_EQ(Contents(read[0].samples), Contents(wave.samples));
    EXPECT_THROW(value.getWaves(read), exception::InvalidArgument);
    EXPECT_THROW(waves.getWaveform(back), exception::InvalidArgument);

    second.sampleType = fd::kInt32;  // 6 bytes are no whole I32 samples, and the types differ
    EXPECT_THROW(value.setWaveform(second), exception::InvalidArgument);
    second.samples = zo::kel::AutoBuffer(reinterpret_cast<const unsigned char*>(samples), 4);
    EXPECT_THROW(waves.setWaves({wave, second}), exception::InvalidArgument);
    second.sampleType = fd::kBoolean;
    EXPECT_THROW(value.setWaveform(second), exception::InvalidArgument);
    waves.setWaves({});
    waves.getWaves(read);
    EXPECT_EQ(read.size(), 0u);

    // A count that promises more waveforms than the bytes can hold.
    Bytes lying(waves.begin(), waves.end());
    lying[lying.size() - 2] = 0xFF;
    EXPECT_THROW(FromBytes(lying).getWaves(read), exception::SyntaxError);
}

}  // namespace
