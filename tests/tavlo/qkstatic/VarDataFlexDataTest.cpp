// A FlexData riding in a VarData: its members, its record in the byte form
// with the failure contracts of the readers, and its place in Convert_.
#include <gtest/gtest.h>

#include <algorithm>

#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"

namespace {

using namespace vardata_test;
using zo::kel::FlexData;
using zo::kel::NarrowString;
namespace fd = zo::kel::fd;

constexpr unsigned char kTag[] = {0x13, 0x10, 0, 0};

Bytes Record(const Bytes& body) {
    // Sized once and filled: GCC 12 at -O2 warns (-Warray-bounds) when an
    // insert grows a vector of four bytes.
    Bytes record(sizeof kTag + body.size());
    std::copy(kTag, kTag + sizeof kTag, record.begin());
    std::copy(body.begin(), body.end(), record.begin() + sizeof kTag);
    return record;
}

Bytes Prefixed(const Bytes& record) {
    Bytes prefixed = {static_cast<unsigned char>(record.size()), 0, 0, 0};
    prefixed.insert(prefixed.end(), record.begin(), record.end());
    return prefixed;
}

// Bodies that hold no packet: too short for a size word, a size past the
// end, metadata whose attribute length overruns the packet.
const Bytes kBadBodies[] = {
    {3, 0, 0},
    {20, 0, 0, 0, 0x00, 0x01},
    {10, 0, 0, 0, 0x00, 0x40, 0xFF, 0xFF, 0, 0},
    {6, 0, 0, 0, 0x00, 0x08},
};

TEST(VarDataFlexDataRecord, MembersHoldAndReadThePacket) {
    const FlexData reading(4.25);
    const VarData value(reading);
    EXPECT_EQ(value.GetType(), 0x1013u);
    EXPECT_TRUE(value.getFlexData() == reading);
    EXPECT_EQ(&value.getIFlexData()->get(), &value.getFlexData());
    const VarData copy = value;  // shares the immutable payload
    EXPECT_EQ(&copy.getFlexData(), &value.getFlexData());
    EXPECT_THROW((void)Num(1).getFlexData(), TypeErrorException);
    EXPECT_EQ(static_cast<double>(value), 4.25);
    EXPECT_EQ(value.Compare(VarData(FlexData(4.5))) != 0, true);
    EXPECT_EQ(value.Compare(VarData(FlexData(4.25))), 0);
}

TEST(VarDataFlexDataRecord, OddPacketsAreReadEvenAndStayStable) {
    // A 7-byte packet: the reader takes it whole, pads it and reports even bytes.
    const Bytes odd = Record({7, 0, 0, 0, 0x00, 0x01, 5});
    unsigned int used = 0;
    const VarData value = VarData::DeserializeWithoutSize(odd.data(), static_cast<unsigned int>(odd.size()), used, true);
    EXPECT_EQ(used, odd.size());
    EXPECT_EQ(value.getFlexData().getI8(), 5);
    EXPECT_EQ(Serialized(value, true), Record({8, 0, 0, 0, 0x00, 0x01, 5, 0}));

    // Inside a sequence, and through the with-size framing.
    VarData list = VarData::sequence();
    list.SetElement(0, value);
    list.SetElement(1, Logical(true));
    const Bytes framed = WithSize(list);
    const unsigned char* cursor = framed.data();
    const VarData back = VarData::DeserializeWithSize(cursor, static_cast<unsigned int>(framed.size()));
    EXPECT_EQ(cursor, framed.data() + framed.size());
    EXPECT_EQ(back.Compare(list), 0);
}

TEST(VarDataFlexDataRecord, UnreadablePacketsAreReaderFailures) {
    for (const Bytes& body : kBadBodies) {
        const Bytes record = Record(body);
        unsigned int used = 99;
        EXPECT_THROW(VarData::DeserializeWithoutSize(record.data(), static_cast<unsigned int>(record.size()), used, true),
                     DeserializationErrorException);
        EXPECT_EQ(used, 0u);

        // A stream goes on past the unreadable record.
        Bytes stream = Prefixed(record);
        const Bytes next = WithSize(Logical(true));
        stream.insert(stream.end(), next.begin(), next.end());
        const unsigned char* cursor = stream.data();
        const auto available = static_cast<unsigned int>(stream.size());
        EXPECT_EQ(VarData::DeserializeWithSize(cursor, available).GetType(), 1u);
        EXPECT_EQ(cursor, stream.data() + 4 + record.size());
        EXPECT_EQ(VarData::DeserializeWithSize(cursor, available).Compare(Logical(true)), 0);

        // deserializeFlexData keeps the value and the cursor.
        VarData target = Num(7.0);
        const unsigned char* at = body.data();
        EXPECT_ANY_THROW(target.deserializeFlexData(at, body.data() + body.size()));
        EXPECT_EQ(target.Compare(Num(7.0)), 0);
        EXPECT_EQ(at, body.data());
    }
    VarData target = Num(7.0);
    const Bytes packet = {8, 0, 0, 0, 0x02, 0x01, 0xFF, 0};
    const unsigned char* at = packet.data();
    target.deserializeFlexData(at, packet.data() + packet.size());
    EXPECT_EQ(at, packet.data() + packet.size());
    EXPECT_TRUE(target.getFlexData().getBool());
}

TEST(VarDataFlexDataRecord, ConversionsGoThroughTheNativeValue) {
    VarData number(FlexData(-3));
    EXPECT_TRUE(number.convertSelfToNativeType());
    EXPECT_EQ(number.GetType(), 0x30003u);

    VarData wide(FlexData(5L));
    EXPECT_FALSE(wide.convertSelfToNativeType());
    EXPECT_EQ(wide.GetType(), 0x1013u);
    EXPECT_EQ(wide.convertToNativeType().Compare(wide), 0);  // no native form: the value itself
    EXPECT_EQ(wide.convertToNativeTypeOrDictionary(true).Compare(wide), 0);
    // A double whose packet lost its data: no native form, and no exception.
    const Bytes truncated = {6, 0, 0, 0, 0x02, 0x04};
    FlexData broken;
    broken.copyFrom(truncated.data(), truncated.data() + truncated.size());
    VarData unreadable(broken);
    EXPECT_FALSE(unreadable.convertSelfToNativeType());
    EXPECT_EQ(unreadable.GetType(), 0x1013u);
    EXPECT_FALSE(Num(1).convertSelfToNativeType());
    EXPECT_EQ(Num(2).convertToNativeType().Compare(Num(2)), 0);

    VarData converted(FlexData(-3));
    converted.Convert_(VarDataType::Numeric);  // the native value is already numeric: its subtype stays
    EXPECT_EQ(converted.GetType(), 0x30003u);
    converted = VarData(FlexData(NarrowString("7.5")));
    converted.Convert_(VarDataType::Numeric);
    EXPECT_EQ(static_cast<double>(converted), 7.5);
    converted = VarData(FlexData(-3));
    converted.Convert_(VarDataType::Ansi);
    EXPECT_EQ(converted.getAnsiString(), NarrowString("-3"));

    VarData plain = Num(1.5);
    plain.Convert_(VarDataType::FlexDataTag);
    EXPECT_EQ(plain.getFlexData().getType(), fd::kFloat64);
    EXPECT_EQ(plain.getFlexData().getF64(), 1.5);
    const FlexData* before = &plain.getFlexData();
    plain.Convert_(VarDataType::FlexDataTag);  // a FlexData stays the very same value
    EXPECT_EQ(&plain.getFlexData(), before);
}

}  // namespace
