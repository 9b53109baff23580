#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "zo/kel/FlexData.h"
#include "zo/kel/FlexDataTestSupport.h"
#include "zo/kel/fd.h"

namespace {

using namespace kel_test;
using zo::kel::AbsTime;
using zo::kel::FlexData;
using zo::kel::NarrowString;
using zo::kel::Vector;
using zo::kel::WideString;
namespace fd = zo::kel::fd;
namespace exception = zo::kel::exception;
using Dims = Vector<unsigned int>;

constexpr fd::FlexType kNumericKinds[] = {fd::kInt8,  fd::kUInt8,  fd::kInt16, fd::kUInt16,  fd::kInt32,
                                          fd::kUInt32, fd::kInt64, fd::kUInt64, fd::kFloat32, fd::kFloat64};

bool IsFloat(fd::FlexType type) { return type == fd::kFloat32 || type == fd::kFloat64; }
bool IsSigned(fd::FlexType type) { return (type & 0xFF) == 0; }

// A packet holding one element of `type` whose bytes are at p.
FlexData Scalar(fd::FlexType type, const unsigned char* p) {
    const unsigned int size = fd::GetDataSize(type);
    const unsigned int packetSize = 6 + size + (size & 1u);
    Bytes packet = {static_cast<unsigned char>(packetSize), 0, 0, 0, static_cast<unsigned char>(type),
                    static_cast<unsigned char>(type >> 8)};
    packet.insert(packet.end(), p, p + size);
    packet.resize(packetSize);
    return FromBytes(packet);
}

// What the conversion of `source` (an element of srcType at p) must give in
// dstType, worked out independently of the library's loops: integers wrap
// (the getters' rule), floats round, floats saturate into integers.
Bytes Expected(fd::FlexType srcType, const unsigned char* p, fd::FlexType dstType) {
    const FlexData source = Scalar(srcType, p);
    const unsigned int size = fd::GetDataSize(dstType);
    Bytes out(size);
    std::uint64_t bits = 0;
    if (dstType == fd::kFloat32) {
        bits = std::bit_cast<std::uint32_t>(source.getF32());
    } else if (dstType == fd::kFloat64) {
        bits = std::bit_cast<std::uint64_t>(source.getF64());
    } else if (!IsFloat(srcType)) {
        bits = source.getUI64();
    } else {
        const long double value = source.getF64();
        const int width = static_cast<int>(size * 8) - (IsSigned(dstType) ? 1 : 0);
        const long double high = std::ldexp(1.0L, width) - 1;
        const long double low = IsSigned(dstType) ? -std::ldexp(1.0L, width) : 0;
        const long double clamped = std::isnan(value) ? 0 : value < low ? low : value > high ? high : std::trunc(value);
        bits = clamped < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(clamped))
                           : static_cast<std::uint64_t>(clamped);
    }
    std::memcpy(out.data(), &bits, size);
    return out;
}

Bytes Reversed(Bytes bytes, unsigned int size) {
    for (std::size_t i = 0; i < bytes.size(); i += size) std::reverse(bytes.begin() + i, bytes.begin() + i + size);
    return bytes;
}

// Eight samples of each kind: zero, one, extremes, a fraction, NaN and beyond every integer range.
Bytes Samples(fd::FlexType type) {
    const double kFloats[] = {0.0, -2.9, 2.5e9, -1e300, std::nan(""), 1e300, 9223372036854775808.0, 255.99};
    const std::uint64_t kIntegers[] = {0, 1, 0x7F, 0x80, 0xFFFF, 0x80000000ull, 0x8000000000000000ull, ~0ull};
    Bytes out;
    for (int i = 0; i < 8; ++i) {
        unsigned char bytes[8];
        if (type == fd::kFloat64) {
            std::memcpy(bytes, &kFloats[i], 8);
        } else if (type == fd::kFloat32) {
            const float narrow = static_cast<float>(std::isfinite(kFloats[i]) && std::abs(kFloats[i]) > 3e38
                                                        ? std::copysign(INFINITY, kFloats[i])
                                                        : kFloats[i]);
            std::memcpy(bytes, &narrow, 4);
        } else {
            std::memcpy(bytes, &kIntegers[i], 8);
        }
        out.insert(out.end(), bytes, bytes + fd::GetDataSize(type));
    }
    return out;
}

TEST(FlexDataTransformArray, EveryPairInBothByteOrders) {
    for (const fd::FlexType src : kNumericKinds) {
        const Bytes host = Samples(src);
        const unsigned int srcSize = fd::GetDataSize(src);
        for (const fd::FlexType dst : kNumericKinds) {
            const unsigned int dstSize = fd::GetDataSize(dst);
            Bytes expected;
            for (unsigned int i = 0; i < 8; ++i) {
                const Bytes one = Expected(src, host.data() + i * srcSize, dst);
                expected.insert(expected.end(), one.begin(), one.end());
            }
            for (const fd::TAEndian in : {fd::kLittleEndian, fd::kBigEndian}) {
                for (const fd::TAEndian out : {fd::kLittleEndian, fd::kBigEndian}) {
                    const Bytes source = in == fd::kHostEndian ? host : Reversed(host, srcSize);
                    Bytes result(8 * dstSize, 0xAA);
                    FlexData::TransformArray(8, src, in, source.data(), dst, out, result.data());
                    EXPECT_EQ(result, out == fd::kHostEndian ? expected : Reversed(expected, dstSize))
                        << std::hex << src << " -> " << dst << " orders " << int(in) << int(out);
                }
            }
        }
    }
}

TEST(FlexDataTransformArray, DocumentedEdges) {
    const double kDoubles[] = {std::nan(""), 1e300, -1e300, -2.9, 2.9, 9223372036854775808.0};
    std::int16_t i16[6];
    FlexData::TransformArray(6, fd::kFloat64, fd::kHostEndian, kDoubles, fd::kInt16, fd::kHostEndian, i16);
    EXPECT_EQ(Bytes(reinterpret_cast<unsigned char*>(i16), reinterpret_cast<unsigned char*>(i16 + 6)),
              (Bytes{0, 0, 0xFF, 0x7F, 0x00, 0x80, 0xFE, 0xFF, 2, 0, 0xFF, 0x7F}));
    std::uint64_t u64[6];
    FlexData::TransformArray(6, fd::kFloat64, fd::kHostEndian, kDoubles, fd::kUInt64, fd::kHostEndian, u64);
    EXPECT_EQ(u64[0], 0u);
    EXPECT_EQ(u64[1], ~0ull);
    EXPECT_EQ(u64[2], 0u);
    EXPECT_EQ(u64[5], 1ull << 63);
    const std::int32_t wide[2] = {300, -1};
    std::int8_t i8[2];
    FlexData::TransformArray(2, fd::kInt32, fd::kHostEndian, wide, fd::kInt8, fd::kHostEndian, i8);
    EXPECT_EQ(i8[0], 44);
    EXPECT_EQ(i8[1], -1);
    const Thrown refused = ThrownBy<exception::InvalidArgument>(
        [&] { FlexData::TransformArray(1, fd::kTime, fd::kHostEndian, wide, fd::kInt8, fd::kHostEndian, i8); });
    EXPECT_TRUE(refused.thrown);
}

TEST(FlexDataScalarArray, WireFormAndRoundTrip) {
    const std::int16_t values[6] = {1, -2, 3, -4, 5, 0x0102};
    const FlexData table(fd::kInt16, Dims{2, 3}, values, values + 6);
    EXPECT_EQ(Packet(table), (Bytes{34, 0, 0, 0, 0x00, 0x08, 2, 0, 6, 0, 0, 0, 0x00, 0x02, 2, 0, 0, 0, 3, 0, 0, 0,
                                    1, 0, 0xFE, 0xFF, 3, 0, 0xFC, 0xFF, 5, 0, 2, 1}));
    double doubles[6];
    table.getScalarArray(fd::kFloat64, doubles, doubles + 6);
    EXPECT_EQ(doubles[1], -2.0);
    EXPECT_EQ(doubles[5], 258.0);

    // Big-endian sources are swapped on the way in; targets on the way out.
    const unsigned char bigEndian[4] = {0x01, 0x02, 0xFF, 0xFE};
    const FlexData swapped(fd::kInt16, Dims{2}, bigEndian, bigEndian + 4, fd::kBigEndian);
    std::int16_t host[2];
    swapped.getScalarArray(fd::kInt16, host, host + 2);
    EXPECT_EQ(host[0], 0x0102);
    EXPECT_EQ(host[1], -2);
    unsigned char back[4];
    swapped.getScalarArray(fd::kInt16, back, back + 4, fd::kBigEndian);
    EXPECT_EQ(Bytes(back, back + 4), Bytes(bigEndian, bigEndian + 4));

    // Booleans: any non-zero byte is true, stored as 0xFF and read as 1.
    const unsigned char flags[3] = {0, 1, 5};
    const FlexData booleans(fd::kBoolean, Dims{3}, flags, flags + 3);
    EXPECT_EQ(Packet(booleans), (Bytes{22, 0, 0, 0, 0x00, 0x08, 1, 0, 6, 0, 0, 0, 0x02, 0x01, 3, 0, 0, 0, 0, 0xFF, 0xFF, 0}));
    bool read[3];
    booleans.getScalarArray(fd::kBoolean, read, read + 3);
    EXPECT_EQ(Bytes(reinterpret_cast<unsigned char*>(read), reinterpret_cast<unsigned char*>(read + 3)), (Bytes{0, 1, 1}));
}

TEST(FlexDataScalarArray, NoDimensionsIsOneDimensionOfSizeZero) {
    const FlexData empty(fd::kFloat64, Dims{}, nullptr, nullptr);
    EXPECT_EQ(Packet(empty), (Bytes{18, 0, 0, 0, 0x00, 0x08, 1, 0, 6, 0, 0, 0, 0x02, 0x04, 0, 0, 0, 0}));
    EXPECT_EQ(empty.getDims(), 1u);
    EXPECT_EQ(empty.getNumElts(), 0u);
    Vector<FlexData> elements;
    empty.getArrayElements(elements);
    EXPECT_TRUE(elements.empty());
}

TEST(FlexDataScalarArray, RefusalsLeaveOutputAlone) {
    const double values[3] = {1, 2, 3};
    const FlexData array(fd::kFloat64, Dims{3}, values, values + 3);
    float out[3] = {7, 7, 7};
    const Thrown shortOut = ThrownBy<exception::BufferOverflow>([&] { array.getScalarArray(fd::kFloat32, out, out + 2); });
    EXPECT_TRUE(shortOut.thrown);
    EXPECT_EQ(out[0], 7.0f);
    bool flags[3];
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { array.getScalarArray(fd::kBoolean, flags, flags + 3); }).thrown);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { FlexData(1.0).getScalarArray(fd::kFloat64, out, out + 3); }).thrown);
    // The dimensions must account for every element given.
    FlexData target(5);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { target.setScalarArray(fd::kFloat64, Dims{2}, values, values + 3); }).thrown);
    EXPECT_EQ(target.getI32(), 5);
    EXPECT_TRUE(ThrownBy<exception::OutOfRange>([&] { target.setScalarArray(fd::kFloat64, Dims{0x10000, 0x10000}, values, values); }).thrown);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { target.setScalarArray(fd::kTime, Dims{0}, values, values); }).thrown);
}

TEST(FlexDataShape, QueriesByKindAndTheirLines) {
    const std::int16_t values[24] = {};
    const FlexData cube(fd::kInt16, Dims{2, 3, 4}, values, values + 24);
    EXPECT_EQ(cube.getDims(), 3u);
    EXPECT_EQ(cube.getDimSize(0), 2u);
    EXPECT_EQ(cube.getDimSize(2), 4u);
    EXPECT_EQ(cube.getDimSize(3), 0u);
    EXPECT_EQ(cube.getNumElts(), 24u);
    EXPECT_EQ(cube.getArrayElementType(), fd::kInt16);
    EXPECT_EQ(cube.getDataBuffer().Len(), 12u + 48u);

    // An array of no dimensions holds one element, yet counts none.
    const FlexData scalarArray = FromBytes({14, 0, 0, 0, 0x00, 0x08, 0, 0, 6, 0, 0, 0, 0x00, 0x03});
    EXPECT_EQ(scalarArray.getDims(), 0u);
    EXPECT_EQ(scalarArray.getNumElts(), 0u);

    const struct {
        unsigned int line;
        void (*query)(const FlexData&);
    } kRows[] = {
        {1601, [](const FlexData& value) { (void)value.getDims(); }},
        {1582, [](const FlexData& value) { (void)value.getDimSize(0); }},
        {1601, [](const FlexData& value) { (void)value.getNumElts(); }},
        {1610, [](const FlexData& value) { (void)value.getArrayElementType(); }},
    };
    for (const auto& row : kRows) {
        for (const FlexData& value : {FlexData(1.0), FlexData()}) {
            const Thrown thrown = ThrownBy<exception::InvalidArgument>([&] { row.query(value); });
            EXPECT_EQ(thrown.line, row.line);
            EXPECT_STREQ(thrown.file, "zo/kel/FlexData");
        }
    }
}

TEST(FlexDataArray, ValuesStringsAndTimes) {
    const Vector<NarrowString> texts{NarrowString("abc"), NarrowString("de")};
    const FlexData narrow(Dims{2}, texts);
    EXPECT_EQ(Packet(narrow), (Bytes{32, 0, 0, 0, 0x00, 0x08, 1, 0, 6, 0, 0, 0, 0x00, 0x09, 2, 0, 0, 0,
                                     3, 0, 0, 0, 'a', 'b', 'c', 0, 2, 0, 0, 0, 'd', 'e'}));
    Vector<NarrowString> readNarrow;
    narrow.getAStringArray(readNarrow);
    EXPECT_TRUE(readNarrow == texts);
    Vector<WideString> readWide;
    narrow.getStringArray(readWide);
    EXPECT_TRUE(readWide[1].exactCompare(WideString(L"de")) == 0);

    const Vector<WideString> wide{WideString(L"\u00E9t\u00E9"), WideString()};
    const FlexData utf16(Dims{1, 2}, wide);
    EXPECT_EQ(utf16.getArrayElementType(), fd::kUtf16String);
    utf16.getStringArray(readWide);
    EXPECT_TRUE(readWide == wide);

    const Vector<AbsTime> times{AbsTime::fromWords(1, 2), AbsTime::fromWords(-3, 4)};
    const FlexData clock(Dims{2}, times);
    EXPECT_EQ(clock.getDataBuffer().Len(), 4u + 32u);
    Vector<AbsTime> readTimes;
    clock.getTimeArray(readTimes);
    EXPECT_TRUE(readTimes == times);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { narrow.getTimeArray(readTimes); }).thrown);

    // Values of one metadata: each element comes back with its own data.
    FlexData labelled(1.5);
    labelled.setAttribute("u", FlexData(true));
    FlexData other(2.5);
    other.setAttribute("u", FlexData(true));
    const FlexData pair(Dims{2}, Vector<FlexData>{labelled, other});
    Vector<FlexData> elements;
    pair.getArrayElements(elements);
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_TRUE(elements[0] == labelled);
    EXPECT_TRUE(elements[1] == other);
    EXPECT_EQ(pair.getArrayElementType(), fd::kFloat64);

    FlexData target(3);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { target.setArray(Dims{2}, Vector<FlexData>{labelled, FlexData(2.5)}); }).thrown);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { target.setArray(Dims{1}, Vector<FlexData>{FlexData()}); }).thrown);
    // An array may hold itself: the elements are read before the packet changes.
    target.setArray(Dims{1}, Vector<FlexData>{target});
    target.getArrayElements(elements);
    EXPECT_EQ(elements[0].getI32(), 3);

    const Thrown notArray = ThrownBy<exception::InvalidArgument>([&] { FlexData(1).getArrayElements(elements); });
    EXPECT_EQ(notArray.what, "Invalid argument(s): Not an array FlexData");
}

TEST(FlexDataArray, HostileCountsAreRefusedBeforeAllocating) {
    // A void array that claims 2^32 - 1 elements takes no bytes at all.
    const FlexData voids = FromBytes({22, 0, 0, 0, 0x00, 0x08, 1, 0, 6, 0, 0, 0, 0x01, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0});
    Vector<FlexData> elements;
    EXPECT_TRUE(ThrownBy<exception::OutOfRange>([&] { voids.getArrayElements(elements); }).thrown);
    EXPECT_EQ(voids.getNumElts(), 0xFFFFFFFFu);
    // Strings that a count promises but the packet does not hold.
    const FlexData strings = FromBytes({22, 0, 0, 0, 0x00, 0x08, 1, 0, 6, 0, 0, 0, 0x00, 0x09, 0, 0, 0, 0x40, 1, 0, 0, 0});
    EXPECT_TRUE(ThrownBy<exception::SyntaxError>([&] { strings.getArrayElements(elements); }).thrown);
    // An array of clusters whose inner array descriptor claims bytes past the
    // cluster's descriptor: in place the walk would borrow the next bytes, so
    // the elements cannot be cut out.
    const FlexData overshoot = FromBytes({54, 0, 0, 0, 0x00, 0x08, 1, 0, 22, 0, 0, 0,  // array, descriptor to 30
                                          0x01, 0x08, 1, 0, 14, 0, 0, 0,                // cluster of 1, to 30
                                          0x00, 0x08, 1, 0, 28, 0, 0, 0, 0x02, 0x04,    // inner array: to 52
                                          1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(fd::GetDataSize(overshoot.getMetaDataBuffer().Data(), overshoot.getDataBuffer().Data(), overshoot.end()), 24u);
    EXPECT_TRUE(ThrownBy<exception::SyntaxError>([&] { overshoot.getArrayElements(elements); }).thrown);
    const FlexData doubles = FromBytes({18, 0, 0, 0, 0x00, 0x08, 1, 0, 6, 0, 0, 0, 0x02, 0x04, 0, 0, 0, 0x40});
    double out[1];
    EXPECT_TRUE(ThrownBy<exception::OutOfRange>([&] { doubles.getScalarArray(fd::kFloat64, out, out + 1); }).thrown);
}

}  // namespace
