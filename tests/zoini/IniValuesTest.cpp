#include <cmath>
#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "zoini/IniTestSupport.h"

namespace {

using namespace ini_test;

TEST(IniValues, TypedPutsStoreTheirText) {
    Document doc = NewDocument();
    IniHandle d = doc.get();
    // The results of the puts, in order (a braced list is evaluated left to right).
    EXPECT_EQ((std::vector{IniPutDouble(d, "S", "d", 0.5), IniPutInt(d, "S", "i", -42), IniPutUInt(d, "S", "u", 4294967295u),
                           IniPutBoolean(d, "S", "t", 7), IniPutBoolean(d, "S", "f", 0), IniPut(d, "S", "p", nullptr, 0),
                           IniPut(d, "S", "q", "v", 'x'), IniPutRawString(d, "S", "r", "a\\tb"), IniPut(d, "S", "s", "v", '\''),
                           IniPutString(d, "S", "n", nullptr)}),
              (std::vector{1, 1, 1, 1, 1, 1, int{kIniErrInvalidArgument}, 1, 1, 1}));
    EXPECT_EQ(WriteText(doc.get()),
              "[S]\nd = 5.00000000000000e-01\ni = -42\nu = 4294967295\nt = True\nf = False\np = \n"
              "r = \"a\\tb\"\ns = 'v'\nn = \"\"\n\n");
    EXPECT_EQ(IniLineOfSection(doc.get(), "S"), -1);
    EXPECT_EQ((std::vector{IniPutInt(d, "", "i", 1), IniPutInt(d, "S", "", 1), IniPutInt(nullptr, "S", "i", 1),
                           IniPutInt(d, nullptr, "i", 1), IniPutInt(d, "S", nullptr, 1), IniPutString(d, "", "s", "v")}),
              (std::vector{int{kIniErrEmptyName}, int{kIniErrEmptyName}, int{kIniErrInvalidArgument},
                           int{kIniErrEmptyName}, int{kIniErrEmptyName}, int{kIniErrEmptyName}}));
}

TEST(IniValues, PutReplacesOnlyWithDuplicateChecking) {
    Document doc = NewDocument();
    IniPutInt(doc.get(), "S", "k", 1);
    IniPutInt(doc.get(), "S", " K ", 2);
    EXPECT_EQ(IniNumberOfItems(doc.get(), "S"), 1);
    EXPECT_EQ(RawValue(doc.get(), "S", "k"), "2");
    IniSetDuplicateChecking(doc.get(), 0);
    IniPutInt(doc.get(), "S", "k", 3);
    EXPECT_EQ(IniNumberOfItems(doc.get(), "S"), 2);
    EXPECT_EQ(RawValue(doc.get(), "S", "k"), "2");
}

TEST(IniValues, StringsAreEscapedAndUnescaped) {
    const std::string original = "tab\there\nquote\"back\\slash\x01\x7f\xC3\xA9";
    Document doc = NewDocument();
    ASSERT_EQ(IniPutString(doc.get(), "S", "s", original.c_str()), 1);
    EXPECT_EQ(RawValue(doc.get(), "S", "s"), "tab\\there\\nquote\\\"back\\\\slash\\x01\\x7f\xC3\xA9");
    const char* value = nullptr;
    ASSERT_EQ(IniGetPointerToString(doc.get(), "S", "s", &value), 1);
    EXPECT_EQ(value, original);
    ASSERT_EQ(IniPutStringWithOptions(doc.get(), "S", "plain", "a\tb", 0, 0), 1);
    const std::string text = WriteText(doc.get());
    EXPECT_EQ(text.substr(text.find("plain")), "plain = a\tb\n\n");

    // Unknown escapes keep the character; \x needs two hex digits of either case.
    ASSERT_EQ(IniPut(doc.get(), "S", "odd", "a\\qb\\x4A\\x4a\\x4\\\"q\"\\", 0), 1);
    ASSERT_EQ(IniGetPointerToString(doc.get(), "S", "odd", &value), 1);
    EXPECT_STREQ(value, "aqbJJx4\"q\"");
    ASSERT_EQ(IniPut(doc.get(), "S", "notHex", "\\x!1\\xg1\\x:1\\xG1\\x1G", 0), 1);
    ASSERT_EQ(IniGetPointerToString(doc.get(), "S", "notHex", &value), 1);
    EXPECT_STREQ(value, "x!1xg1x:1xG1x1G");

    // The scratch block grows for a long value and serves a short one after it.
    const std::string longValue(5000, 'a');
    IniPutString(doc.get(), "S", "long", longValue.c_str());
    IniPutString(doc.get(), "S", "short", "b");
    ASSERT_EQ(IniGetPointerToString(doc.get(), "S", "long", &value), 1);
    EXPECT_EQ(value, longValue);
    ASSERT_EQ(IniGetPointerToString(doc.get(), "S", "short", &value), 1);
    EXPECT_STREQ(value, "b");
}

TEST(IniValues, MissingAndBlankItemsGiveZero) {
    Document doc = ParseText("[S]\nblank=\"  \"\nx=1\n");
    int number = 77;
    const char* value = nullptr;
    EXPECT_EQ(IniGetInt(doc.get(), "S", "missing", &number), 0);
    EXPECT_EQ(IniLineOfLastAccess(doc.get()), -1);
    EXPECT_EQ(IniGetInt(doc.get(), "S", "blank", &number), 0);
    EXPECT_EQ(IniLineOfLastAccess(doc.get()), 2);
    EXPECT_EQ(IniGetPointerToString(doc.get(), "S", "blank", &value), 0);
    EXPECT_EQ(IniGetInt(doc.get(), "Nope", "x", &number), 0);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(IniGetInt(doc.get(), "S", "x", &number), 1);
    EXPECT_EQ(IniLineOfLastAccess(doc.get()), 3);

    // Every reader answers 0 for a missing item and leaves its output alone.
    unsigned int unsignedNumber = 7;
    double real = 7.0;
    int truth = 7;
    char* copy = nullptr;
    char buffer[4] = "old";
    EXPECT_EQ((std::vector{IniGetUInt(doc.get(), "S", "missing", &unsignedNumber),
                           IniGetDouble(doc.get(), "S", "missing", &real),
                           IniGetBoolean(doc.get(), "S", "missing", &truth),
                           IniGetPointerToRawString(doc.get(), "S", "missing", &value),
                           IniGetStringCopy(doc.get(), "S", "missing", &copy),
                           IniGetRawStringIntoBuffer(doc.get(), "S", "missing", buffer, sizeof buffer)}),
              std::vector(6, 0));
    EXPECT_EQ(std::tuple(unsignedNumber, real, truth, copy, std::string(buffer)),
              std::tuple(7u, 7.0, 7, static_cast<char*>(nullptr), std::string("old")));
}

// Null documents and null outputs are refused, not dereferenced.
TEST(IniValues, NullArgumentsAreRefused) {
    Document doc = ParseText("[S]\nx=1\n");
    IniHandle d = doc.get();
    const char* text = nullptr;
    int number = 0;
    unsigned int unsignedNumber = 0;
    double real = 0;
    char buffer[4];
    for (IniHandle handle : {IniHandle{nullptr}, d}) {
        const bool noDocument = handle == nullptr;
        const auto pick = [&](auto* out) { return noDocument ? out : nullptr; };
        EXPECT_EQ((std::vector{IniGetPointerToString(handle, "S", "x", pick(&text)),
                               IniGetPointerToRawString(handle, "S", "x", pick(&text)),
                               IniGetInt(handle, "S", "x", pick(&number)),
                               IniGetUInt(handle, "S", "x", pick(&unsignedNumber)),
                               IniGetDouble(handle, "S", "x", pick(&real)),
                               IniGetBoolean(handle, "S", "x", pick(&number))}),
                  std::vector(6, int{kIniErrInvalidArgument}))
            << (noDocument ? "no document" : "no output");
    }
    EXPECT_EQ(IniGetStringCopy(d, "S", "x", nullptr), kIniErrInvalidArgument);
    EXPECT_EQ(IniGetStringIntoBuffer(d, "S", "x", nullptr, sizeof buffer), kIniErrInvalidArgument);
}

// `text` put as an item and read back by `get` into a variable holding
// `initial`: the result and the variable, which a refusal must leave alone.
template <typename T>
std::pair<int, T> GetAs(int (*get)(IniHandle, const char*, const char*, T*), const char* text, T initial = T{}) {
    Document doc = NewDocument();
    IniPut(doc.get(), "S", "v", text, 0);
    T value = initial;
    const int result = get(doc.get(), "S", "v", &value);
    return {result, value};
}

TEST(IniValues, IntegerGrammar) {
    const struct {
        const char* text;
        std::pair<int, int> asInt;
        std::pair<int, unsigned int> asUInt;
    } cases[] = {
        {" -2147483648 ", {1, -2147483647 - 1}, {kIniErrBadInteger, 0}},
        {"2147483647", {1, 2147483647}, {1, 2147483647u}},
        {"2147483648", {kIniErrBadInteger, 0}, {1, 2147483648u}},
        {"4294967295", {kIniErrBadInteger, 0}, {1, 4294967295u}},
        {"+17", {1, 17}, {1, 17}},
        {"-0", {1, 0}, {kIniErrBadInteger, 0}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(GetAs(IniGetInt, c.text), c.asInt) << c.text;
        EXPECT_EQ(GetAs(IniGetUInt, c.text), c.asUInt) << c.text;
    }
    for (const char* text : {"4294967296", "12abc", "- 5", "5-", "+-5", "+", "0x10", "1 2", "x1"}) {
        EXPECT_EQ(GetAs(IniGetInt, text), std::make_pair(int{kIniErrBadInteger}, 0)) << text;
        EXPECT_EQ(GetAs(IniGetUInt, text), std::make_pair(int{kIniErrBadInteger}, 0u)) << text;
    }
}

TEST(IniValues, DoublesAndBooleans) {
    const std::pair<const char*, std::pair<int, double>> doubles[] = {
        {"+Inf", {1, HUGE_VAL}}, {" inf ", {1, HUGE_VAL}}, {"-INF", {1, -HUGE_VAL}}, {"1.5", {1, 1.5}},
        {"  -2.5e3", {1, -2500.0}}, {"1.5 ", {kIniErrBadDouble, 0}}, {"1e999", {kIniErrBadDouble, 0}},
        {"abc", {kIniErrBadDouble, 0}}, {"1.5x", {kIniErrBadDouble, 0}},
    };
    for (const auto& [text, expected] : doubles) EXPECT_EQ(GetAs(IniGetDouble, text), expected) << text;
    const std::pair<const char*, std::pair<int, int>> booleans[] = {
        {" true ", {1, 1}}, {"FALSE", {1, 0}}, {"True", {1, 1}}, {"yes", {kIniErrBadBoolean, -1}},
        {"truest", {kIniErrBadBoolean, -1}}, {"1", {kIniErrBadBoolean, -1}}};
    for (const auto& [text, expected] : booleans) EXPECT_EQ(GetAs(IniGetBoolean, text, -1), expected) << text;
}

TEST(IniValues, CopiesAndBuffers) {
    Document doc = NewDocument();
    IniPutString(doc.get(), "S", "s", "a\tb");
    using CopyGetter = int (*)(IniHandle, const char*, const char*, char**);
    for (const auto& [get, expected] :
         {std::pair<CopyGetter, const char*>{IniGetStringCopy, "a\tb"}, {IniGetRawStringCopy, "a\\tb"}}) {
        char* copy = nullptr;
        ASSERT_EQ(get(doc.get(), "S", "s", &copy), 1);
        EXPECT_STREQ(copy, expected);
        std::free(copy);
    }
    char buffer[4];
    EXPECT_EQ(IniGetStringIntoBuffer(doc.get(), "S", "s", buffer, sizeof buffer), 1);
    EXPECT_STREQ(buffer, "a\tb");
    EXPECT_EQ(IniGetRawStringIntoBuffer(doc.get(), "S", "s", buffer, sizeof buffer), kIniErrInvalidArgument);
    EXPECT_STREQ(buffer, "a\\t");
    EXPECT_EQ(IniGetRawStringIntoBuffer(doc.get(), "S", "s", buffer, 0), kIniErrInvalidArgument);
    EXPECT_EQ(IniGetStringIntoBuffer(doc.get(), "S", "none", buffer, sizeof buffer), 0);
}

TEST(IniValues, EditingSectionsAndItems) {
    Document doc = ParseText("[A]\nx=1\ny=2\n[B]\nz=3\n");
    EXPECT_EQ(IniRemoveItem(doc.get(), "A", "X"), 1);
    EXPECT_EQ(IniRemoveItem(doc.get(), "A", "x"), 0);
    EXPECT_EQ(IniDisposeSection(doc.get(), "B"), 1);
    EXPECT_TRUE(IniSectionExists(doc.get(), "B"));
    EXPECT_EQ(IniNumberOfItems(doc.get(), "B"), 0);
    EXPECT_EQ(IniRemoveSection(doc.get(), "A"), 1);
    EXPECT_EQ(IniRemoveSection(doc.get(), "A"), 0);
    EXPECT_EQ(IniNumberOfSections(doc.get()), 1);
    EXPECT_EQ(IniNew(1), nullptr);
}

}  // namespace
