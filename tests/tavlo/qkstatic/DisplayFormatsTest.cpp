#include "tavlo/qkstatic/DisplayFormats.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace {

TEST(DisplayFormats, NamesAreFoundByExactBytes) {
    short index = -1;
    EXPECT_TRUE(IsFormat0("hh:mm:ss", &index));
    EXPECT_EQ(index, 45);
    EXPECT_TRUE(IsFormat0("HH:MM:SS", &index));
    EXPECT_EQ(index, 36);
    EXPECT_TRUE(IsFormat0("General", &index));
    EXPECT_EQ(index, 0);
    EXPECT_TRUE(IsFormat0("dd/mm/yyyy hh:mm:ss.sss", &index));
    EXPECT_EQ(index, 76);
    index = 99;
    EXPECT_FALSE(IsFormat0("general", &index));
    EXPECT_FALSE(IsFormat0("0.00 ", &index));
    EXPECT_FALSE(IsFormat0("", &index));
    EXPECT_EQ(index, 99);
}

TEST(DisplayFormats, EveryNameIsUniqueAndRoundTrips) {
    std::set<std::string> names;
    for (unsigned int row = 0; row < kDisplayFormatCount; ++row) {
        char name[32];
        GetFormatText0(row, name, sizeof(name));
        names.insert(name);
        short index = -1;
        ASSERT_TRUE(IsFormat0(name, &index)) << row;
        EXPECT_EQ(index, static_cast<short>(row));
    }
    EXPECT_EQ(names.size(), 77u);
}

TEST(DisplayFormats, GetFormatTextClampsIndexAndAlwaysTerminates) {
    char text[16];
    GetFormatText0(200, text, sizeof(text));
    EXPECT_STREQ(text, "General");
    GetFormatText0(77, text, sizeof(text));
    EXPECT_STREQ(text, "General");
    GetFormatText0(70, text, 5);
    EXPECT_STREQ(text, "yyyy");
    std::memset(text, 'x', sizeof(text));
    GetFormatText0(3, text, 1);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'x');
    GetFormatText0(3, text, 0);
    EXPECT_EQ(text[1], 'x');
}

TEST(DisplayFormats, RowsKeepTheirPatternsAndKinds) {
    EXPECT_STREQ(DisplayFormatAt(0).pattern, "%G");
    EXPECT_STREQ(DisplayFormatAt(18).pattern, "%0.8E");
    EXPECT_STREQ(DisplayFormatAt(25).pattern, "%08.0f");
    EXPECT_STREQ(DisplayFormatAt(39).pattern, "%2.2lu:%2.2u:%2.2u.%3.3u");
    EXPECT_STREQ(DisplayFormatAt(63).pattern, "0x%08X");
    EXPECT_STREQ(DisplayFormatAt(76).pattern, "%2.2u/%2.2u/%4.4u %2.2u:%2.2u:%2.2u.%3.3u");
    EXPECT_EQ(DisplayFormatAt(1000).kind, DisplayFormatKind::Number);
    EXPECT_EQ(DisplayFormatAt(73).kind, DisplayFormatKind::Clock);
    EXPECT_EQ(DisplayFormatAt(46).kind, DisplayFormatKind::Calendar);
}

}  // namespace
