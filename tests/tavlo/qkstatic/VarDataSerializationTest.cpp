#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"

namespace {

using namespace vardata_test;

VarData Read(const Bytes& bytes, bool compact) {
    unsigned int used = 0;
    VarData value = VarData::DeserializeWithoutSize(bytes.data(), static_cast<unsigned int>(bytes.size()), used, compact);
    EXPECT_EQ(used, bytes.size());
    return value;
}

// DeserializeWithoutSize over all of `bytes`; `used` must come back 0.
void ExpectUnreadable(const Bytes& bytes) {
    unsigned int used = 99;
    EXPECT_THROW(VarData::DeserializeWithoutSize(bytes.data(), static_cast<unsigned int>(bytes.size()), used, true),
                 DeserializationErrorException);
    EXPECT_EQ(used, 0u);
}

Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes DoubleBytes(double value) {
    Bytes bytes(8);
    std::memcpy(bytes.data(), &value, 8);
    return bytes;
}

struct Row {
    const char* name;
    VarData value;
    Bytes compact;
    Bytes full;  // none: the same as the compact form
    const Bytes& fullForm() const { return full.empty() ? compact : full; }
};

const unsigned short kHostBoolean[] = {4, 0x21};
const unsigned char kHostTrue[] = {1};

std::vector<Row> Rows() {
    VarData id, pointer, list = VarData::sequence(), dictionary = VarData::dict();
    id.setID64(0x1122334455667788ul);
    pointer.setVoidPointer(reinterpret_cast<void*>(0x1122334455667788ul));
    const unsigned char raw[] = {0xDE, 0xAD};
    list.SetElement(1, Num(2.0));
    dictionary.setValue("b", Num(2.0));
    dictionary.setValue("a", Logical(true));
    const Bytes id64 = {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11};
    return {
        {"Empty", VarData(), {1, 0, 0, 0}, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"Pulse", VarData::pulse(), {0x0B, 0, 0, 0}, {0x0B, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"Logical", Logical(true), {2, 0, 0, 0, 1}, {}},
        {"BitArray", VarData::num(1.5, 8), Concat({{3, 0, 8, 0}, DoubleBytes(1.5)}), {}},
        {"Time", Assigned(0x0102030405060708L), {4, 0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1}, {}},
        {"ID64", id, Concat({{0x11, 0, 0, 0}, id64}), {}},
        {"VoidPointer", pointer, {0x0D, 0, 0, 0, 0x88, 0x77, 0x66, 0x55}, Concat({{0x0D, 0, 0, 0}, id64})},
        {"Ansi", VarData("hi"), {5, 0x10, 0, 0, 2, 0, 0, 0, 'h', 'i'}, {}},
        {"EmptyAnsi", VarData(""), {5, 0x10, 0, 0, 0, 0, 0, 0}, {}},
        {"Unicode", VarData(L"A\U0001F600"), {6, 0x10, 0, 0, 2, 0, 0, 0, 'A', 0, 0x00, 0xF6}, {}},
        {"Raw", VarData(raw, 2), {9, 0x10, 0, 0, 2, 0, 0, 0, 0xDE, 0xAD}, {}},
        {"Cell", VarData(1, 2, Logical(true)), {0x0A, 0x10, 0, 0, 1, 0, 2, 0, 2, 0, 0, 0, 1}, {}},
        {"Sequence", list, Concat({{7, 0x30, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0}, DoubleBytes(2.0)}),
         Concat({{7, 0x30, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0}, DoubleBytes(2.0)})},
        // Entries go out in key order whatever the insertion order.
        {"Dictionary", dictionary,
         Concat({{0x0C, 0x10, 0, 0, 2, 0, 0, 0, 5, 0x10, 0, 0, 1, 0, 0, 0, 'a', 2, 0, 0, 0, 1, 5, 0x10, 0, 0, 1, 0, 0, 0,
                  'b', 3, 0, 0, 0},
                 DoubleBytes(2.0)}),
         {}},
        {"GXVariant", VarData::gxvar(kHostBoolean, 2, kHostTrue, 1),
         {0x12, 0x10, 0, 0, 2, 0, 0, 0, 4, 0, 0x21, 0, 1, 0, 0, 0, 1}, {}},
        {"AbsTime", VarData(zo::kel::AbsTime::fromWords(2, 0x8000000000000001ull)),
         {0x0F, 0x10, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0x80, 2, 0, 0, 0, 0, 0, 0, 0}, {}},
        {"FlexData", VarData(zo::kel::FlexData(static_cast<short>(5))), {0x13, 0x10, 0, 0, 8, 0, 0, 0, 0x00, 0x02, 5, 0}, {}},
        {"EmptyFlexData", VarData(zo::kel::FlexData()), {0x13, 0x10, 0, 0, 0, 0, 0, 0}, {}},
    };
}

TEST(VarDataSerialization, ExactBytesForEveryTag) {
    for (const Row& row : Rows()) {
        EXPECT_EQ(Serialized(row.value, true), row.compact) << row.name;
        EXPECT_EQ(Serialized(row.value, false), row.fullForm()) << row.name;
        EXPECT_EQ(row.value.valueSerializationSize(), row.compact.size()) << row.name;
        EXPECT_EQ(row.value.serializationSizeImpl(false), row.fullForm().size() + 4) << row.name;
        const Bytes prefix = {static_cast<unsigned char>(row.compact.size()), 0, 0, 0};
        EXPECT_EQ(WithSize(row.value), Concat({prefix, row.compact})) << row.name;
    }
}

TEST(VarDataSerialization, RoundTripsInBothForms) {
    for (const Row& row : Rows()) {
        for (const bool compact : {true, false}) {
            const Bytes& bytes = compact ? row.compact : row.fullForm();
            const VarData back = Read(bytes, compact);
            if (std::string(row.name) == "Unicode") {
                // Cut to 16 bits on the wire, widened unit by unit on the way back.
                EXPECT_EQ(back.getString().exactCompare(L"A\uF600"), 0);
                continue;
            }
            if (std::string(row.name) == "VoidPointer" && compact) {
                EXPECT_EQ(back.getVoidPointer(), reinterpret_cast<void*>(0x55667788ul));
                continue;
            }
            EXPECT_EQ(back.GetType(), row.value.GetType()) << row.name;
            EXPECT_EQ(back.Compare(row.value), 0) << row.name;
            EXPECT_EQ(Serialized(back, compact), bytes) << row.name;
        }
    }
}

TEST(VarDataSerialization, ReadingKeepsTheValueUntilTheRecordIsWhole) {
    VarData target = Num(7.0);
    const Bytes truncated = {7, 0x30, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1};
    const unsigned char* cursor = truncated.data();
    EXPECT_THROW(target.deserializeImpl(cursor, truncated.data() + truncated.size(), true),
                 zo::kel::exception::DeserializationError);
    EXPECT_EQ(static_cast<double>(target), 7.0);
    EXPECT_EQ(cursor, truncated.data());

    for (const Bytes& bad : {truncated, Bytes{0x05, 0, 0, 0}, Bytes{0x00, 0x20, 0, 0}, Bytes{0x12, 0, 0, 0},
                             Bytes{0x11, 0x10, 0, 0, 0}, Bytes{0x05, 0x10, 0, 0, 9, 0, 0, 0, 'x'},
                             Bytes{0x0C, 0x10, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}, Bytes{}}) {
        ExpectUnreadable(bad);
    }
}

// Written dictionaries are in key order, but a peer's bytes need not be: any
// order is read, and a repeated key (here "B" after "b") keeps its last value.
TEST(VarDataSerialization, DictionaryEntriesInAnyOrderAndRepeatedKeys) {
    Bytes header = Serialized(VarData::dict(), true);
    header[4] = 3;
    const Bytes bytes = Concat({header, Serialized(VarData("b"), true), Serialized(Num(1), true),
                                Serialized(VarData("a"), true), Serialized(Num(2), true),
                                Serialized(VarData("B"), true), Serialized(Num(3), true)});
    const VarData back = Read(bytes, true);
    ASSERT_EQ(back.GetLength(), 2u);
    EXPECT_EQ(static_cast<double>(back.getValue(VarData("a"))), 2.0);
    EXPECT_EQ(static_cast<double>(back.getValue(VarData("b"))), 3.0);
    EXPECT_EQ(back.begin().key().Compare(VarData("a")), 0);
}

TEST(VarDataSerialization, SkippedBlockTagReadsAsEmpty) {
    EXPECT_EQ(Read({0x0E, 0x10, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 1, 2, 3, 4, 5, 6}, true).GetType(), 0x0001u);
    // The product is taken in 32 bits: 0x10000 * 0x10000 * 3 wraps to 0, and
    // 0x10001 * 0x10001 * 1 to 0x20001 bytes, more than are present.
    EXPECT_EQ(Read({0x0E, 0x10, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 3, 0, 0, 0}, true).GetType(), 0x0001u);
    Bytes wrapsToTwo = {0x0E, 0x10, 0, 0, 1, 0, 0, 0x80, 2, 0, 0, 0, 1, 0, 0, 0, 0xAB, 0xCD};  // 0x80000001 * 2
    EXPECT_EQ(Read(wrapsToTwo, true).GetType(), 0x0001u);
    wrapsToTwo.pop_back();
    ExpectUnreadable(wrapsToTwo);
    ExpectUnreadable({0x0E, 0x10, 0, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 0, 0});
    ExpectUnreadable({0x0E, 0x10, 0, 0, 0xFF, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0});
}

TEST(VarDataSerialization, StreamSkipsABadRecordInTheMiddle) {
    const Bytes bad = {8, 0, 0, 0, 0x00, 0x20, 0, 0, 0xAA, 0xBB, 0xCC, 0xDD};  // unknown tag 0x2000
    const Bytes stream = Concat({WithSize(Num(1.0)), bad, WithSize(Logical(true))});
    const unsigned char* cursor = stream.data();
    const unsigned char* end = stream.data() + stream.size();
    std::vector<VarData> values;
    while (cursor < end) values.push_back(VarData::DeserializeWithSize(cursor, static_cast<unsigned int>(end - cursor)));
    ASSERT_EQ(values.size(), 3u);
    EXPECT_EQ(static_cast<double>(values[0]), 1.0);
    EXPECT_EQ(values[1].GetType(), 0x0001u);
    EXPECT_EQ(values[2].GetType(), 0x0002u);
    EXPECT_EQ(cursor, end);

    const Bytes stub = {1, 0};  // fewer than 4 bytes: Empty, cursor stays
    const unsigned char* at = stub.data();
    EXPECT_EQ(VarData::DeserializeWithSize(at, 2).GetType(), 0x0001u);
    EXPECT_EQ(at, stub.data());
}

TEST(VarDataSerialization, NestingIsBoundedAgainstHostileDepth) {
    auto nested = [](unsigned int depth) {
        Bytes bytes;
        for (unsigned int i = 0; i < depth; ++i) bytes.insert(bytes.end(), {7, 0x30, 0, 0, 1, 0, 0, 0});
        bytes.insert(bytes.end(), {2, 0, 0, 0, 1});
        return bytes;
    };
    const Bytes allowed = nested(VarData::kMaxNestingDepth);
    EXPECT_EQ(Serialized(Read(allowed, true), true), allowed);
    ExpectUnreadable(nested(1000000));
}

TEST(VarDataSerialization, WideAndDeepValuesRoundTrip) {
    VarData wide = VarData::sequence();
    for (unsigned int i = 0; i < 10000; ++i) wide.SetElement(i, Num(i));
    VarData record = VarData::dict();
    record.setValue("samples", wide);
    record.setValue("when", VarData(zo::kel::AbsTime::fromWords(3600, 0)));
    record.setValue(L"cell", VarData(3, 4, VarData("x")));
    VarData deep = record;
    for (int i = 0; i < 100; ++i) {
        VarData level = VarData::sequence();
        level.SetElement(0, deep);
        deep = level;
    }
    const Bytes bytes = WithSize(deep);
    const unsigned char* cursor = bytes.data();
    const VarData back = VarData::DeserializeWithSize(cursor, static_cast<unsigned int>(bytes.size()));
    EXPECT_EQ(cursor, bytes.data() + bytes.size());
    EXPECT_EQ(back.Compare(deep), 0);
    EXPECT_EQ(WithSize(back), bytes);
}

// Sharing lets a value describe more than 4 GiB of bytes in little memory:
// its size reads 0 and it cannot be written; the buffer is left as it was.
TEST(VarDataSerialization, ValuesPast32BitSizesAreRefused) {
    const std::vector<unsigned char> megabyte(1 << 20, 0x5A);
    VarData level(megabyte.data(), static_cast<unsigned int>(megabyte.size()));
    for (int i = 0; i < 12; ++i) {
        VarData next = VarData::sequence();
        next.SetElement(0, level);
        next.SetElement(1, level);
        level = next;
    }
    EXPECT_EQ(level.valueSerializationSize(), 0u);
    EXPECT_EQ(level.serializationSizeImpl(false), 0u);
    zo::kel::AutoBuffer buffer;
    buffer.Append("kept", 4);
    EXPECT_THROW(level.SerializeWithoutSize(buffer, true), zo::kel::exception::BufferOverflow);
    EXPECT_THROW(level.SerializeWithSize(buffer), zo::kel::exception::BufferOverflow);
    ASSERT_EQ(buffer.Len(), 4u);
    EXPECT_EQ(std::memcmp(buffer.Data(), "kept", 4), 0);
}

// What other writers may send: trailing Empty elements (dropped, as storing
// them one by one would), empty wide texts and relative times in both forms.
TEST(VarDataSerialization, ForeignRecordsReadAsStoredValues) {
    const Bytes padded = {7, 0x30, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0};
    EXPECT_EQ(Read(padded, true).GetLength(), 1u);
    for (bool compact : {true, false}) {
        const VarData wide = Read({6, 0x10, 0, 0, 0, 0, 0, 0}, compact);
        EXPECT_EQ(wide.GetType(), 0x1006u);
        EXPECT_EQ(wide.GetLength(), 0u);
        EXPECT_EQ(Serialized(VarData(L""), compact), (Bytes{6, 0x10, 0, 0, 0, 0, 0, 0}));
        const VarData span(zo::kel::RelTime::fromWords(-2, 0x4000000000000000ull));
        const VarData back = Read(Serialized(span, compact), compact);
        EXPECT_EQ(back.GetType(), 0x1010u);
        EXPECT_EQ(back.Compare(span), 0);
    }
}

// A prefix that claims more than is there skips to the end of what is there.
TEST(VarDataSerialization, PrefixPastTheEndSkipsWhatIsAvailable) {
    const Bytes stream = {20, 0, 0, 0, 2, 0, 0, 0, 1};
    const unsigned char* cursor = stream.data();
    EXPECT_EQ(VarData::DeserializeWithSize(cursor, static_cast<unsigned int>(stream.size())).GetType(), 0x0001u);
    EXPECT_EQ(cursor, stream.data() + stream.size());
}

TEST(VarDataSerialization, WritersCheckTheRoom) {
    const VarData text("too long");
    unsigned char small[6];
    unsigned char* cursor = small;
    EXPECT_THROW(text.serializeImpl(cursor, small + sizeof small, text.valueSerializationSize(), true),
                 zo::kel::exception::BufferOverflow);
    zo::kel::AutoBuffer buffer;
    buffer.Append("xyz", 3);
    text.SerializeWithoutSize(buffer, true);
    EXPECT_EQ(buffer.Len(), 3u + text.valueSerializationSize());
    EXPECT_EQ(std::memcmp(buffer.Data(), "xyz", 3), 0);
}

}  // namespace

namespace {

// A host-variant body the payload cannot read is an unreadable record like
// any other: refused bare, skipped by its prefix in a stream.
TEST(VarDataSerialization, UnreadableHostVariantBody) {
    const Bytes claimsTooMuch = {0x12, 0x10, 0, 0, 9, 0, 0, 0, 4, 0};
    ExpectUnreadable(claimsTooMuch);
    const Bytes stream = Concat({{static_cast<unsigned char>(claimsTooMuch.size()), 0, 0, 0}, claimsTooMuch,
                                 WithSize(VarData::num(3.0))});
    const unsigned char* cursor = stream.data();
    EXPECT_EQ(VarData::DeserializeWithSize(cursor, static_cast<unsigned int>(stream.size())).GetType(),
              VarData().GetType());
    EXPECT_EQ(static_cast<double>(VarData::DeserializeWithSize(cursor, static_cast<unsigned int>(stream.data() + stream.size() - cursor))), 3.0);
}

}  // namespace
