#include "zo/kel/fd.h"

#include <gtest/gtest.h>

#include <cstring>

#include "zo/kel/FlexData.h"
#include "zo/kel/KelTestSupport.h"

namespace {

using namespace kel_test;
using namespace zo::kel::fd;
using zo::kel::exception::BufferOverflow;
using zo::kel::exception::OutOfRange;
using zo::kel::exception::SyntaxError;

const unsigned char* End(const Bytes& bytes) { return bytes.data() + bytes.size(); }

// A malformed walk fails with the walkers' own site and text.
template <typename Run>
void ExpectMalformed(Run&& run) {
    const Thrown thrown = ThrownBy<SyntaxError>(run);
    EXPECT_STREQ(thrown.file, "zo/kel/fd");
    EXPECT_EQ(thrown.what.rfind("SyntaxError: ", 0), 0u) << thrown.what;
}

// The waveform descriptor: its first 28 bytes, a 64-bit float sample type, then a status and a nested packet.
const Bytes kWaveformHead = {0x01, 0x08, 0x05, 0x00, 0x06, 0x00, 0x00, 0x00, 0x04, 0x05, 0x06, 0x00, 0x00, 0x00,
                             0x02, 0x04, 0x0E, 0x00, 0x00, 0x00, 0x00, 0x08, 0x01, 0x00, 0x06, 0x00, 0x00, 0x00,
                             0x02, 0x04, 0x06, 0x00, 0x00, 0x00, 0x00, 0x03, 0x06, 0x00, 0x00, 0x00, 0x02, 0x09};

TEST(FlexType, SizesByClassAndFixedPointBytes) {
    const struct {
        FlexType type;
        unsigned int size;
    } kRows[] = {{kVoid, 0},   {kInt8, 1},    {kBoolean, 1},    {kBoolean16, 2},  {kFloat32, 4},       {kEmpty, 4},
                 {kUInt64, 8}, {kTime, 16},   {FlexType(0x0600), 32}, {kArray, 0}, {kAnsiString, 0},
                 {kUtf16String, 0}};
    for (const auto& row : kRows) EXPECT_EQ(GetDataSize(row.type), row.size) << std::hex << row.type;
    const unsigned int kBytes[][2] = {{0, 1}, {8, 1}, {9, 2}, {16, 2}, {17, 4}, {33, 8}, {64, 8}, {65, 16}, {129, 32}};
    for (const auto& row : kBytes) EXPECT_EQ(FixedPointValueBytes(row[0]), row[1]) << row[0];
    EXPECT_TRUE(IsFixedPointCode(kFixedPointWithRange));
    EXPECT_FALSE(IsFixedPointCode(kCluster));
}

TEST(fdGrammar, ElementSizesByTypeWord) {
    EXPECT_EQ(GetMDEltSize(kWaveformHead.data(), End(kWaveformHead)), 42u);
    ExpectMalformed([&] { GetMDEltSize(kWaveformHead.data(), End(kWaveformHead) - 1); });
    EXPECT_EQ(GetNumClustElts(kWaveformHead.data(), End(kWaveformHead)), 5u);
    const unsigned char* array = GetClustElt(kWaveformHead.data(), 2, End(kWaveformHead));
    EXPECT_EQ(array - kWaveformHead.data(), 16);
    EXPECT_EQ(GetMDEltSize(array + 4, End(kWaveformHead)), 10u);  // its descriptor is 4 + 10 = 0x0E
    EXPECT_EQ(GetVal<std::uint16_t>(GetArrayElementType(array + 4, End(kWaveformHead)), End(kWaveformHead)), kFloat64);

    const Bytes prefixed = {0x00, 0x40, 0x06, 0x00, 0x00, 0x00, 0xAA, 0xBB, 0x00, 0x80, 0x02, 0x04};
    EXPECT_EQ(GetMDEltSize(prefixed.data(), End(prefixed)), 8u);
    std::uint16_t word = 0;
    EXPECT_EQ(GetNextElt(prefixed.data(), End(prefixed), word), prefixed.data() + 8);
    EXPECT_EQ(word, 0x8000);
    EXPECT_EQ(GetTypeFromMD(prefixed.data(), End(prefixed)), prefixed.data() + 10);
    const Bytes fixedPoint = {0x02, 0x08, 0xFF, 0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00};
    EXPECT_EQ(GetMDEltSize(fixedPoint.data(), End(fixedPoint)), 10u);
    // Three range records of word lengths 8, 12 and 40: 8 + 2, 8 + 2 and 8 + 8 bytes.
    Bytes ranged = {0x03, 0x08, 0xFF, 0x00, 0x28, 0x00, 0x04, 0x00, 0x00, 0x00};
    for (const unsigned char length : {8, 12, 40}) {
        const Bytes record = {0, 0, length, 0, 0, 0, 0, 0};
        ranged.insert(ranged.end(), record.begin(), record.end());
        ranged.resize(ranged.size() + (length > 16 ? 8 : 2));
    }
    EXPECT_EQ(GetMDEltSize(ranged.data(), End(ranged)), 10u + 10 + 10 + 16);
    ExpectMalformed([&] { GetMDEltSize(ranged.data(), End(ranged) - 1); });
}

TEST(fdGrammar, WalksNeverStandStillOrLeaveTheBytes) {
    const Bytes zeroSized = {0x00, 0x20, 0x02, 0x04};
    EXPECT_EQ(GetMDEltSize(zeroSized.data(), End(zeroSized)), 0u);
    ExpectMalformed([&] { GetNextElt(zeroSized.data(), End(zeroSized)); });
    ExpectMalformed([&] { GetTypeFromMD(zeroSized.data(), End(zeroSized)); });
    for (const std::uint32_t length : {0u, 3u, 0xFFFFFFFEu, 0xFFFFFFFFu, 7u}) {
        Bytes element = {0x00, 0x40, 0, 0, 0, 0, 0x02, 0x04};
        std::memcpy(element.data() + 2, &length, 4);
        ExpectMalformed([&] { GetMDEltSize(element.data(), End(element)); });
    }
    const Bytes emptyDescriptor = {0x01, 0x08, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00};
    ExpectMalformed([&] { GetMDEltSize(emptyDescriptor.data(), End(emptyDescriptor)); });
    const Bytes shortArray = {0x00, 0x08, 0x01, 0x00, 0x06, 0x00};
    ExpectMalformed([&] { GetMDEltSize(shortArray.data(), End(shortArray)); });
    ExpectMalformed([&] { GetTypeFromPacket(shortArray.data(), shortArray.data() + 3); });
    ExpectMalformed([&] { GetNextFD(emptyDescriptor.data() + 4, End(emptyDescriptor)); });
    ExpectMalformed([&] { GetVal<std::uint32_t>(shortArray.data() + 3, End(shortArray)); });
    unsigned char out[3];
    EXPECT_THROW(SetVal(out, 1.0f, out + 3), BufferOverflow);
}

TEST(fdPacket, PrefixElementsDoNotChangeTypeOrData) {
    const Bytes plain = {0x0A, 0x00, 0x00, 0x00, 0x00, 0x03, 0x2A, 0x00, 0x00, 0x00};
    const Bytes prefixed = {0x12, 0x00, 0x00, 0x00, 0x00, 0x40, 0x06, 0x00, 0x00, 0x00,
                            0x01, 0x02, 0x00, 0x03, 0x2A, 0x00, 0x00, 0x00};
    for (const Bytes* packet : {&plain, &prefixed}) {
        const unsigned char* type = GetTypeFromPacket(packet->data(), End(*packet));
        const unsigned char* data = GetDataFromType(packet->data(), type, End(*packet));
        EXPECT_EQ(GetVal<std::uint16_t>(type, End(*packet)), kInt32);
        EXPECT_EQ(GetVal<std::int32_t>(data, End(*packet)), 42);
        EXPECT_EQ(End(*packet) - data, 4);
        EXPECT_EQ(GetMDSize(packet->data() + 4, type, End(*packet)), packet->size() - 8);
    }
}

TEST(fdDataSize, ArraysClustersStringsAndNestedPackets) {
    // Three dimensions 2, 3, 4 of 16-bit integers: 12 bytes of dimensions and 48 of elements.
    Bytes array = {0x00, 0x08, 0x03, 0x00, 0x06, 0x00, 0x00, 0x00, 0x00, 0x02, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0};
    EXPECT_EQ(GetDataSize(array.data(), nullptr, End(array)), 12u);
    EXPECT_EQ(GetDataSize(array.data(), array.data() + 10, End(array)), 60u);

    // A cluster of a narrow string "abc" and an I8: the string is 4 + 3, padded, then 1 padded.
    const Bytes cluster = {0x01, 0x08, 0x02, 0x00, 0x06, 0x00, 0x00, 0x00, 0x00, 0x09, 0x06, 0x00, 0x00, 0x00,
                           0x00, 0x01, 0x03, 0x00, 0x00, 0x00, 'a',  'b',  'c',  0x00, 0x7F, 0x00};
    EXPECT_EQ(GetDataSize(cluster.data(), cluster.data() + 16, End(cluster)), 10u);
    EXPECT_EQ(GetDataSize(cluster.data(), nullptr, End(cluster)), 6u);

    // Type word, then data, in one block as in a packet.
    const struct {
        Bytes packet;
        unsigned int size;
    } kRows[] = {
        {{0x05, 0x09, 0x00, 0x00, 0x02, 0x00, 0x01, 'x', 0x02, 'y', 'z'}, 9},  // short strings
        {{0x00, 0x0A, 0x03, 0x00, 0x00, 0x00}, 10},                           // UTF-16 units
        {{0x07, 0x0B, 0x03, 0x00, 0x00, 0x00}, 16},                           // 4-byte units
        {{0x01, 0x09, 0x03, 0x00, 0x00, 0x00}, 7},                            // narrow, second kind
        {{0x03, 0x09, 0x06, 0x00, 0x00, 0x00, 0x01, 0x00}, 6},                // nested packet
        {{0x00, 0x0C, 0x03, 0x00, 0x00, 0x00}, 0},                            // unknown code
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(GetDataSize(row.packet.data(), row.packet.data() + 2, End(row.packet)), row.size);
    }
    const Bytes nested = {0x02, 0x09, 0x03, 0x00, 0x00, 0x00};
    ExpectMalformed([&] { GetDataSize(nested.data(), nested.data() + 2, End(nested)); });
    EXPECT_EQ(GetDataSize(nested.data(), nullptr, End(nested)), 8u);
    const Bytes everything = {0x02, 0x09, 0xFF, 0xFF, 0xFF, 0xFF};  // no element may claim 0xFFFFFFFF bytes
    ExpectMalformed([&] { GetDataSize(everything.data(), everything.data() + 2, End(everything)); });
    const Bytes full = {0x00, 0x0A, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_THROW(GetDataSize(full.data(), full.data() + 2, End(full)), OutOfRange);
}

// Element descriptor of an array nested `depth` times around an I32.
Bytes NestedArrays(unsigned int depth) {
    Bytes md = {0x00, 0x03};
    for (unsigned int i = 0; i < depth; ++i) {
        const auto length = static_cast<std::uint32_t>(md.size() + 4);
        Bytes outer = {0x00, 0x08, 0x00, 0x00};  // no dimensions: one element
        outer.resize(8);
        std::memcpy(outer.data() + 4, &length, 4);
        outer.insert(outer.end(), md.begin(), md.end());
        md = outer;
    }
    return md;
}

TEST(fdDataSize, NestingIsBoundedAndEmptyElementsEndTheWalk) {
    Bytes ok = NestedArrays(kMaxNestingDepth);
    const std::size_t mdSize = ok.size();
    ok.resize(mdSize + 4);
    EXPECT_EQ(GetDataSize(ok.data(), ok.data() + mdSize, End(ok)), 4u);
    Bytes deep = NestedArrays(kMaxNestingDepth + 1);
    const std::size_t deepSize = deep.size();
    deep.resize(deepSize + 4);
    ExpectMalformed([&] { GetDataSize(deep.data(), deep.data() + deepSize, End(deep)); });

    // 0xFFFFFFFF clusters of one void take no bytes and no time.
    const Bytes voids = {0x00, 0x08, 0x01, 0x00, 0x0C, 0x00, 0x00, 0x00, 0x01, 0x08, 0x01, 0x00,
                         0x06, 0x00, 0x00, 0x00, 0x01, 0x00, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(GetDataSize(voids.data(), voids.data() + 18, End(voids)), 4u);
    // Strings that the count promises but the bytes do not hold.
    const Bytes strings = {0x00, 0x08, 0x01, 0x00, 0x06, 0x00, 0x00, 0x00, 0x00, 0x09, 0x09, 0x00,
                           0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 'a',  0x00, 0x01, 0x00, 0x00, 0x00};
    ExpectMalformed([&] { GetDataSize(strings.data(), strings.data() + 10, End(strings)); });
}

TEST(fdValues, TimeStringsAndDimensions) {
    const zo::kel::AbsTime time = zo::kel::AbsTime::fromWords(-2, 0x0123456789ABCDEFull);
    unsigned char packed[16];
    EXPECT_EQ(SetTime(packed, time, packed + 16), 16u);
    const Bytes expected = {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01,
                            0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(Bytes(packed, packed + 16), expected);
    EXPECT_EQ(GetTime(packed, packed + 16, kLittleEndian), time);
    EXPECT_EQ(GetTime(packed, packed + 16, kBigEndian), time);
    EXPECT_THROW(SetTime(packed, time, packed + 15), BufferOverflow);

    unsigned char out[16] = {};
    EXPECT_EQ(CopyStringToPacket(out, out + 16, "abc", 3), 8u);
    EXPECT_EQ(Bytes(out, out + 8), (Bytes{3, 0, 0, 0, 'a', 'b', 'c', 0}));
    EXPECT_EQ(CopyStringToPacket(out, out + 16, zo::kel::WideString(L"h\u00E9\U0001F600")), 12u);
    EXPECT_EQ(Bytes(out, out + 12), (Bytes{4, 0, 0, 0, 'h', 0, 0xE9, 0, 0x3D, 0xD8, 0x00, 0xDE}));
    EXPECT_THROW(CopyStringToPacket(out, out + 7, "abc", 3), BufferOverflow);
    EXPECT_THROW(StringSerializationSize(0xFFFFFFFCu), OutOfRange);
    EXPECT_EQ(StringSerializationSize(0xFFFFFFFAu), 0xFFFFFFFEu);

    std::uint16_t dims = 0;
    unsigned int dimBytes = 0, count = 0;
    ProcessArrayDimsVector({2, 3, 4}, dims, dimBytes, count);
    EXPECT_EQ(std::tuple(dims, dimBytes, count), std::tuple(std::uint16_t{3}, 12u, 24u));
    EXPECT_THROW(ProcessArrayDimsVector({0x10000, 0x10000}, dims, dimBytes, count), OutOfRange);
    EXPECT_THROW(ProcessArrayDimsVector(zo::kel::Vector<unsigned int>(0x10000), dims, dimBytes, count), OutOfRange);
    EXPECT_EQ(std::tuple(dims, dimBytes, count), std::tuple(std::uint16_t{3}, 12u, 24u));
    EXPECT_EQ(WriteArrayDimsVector({}, out, out + 4), 4u);
    EXPECT_EQ(WriteArrayDimsVector({7, 9}, out, out + 8), 8u);
    EXPECT_EQ(Bytes(out, out + 8), (Bytes{7, 0, 0, 0, 9, 0, 0, 0}));
}

TEST(fdValues, AdjustAndCopyCheckTheirRanges) {
    unsigned char block[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(AdjustPointer(block + 2, block, block + 8, 6), block + 8);
    EXPECT_EQ(AdjustPointer(block + 2, block, block + 8, -2), block);
    EXPECT_THROW(AdjustPointer(block + 2, block, block + 8, 7), OutOfRange);
    EXPECT_THROW(AdjustPointer(block + 2, block, block + 8, -3), OutOfRange);
    EXPECT_EQ(AdjustSize(10, -10), 0u);
    EXPECT_EQ(AdjustSize(0xFFFFFFF0u, 15), 0xFFFFFFFFu);
    EXPECT_THROW(AdjustSize(10, -11), OutOfRange);
    EXPECT_THROW(AdjustSize(0xFFFFFFF0u, 16), OutOfRange);

    MemCpy(block, block + 8, block + 4, block + 8, 4);
    EXPECT_EQ(Bytes(block, block + 4), (Bytes{5, 6, 7, 8}));
    EXPECT_THROW(MemCpy(block, block + 3, block + 4, block + 8, 4), BufferOverflow);
    ExpectMalformed([&] { MemCpy(block, block + 8, block + 5, block + 8, 4); });
}

TEST(fdCluster, CopyAndAdvanceTakesOneElementAtATime) {
    const Bytes cluster = {0x01, 0x08, 0x02, 0x00, 0x06, 0x00, 0x00, 0x00, 0x00, 0x09, 0x06, 0x00, 0x00, 0x00,
                           0x00, 0x01, 0x03, 0x00, 0x00, 0x00, 'a',  'b',  'c',  0x00, 0x7F, 0x00};
    const unsigned char* descriptor = cluster.data() + 4;
    const unsigned char* data = cluster.data() + 16;
    zo::kel::FlexData element;
    CopyAndAdvanceClusterElement(descriptor, data, End(cluster), element);
    EXPECT_EQ(element.getAString(), "abc");
    EXPECT_EQ(element.getPacketSize(), 14u);
    CopyAndAdvanceClusterElement(descriptor, data, End(cluster), element);
    EXPECT_EQ(element.getI8(), 0x7F);
    EXPECT_EQ(std::pair(descriptor, data), std::pair(cluster.data() + 16, End(cluster)));
    ExpectMalformed([&] { CopyAndAdvanceClusterElement(descriptor, data, End(cluster), element); });
}

}  // namespace
