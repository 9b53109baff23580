#include <gtest/gtest.h>

#include <vector>

#include "tavlo/qkstatic/vardata.h"

namespace {

using Words = std::vector<unsigned short>;
using Bytes = std::vector<unsigned char>;

VarData Host(const Words& descriptor, const Bytes& data) {
    return VarData::gxvar(descriptor.data(), descriptor.data() + descriptor.size(), data.data(),
                          data.data() + data.size());
}

const Words kI16 = {4, 0x02};
const Bytes kMinusTwo = {0xFF, 0xFE};
// A cluster of one boolean named a, true.
const Words kCluster = {12, 0x50, 1, 6, 0x4021, 0x0161};

TEST(VarDataHostVariant, BuiltAndReadBack) {
    const VarData value = Host(kI16, kMinusTwo);
    EXPECT_EQ(value.GetType(), 0x1012u);
    const unsigned short* descriptor = nullptr;
    const unsigned char* data = nullptr;
    unsigned int words = 0, bytes = 0;
    value.getGXVariant(descriptor, words, data, bytes);
    EXPECT_EQ(Words(descriptor, descriptor + words), kI16);
    EXPECT_EQ(Bytes(data, data + bytes), kMinusTwo);
    EXPECT_EQ(value.getIGXVariant()->serializationSize(), 8u + 4u + 2u);
    // Truth and number are the payload's: false and 0 whatever it holds.
    EXPECT_FALSE(static_cast<bool>(value));
    EXPECT_EQ(static_cast<double>(value), 0.0);
    EXPECT_THROW(VarData::num(1).getGXVariant(descriptor, words, data, bytes), TypeErrorException);
}

TEST(VarDataHostVariant, NativeTypeConversion) {
    VarData value = Host(kI16, kMinusTwo);
    EXPECT_TRUE(value.convertSelfToNativeType());
    EXPECT_EQ(value.GetType(), VarData::num(-2, 2).GetType());
    EXPECT_EQ(static_cast<double>(value), -2.0);

    VarData broken = Host({4, 0x04}, Bytes(8));
    EXPECT_FALSE(broken.convertSelfToNativeType());
    EXPECT_EQ(broken.GetType(), 0x1012u);
    VarData number = VarData::num(4);
    EXPECT_FALSE(number.convertSelfToNativeType());

    const VarData cluster = Host(kCluster, {1});
    EXPECT_EQ(cluster.convertToNativeType().GetType(), VarData::dict().GetType());
    EXPECT_EQ(cluster.GetType(), 0x1012u);  // the const forms leave the source alone
    EXPECT_TRUE(static_cast<bool>(cluster.convertToNativeType().getValue("a")));
    EXPECT_TRUE(cluster.convertToNativeTypeOrDictionary(true).hasKey(VarData(L"a")));
    EXPECT_FALSE(cluster.convertToNativeTypeOrDictionary(false).hasKey(VarData(L"a")));
}

TEST(VarDataHostVariant, ConversionsStartFromTheNativeValue) {
    VarData number = Host(kI16, kMinusTwo);
    number.Convert_(VarDataType::Numeric);
    // Native already: the conversion ends there, subtype and all.
    EXPECT_EQ(number.GetType(), VarData::num(-2, 2).GetType());

    VarData text = Host(kI16, kMinusTwo);
    text.Convert_(VarDataType::Ansi);
    EXPECT_EQ(text.getAnsiString().exactCompare("-2"), 0);

    EXPECT_EQ(Host(kCluster, {1}).coerceToString().exactCompare(L"{\"a\":on}"), 0);
    VarData stays = Host(kI16, kMinusTwo);
    stays.Convert_(VarDataType::GXVariant);
    EXPECT_EQ(stays.GetType(), 0x1012u);
}

}  // namespace
