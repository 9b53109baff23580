#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "zoini/IniTestSupport.h"

namespace {

using namespace ini_test;

TEST(IniValues, TypedPutsStoreTheirText) {
    Document doc = NewDocument();
    EXPECT_EQ(IniPutDouble(doc.get(), "S", "d", 0.5), 1);
    EXPECT_EQ(IniPutInt(doc.get(), "S", "i", -42), 1);
    EXPECT_EQ(IniPutUInt(doc.get(), "S", "u", 4294967295u), 1);
    EXPECT_EQ(IniPutBoolean(doc.get(), "S", "t", 7), 1);
    EXPECT_EQ(IniPutBoolean(doc.get(), "S", "f", 0), 1);
    EXPECT_EQ(IniPut(doc.get(), "S", "p", nullptr, 0), 1);
    EXPECT_EQ(IniPut(doc.get(), "S", "q", "v", 'x'), kIniErrInvalidArgument);
    EXPECT_EQ(IniPutRawString(doc.get(), "S", "r", "a\\tb"), 1);
    EXPECT_EQ(WriteText(doc.get()),
              "[S]\nd = 5.00000000000000e-01\ni = -42\nu = 4294967295\nt = True\nf = False\np = \n"
              "r = \"a\\tb\"\n\n");
    EXPECT_EQ(IniLineOfSection(doc.get(), "S"), -1);
    EXPECT_EQ(IniPutInt(doc.get(), "", "i", 1), kIniErrEmptyName);
    EXPECT_EQ(IniPutInt(doc.get(), "S", "", 1), kIniErrEmptyName);
    EXPECT_EQ(IniPutInt(nullptr, "S", "i", 1), kIniErrInvalidArgument);
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
    EXPECT_EQ(WriteText(doc.get()).substr(WriteText(doc.get()).find("plain")), "plain = a\tb\n\n");

    // Unknown escapes keep the character; \x needs two hex digits of either case.
    ASSERT_EQ(IniPut(doc.get(), "S", "odd", "a\\qb\\x4A\\x4a\\x4\\\"q\"\\", 0), 1);
    ASSERT_EQ(IniGetPointerToString(doc.get(), "S", "odd", &value), 1);
    EXPECT_STREQ(value, "aqbJJx4\"q\"");
}

TEST(IniValues, ScratchBlockServesLongValues) {
    Document doc = NewDocument();
    const std::string longValue(5000, 'a');
    IniPutString(doc.get(), "S", "long", longValue.c_str());
    IniPutString(doc.get(), "S", "short", "b");
    const char* value = nullptr;
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
}

struct IntegerCase {
    const char* text;
    int intResult;
    int intValue;
    int uintResult;
    unsigned int uintValue;
};

TEST(IniValues, IntegerGrammar) {
    const IntegerCase cases[] = {
        {" -2147483648 ", 1, -2147483647 - 1, kIniErrBadInteger, 0},
        {"2147483647", 1, 2147483647, 1, 2147483647u},
        {"2147483648", kIniErrBadInteger, 0, 1, 2147483648u},
        {"4294967295", kIniErrBadInteger, 0, 1, 4294967295u},
        {"4294967296", kIniErrBadInteger, 0, kIniErrBadInteger, 0},
        {"+17", 1, 17, 1, 17},
        {"-0", 1, 0, kIniErrBadInteger, 0},
        {"12abc", kIniErrBadInteger, 0, kIniErrBadInteger, 0},
        {"- 5", kIniErrBadInteger, 0, kIniErrBadInteger, 0},
        {"5-", kIniErrBadInteger, 0, kIniErrBadInteger, 0},
        {"+-5", kIniErrBadInteger, 0, kIniErrBadInteger, 0},
        {"+", kIniErrBadInteger, 0, kIniErrBadInteger, 0},
        {"0x10", kIniErrBadInteger, 0, kIniErrBadInteger, 0},
        {"1 2", kIniErrBadInteger, 0, kIniErrBadInteger, 0},
    };
    for (const IntegerCase& c : cases) {
        Document doc = NewDocument();
        IniPut(doc.get(), "S", "n", c.text, 0);
        int intValue = 0;
        unsigned int uintValue = 0;
        EXPECT_EQ(IniGetInt(doc.get(), "S", "n", &intValue), c.intResult) << c.text;
        if (c.intResult == 1) {
            EXPECT_EQ(intValue, c.intValue) << c.text;
        }
        EXPECT_EQ(IniGetUInt(doc.get(), "S", "n", &uintValue), c.uintResult) << c.text;
        if (c.uintResult == 1) {
            EXPECT_EQ(uintValue, c.uintValue) << c.text;
        }
    }
}

TEST(IniValues, DoublesAndBooleans) {
    const struct {
        const char* text;
        int result;
        double value;
    } doubles[] = {
        {"+Inf", 1, HUGE_VAL}, {" inf ", 1, HUGE_VAL}, {"-INF", 1, -HUGE_VAL}, {"1.5", 1, 1.5},
        {"  -2.5e3", 1, -2500.0}, {"1.5 ", kIniErrBadDouble, 0}, {"1e999", kIniErrBadDouble, 0},
        {"abc", kIniErrBadDouble, 0}, {"1.5x", kIniErrBadDouble, 0},
    };
    for (const auto& c : doubles) {
        Document doc = NewDocument();
        IniPut(doc.get(), "S", "d", c.text, 0);
        double value = 0;
        EXPECT_EQ(IniGetDouble(doc.get(), "S", "d", &value), c.result) << c.text;
        if (c.result == 1) {
            EXPECT_EQ(value, c.value) << c.text;
        }
    }
    const struct {
        const char* text;
        int result;
        int value;
    } booleans[] = {{" true ", 1, 1}, {"FALSE", 1, 0}, {"True", 1, 1}, {"yes", kIniErrBadBoolean, 0},
                    {"truest", kIniErrBadBoolean, 0}, {"1", kIniErrBadBoolean, 0}};
    for (const auto& c : booleans) {
        Document doc = NewDocument();
        IniPut(doc.get(), "S", "b", c.text, 0);
        int value = -1;
        EXPECT_EQ(IniGetBoolean(doc.get(), "S", "b", &value), c.result) << c.text;
        if (c.result == 1) {
            EXPECT_EQ(value, c.value) << c.text;
        }
    }
}

TEST(IniValues, CopiesAndBuffers) {
    Document doc = NewDocument();
    IniPutString(doc.get(), "S", "s", "a\tb");
    char* copy = nullptr;
    ASSERT_EQ(IniGetStringCopy(doc.get(), "S", "s", &copy), 1);
    EXPECT_STREQ(copy, "a\tb");
    std::free(copy);
    ASSERT_EQ(IniGetRawStringCopy(doc.get(), "S", "s", &copy), 1);
    EXPECT_STREQ(copy, "a\\tb");
    std::free(copy);

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
