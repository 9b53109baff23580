#include "zo/kel/osdep/CharacterAttributes.h"

#include <gtest/gtest.h>

#include "zo/kel/Exception.h"

namespace {

using zo::kel::osdep::CharacterAttributes;

TEST(CharacterAttributes, ClassifiesUnderItsOwnLocale) {
    const CharacterAttributes<char> c("C");
    EXPECT_TRUE(c.isAlpha('a'));
    EXPECT_FALSE(c.isAlpha('1'));
    EXPECT_TRUE(c.isDigit('7'));
    EXPECT_TRUE(c.isAlnum('Z'));
    EXPECT_TRUE(c.isSpace('\t'));
    EXPECT_TRUE(c.isPunct('!'));
    EXPECT_TRUE(c.isUpper('Q'));
    EXPECT_TRUE(c.isLower('q'));
    EXPECT_TRUE(c.isPrint(' '));
    EXPECT_FALSE(c.isGraph(' '));
    EXPECT_TRUE(c.isControl('\n'));
    EXPECT_TRUE(c.isXDigit('f'));
    EXPECT_FALSE(c.isAlpha('\xE9'));  // not a letter in "C"
    EXPECT_EQ(c.toUpper('a'), 'A');
    EXPECT_EQ(c.toLower('A'), 'a');

    const CharacterAttributes<wchar_t> wide("C.UTF-8");
    EXPECT_TRUE(wide.isAlpha(L'\u00E9'));
    EXPECT_EQ(wide.toUpper(L'\u00E9'), L'\u00C9');
    EXPECT_EQ(wide.toLower(L'\u0394'), L'\u03B4');
    EXPECT_FALSE(wide.isDigit(L'x'));

    const CharacterAttributes<char> current;  // the process's locale: "C" in tests
    EXPECT_TRUE(current.isAlpha('x'));
}

TEST(CharacterAttributes, UnknownLocaleNameThrowsWithTheName) {
    try {
        CharacterAttributes<char> attributes("xx_NOWHERE.bogus");
        FAIL();
    } catch (const zo::kel::exception::InvalidArgument2& failure) {
        EXPECT_STREQ(failure.what(), "Invalid argument(s): xx_NOWHERE.bogus");
    }
}

}  // namespace
