// PayloadRef owns exactly one reference from query (or share) to
// destruction, whatever path the holder leaves by.
#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkstatic/PayloadRef.h"

namespace {

using namespace vardata_test;
using internal::PayloadRef;

TEST(PayloadRef, HoldsOneReferenceFromQueryToDestruction) {
    const VarData dictionary = VarData::dict();
    IVarDataDictionary* object = dictionary.getIDict();
    {
        const PayloadRef<IVarDataDictionary> held(object);
        ASSERT_TRUE(held);
        EXPECT_EQ(held.get(), object);
        EXPECT_EQ(Count(dictionary), 2);
        EXPECT_FALSE(PayloadRef<IVarDataSequence>(object));  // refused: nothing taken
        EXPECT_FALSE(PayloadRef<IVarDataSequence>(nullptr));
        EXPECT_EQ(Count(dictionary), 2);
    }
    EXPECT_EQ(Count(dictionary), 1);

    try {
        const auto held = PayloadRef<IVarDataDictionary>::Share(object);
        EXPECT_EQ(Count(dictionary), 2);
        throw std::runtime_error("leaving early");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(Count(dictionary), 1);
}

TEST(PayloadRef, MovingPassesTheReferenceOnAndAssignmentDropsTheOld) {
    const VarData first = VarData::dict(), second = VarData::dict();
    auto a = PayloadRef<IVarDataDictionary>::Share(first.getIDict());
    auto b = PayloadRef<IVarDataDictionary>::Share(second.getIDict());
    PayloadRef<IVarDataDictionary> moved(std::move(a));
    EXPECT_FALSE(a);
    EXPECT_EQ(Count(first), 2);
    moved = std::move(b);  // drops its reference to `first`
    EXPECT_EQ(Count(first), 1);
    EXPECT_EQ(Count(second), 2);
    IVarDataDictionary* handed = moved.release();
    EXPECT_FALSE(moved);
    EXPECT_EQ(Count(second), 2);
    PayloadRef<IUnknown> adopted(PayloadRef<IVarDataDictionary>::Adopt(handed));
    EXPECT_EQ(Count(second), 2);
    adopted = PayloadRef<IUnknown>();
    EXPECT_EQ(Count(second), 1);
}

}  // namespace
