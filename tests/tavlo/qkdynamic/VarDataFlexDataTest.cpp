#include "tavlo/qkdynamic/VarDataFlexData.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/PayloadRef.h"
#include "tavlo/qkstatic/VarDataCodec.h"
#include "zo/kel/Exception.h"
#include "zo/kel/fd.h"

namespace {

using namespace vardata_test;
using internal::PayloadRef;
using zo::kel::AbsTime;
using zo::kel::FlexData;
using zo::kel::NarrowString;
using zo::kel::WideString;
namespace fd = zo::kel::fd;

PayloadRef<IVarDataFlexData2> Payload(const FlexData& value) {
    return PayloadRef<IVarDataFlexData2>(PayloadRef<IUnknown>::Adopt(NewVarDataFlexData(value)).get());
}

FlexData Converted(const VarData& value) {
    const auto guts = PayloadRef<IVarDataFlexData>::Adopt(
        static_cast<IVarDataFlexData*>(NewVarDataFlexDataFromVarData(value)));
    return guts->get();
}

FlexData FromBytes(const Bytes& bytes) {
    FlexData value;
    value.copyFrom(bytes.data(), bytes.data() + bytes.size());
    return value;
}

TEST(VarDataFlexData, QueryInterfaceRules) {
    const auto object = PayloadRef<IUnknown>::Adopt(NewVarDataFlexData(FlexData(1)));
    void* out = nullptr;
    for (const _GUID* id : {&IID_IUnknown, &IID_IVarDataGuts, &IID_IVarDataFlexData, &IID_IVarDataFlexData2}) {
        out = nullptr;
        ASSERT_EQ(object->QueryInterface(*id, &out), kStatusOk);
        EXPECT_EQ(internal::ReferenceCount(object.get()), 2);
        static_cast<IUnknown*>(out)->Release();
    }
    out = nullptr;
    EXPECT_EQ(object->QueryInterface(IID_IVarDataAnsi, &out), kNoInterface);
    EXPECT_EQ(out, nullptr);
    int marker = 0;
    out = &marker;
    EXPECT_EQ(object->QueryInterface(IID_IVarDataFlexData, &out), kInvalidArgument);
    EXPECT_EQ(out, &marker);
    EXPECT_EQ(object->QueryInterface(IID_IVarDataFlexData, nullptr), kInvalidArgument);
    EXPECT_EQ(internal::ReferenceCount(object.get()), 1);
}

TEST(VarDataFlexData, TruthAndNumberNeverThrow) {
    const FlexData twoByteTrue = FromBytes({8, 0, 0, 0, 0x02, 0x02, 1, 0});
    // A double whose packet lost its data bytes.
    const FlexData truncated = FromBytes({6, 0, 0, 0, 0x02, 0x04});
    const struct {
        FlexData value;
        bool truth;
        double number;
    } kRows[] = {
        {FlexData(true), true, 0.0},         {FlexData(false), false, 0.0},
        {twoByteTrue, false, 0.0},           {FlexData(7), false, 7.0},
        {FlexData(2.5f), false, 2.5},        {FlexData(static_cast<unsigned char>(200)), false, 200.0},
        {FlexData(5L), false, 0.0},          {FlexData(5UL), false, 0.0},
        {FlexData("1", 1), false, 0.0},      {FlexData(), false, 0.0},
        {truncated, false, 0.0},
    };
    for (const auto& row : kRows) {
        const auto payload = Payload(row.value);
        EXPECT_EQ(static_cast<bool>(*payload.get()), row.truth) << std::hex << row.value.getType();
        EXPECT_EQ(static_cast<double>(*payload.get()), row.number) << std::hex << row.value.getType();
    }
}

TEST(VarDataFlexData, FromVarDataByTag) {
    const VarData odd = internal::VarDataCodec::Inline(0x0002, 2);  // a Logical byte whose lowest bit is clear
    const struct {
        VarData value;
        Bytes packet;
    } kRows[] = {
        {Logical(true), {8, 0, 0, 0, 0x02, 0x01, 0xFF, 0}},
        {odd, {8, 0, 0, 0, 0x02, 0x01, 0x00, 0}},
        {VarData::num(1.5), {14, 0, 0, 0, 0x02, 0x04, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}},
        {VarData::num(3.9, 3), {10, 0, 0, 0, 0x00, 0x03, 3, 0, 0, 0}},
        {VarData::num(-3.9, 4), {8, 0, 0, 0, 0x01, 0x01, 253, 0}},
        {VarData::num(300.0, 1), {8, 0, 0, 0, 0x00, 0x01, 44, 0}},
        {VarData::num(-1.0, 5), {8, 0, 0, 0, 0x01, 0x02, 0xFF, 0xFF}},
        {VarData::num(-1.0, 6), {10, 0, 0, 0, 0x01, 0x03, 0xFF, 0xFF, 0xFF, 0xFF}},
        {VarData::num(70000.0, 2), {8, 0, 0, 0, 0x00, 0x02, 0x70, 0x11}},
        {VarData::num(0.5, 7), {10, 0, 0, 0, 0x02, 0x03, 0, 0, 0, 0x3F}},
        {VarData::bitArray(0x81), {10, 0, 0, 0, 0x01, 0x03, 0x81, 0, 0, 0}},
        {VarData::num(1.0, 9), {}},
        {VarData("ab"), {12, 0, 0, 0, 0x00, 0x09, 2, 0, 0, 0, 'a', 'b'}},
        {VarData(L"\u00E9"), {12, 0, 0, 0, 0x00, 0x0A, 1, 0, 0, 0, 0xE9, 0}},
        {VarData(AbsTime::fromWords(1, 2)), {22, 0, 0, 0, 0x04, 0x05, 2, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}},
        {VarData(FlexData(5L)), {14, 0, 0, 0, 0x00, 0x04, 5, 0, 0, 0, 0, 0, 0, 0}},
        {VarData::pulse(), {6, 0, 0, 0, 0x01, 0x00}},
        {VarData::sequence(), {6, 0, 0, 0, 0x01, 0x00}},
    };
    for (const auto& row : kRows) {
        const FlexData converted = Converted(row.value);
        EXPECT_EQ(Bytes(converted.begin(), converted.end()), row.packet) << std::hex << row.value.GetType();
    }
}

TEST(VarDataFlexData, DictionariesBecomeAttributesAndBack) {
    VarData inner = VarData::dict();
    inner.setValue("deep", VarData(FlexData(true)));
    VarData dictionary = VarData::dict();
    dictionary.setValue("units", "V");
    dictionary.setValue(Num(2), VarData::num(7.0, 3));
    dictionary.setValue("nested", inner);

    const FlexData packet = Converted(dictionary);
    EXPECT_EQ(packet.getType(), fd::kInt32);
    EXPECT_EQ(packet.getI32(), 0);
    // Keys in dictionary order (numbers before texts), each made Ansi text.
    const auto names = packet.getAttributeNames();
    ASSERT_EQ(names.size(), 3u);
    EXPECT_EQ(names[0], NarrowString("2"));
    EXPECT_EQ(names[1], NarrowString("nested"));
    EXPECT_EQ(packet.getAttribute("2").getI32(), 7);
    EXPECT_EQ(packet.getAttribute("units").getAString(), NarrowString("V"));
    EXPECT_TRUE(packet.getAttribute("nested").getAttribute("deep").getBool());

    // Back: attributes become entries, nested ones nested dictionaries; the value itself is left out.
    const VarData back = Payload(packet)->convertToNativeTypeOrDictionary(false);
    EXPECT_EQ(back.GetLength(), 3u);
    EXPECT_EQ(back.getValue("units").getAnsiString(), NarrowString("V"));
    EXPECT_EQ(back.getValue("2").Compare(VarData::num(7.0, 3)), 0);
    EXPECT_EQ(back.getValue("nested").getValue("deep").Compare(Logical(true)), 0);
    const VarData wide = Payload(packet)->convertToNativeTypeOrDictionary(true);
    EXPECT_TRUE(wide.hasKey(VarData(L"units")));
    EXPECT_FALSE(wide.hasKey(VarData("units")));

    FlexData reading(4.25);
    reading.setAttribute("units", FlexData("V", 1));
    const VarData entries = VarData(reading).convertToNativeTypeOrDictionary(false);
    EXPECT_EQ(entries.GetLength(), 1u);
    EXPECT_EQ(entries.getValue("units").getAnsiString(), NarrowString("V"));
}

TEST(VarDataFlexData, ToNativeByKind) {
    const struct {
        FlexData value;
        VarData native;
        bool ok;
    } kRows[] = {
        {FlexData(static_cast<signed char>(-3)), VarData::num(-3.0, 1), true},
        {FlexData(static_cast<short>(-3)), VarData::num(-3.0, 2), true},
        {FlexData(-3), VarData::num(-3.0, 3), true},
        {FlexData(static_cast<unsigned char>(3)), VarData::num(3.0, 4), true},
        {FlexData(static_cast<unsigned short>(3)), VarData::num(3.0, 5), true},
        {FlexData(3u), VarData::num(3.0, 6), true},
        {FlexData(0.5f), VarData::num(0.5, 7), true},
        {FlexData(0.25), VarData::num(0.25), true},
        {FlexData(true), Logical(true), true},
        {FlexData(NarrowString("t")), VarData("t"), true},
        {FlexData(WideString(L"w")), VarData(L"w"), true},
        {FlexData(AbsTime::fromWords(5, 0)), VarData(AbsTime::fromWords(5, 0)), true},
        {FlexData(5L), VarData(), false},
        {FlexData(5UL), VarData(), false},
        {FlexData(), VarData(), false},
    };
    for (const auto& row : kRows) {
        bool ok = !row.ok;
        const VarData native = Payload(row.value)->convertToNativeTypeNoThrow(ok);
        EXPECT_EQ(ok, row.ok) << std::hex << row.value.getType();
        EXPECT_EQ(native.GetType(), row.native.GetType()) << std::hex << row.value.getType();
        EXPECT_EQ(native.Compare(row.native), 0) << std::hex << row.value.getType();
    }
    FlexData voidValue;
    voidValue.setVoid();
    bool ok = false;
    EXPECT_EQ(Payload(voidValue)->convertToNativeTypeNoThrow(ok).GetType(), 1u);
    EXPECT_TRUE(ok);
    FlexData labelled(1);
    labelled.setAttribute("a", FlexData(2));
    EXPECT_EQ(Payload(labelled)->convertToNativeTypeNoThrow(ok).GetType(), 1u);
    EXPECT_FALSE(ok);

    try {
        (void)Payload(FlexData(5L))->convertToNativeType();
        ADD_FAILURE() << "no exception";
    } catch (const zo::kel::exception::UnableToConvert& failure) {
        EXPECT_STREQ(failure.getFile(), "tavlo/qkdynamic/VarDataFlexData");
        EXPECT_EQ(failure.getLine(), 238u);
    }
}

TEST(VarDataFlexData, AttributeNestingIsBounded) {
    FlexData value(1);
    for (unsigned int depth = 0; depth < fd::kMaxNestingDepth + 1; ++depth) {
        FlexData outer(1);
        outer.setAttribute("a", value);
        value = outer;
    }
    EXPECT_THROW((void)Payload(value)->convertToNativeTypeOrDictionary(false), zo::kel::exception::UnableToConvert);
}

}  // namespace
