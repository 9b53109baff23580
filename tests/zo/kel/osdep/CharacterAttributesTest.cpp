#include "zo/kel/osdep/CharacterAttributes.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "zo/kel/Exception.h"

namespace {

using zo::kel::osdep::CharacterAttributes;

// Every query of both character types on ASCII, with cases that tell each
// query from its neighbours (alnum from alpha, graph from print, ...).
template <typename Char>
void ExpectAsciiClasses(const CharacterAttributes<Char>& attributes) {
    using Attributes = CharacterAttributes<Char>;
    const struct {
        bool (Attributes::*query)(Char) const noexcept;
        char c;
        bool expected;
    } rows[] = {
        {&Attributes::isAlpha, 'a', true},    {&Attributes::isAlpha, '1', false},  {&Attributes::isDigit, '7', true},
        {&Attributes::isDigit, 'x', false},   {&Attributes::isAlnum, 'Z', true},   {&Attributes::isAlnum, '7', true},
        {&Attributes::isAlnum, '!', false},   {&Attributes::isSpace, '\t', true},  {&Attributes::isPunct, '!', true},
        {&Attributes::isUpper, 'Q', true},    {&Attributes::isUpper, 'q', false},  {&Attributes::isLower, 'q', true},
        {&Attributes::isPrint, ' ', true},    {&Attributes::isGraph, ' ', false},  {&Attributes::isControl, '\n', true},
        {&Attributes::isXDigit, 'f', true},   {&Attributes::isXDigit, 'g', false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ((attributes.*row.query)(static_cast<Char>(row.c)), row.expected) << sizeof(Char) << " " << row.c;
    }
    EXPECT_EQ(attributes.toUpper(static_cast<Char>('a')), static_cast<Char>('A'));
    EXPECT_EQ(attributes.toLower(static_cast<Char>('A')), static_cast<Char>('a'));
}

TEST(CharacterAttributes, ClassifiesUnderItsOwnLocale) {
    const CharacterAttributes<char> c("C");
    ExpectAsciiClasses(c);
    EXPECT_FALSE(c.isAlpha('\xE9'));  // not a letter in "C"

    const CharacterAttributes<wchar_t> wide("C.UTF-8");
    ExpectAsciiClasses(wide);
    EXPECT_TRUE(wide.isAlpha(L'\u00E9'));
    EXPECT_EQ(wide.toUpper(L'\u00E9'), L'\u00C9');
    EXPECT_EQ(wide.toLower(L'\u0394'), L'\u03B4');

    const CharacterAttributes<char> current;  // the process's locale: "C" in tests
    EXPECT_TRUE(current.isAlpha('x'));
}

// Twice, with a stale errno: the C library reports why only on a name's first failure.
TEST(CharacterAttributes, UnknownLocaleNameThrowsWithTheName) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        errno = EAGAIN;
        try {
            CharacterAttributes<char> attributes("xx_NOWHERE.bogus");
            FAIL();
        } catch (const zo::kel::exception::InvalidArgument2& failure) {
            EXPECT_STREQ(failure.what(), "Invalid argument(s): xx_NOWHERE.bogus");
        }
    }
}

}  // namespace
