#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkstatic/vardata.h"

namespace {

using namespace vardata_test;

std::wstring Text(const VarData& value) { return value.coerceToString().c_str(); }

VarData Converted(VarData value, VarDataType tag) {
    value.Convert_(tag);
    return value;
}

TEST(VarDataText, TextsWithNullPayloads) {
    for (const VarData& value : {VarData(static_cast<const char*>(nullptr)), VarData(""), VarData::ansi("abc", 0)}) {
        EXPECT_EQ(value.GetType(), 0x1005u);
        const char* text = nullptr;
        EXPECT_TRUE(value.GetAnsi(text));
        EXPECT_STREQ(text, "");
        EXPECT_EQ(value.GetLength(), 0u);
        EXPECT_EQ(value.getAnsiString().length(), 0u);
    }
    const VarData wide(L"h\u00e9llo");
    const wchar_t* text = nullptr;
    EXPECT_TRUE(wide.GetUni(text));
    EXPECT_STREQ(text, L"h\u00e9llo");
    EXPECT_EQ(wide.GetLength(), 5u);
    EXPECT_THROW(wide.getAnsiString(), TypeErrorException);
    EXPECT_EQ(VarData::ansi("abcdef", 3).getAnsiString().exactCompare("abc"), 0);
}

TEST(VarDataText, TextsCompareIgnoringCase) {
    EXPECT_EQ(VarData("ABC").Compare(VarData("abc")), 0);
    EXPECT_LT(VarData("abc").Compare(VarData("abd")), 0);
    EXPECT_LT(VarData("zzz").Compare(VarData(L"aaa")), 0) << "Ansi orders before Unicode";
}

TEST(VarDataText, TextsReadAsLogicalNumberOrTime) {
    EXPECT_TRUE(static_cast<bool>(VarData("yes")));
    EXPECT_FALSE(static_cast<bool>(VarData("off")));
    EXPECT_DOUBLE_EQ(static_cast<double>(VarData("12.5")), 12.5);
    EXPECT_TRUE(static_cast<bool>(VarData(L"3")));
    EXPECT_EQ(static_cast<double>(VarData("no way")), 0.0);
    EXPECT_FALSE(static_cast<bool>(VarData("no way")));
    EXPECT_DOUBLE_EQ(static_cast<double>(VarData("1:00:00")), 1.0 / 24.0);
}

TEST(VarDataText, ConversionToTextByTag) {
    EXPECT_EQ(Converted(Logical(false), VarDataType::Ansi).getAnsiString().exactCompare("off"), 0);
    VarData id, wideId;
    id.setID64(0xABCDEFul);
    wideId.setID64(0xFEDCBA9876543210ul);
    const unsigned char bytes[] = {'r', 'a', 'w'};
    // A time count has no text of its own; the earliest time shows as nothing,
    // a time too far out for the calendar as a notice.
    const std::pair<VarData, const wchar_t*> rows[] = {
        {Logical(true), L"on"}, {id, L"0x0000000000ABCDEF"}, {wideId, L"0xFEDCBA9876543210"},
        {VarData::bitArray(255), L"0x000000FF"}, {VarData::bitArray(0xFFFFFFFFu), L"0xFFFFFFFF"},
        {Num(1.5), L"1.5"}, {VarData(bytes, 3), L"raw"}, {VarData(bytes, 0), L""}, {VarData("narrow"), L"narrow"},
        {Assigned(5L), L""}, {VarData(), L""},
        {VarData(zo::kel::AbsTime::fromWords(std::numeric_limits<std::int64_t>::min(), 0)), L""},
        {VarData(zo::kel::AbsTime::fromWords(std::int64_t{1} << 62, 0)), L"Unable to display time value"}};
    for (const auto& [value, text] : rows) EXPECT_EQ(Text(value), text) << value.GetType();
}

TEST(VarDataText, ConversionToOtherTags) {
    VarData value = VarData::num(3.0, 8);
    value.Convert_(VarDataType::Numeric);
    EXPECT_EQ(value.GetType(), 0x3u) << "the subtype is dropped";
    const VarData on = Converted(VarData("on"), VarDataType::Logical);
    EXPECT_TRUE(on.GetType() == 0x2u && static_cast<bool>(on));
    EXPECT_EQ(static_cast<double>(Converted(VarData("2.5"), VarDataType::Numeric)), 2.5);

    const VarData raw = Converted(VarData(L"bytes"), VarDataType::Raw);
    EXPECT_EQ(raw.GetType(), 0x1009u);
    EXPECT_EQ(raw.GetRaw(), 5u);
    EXPECT_EQ(Converted(Num(1.0), VarDataType::Raw).GetRaw(), 0u);
    EXPECT_EQ(Converted(Num(1.0), VarDataType::Dictionary).GetLength(), 0u);

    // Days since 1899-12-30 become absolute time; 1904-01-01 is day 1462.
    zo::kel::AbsTime time;
    EXPECT_TRUE(Converted(Num(1462.5), VarDataType::AbsTimeValue).getAbsTime(time));
    EXPECT_EQ(time.secondsWord(), 43200);
    zo::kel::RelTime span;
    EXPECT_TRUE(Converted(Num(0.5), VarDataType::RelTimeValue).getRelTime(span));
    EXPECT_EQ(span.secondsWord(), 43200);
    EXPECT_EQ(Text(Converted(Num(0.5), VarDataType::RelTimeValue)), L"43200");

    // A tag with no conversion leaves the value as it is; its own tag too.
    EXPECT_EQ(Converted(Num(1.0), VarDataType::Cell).GetType(), 0x3u);
    VarData dictionary = VarData::dict();
    dictionary.setValue(Num(1.0), Num(1.0));
    EXPECT_EQ(Converted(dictionary, VarDataType::Dictionary).GetLength(), 1u);
}

TEST(VarDataTime, TimeValuesKeepTheirKind) {
    const auto absolute = zo::kel::AbsTime::fromWords(100, 0x8000000000000000ull);
    const VarData value(absolute);
    EXPECT_EQ(value.GetType(), 0x100Fu);
    zo::kel::AbsTime readBack;
    zo::kel::RelTime wrongKind;
    EXPECT_TRUE(value.getAbsTime(readBack));
    EXPECT_EQ(readBack, absolute);
    EXPECT_FALSE(value.getRelTime(wrongKind));
    EXPECT_DOUBLE_EQ(static_cast<double>(value), 100.5);

    const VarData span(zo::kel::RelTime::fromWords(-1, 0));
    EXPECT_EQ(span.GetType(), 0x1010u);
    EXPECT_FALSE(span.getAbsTime(readBack));
    EXPECT_TRUE(static_cast<bool>(span));
    EXPECT_FALSE(static_cast<bool>(VarData(zo::kel::RelTime::fromWords(0, 0))));
    EXPECT_TRUE(static_cast<bool>(VarData(zo::kel::RelTime::fromWords(0, 1))));
    EXPECT_LT(span.Compare(VarData(zo::kel::RelTime::fromWords(0, 0))), 0);

    // Only the tag in the low 16 bits decides, as for every other reader.
    VarData marked;
    marked.setISSTimeValue(0x0005100Fu, tSSTimeValue{absolute.fractionWord(), absolute.secondsWord()});
    EXPECT_TRUE(marked.getAbsTime(readBack));
    EXPECT_EQ(readBack, absolute);
    EXPECT_EQ(marked.coerceToString(), VarData(absolute).coerceToString());
    EXPECT_GT(VarData(zo::kel::RelTime::fromWords(0, 0x8000000000000000ull))
                  .Compare(VarData(zo::kel::RelTime::fromWords(0, 0))),
              0);
}

}  // namespace
