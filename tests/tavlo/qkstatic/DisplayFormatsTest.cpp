#include "tavlo/qkstatic/DisplayFormats.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace {

TEST(DisplayFormats, NamesAreFoundByExactBytes) {
    const std::pair<const char*, short> rows[] = {
        {"hh:mm:ss", 45}, {"HH:MM:SS", 36}, {"General", 0}, {"dd/mm/yyyy hh:mm:ss.sss", 76}};
    for (const auto& [name, expected] : rows) {
        short index = -1;
        EXPECT_TRUE(IsFormat0(name, &index) && index == expected) << name;
    }
    short index = 99;
    for (const char* name : {"general", "0.00 ", ""}) EXPECT_FALSE(IsFormat0(name, &index)) << name;
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

}  // namespace
