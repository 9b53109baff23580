#include "zo/kel/osdep/IntegerToString.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "zo/kel/Exception.h"

namespace {

using namespace zo::kel::osdep;
using zo::kel::WideString;

struct Row {
    WideString text;
    std::wstring expected;
};

TEST(IntegerToString, Table) {
    const Row rows[] = {
        {Int32ToString(-255, 16), L"FFFFFF01"},
        {Int32ToString(-255, 10), L"-255"},
        {Int32ToString(0, 2), L"0"},
        {Int32ToString(std::numeric_limits<std::int32_t>::min(), 10), L"-2147483648"},
        {Int64ToString(std::numeric_limits<std::int64_t>::min(), 10), L"-9223372036854775808"},
        {Int64ToString(-1, 2), std::wstring(64, L'1')},
        {Int8ToString(-1, 16), L"FF"},
        {Int8ToString(-128, 10), L"-128"},
        {Int16ToString(-2, 8), L"177776"},
        {IntToString(-10, 10), L"-10"},
        {UInt8ToString(255, 2), L"11111111"},
        {UInt16ToString(0xBEEF, 16), L"BEEF"},
        {UInt32ToString(35, 36), L"Z"},
        {UInt32ToString(36, 36), L"10"},
        {UInt32ToString(4294967295u, 10), L"4294967295"},
        {UInt64ToString(std::numeric_limits<std::uint64_t>::max(), 36), L"3W5E11264SGSF"},
        {UIntToString(1234567890ul, 7), L"42410440203"},
    };
    for (const Row& row : rows) EXPECT_EQ(row.text.exactCompare(row.expected.c_str()), 0) << row.expected.size();
}

TEST(IntegerToString, BaseOutsideTwoToThirtySixThrows) {
    for (unsigned int base : {0u, 1u, 37u, 100u}) {
        EXPECT_THROW(Int32ToString(5, base), zo::kel::exception::UnableToConvert) << base;
        EXPECT_THROW(UInt64ToString(5, base), zo::kel::exception::UnableToConvert) << base;
    }
    try {
        Int32ToString(-1, 1);
        ADD_FAILURE() << "no exception";
    } catch (const zo::kel::exception::UnableToConvert& failure) {
        EXPECT_STREQ(failure.what(), "Unable to convert.");
    }
}

}  // namespace
