#include "zo/kel/StringBase.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "zo/kel/KelTestSupport.h"
#include "zo/kel/Vector.h"

namespace {

using zo::kel::KeepBuffer;
using zo::kel::NarrowString;
using zo::kel::Utf8String;
using zo::kel::WideString;
using namespace zo::kel::exception;
using namespace kel_test;

constexpr unsigned int npos = NarrowString::npos;

// Growing a container of strings moves them instead of copying each one.
static_assert(std::is_nothrow_move_constructible_v<NarrowString> &&
              std::is_nothrow_move_constructible_v<WideString> && std::is_nothrow_move_constructible_v<Utf8String>);
static_assert(std::is_nothrow_move_assignable_v<NarrowString> && std::is_nothrow_move_assignable_v<WideString> &&
              std::is_nothrow_move_assignable_v<Utf8String>);

// Most behaviour is the same for the three instantiations; these tests run
// over each, with ASCII texts widened to the element type.
template <typename S>
class EachString : public testing::Test {};
using StringTypes = testing::Types<NarrowString, WideString, Utf8String>;
TYPED_TEST_SUITE(EachString, StringTypes);

// An ASCII text as zero-terminated elements of type Char.
template <typename Char>
std::vector<Char> Chars(std::string_view ascii) {
    std::vector<Char> chars(ascii.begin(), ascii.end());
    chars.push_back(Char());
    return chars;
}

template <typename S>
S Str(std::string_view ascii) {
    return S(Chars<typename S::value_type>(ascii).data(), static_cast<unsigned int>(ascii.size()));
}

// The characters of an ASCII-only string, for comparing and printing.
template <typename S>
std::string Ascii(const S& string) {
    string.checkInvariants();
    return std::string(string.begin(), string.end());
}

// A step on a string, the text it leaves and the capacity it leaves (npos: not checked).
struct Step {
    std::function<void()> run;
    const char* text;
    unsigned int capacity = npos;
};

template <typename S>
void RunSteps(const S& string, std::initializer_list<Step> steps) {
    for (const Step& step : steps) {
        step.run();
        EXPECT_EQ(Ascii(string), step.text);
        if (step.capacity != npos) {
            EXPECT_EQ(string.capacity(), step.capacity) << step.text;
        }
    }
}

TYPED_TEST(EachString, DefaultIsAnEmptyTerminatedBlock) {
    const TypeParam string;
    EXPECT_EQ(string.length(), 0u);
    EXPECT_EQ(string.capacity(), 0u);
    ASSERT_NE(string.c_str(), nullptr);
    EXPECT_EQ(string.c_str()[0], 0);
    string.checkInvariants();
}

// Moving hands the block over; the source is left an empty, terminated string
// that every operation still accepts.
TYPED_TEST(EachString, MovingKeepsTheBlockAndLeavesAReusableEmptyString) {
    using Char = typename TypeParam::value_type;
    TypeParam source = Str<TypeParam>("a text long enough to be worth moving");
    const Char* block = source.c_str();
    TypeParam moved(std::move(source));
    EXPECT_EQ(moved.c_str(), block);
    EXPECT_EQ(Ascii(source), "");  // NOLINT(bugprone-use-after-move): documented as left empty
    EXPECT_EQ(source.capacity(), 0u);

    TypeParam target = Str<TypeParam>("old");
    target = std::move(moved);
    EXPECT_EQ(target.c_str(), block);
    EXPECT_EQ(Ascii(moved), "");  // NOLINT(bugprone-use-after-move)
    TypeParam& alias = target;
    target = std::move(alias);  // moving onto itself keeps the text
    EXPECT_EQ(target.c_str(), block);

    const TypeParam abc = Str<TypeParam>("abc");
    const Bytes form = Form(abc);
    const Bytes emptyForm = Form(TypeParam());
    // Each operation runs on a string freshly moved from.
    const std::pair<std::function<void(TypeParam&)>, const char*> uses[] = {
        {[](TypeParam&) {}, ""},
        {[&](TypeParam& s) { s.append(abc); }, "abc"},
        {[&](TypeParam& s) { s = abc; }, "abc"},
        {[](TypeParam& s) { s += Char('x'); }, "x"},
        {[](TypeParam& s) { s.append(2u, Char('y')); }, "yy"},
        {[](TypeParam& s) { s.resize(2u, Char('z')); }, "zz"},
        {[](TypeParam& s) { s.reserve(8u); }, ""},
        {[](TypeParam& s) { s.assign(Chars<Char>("").data(), 0u); }, ""},
        {[](TypeParam& s) { s.clear(); }, ""},
        {[](TypeParam& s) { s.clear(KeepBuffer); }, ""},
        {[](TypeParam& s) { s.erase(0u); }, ""},
        {[](TypeParam& s) { s.resize(0u); }, ""},
        {[&](TypeParam& s) { s.replace(0u, 0u, TypeParam()); }, ""},
        {[&](TypeParam& s) { s.replace(0u, 0u, abc); }, "abc"},
        {[](TypeParam& s) { s.freeString(); }, ""},
        {[&](TypeParam& s) { EXPECT_EQ(Read(s, form), form.size()); }, "abc"},
        {[&](TypeParam& s) { EXPECT_EQ(Read(s, emptyForm), emptyForm.size()); }, ""},
        {[&](TypeParam& s) { TypeParam other = abc; swap(s, other); }, "abc"},
        {[](TypeParam& s) { s = TypeParam(); }, ""},
    };
    for (const auto& [use, text] : uses) {
        TypeParam from = Str<TypeParam>("from");
        TypeParam to(std::move(from));
        use(from);  // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(Ascii(from), text);
    }
}

// std::vector and Vector move their strings when they grow instead of
// copying each one: the blocks stay where they were.
TYPED_TEST(EachString, GrowingContainersMoveTheStrings) {
    std::vector<TypeParam> standard;
    zo::kel::Vector<TypeParam> own;
    std::vector<const typename TypeParam::value_type*> blocks;
    for (unsigned int i = 0; i < 40; ++i) {
        standard.push_back(TypeParam(i + 1, typename TypeParam::value_type('a')));
        own.push_back(TypeParam(i + 1, typename TypeParam::value_type('b')));
        blocks.push_back(standard.back().c_str());
        blocks.push_back(own.back().c_str());
    }
    for (unsigned int i = 0; i < 40; ++i) {
        EXPECT_EQ(standard[i].c_str(), blocks[2 * i]) << i;
        EXPECT_EQ(own[i].c_str(), blocks[2 * i + 1]) << i;
    }
}

TEST(StringBase, EqualityIgnoresCaseExactCompareDoesNot) {
    const NarrowString upper("ABC");
    EXPECT_TRUE(upper == NarrowString("abc"));
    EXPECT_TRUE(upper == "abc");
    EXPECT_FALSE(upper != "abc");
    EXPECT_NE(upper.exactCompare("abc"), 0);
    EXPECT_LT(upper.exactCompare(NarrowString("abc")), 0);
    EXPECT_EQ(upper.exactCompare("ABC"), 0);
    EXPECT_TRUE(NarrowString("abc") < "ABCD");
    EXPECT_TRUE(NarrowString("b") > "A");
    EXPECT_EQ(NarrowString("abc").compare("ABCD"), -1);
    EXPECT_EQ(NarrowString("b").compare("A"), 1);
    EXPECT_TRUE(WideString(L"\u00C9T\u00C9") == L"\u00C9t\u00C9");
    // Embedded zeros take part, lengths come from the strings.
    EXPECT_GT(NarrowString("a\0b", 3u).compare(NarrowString("a\0a", 3u)), 0);
    EXPECT_EQ(NarrowString("xabcx").compare(1, 3, "ABC", 3), 0);
    EXPECT_THROW(NarrowString("ab").compare(3, 1, "a", 1), OutOfRange2);
    EXPECT_TRUE(Utf8String(AsBytes("Stra\xC3\x9F" "e")) == AsBytes("STRA\xC3\x9F" "E"));
}

struct SearchRow {
    const char* text;
    const char* pattern;
    unsigned int pos;
    unsigned int find;
    unsigned int rfind;
};

const SearchRow kSearchRows[] = {
    {"abcabc", "bc", 0, 1, npos},      {"abcabc", "bc", npos, npos, 4}, {"abcabc", "bc", 2, 4, 1},
    {"abcabc", "abc", 3, 3, 3},        {"abcabc", "abcd", 0, npos, npos}, {"abcabc", "", 0, 0, 0},
    {"abc", "", 3, npos, 3},  // an empty pattern at the end is not found forwards
    {"abc", "", 7, npos, 3},           {"abc", "c", 3, npos, 2},        {"", "", 0, npos, 0},
    {"aXbXc", "X", 4, npos, 3},        {"abc", "ABC", 0, npos, npos},  // searching is exact
};

TEST(StringBase, FindAndRfind) {
    for (const SearchRow& row : kSearchRows) {
        const NarrowString text(row.text);
        EXPECT_EQ(text.find(NarrowString(row.pattern), row.pos), row.find) << row.text << " / " << row.pattern;
        EXPECT_EQ(text.rfind(NarrowString(row.pattern), row.pos), row.rfind) << row.text << " / " << row.pattern;
    }
    const NarrowString text("hello world");
    EXPECT_EQ(text.find('o'), 4u);
    EXPECT_EQ(text.find('o', 5), 7u);
    EXPECT_EQ(text.find('o', 11), npos);
    EXPECT_EQ(text.rfind('o'), 7u);
    EXPECT_EQ(text.rfind('o', 6), 4u);
    EXPECT_EQ(text.rfind('z'), npos);
    const WideString wide(L"w\u00E9de w\u00E9de");
    EXPECT_EQ(wide.find(WideString(L"\u00E9d"), 2), 6u);
}

TEST(StringBase, CharacterSetSearches) {
    const NarrowString text("  key = value  ");
    const NarrowString blanks(" ");
    EXPECT_EQ(text.find_first_not_of(blanks), 2u);
    EXPECT_EQ(text.find_last_not_of(blanks), 12u);
    EXPECT_EQ(text.find_last_not_of(' '), 12u);
    EXPECT_EQ(text.find_last_not_of(' ', 4), 4u);
    EXPECT_EQ(text.find_first_of(NarrowString("=:")), 6u);
    EXPECT_EQ(text.find_first_of(NarrowString("=:"), 7), npos);
    EXPECT_EQ(text.find_last_of(NarrowString("ek")), 12u);
    EXPECT_EQ(text.find_last_of(NarrowString("ek"), 10), 3u);
    EXPECT_EQ(text.find_last_of('k'), 2u);
    EXPECT_EQ(NarrowString().find_last_of('k'), npos);
    EXPECT_EQ(NarrowString("   ").find_last_not_of(blanks), npos);
    EXPECT_EQ(NarrowString("   ").find_first_not_of(blanks), npos);
    EXPECT_FALSE(text.hasEmbeddedNull());
    EXPECT_TRUE(NarrowString("a\0b", 3u).hasEmbeddedNull());
}

TEST(StringBase, OffsetFaultsThrowWithTheirTextAndSite) {
    const NarrowString abc("abc");
    EXPECT_EQ(abc.substr(3).length(), 0u);
    EXPECT_EQ(abc.substr(1, 100).exactCompare("bc"), 0);
    const Thrown thrown = ThrownBy<OutOfRange2>([&] { abc.substr(4); });
    EXPECT_EQ(thrown.what, "Out of range: String offset out of range");
    EXPECT_STREQ(thrown.file, "zo/kel/StringBase");
    EXPECT_GT(thrown.line, 0u);
    NarrowString text("abc");
    char out[4] = {};
    EXPECT_THROW(text.copy(out, 1, 4), OutOfRange2);
    EXPECT_THROW(text.erase(4), OutOfRange2);
    EXPECT_THROW(text.replace(4, 0, abc), OutOfRange2);
    EXPECT_THROW(text.replace(0, 0, abc, 4, 1), OutOfRange2);
    EXPECT_THROW(text.append(abc, 4, 1), OutOfRange2);
    EXPECT_EQ(text.exactCompare("abc"), 0);
    EXPECT_EQ(text.copy(out, 10, 1), 2u);
    EXPECT_STREQ(out, "bc");
}

TEST(StringBase, ModifyOperations) {
    NarrowString text("hello world");
    RunSteps(text, {{[&] { text.replace(0, 5, NarrowString("goodbye")); }, "goodbye world"},
                    {[&] { text.replace(8, 100, NarrowString("moon!"), 0, 4); }, "goodbye moon"},
                    {[&] { text.replace(0, 4, text, 8, 4); }, "moonbye moon"},  // from itself
                    {[&] { text.erase(4, 4); }, "moonmoon"},
                    {[&] { EXPECT_EQ(*text.erase(text.begin() + 1, text.begin() + 3), 'n'); }, "mnmoon"},
                    {[&] { text.resize(8, '!'); }, "mnmoon!!"},
                    {[&] { text.resize(2); }, "mn"}});

    WideString wide(L"ab");
    wide += L'c';
    wide += WideString(L"de");
    wide += NarrowString("fg");
    wide += "hi";
    EXPECT_EQ(wide.exactCompare(L"abcdefghi"), 0);
    EXPECT_EQ((NarrowString("x") + NarrowString("y") + "z" + 'w' + L"v").exactCompare("xyzwv"), 0);
    NarrowString swapped("other");
    swap(text, swapped);
    EXPECT_EQ(text.exactCompare("other"), 0);
    EXPECT_EQ(swapped.exactCompare("mn"), 0);
}

TEST(StringBase, GrowthDoublesAndShrinkIsLazy) {
    NarrowString text, reserved, resized("abcdefgh");
    RunSteps(text, {{[&] { text.append("abc"); }, "abc", 6},  // 2 x 3
                    {[&] { text.append("d"); }, "abcd", 6},
                    {[&] { text.append("efg"); }, "abcdefg", 14},  // 2 x 7
                    {[&] { text.reserve(10); }, "abcdefg", 14},
                    {[&] { text.reserve(20); }, "abcdefg", 20},  // exact
                    {[&] { text.erase(0, 7); }, "", 0},          // 0 chars in a 20 block: shrunk to 0
                    {[&] { text.append(std::string(10, 'x').c_str()); }, "xxxxxxxxxx", 20},
                    {[&] { text.erase(0, 2); }, "xxxxxxxx", 8},  // 8 of 20: more than twice, shrink to 8
                    {[&] { text.erase(0, 4, KeepBuffer); }, "xxxx", 8},
                    {[&] { text.erase(0, 1); }, "xxx", 3},  // 3 of 8
                    {[&] { text.clear(KeepBuffer); }, "", 3},
                    {[&] { text.clear(); }, "", 0}});
    RunSteps(reserved, {{[&] { reserved.reserve(10); }, "", 10}, {[&] { reserved.reserve(5); }, "", 10},
                        {[&] { reserved.clear(); }, "", 0}});
    RunSteps(resized, {{[&] { resized.resize(2, ' ', KeepBuffer); }, "ab", 8},
                       {[&] { resized.resize(1); }, "a", 1},
                       {[&] { resized.freeString(); }, "", 0}});
}

TEST(StringBase, AppendingOwnTextDoublesIt) {
    NarrowString text("abcd");
    RunSteps(text, {{[&] { text.append(text.c_str(), text.length()); }, "abcdabcd"},
                    {[&] { text.append(text); }, "abcdabcdabcdabcd"},
                    {[&] { text.append(text, 12, 10); }, "abcdabcdabcdabcdabcd"}});  // from inside itself, with growth
}

TEST(StringBase, AssignmentReusesOrReplacesTheBlock) {
    NarrowString text("0123456789");
    RunSteps(text, {{[&] { text = "abcdef"; }, "abcdef", 10},  // 6 of 10 fits the lazy-shrink rule
                    {[&] { text = "ab"; }, "ab", 2},
                    {[&] { text.assign(text.c_str() + 1, 1); }, "b"},  // from inside itself
                    {[&] { text = L"wide"; }, "wide"},
                    {[&] { text.assign(L"xyz", 2); }, "xy"}});
    NarrowString moved(std::move(text));
    EXPECT_EQ(moved.exactCompare("xy"), 0);
    EXPECT_TRUE(text.empty());  // NOLINT(bugprone-use-after-move): documented as left empty
    text = moved;
    EXPECT_EQ(text.exactCompare("xy"), 0);
}

TEST(StringBase, ConversionsBetweenInstantiations) {
    const WideString wide(NarrowString("plain text"));
    EXPECT_EQ(wide.exactCompare(L"plain text"), 0);
    EXPECT_EQ(NarrowString(wide).exactCompare("plain text"), 0);
    EXPECT_EQ(NarrowString(L"abc", 2u).exactCompare("ab"), 0);
    const wchar_t range[] = L"range";
    EXPECT_EQ(NarrowString(range, range + 3).exactCompare("ran"), 0);
    EXPECT_THROW(NarrowString(L"caf\u00E9"), UnableToConvert);  // the narrow side is US-ASCII

    const Utf8String utf8(WideString(L"caf\u00E9 \U0001F600"));
    EXPECT_EQ(Bytes(utf8.begin(), utf8.end()), (Bytes{'c', 'a', 'f', 0xC3, 0xA9, ' ', 0xF0, 0x9F, 0x98, 0x80}));
    const auto* latin1 = reinterpret_cast<const unsigned char*>("caf\xE9");
    EXPECT_EQ(WideString(latin1, "ISO-8859-1").exactCompare(L"caf\u00E9"), 0);
    EXPECT_EQ(Utf8String(latin1, "ISO-8859-1").length(), 5u);
    EXPECT_THROW(WideString(latin1, "no-such-charset"), UnableToConvert);

    NarrowString appended("x");
    EXPECT_THROW(appended.append(L"\u00E9"), UnableToConvert);
    EXPECT_EQ(appended.exactCompare("x"), 0);
    appended.checkInvariants();
}

TEST(StringBase, BinaryFormsByteForByte) {
    // Form() also holds serializationSize() to the bytes written.
    EXPECT_EQ(Form(NarrowString("ab")), (Bytes{0x03, 0x00, 0x00, 0x00, 0x61, 0x62, 0x00}));
    EXPECT_EQ(Form(NarrowString()), (Bytes{0x01, 0x00, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Form(WideString(L"ab")), (Bytes{0x02, 0x00, 0x00, 0x00, 0x61, 0x62}));
    EXPECT_EQ(Form(WideString(L"\u00E9")), (Bytes{0x02, 0x00, 0x00, 0x00, 0xC3, 0xA9}));
    EXPECT_EQ(Form(WideString(L"\u20AC")), (Bytes{0x03, 0x00, 0x00, 0x00, 0xE2, 0x82, 0xAC}));
    EXPECT_EQ(Form(WideString()), (Bytes{0x00, 0x00, 0x00, 0x00}));
    const unsigned char raw[] = {0xFF, 0x00, 0x41};
    EXPECT_EQ(Form(Utf8String(raw, 3u)), (Bytes{0x03, 0x00, 0x00, 0x00, 0xFF, 0x00, 0x41}));
    EXPECT_EQ(Form(Utf8String()), (Bytes{0x00, 0x00, 0x00, 0x00}));
    // Too little room throws without a site.
    ExpectOverflow(NarrowString("ab"), 6);
    ExpectOverflow(WideString(L"abc"), 6);
    ExpectOverflow(Utf8String(AsBytes("abc")), 6);
}

TEST(StringBase, DeserializeRejectsBadInputAndKeepsTheTarget) {
    const auto narrow = [] { return NarrowString("keep"); };
    const auto wide = [] { return WideString("keep"); };
    constexpr const char* kString = "zo/kel/StringBase";
    ExpectReadFails(narrow, {0x03, 0x00, 0x00}, nullptr);                   // no count
    ExpectReadFails(narrow, {0x03, 0x00, 0x00, 0x00, 'a', 0x00}, nullptr);  // short
    ExpectReadFails(narrow, {0x03, 0x00, 0x00, 0x00, 'a', 'b', 'c'}, kString);
    ExpectReadFails(narrow, {0x00, 0x00, 0x00, 0x00}, kString);        // count 0
    ExpectReadFails(narrow, {0xFF, 0xFF, 0xFF, 0xFF, 0x00}, nullptr);  // huge count
    ExpectReadFails(wide, {0x02, 0x00, 0x00, 0x00, 0xC3}, nullptr);
    ExpectReadFails<InvalidSequence>(wide, {0x02, 0x00, 0x00, 0x00, 0xC3, 0x41}, "zo/kel/Utf8");
    ExpectReadFails<InvalidSequence>(wide, {0x01, 0x00, 0x00, 0x00, 0x80}, "zo/kel/Utf8");
    ExpectReadFails(wide, {0xFF, 0xFF, 0xFF, 0x7F, 0x41}, nullptr);
}

TEST(StringBase, DeserializeReadsEachFormAndAdvances) {
    const Bytes input = {0x03, 0x00, 0x00, 0x00, 'h', 'i', 0x00, 0x03, 0x00, 0x00, 0x00, 0xE2, 0x82, 0xAC,
                         0x00, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0xC3, 0xA9};
    const unsigned char* cursor = input.data();
    const unsigned char* limit = input.data() + input.size();
    NarrowString narrow;
    narrow.deserialize(cursor, limit);
    EXPECT_EQ(narrow.exactCompare("hi"), 0);
    WideString wide("old contents that are long");
    wide.deserialize(cursor, limit);
    EXPECT_EQ(wide.exactCompare(L"\u20AC"), 0);
    EXPECT_EQ(wide.capacity(), 1u);  // reallocated exactly
    wide.deserialize(cursor, limit);
    EXPECT_TRUE(wide.empty());
    Utf8String bytes;
    bytes.deserialize(cursor, limit);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), (Bytes{0xC3, 0xA9}));
    EXPECT_EQ(cursor, limit);
}

}  // namespace
