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

TYPED_TEST(EachString, EveryConstructorTakesItsText) {
    using Char = typename TypeParam::value_type;
    using OtherString = typename TypeParam::OtherString;
    const auto chars = Chars<Char>("abcdef");
    const auto others = Chars<typename OtherString::value_type>("abcdef");
    const TypeParam abc(chars.data(), 3u);
    const std::pair<TypeParam, const char*> rows[] = {
        {TypeParam(chars.data()), "abcdef"},
        {TypeParam(chars.data(), 2u), "ab"},
        {TypeParam(chars.data(), 0u), ""},
        {TypeParam(chars.data() + 1, chars.data() + 3), "bc"},
        {TypeParam(others.data()), "abcdef"},
        {TypeParam(others.data(), 2u), "ab"},
        {TypeParam(others.data() + 1, others.data() + 3), "bc"},
        {TypeParam(OtherString(others.data())), "abcdef"},
        {TypeParam(AsBytes("abc"), "ISO-8859-1"), "abc"},
        {TypeParam(3u, Char('z')), "zzz"},
        {TypeParam(abc), "abc"},
        {TypeParam(abc, 1), "bc"},
        {TypeParam(abc, 1, 1), "b"},
        {TypeParam(abc, 3), ""},
        {TypeParam(abc, abc), "abcabc"},
        {abc + abc + Char('!'), "abcabc!"},
    };
    for (const auto& [string, text] : rows) EXPECT_EQ(Ascii(string), text);
}

// A null pointer is an empty text wherever a text is taken.
TYPED_TEST(EachString, NullPointersAreEmptyTexts) {
    using Char = typename TypeParam::value_type;
    using OtherChar = typename TypeParam::OtherString::value_type;
    const Char* none = nullptr;
    const OtherChar* otherNone = nullptr;
    for (const TypeParam& empty : {TypeParam(none), TypeParam(none, 5u), TypeParam(none, none), TypeParam(otherNone),
                                   TypeParam(otherNone, 5u), TypeParam(otherNone, otherNone)}) {
        EXPECT_EQ(Ascii(empty), "");
    }
    TypeParam text = Str<TypeParam>("abc");
    RunSteps(text, {{[&] { text.append(none); }, "abc"},
                    {[&] { text.append(none, 3u); }, "abc"},
                    {[&] { text.append(otherNone); }, "abc"},
                    {[&] { text += Chars<OtherChar>("").data(); }, "abc"},
                    {[&] { text.append(text.c_str(), 0u); }, "abc"},
                    {[&] { text.append(0u, Char('x')); }, "abc"},
                    {[&] { text.assign(none, 3u); }, ""},
                    {[&] { text = Str<TypeParam>("xyz"); }, "xyz"},
                    {[&] { text = none; }, ""},
                    {[&] { text.assign(otherNone, 2u); }, ""}});
    // Compared with a null text, only the empty string is equal.
    EXPECT_GT(Str<TypeParam>("a").compare(none), 0);
    EXPECT_EQ(TypeParam().compare(none), 0);
    EXPECT_EQ(Str<TypeParam>("a").compare(1, 0, none, 0), 0);
    EXPECT_GT(Str<TypeParam>("a").exactCompare(none), 0);
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
    {"abcabc", "abc", 4, npos, 3},     {"ab", "abc", 0, npos, npos},     // longer than what remains
};

TYPED_TEST(EachString, FindAndRfind) {
    using Char = typename TypeParam::value_type;
    for (const SearchRow& row : kSearchRows) {
        const auto text = Str<TypeParam>(row.text);
        const auto pattern = Str<TypeParam>(row.pattern);
        EXPECT_EQ(text.find(pattern, row.pos), row.find) << row.text << " / " << row.pattern;
        EXPECT_EQ(text.rfind(pattern, row.pos), row.rfind) << row.text << " / " << row.pattern;
    }
    const auto text = Str<TypeParam>("hello world");
    EXPECT_EQ(text.find(Char('o')), 4u);
    EXPECT_EQ(text.find(Char('o'), 5), 7u);
    EXPECT_EQ(text.find(Char('o'), 11), npos);
    EXPECT_EQ(text.find(Char('z')), npos);
    EXPECT_EQ(text.find(Str<TypeParam>("ox")), npos);  // first character found, the rest not
    EXPECT_EQ(text.find(Str<TypeParam>("lx")), npos);  // the last possible start fails
    EXPECT_EQ(text.find(Str<TypeParam>("wor")), 6u);
    EXPECT_EQ(text.rfind(Char('o')), 7u);
    EXPECT_EQ(text.rfind(Char('o'), 6), 4u);
    EXPECT_EQ(text.rfind(Char('z')), npos);
}

TEST(StringBase, FindComparesWholeWideCharacters) {
    const WideString wide(L"w\u00E9de w\u00E9de");
    EXPECT_EQ(wide.find(WideString(L"\u00E9d"), 2), 6u);
    EXPECT_EQ(wide.find(WideString(L"\u01E9")), npos);  // same low byte, another character
}

TYPED_TEST(EachString, CharacterSetSearches) {
    using Char = typename TypeParam::value_type;
    const auto text = Str<TypeParam>("  key = value  ");
    const auto blanks = Str<TypeParam>(" ");
    const TypeParam none;
    EXPECT_EQ(text.find_first_not_of(blanks), 2u);
    EXPECT_EQ(text.find_last_not_of(blanks), 12u);
    EXPECT_EQ(text.find_last_not_of(Char(' ')), 12u);
    EXPECT_EQ(text.find_last_not_of(Char(' '), 4), 4u);
    EXPECT_EQ(text.find_first_of(Str<TypeParam>("=:")), 6u);
    EXPECT_EQ(text.find_first_of(Str<TypeParam>("=:"), 7), npos);
    EXPECT_EQ(text.find_last_of(Str<TypeParam>("ek")), 12u);
    EXPECT_EQ(text.find_last_of(Str<TypeParam>("ek"), 10), 3u);
    EXPECT_EQ(text.find_last_of(Char('k')), 2u);
    EXPECT_EQ(TypeParam().find_last_of(Char('k')), npos);
    EXPECT_EQ(Str<TypeParam>("   ").find_last_not_of(blanks), npos);
    EXPECT_EQ(Str<TypeParam>("   ").find_first_not_of(blanks), npos);
    // An empty set matches nothing, so every character is outside it.
    EXPECT_EQ(text.find_first_of(none), npos);
    EXPECT_EQ(text.find_last_of(none), npos);
    EXPECT_EQ(text.find_first_not_of(none, 3), 3u);
    EXPECT_EQ(text.find_last_not_of(none), 14u);
    EXPECT_FALSE(text.hasEmbeddedNull());
    EXPECT_TRUE(Str<TypeParam>(std::string_view("a\0b", 3)).hasEmbeddedNull());
}

TYPED_TEST(EachString, OffsetFaultsThrowWithTheirTextAndSite) {
    using Char = typename TypeParam::value_type;
    const auto abc = Str<TypeParam>("abc");
    EXPECT_EQ(Ascii(abc.substr(3)), "");
    EXPECT_EQ(Ascii(abc.substr(1, 100)), "bc");
    const Thrown thrown = ThrownBy<OutOfRange2>([&] { abc.substr(4); });
    EXPECT_EQ(thrown.what, "Out of range: String offset out of range");
    EXPECT_STREQ(thrown.file, "zo/kel/StringBase");
    EXPECT_GT(thrown.line, 0u);
    auto text = Str<TypeParam>("abc");
    const typename TypeParam::OtherString other(Chars<typename TypeParam::OtherString::value_type>("xyz").data());
    Char out[4] = {};
    EXPECT_THROW(text.copy(out, 1, 4), OutOfRange2);
    EXPECT_THROW(text.erase(4), OutOfRange2);
    EXPECT_THROW(text.replace(4, 0, abc), OutOfRange2);
    EXPECT_THROW(text.replace(0, 0, abc, 4, 1), OutOfRange2);
    EXPECT_THROW(text.append(abc, 4, 1), OutOfRange2);
    EXPECT_THROW(text.append(other, 4, 1), OutOfRange2);
    EXPECT_THROW(text.compare(4, 1, abc.c_str(), 1), OutOfRange2);
    EXPECT_EQ(Ascii(text), "abc");
    EXPECT_EQ(text.copy(out, 10, 1), 2u);
    EXPECT_EQ(std::string(out, out + 2), "bc");
    EXPECT_EQ(text.copy(out, 10, 3), 0u);  // from the end: nothing, and no fault
}

TYPED_TEST(EachString, ModifyOperations) {
    using Char = typename TypeParam::value_type;
    auto text = Str<TypeParam>("hello world");
    const typename TypeParam::OtherString other(Chars<typename TypeParam::OtherString::value_type>("xyz").data());
    RunSteps(text, {{[&] { text.replace(0, 5, Str<TypeParam>("goodbye")); }, "goodbye world"},
                    {[&] { text.replace(8, 100, Str<TypeParam>("moon!"), 0, 4); }, "goodbye moon"},
                    {[&] { text.replace(0, 4, text, 8, 4); }, "moonbye moon"},  // from itself
                    {[&] { text.replace(4, 3, Str<TypeParam>("BYE")); }, "moonBYE moon"},  // same length
                    {[&] { text.replace(4, 4, TypeParam()); }, "moonmoon"},
                    {[&] { text.replace(8, 0, text, 0, 4); }, "moonmoonmoon"},  // from itself, with growth
                    {[&] { text.erase(4, 4); }, "moonmoon"},
                    {[&] { EXPECT_EQ(*text.erase(text.begin() + 1, text.begin() + 3), Char('n')); }, "mnmoon"},
                    {[&] { text.erase(6, 0); }, "mnmoon"},
                    {[&] { text.resize(8, Char('!')); }, "mnmoon!!"},
                    {[&] { text.resize(8, Char('?')); }, "mnmoon!!"},
                    {[&] { text.resize(2); }, "mn"},
                    {[&] { text.append(other, 1, 5); }, "mnyz"},
                    {[&] { text.append(other); }, "mnyzxyz"},
                    {[&] { text.append(other, 3, 1); }, "mnyzxyz"},
                    {[&] { text.append(Str<TypeParam>("uvw"), 1, 1); }, "mnyzxyzv"}});
    auto swapped = Str<TypeParam>("other");
    swap(text, swapped);
    EXPECT_EQ(Ascii(text), "other");
    EXPECT_EQ(Ascii(swapped), "mnyzxyzv");
}

TEST(StringBase, OtherCharactersConvertOnTheWayIn) {
    WideString wide(L"ab");
    wide += L'c';
    wide += WideString(L"de");
    wide += NarrowString("fg");
    wide += "hi";
    EXPECT_EQ(wide.exactCompare(L"abcdefghi"), 0);
    EXPECT_EQ((NarrowString("x") + NarrowString("y") + "z" + 'w' + L"v" + WideString(L"u")).exactCompare("xyzwvu"),
              0);
    Utf8String utf8(AsBytes("a"));
    utf8 += L"\u00E9";
    utf8.append(WideString(L"\u20AC!"), 1, 5);
    EXPECT_EQ(Bytes(utf8.begin(), utf8.end()), (Bytes{'a', 0xC3, 0xA9, '!'}));
}

TYPED_TEST(EachString, GrowthDoublesAndShrinkIsLazy) {
    using Char = typename TypeParam::value_type;
    TypeParam text, reserved, resized = Str<TypeParam>("abcdefgh");
    const auto append = [&](std::string_view ascii) { text.append(Chars<Char>(ascii).data()); };
    RunSteps(text, {{[&] { append("abc"); }, "abc", 6},  // 2 x 3
                    {[&] { append("d"); }, "abcd", 6},
                    {[&] { append("efg"); }, "abcdefg", 14},  // 2 x 7
                    {[&] { text.reserve(10); }, "abcdefg", 14},
                    {[&] { text.reserve(20); }, "abcdefg", 20},  // exact
                    {[&] { text.erase(0, 7); }, "", 0},          // 0 chars in a 20 block: shrunk to 0
                    {[&] { append(std::string(10, 'x')); }, "xxxxxxxxxx", 20},
                    {[&] { text.erase(0, 2); }, "xxxxxxxx", 8},  // 8 of 20: more than twice, shrink to 8
                    {[&] { text.erase(0, 4, KeepBuffer); }, "xxxx", 8},
                    {[&] { text.erase(0, 1); }, "xxx", 3},  // 3 of 8
                    {[&] { text.append(3u, Char('y')); }, "xxxyyy", 12},
                    {[&] { text.erase(6); }, "xxxyyy", 12},  // nothing erased: 6 of 12 is kept
                    {[&] { text.clear(KeepBuffer); }, "", 12},
                    {[&] { text.clear(); }, "", 0}});
    RunSteps(reserved, {{[&] { reserved.reserve(10); }, "", 10}, {[&] { reserved.reserve(5); }, "", 10},
                        {[&] { reserved.clear(); }, "", 0}});
    RunSteps(resized, {{[&] { resized.resize(2, Char(' '), KeepBuffer); }, "ab", 8},
                       {[&] { resized.resize(1); }, "a", 1},
                       {[&] { resized.freeString(); }, "", 0}});
}

TYPED_TEST(EachString, AppendingOwnTextDoublesIt) {
    auto text = Str<TypeParam>("abcd");
    RunSteps(text, {{[&] { text.append(text.c_str(), text.length()); }, "abcdabcd"},
                    {[&] { text.append(text); }, "abcdabcdabcdabcd"},
                    {[&] { text.append(text, 12, 10); }, "abcdabcdabcdabcdabcd"},  // from inside itself, with growth
                    {[&] { text.append(text, 0, 1); }, "abcdabcdabcdabcdabcda"}});
}

TYPED_TEST(EachString, AssignmentReusesOrReplacesTheBlock) {
    using Char = typename TypeParam::value_type;
    using OtherChar = typename TypeParam::OtherString::value_type;
    auto text = Str<TypeParam>("0123456789");
    const auto sameText = Str<TypeParam>("abcdef");
    RunSteps(text, {{[&] { text = sameText; }, "abcdef", 10},  // 6 of 10 fits the lazy-shrink rule
                    {[&] { text = Chars<Char>("ab").data(); }, "ab", 2},
                    {[&] { text.assign(text.c_str() + 1, 1); }, "b"},  // from inside itself
                    {[&] { text = Chars<Char>("").data(); }, "", 0},
                    {[&] { text = Chars<OtherChar>("other").data(); }, "other"},
                    {[&] { text.assign(Chars<OtherChar>("xyz").data(), 2); }, "xy"},
                    {[&] {
                         const TypeParam& same = text;
                         text = same;
                     },
                     "xy"}});
    TypeParam copied;
    copied = text;
    EXPECT_EQ(Ascii(copied), "xy");
    EXPECT_NE(copied.c_str(), text.c_str());  // copies are deep
}

TEST(StringBase, ConversionsBetweenInstantiations) {
    const WideString wide(NarrowString("plain text"));
    EXPECT_EQ(wide.exactCompare(L"plain text"), 0);
    EXPECT_EQ(NarrowString(wide).exactCompare("plain text"), 0);
    EXPECT_EQ(NarrowString(L"abc", 2u).exactCompare("ab"), 0);
    const wchar_t range[] = L"range";
    EXPECT_EQ(NarrowString(range, range + 3).exactCompare("ran"), 0);
    EXPECT_THROW(NarrowString(L"caf\u00E9"), UnableToConvert);  // the narrow side is US-ASCII
    EXPECT_THROW(NarrowString(AsBytes("caf\xE9"), "ISO-8859-1"), UnableToConvert);

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
    ExpectReadFails(wide, {0x02, 0x00}, nullptr);
    const auto bytes = [] { return Utf8String(AsBytes("keep")); };
    ExpectReadFails(bytes, {0x02, 0x00, 0x00}, nullptr);
    ExpectReadFails(bytes, {0x03, 0x00, 0x00, 0x00, 'a', 'b'}, nullptr);
}

TEST(StringBase, DeserializeReadsEachFormAndAdvances) {
    const Bytes input = {0x03, 0x00, 0x00, 0x00, 'h', 'i', 0x00, 0x03, 0x00, 0x00, 0x00, 0xE2, 0x82, 0xAC,
                         0x00, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0xC3, 0xA9, 0x02, 0x00, 0x00, 0x00,
                         'a',  'b',  0x02, 0x00, 0x00, 0x00, 0xC3, 0xA9};
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
    wide.deserialize(cursor, limit);
    EXPECT_EQ(wide.exactCompare(L"ab"), 0);
    wide.deserialize(cursor, limit);
    EXPECT_EQ(wide.exactCompare(L"\u00E9"), 0);
    EXPECT_EQ(wide.capacity(), 2u);  // 1 of 2 keeps the block
    EXPECT_EQ(cursor, limit);
}

}  // namespace
