#include "zo/kel/osdep/StringCompare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

#include "zo/kel/Exception.h"
#include "zo/kel/osdep/CharacterAttributes.h"
#include "zo/kel/osdep/StringCompareInternal.h"

namespace {

using namespace zo::kel::osdep;

struct CompareRow {
    const char* a;
    const char* b;
    int caseResult;
    int exactResult;
};

const CompareRow kRows[] = {
    {"abc", "ABCD", -1, 32},
    {"b", "A", 1, 33},
    {"ABC", "abc", 0, -32},
    {"", "", 0, 0},
    {"abcdefghijklmnopq", "abcdefghijklmnopr", -1, -1},  // past the eight-byte stride
    {"same text, longer", "same text", 8, 8},
    {"ABCDEFGH\xE9jklmnop", "abcdefgh\xE9JKLMNOQ", 'P' - 'Q', 'A' - 'a'},  // a non-ASCII byte mid-word
    {"0123456789abcdeF", "0123456789ABCDEF", 0, 'a' - 'A'},
    {"abcdefghijKlmnopqrs", "ABCDEFGHIJLLMNOPQRS", 'K' - 'L', 'a' - 'A'},  // inside a folded block
    {"\xE9", "e", 0xE9 - 'E', 0xE9 - 'e'},  // bytes compare unsigned
};

bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

// Every form of both character types, on the same rows; wide text only for
// ASCII rows, where the wide upper-casing agrees with the narrow one.
TEST(StringCompare, SignedMagnitudes) {
    for (const CompareRow& row : kRows) {
        SCOPED_TRACE(std::string(row.a) + " / " + row.b);
        const std::string a(row.a), b(row.b);
        EXPECT_EQ(StringCaseCompare(row.a, row.b), row.caseResult);
        EXPECT_EQ(StringExactCompare(row.a, row.b), row.exactResult);
        EXPECT_EQ(StringCaseCompare(a.data(), a.data() + a.size(), b.data(), b.data() + b.size()), row.caseResult);
        EXPECT_EQ(StringExactCompare(a.data(), a.data() + a.size(), b.data(), b.data() + b.size()), row.exactResult);
        if (!IsAscii(a) || !IsAscii(b)) continue;
        const std::wstring wideA(a.begin(), a.end()), wideB(b.begin(), b.end());
        EXPECT_EQ(StringCaseCompare(wideA.c_str(), wideB.c_str()), row.caseResult);
        EXPECT_EQ(StringExactCompare(wideA.c_str(), wideB.c_str()), row.exactResult);
    }
    EXPECT_EQ(StringExactCompare(L"\u00E9", L"\u00C9"), 0x20);
    const wchar_t high[] = {0x7FFFFFFF, 0};
    const wchar_t low[] = {-0x7FFFFFFF, 0};
    EXPECT_EQ(StringExactCompare(high, low), INT_MAX);  // clamped
    EXPECT_EQ(StringCaseCompare(static_cast<const char*>(nullptr), "a"), -1);
    EXPECT_EQ(StringExactCompare("a\0b", "a\0b" + 3, "a\0c", "a\0c" + 3), -1);
}

TEST(StringCompare, Utf8DecodesCharacters) {
    const auto* upper = reinterpret_cast<const unsigned char*>("\xC3\x89T\xC3\x89");  // ÉTÉ
    const auto* lower = reinterpret_cast<const unsigned char*>("\xC3\xA9t\xC3\xA9");  // été
    const auto* longer = reinterpret_cast<const unsigned char*>("\xC3\xA9t\xC3\xA9s!");
    EXPECT_EQ(Utf8StringExactCompare(upper, upper + 5, lower, lower + 5), 0xC9 - 0xE9);
    EXPECT_EQ(Utf8StringExactCompare(lower, lower + 5, longer, longer + 7), -2);
    const CharacterAttributes<wchar_t> utf8("C.UTF-8");
    EXPECT_EQ(internal::Utf8StringCompareInternal(upper, upper + 5, lower, lower + 5, false, &utf8), 0);
    const auto* bad = reinterpret_cast<const unsigned char*>("\xC3");
    EXPECT_THROW(Utf8StringCaseInsensitiveCompare(bad, bad + 1, lower, lower + 5),
                 zo::kel::exception::InvalidSequence);
}

}  // namespace
