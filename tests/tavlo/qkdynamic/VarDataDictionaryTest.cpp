#include "tavlo/qkdynamic/VarDataDictionary.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "tavlo/VarDataTestSupport.h"

namespace {

using namespace vardata_test;

std::vector<double> Keys(const VarData& dictionary) {
    std::vector<double> keys;
    for (auto it = dictionary.begin(); it != dictionary.end(); ++it) keys.push_back(static_cast<double>(it.key()));
    return keys;
}

TEST(VarDataDictionary, MissingKeysThrowOrInsert) {
    VarData dictionary = VarData::dict();
    EXPECT_THROW(dictionary.getValue(Num(1.0)), KeyErrorException);
    const VarData& constant = dictionary;
    EXPECT_THROW(constant[Num(1.0)], KeyErrorException);
    VarData& inserted = dictionary[Num(1.0)];
    EXPECT_EQ(inserted.GetType(), 0x0001u);
    EXPECT_EQ(dictionary.GetLength(), 1u);
    inserted = 5.0;
    EXPECT_EQ(static_cast<double>(dictionary.getValue(Num(1.0))), 5.0);
    dictionary.erase(Num(7.0));  // an absent key is no error
    EXPECT_EQ(dictionary.GetLength(), 1u);

    VarData number = Num(1.0);
    EXPECT_THROW(number.setValue(Num(1.0), Num(2.0)), TypeErrorException);
    EXPECT_THROW(number.hasKey(Num(1.0)), TypeErrorException);
    EXPECT_EQ(number.GetType(), 0x0003u) << "no conversion attempted";
}

TEST(VarDataDictionary, KeysOrderByTagThenValue) {
    VarData dictionary = VarData::dict();
    dictionary.setValue(Num(3.0), Num(30.0));
    dictionary.setValue(Num(1.0), Num(10.0));
    dictionary.setValue(Logical(true), Num(-1.0));
    dictionary.setValue(Num(2.0), Num(20.0));
    // A bit array of the same number is the same key.
    dictionary.setValue(VarData::num(2.0, 8), Num(22.0));
    EXPECT_EQ(dictionary.GetLength(), 4u);
    EXPECT_EQ(static_cast<double>(dictionary.getValue(Num(2.0))), 22.0);
    auto it = dictionary.begin();
    EXPECT_EQ(it.key().GetType(), 0x0002u) << "the Logical key comes first";
    EXPECT_EQ(Keys(dictionary), (std::vector<double>{1.0, 1.0, 2.0, 3.0}));
    auto found = dictionary.find(Num(3.0));
    EXPECT_EQ(static_cast<double>(*found), 30.0);
    EXPECT_EQ(++found, dictionary.end());
    --found;
    EXPECT_EQ(found->operator double(), 30.0);
    EXPECT_EQ(dictionary.find(Num(9.0)), dictionary.end());
    EXPECT_TRUE(dictionary.hasKey(Logical(true)));
    EXPECT_FALSE(dictionary.hasKey(Logical(false)));
}

TEST(VarDataDictionary, CopiesAreIndependentExceptEraseWithoutCopyOnWrite) {
    VarData first = VarData::dict();
    first.setValue(Num(1.0), Num(1.0));
    first.setValue(Num(2.0), Num(2.0));
    VarData second = first;
    second.setValue(Num(3.0), Num(3.0));
    EXPECT_EQ(first.GetLength(), 2u);
    EXPECT_EQ(second.GetLength(), 3u);

    VarData third = first;
    third.eraseWithoutCopyOnWrite(Num(1.0));
    EXPECT_FALSE(first.hasKey(Num(1.0))) << "the shared map itself lost the key";
    third.erase(Num(2.0));
    EXPECT_TRUE(first.hasKey(Num(2.0)));
}

TEST(VarDataDictionary, CompareAndTruth) {
    VarData small = VarData::dict(), large = VarData::dict(), longer = VarData::dict(), same = VarData::dict();
    for (VarData* one : {&small, &longer, &same}) one->setValue(Num(1.0), Num(1.0));
    large.setValue(Num(1.0), Num(2.0));
    longer.setValue(Num(2.0), Num(0.0));
    EXPECT_EQ(small.Compare(large), -1);
    EXPECT_EQ(large.Compare(small), 1);
    EXPECT_EQ(small.Compare(longer), -1);
    EXPECT_EQ(longer.Compare(small), 1);
    EXPECT_EQ(small.Compare(same), 0);
    EXPECT_FALSE(static_cast<bool>(VarData::dict()));
    EXPECT_TRUE(static_cast<bool>(longer));
    EXPECT_EQ(static_cast<double>(longer), 2.0);
}

TEST(VarDataDictionary, TextFormQuotesTextsOnly) {
    EXPECT_EQ(VarData::dict().coerceToString().exactCompare(L"{}"), 0);
    VarData dictionary = VarData::dict();
    dictionary.setValue("name", L"pump 7");
    dictionary.setValue(Num(2.5), Logical(true));
    VarData inner = VarData::dict();
    inner.setValue(Num(1.0), "x");
    dictionary.setValue(VarData(L"inner"), inner);
    wchar_t* text = dictionary.getIDict()->getString();
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, L"{2.5:on,\"name\":\"pump 7\",\"inner\":{1:\"x\"}}");
    std::free(text);
}

TEST(VarDataDictionary, IteratorsCopyAndReleaseTheirPositions) {
    VarData dictionary = VarData::dict();
    dictionary.setValue(Num(1.0), Num(1.0));
    VarData::const_iterator a = dictionary.begin();
    VarData::const_iterator b = a;
    ++b;
    EXPECT_NE(a, b);
    b = a;
    EXPECT_EQ(a, b);
    VarData::const_iterator moved = std::move(b);
    EXPECT_EQ(moved, a);
    EXPECT_EQ(VarData::const_iterator(), VarData::const_iterator());
}

}  // namespace
