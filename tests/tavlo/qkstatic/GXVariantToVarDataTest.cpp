#include <gtest/gtest.h>

#include <algorithm>

#include <string>

#include "tavlo/GXVariantTestSupport.h"
#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkstatic/vardata.h"

namespace {

using namespace gxvariant_test;
using vardata_test::Logical;
using vardata_test::Sequence;
using vek::ClustersToDictionaries;
using vek::NoDictionaries;
using vek::VariantsToDictionaries;

constexpr const char* kReader = "tavlo/qkstatic/GXVariantToVarData";


VarData Dictionary(std::initializer_list<std::pair<VarData, VarData>> entries) {
    VarData dictionary = VarData::dict();
    for (const auto& [key, value] : entries) dictionary.setValue(key, value);
    return dictionary;
}

// The embedded variant of `body` (descriptor words big-endian, then data,
// then the attribute bytes), with its length word in front.
Bytes Embedded(const Bytes& body) {
    const auto length = static_cast<std::uint32_t>(body.size() + 4);
    // Sized once and filled: GCC 12 at -O2 warns (-Warray-bounds) when an
    // insert grows a vector of four bytes.
    Bytes all(body.size() + 4);
    for (int i = 0; i < 4; ++i) all[i] = static_cast<unsigned char>(length >> (24 - 8 * i));
    std::copy(body.begin(), body.end(), all.begin() + 4);
    return all;
}

Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST(GXVariantToVarData, EveryTypeCodeReadsAsItsValue) {
    struct Row {
        const char* what;
        Words descriptor;
        Bytes data;
        vek::DictionaryConversion conversion;
        VarData expected;
    };
    const Bytes two = {0x40, 0, 0, 0, 0, 0, 0, 0};
    const Row rows[] = {
        {"void", {4, 0x00}, {}, NoDictionaries, VarData()},
        {"i8", {4, 0x01}, {0xFF}, NoDictionaries, VarData::num(-1, 1)},
        {"i16", {4, 0x02}, {0xFF, 0xFE}, NoDictionaries, VarData::num(-2, 2)},
        {"i32", {4, 0x03}, {0xFF, 0xFF, 0xFF, 0xFE}, NoDictionaries, VarData::num(-2, 3)},
        {"u8", {4, 0x05}, {0xFF}, NoDictionaries, VarData::num(255, 4)},
        {"u16", {4, 0x06}, {0xFF, 0xFE}, NoDictionaries, VarData::num(65534, 5)},
        {"u32", {4, 0x07}, {0xFF, 0xFF, 0xFF, 0xFE}, NoDictionaries, VarData::num(4294967294.0, 6)},
        {"single", {4, 0x09}, {0x3F, 0xC0, 0, 0}, NoDictionaries, VarData::num(1.5, 7)},
        {"double", {4, 0x0A}, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0}, NoDictionaries, VarData::num(1.0, 0)},
        {"boolean", {4, 0x21}, {0x02}, NoDictionaries, Logical(true)},
        {"string", {8, 0x30, 0xFFFF, 0xFFFF}, {0, 0, 0, 2, 'A', 'B'}, NoDictionaries, VarData("AB")},
        {"empty string", {8, 0x30, 0xFFFF, 0xFFFF}, {0, 0, 0, 0}, NoDictionaries, VarData("")},
        // 1970-01-01 00:00:00.5 UTC
        {"timestamp", {4, 0x54}, {0, 0, 0, 0, 0x7C, 0x25, 0xB0, 0x80, 0x80, 0, 0, 0, 0, 0, 0, 0}, NoDictionaries,
         VarData(zo::kel::AbsTime::fromWords(2082844800, 0x8000000000000000ull))},
        {"array", {14, 0x40, 1, 0xFFFF, 0xFFFF, 4, 0x02}, {0, 0, 0, 2, 0, 1, 0xFF, 0xFF}, NoDictionaries,
         Sequence({VarData::num(1, 2), VarData::num(-1, 2)})},
        {"array of none", {14, 0x40, 1, 0xFFFF, 0xFFFF, 4, 0x04}, {0, 0, 0, 0}, NoDictionaries, VarData::sequence()},
        // Two elements named a: the later one wins.
        {"cluster", {18, 0x50, 2, 6, 0x4021, 0x0161, 6, 0x4021, 0x0161}, {1, 0}, ClustersToDictionaries,
         Dictionary({{"a", Logical(false)}})},
        {"variant", {4, 0x53},
         Embedded(Join({{0, 4, 0, 0}, {0, 0, 0, 1}, {0, 0, 0, 1, 'k'},
                        Embedded(Join({{0, 4, 0, 0x0A}, two, {0, 0, 0, 0}}))})),
         VariantsToDictionaries, Dictionary({{"k", VarData::num(2.0)}})},
        {"variant of a void without attributes", {4, 0x53}, Embedded({0, 4, 0, 0, 0, 0, 0, 0}),
         VariantsToDictionaries, VarData::dict()},
    };
    for (const Row& row : rows) {
        const VarData value = Read(row.descriptor, row.data, row.conversion);
        EXPECT_EQ(value.GetType(), row.expected.GetType()) << row.what;
        EXPECT_EQ(value.Compare(row.expected), 0) << row.what;
    }
}

TEST(GXVariantToVarData, NamesWideStringsAndCursors) {
    zo::kel::NarrowString name("untouched");
    const Words named = {8, 0x4021, 0x026F, 0x6B00};
    const Bytes on = {1};
    VarData value = vek::GXVariantToVarData(named.data(), named.data() + 4, on.data(), on.data() + 1, NoDictionaries,
                                            name, false);
    EXPECT_EQ(name.exactCompare("ok"), 0);
    EXPECT_TRUE(static_cast<bool>(value));

    const Words bare = {4, 0x21};
    vek::GXVariantToVarData(bare.data(), bare.data() + 2, on.data(), on.data() + 1, NoDictionaries, name, false);
    EXPECT_EQ(name.exactCompare("ok"), 0);  // no name: left alone

    const Words oddName = {8, 0x4000, 0x0361, 0x6263};
    vek::GXVariantToVarData(oddName.data(), oddName.data() + 4, on.data(), on.data(), NoDictionaries, name, false);
    EXPECT_EQ(name.exactCompare("abc"), 0);

    const VarData wide = Read({8, 0x30, 0xFFFF, 0xFFFF}, {0, 0, 0, 2, 'A', 'B'}, NoDictionaries, true);
    EXPECT_EQ(wide.getString().exactCompare(L"AB"), 0);
    const VarData keys = Read({12, 0x50, 1, 6, 0x4021, 0x0161}, {1}, ClustersToDictionaries, true);
    EXPECT_TRUE(keys.hasKey(VarData(L"a")));
    EXPECT_FALSE(keys.hasKey(VarData("a")));
}

TEST(GXVariantToVarData, FailuresCarryTheirLine) {
    struct Row {
        const char* what;
        Words descriptor;
        Bytes data;
        vek::DictionaryConversion conversion;
        Site expected;
    };
    const Row rows[] = {
        {"no descriptor", {}, {}, NoDictionaries, SyntaxAt(41)},
        {"short data", {4, 0x0A}, {1, 2, 3}, NoDictionaries, SyntaxAt(41)},
        {"string past the data", {8, 0x30, 0xFFFF, 0xFFFF}, {0, 0, 0, 3, 'A'}, NoDictionaries, SyntaxAt(41)},
        {"record length 1 byte", {1, 0x0A}, {}, NoDictionaries, SyntaxAt(141)},
        {"string dimension", {8, 0x30, 0xFFFF, 0}, {}, NoDictionaries, UnableAt(kReader, 320)},
        {"two dimensions", {14, 0x40, 2, 0xFFFF, 0xFFFF, 4, 0}, {}, NoDictionaries, UnableAt(kReader, 340)},
        {"array dimension", {14, 0x40, 1, 0xFFFF, 5, 4, 0}, {}, NoDictionaries, UnableAt(kReader, 349)},
        {"unnamed element", {10, 0x50, 1, 4, 0x21}, {1}, ClustersToDictionaries, UnableAt(kReader, 393)},
        {"cluster without 1", {6, 0x50, 0}, {}, NoDictionaries, UnableAt(kReader, 407)},
        {"cluster with 2", {6, 0x50, 0}, {}, VariantsToDictionaries, UnableAt(kReader, 407)},
        {"variant without 2", {4, 0x53}, {}, ClustersToDictionaries, UnableAt(kReader, 445)},
        {"variant of a number", {4, 0x53}, Embedded({0, 4, 0, 0x05, 7, 0, 0, 0, 0}), VariantsToDictionaries,
         UnableAt(kReader, 437)},
        {"number with attributes", {4, 0x53},
         Embedded(Join({{0, 4, 0, 0x05, 7, 0, 0, 0, 1, 0, 0, 0, 1, 'k'}, Embedded({0, 4, 0, 0, 0, 0, 0, 0})})),
         VariantsToDictionaries, UnableAt(kReader, 242)},
        {"variant length below 4", {4, 0x53}, {0, 0, 0, 3, 0, 4, 0, 0, 0, 0, 0, 0}, VariantsToDictionaries,
         SyntaxAt(41)},
        {"variant length past the data", {4, 0x53}, {0, 0, 0, 99, 0, 4, 0, 0, 0, 0, 0, 0}, VariantsToDictionaries,
         SyntaxAt(41)},
        {"64-bit integer", {4, 0x04}, Bytes(8), NoDictionaries, UnableAt(kReader, 449)},
        {"unsigned 64-bit integer", {4, 0x08}, Bytes(8), NoDictionaries, UnableAt(kReader, 449)},
        {"record end past the descriptor", {6, 0x0A}, Bytes(8), NoDictionaries, SyntaxAt(477)},
        {"name past the record end", {2, 0x4021, 0x0161}, {1}, NoDictionaries, SyntaxAt(480)},
        {"count the data cannot hold", {14, 0x40, 1, 0xFFFF, 0xFFFF, 4, 0x05}, {0xFF, 0xFF, 0xFF, 0xFF, 1, 2},
         NoDictionaries, SyntaxAt(41)},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(FailureOf([&] { Read(row.descriptor, row.data, row.conversion); }), row.expected) << row.what;
    }
}

TEST(GXVariantToVarData, FailureLeavesTheNameAlone) {
    zo::kel::NarrowString name("kept");
    const Words descriptor = {2, 0x4021, 0x0161};
    const Bytes on = {1};
    EXPECT_THROW(vek::GXVariantToVarData(descriptor.data(), descriptor.data() + 3, on.data(), on.data() + 1,
                                         NoDictionaries, name, false),
                 zo::kel::exception::SyntaxError);
    EXPECT_EQ(name.exactCompare("kept"), 0);
}

// Elements that take no data bytes: voids are never stored, other values
// are repeated only as far as the input pays for them.
TEST(GXVariantToVarData, ArraysOfDataLessElementsAreBoundedByTheInput) {
    const Words voids = {14, 0x40, 1, 0xFFFF, 0xFFFF, 4, 0x00};
    const Words emptyClusters = {16, 0x40, 1, 0xFFFF, 0xFFFF, 6, 0x50, 0};
    const Bytes huge = {0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(Read(voids, huge, NoDictionaries).GetLength(), 0u);
    EXPECT_EQ(FailureOf([&] { Read(emptyClusters, huge, ClustersToDictionaries); }), SyntaxAt(41));
    const VarData three = Read(emptyClusters, {0, 0, 0, 3}, ClustersToDictionaries);
    ASSERT_EQ(three.GetLength(), 3u);
    EXPECT_EQ(three.GetElement(2).GetType(), vardata_type::Word(VarDataType::Dictionary));
}

// Each level: a cluster named a holding the level below; the bottom is a void named a.
Words NestedClusters(unsigned int levels) {
    Words record = {6, 0x4000, 0x0161};
    for (unsigned int i = 0; i < levels; ++i) {
        Words outer = {0, 0x4050, 1};
        outer.insert(outer.end(), record.begin(), record.end());
        outer.push_back(0x0161);
        outer[0] = static_cast<unsigned short>(2 * outer.size());
        record = std::move(outer);
    }
    return record;
}

TEST(GXVariantToVarData, NestingStopsAtTheDocumentedDepth) {
    EXPECT_EQ(FailureOf([&] { Read(NestedClusters(vek::kMaxGXVariantDepth), {}, ClustersToDictionaries); }), Site{});
    EXPECT_EQ(FailureOf([&] { Read(NestedClusters(vek::kMaxGXVariantDepth + 1), {}, ClustersToDictionaries); }),
              SyntaxAt(41));

    // Embedded variants nest through the data, with no 16-bit length to stop them.
    Bytes variant = Embedded({0, 4, 0, 0x0A, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    for (unsigned int i = 0; i < 2 * vek::kMaxGXVariantDepth; ++i) {
        variant = Embedded(Join({{0, 4, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 'k'}, variant}));
    }
    EXPECT_EQ(FailureOf([&] { Read({4, 0x53}, variant, VariantsToDictionaries); }), SyntaxAt(41));
}

}  // namespace
