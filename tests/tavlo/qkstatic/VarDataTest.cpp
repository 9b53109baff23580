#include "tavlo/qkstatic/vardata.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkdynamic/PayloadFactories.h"
#include "zo/kel/Exception.h"

namespace {

using namespace vardata_test;

TEST(VarData, InlineValuesKeepTheirTypeWordAndPayload) {
    VarData value;
    EXPECT_EQ(value.GetType(), 0x0001u);
    value = true;
    bool logical = false;
    EXPECT_TRUE(value.GetLogical(logical) && logical);
    value = 7;
    double number = 0;
    EXPECT_EQ(value.GetType(), 0x0003u);
    EXPECT_TRUE(value.GetNumeric(number) && number == 7.0);
    value = 123456789012L;  // a long is a time count, not a number
    long count = 0;
    unsigned long raw = 0, id = 0;
    EXPECT_EQ(value.GetType(), 0x0004u);
    EXPECT_TRUE(value.GetTime(count) && value.GetFILETIME(raw));
    EXPECT_EQ(count, 123456789012L);
    EXPECT_EQ(raw, 123456789012ul);
    EXPECT_FALSE(value.GetNumeric(number));
    value.setID64(0xFFFFFFFFFFFFFFFFul);
    EXPECT_TRUE(value.getID64(id) && id == 0xFFFFFFFFFFFFFFFFul);
    EXPECT_EQ(static_cast<double>(value), 18446744073709551615.0);
    int anchor = 0;
    value.setVoidPointer(&anchor);
    EXPECT_EQ(value.getVoidPointer(), &anchor);
    EXPECT_EQ(VarData::pulse().GetType(), 0x000Bu);
    EXPECT_TRUE(VarData::pulse().IsPulse());
    EXPECT_EQ(VarData::brake().GetType(), 0x0008u);
    value.Clear();
    EXPECT_EQ(value.GetType(), 0x0001u);
    EXPECT_THROW(value.getVoidPointer(), TypeErrorException);
}

TEST(VarData, BitArraysClampAndFloor) {
    EXPECT_EQ(VarData::bitArray(5).GetType(), 0x80003u);
    double number = 0;
    EXPECT_FALSE(VarData::num(5.0, 8).GetNumeric(number));
    const std::pair<double, unsigned int> rows[] = {{-5.0, 0}, {5e10, 4294967295u}, {3.7, 3}, {NAN, 0}};
    for (const auto& [value, bits] : rows) EXPECT_EQ(Bits(VarData::num(value, 8)), bits) << value;
    EXPECT_EQ(Bits(Num(3.0)), std::nullopt);
    VarData set;
    set.setBitArray32(0xABCD);
    EXPECT_EQ(set.GetType(), 0x80003u);
    EXPECT_EQ(Bits(set), 0xABCDu);
    set = 2.0;  // assigning a double clears the subtype
    EXPECT_EQ(set.GetType(), 0x3u);
}

TEST(VarData, BitOperatorsCoerceBothSides) {
    EXPECT_EQ(Bits(Logical(true) | Num(4.0)), 5u);
    EXPECT_EQ(Bits(~VarData::bitArray(0)), 4294967295u);
    EXPECT_EQ(Bits(Num(-3.0) | Num(1.0)), 1u);
    EXPECT_EQ(Bits(Num(12.0) & Num(10.0)), 8u);
    VarData value = Num(12.0);
    value ^= Num(10.0);
    EXPECT_EQ(Bits(value), 6u);
}

TEST(VarData, TruthNumberAndIntegerReadings) {
    EXPECT_FALSE(static_cast<bool>(VarData()));
    EXPECT_TRUE(static_cast<bool>(Num(NAN)));
    EXPECT_FALSE(static_cast<bool>(Num(0.0)));
    EXPECT_DOUBLE_EQ(static_cast<double>(Assigned(86400000000000L)), 1.0);  // one day of nanoseconds
    EXPECT_EQ(static_cast<double>(Logical(true)), 1.0);
    EXPECT_EQ(static_cast<int>(Num(3.9)), 3);
    EXPECT_EQ(static_cast<int>(Num(-3.9)), -3);
    EXPECT_EQ(static_cast<int>(Num(1e12)), std::numeric_limits<int>::min());
    EXPECT_EQ(static_cast<unsigned int>(Num(3e9)), 3000000000u);
    EXPECT_EQ(static_cast<unsigned long>(Num(9223372036854777856.0)), 9223372036854777856ul);
    EXPECT_EQ(static_cast<char>(Num(65.5)), 'A');
    VarData logical = Logical(false), one = Num(1.0);
    logical.Not();
    one.Not();
    EXPECT_TRUE(static_cast<bool>(logical));
    EXPECT_EQ(static_cast<double>(one), 1.0);
}

TEST(VarData, CompareOrdersByTagThenValue) {
    EXPECT_EQ(Logical(true).Compare(Num(0.0)), -1);
    EXPECT_EQ(VarData::num(1.0, 8).Compare(Num(1.0)), 0);
    EXPECT_EQ(Num(NAN).Compare(Num(5.0)), 0);
    EXPECT_EQ(Num(2.0).Compare(Num(5.0)), -1);
    EXPECT_EQ(Num(5.0).Compare(Num(2.0)), 1);
    EXPECT_EQ(VarData().Compare(VarData::pulse()), 1 - 0xB);
    EXPECT_EQ(Assigned(-1L).Compare(Assigned(5L)), 1);  // as unsigned, -1 is the largest count
    EXPECT_LT(Logical(false).Compare(Logical(true)), 0);
    // A null payload orders before any object.
    EXPECT_LT(VarData(nullptr, 0).Compare(VarData(reinterpret_cast<const unsigned char*>("a"), 1)), 0);
}

TEST(VarData, RawAndCellPayloads) {
    const unsigned char bytes[] = {1, 2, 3};
    VarData raw(bytes, 3);
    const unsigned char* data = nullptr;
    unsigned int length = 0;
    EXPECT_TRUE(raw.GetRaw(data, length) && length == 3u);
    EXPECT_NE(data, bytes);  // an owned copy
    EXPECT_EQ(raw.GetRaw(), 3u);
    raw.SetRaw(data + 1, 2);  // from its own bytes
    EXPECT_TRUE(raw.GetRaw(data, length) && length == 2u);
    EXPECT_EQ(data[0], 2);
    EXPECT_EQ(VarData(bytes, 2).Compare(VarData(bytes, 3)), -1);
    EXPECT_TRUE(static_cast<bool>(VarData(bytes, 1)));
    EXPECT_FALSE(static_cast<bool>(VarData(bytes, 0)));

    unsigned short row = 9, column = 9;
    VarData content = Num(1.0);
    EXPECT_TRUE(VarData(0, 0, VarData()).GetCell(row, column, content));
    EXPECT_EQ(row + column, 0);
    EXPECT_EQ(content.GetType(), 0x0001u);
    const VarData cell(3, 4, Num(2.0));
    EXPECT_TRUE(cell.GetCell(row, column, content));
    EXPECT_EQ(row, 3);
    EXPECT_EQ(column, 4);
    EXPECT_EQ(static_cast<double>(content), 2.0);
    EXPECT_EQ(cell.Compare(VarData(9, 9, Num(2.0))), 0);  // coordinates do not count
    EXPECT_EQ(static_cast<double>(cell), 2.0);
    EXPECT_FALSE(cell.GetRaw(data, length));  // wrong tag: not asked
}

TEST(VarData, SequencesGrowOnlyForValues) {
    VarData list = VarData::sequence();
    list.SetElement(10, VarData());
    EXPECT_EQ(list.GetLength(), 0u);
    list.SetElement(10, Num(1.0));
    EXPECT_EQ(list.GetLength(), 11u);
    for (const VarData& empty : {list.GetElement(3), list.GetElement(99), Num(1.0).GetElement(0)}) {
        EXPECT_EQ(empty.GetType(), 0x0001u);
    }
    EXPECT_EQ(static_cast<double>(list.GetElement(10)), 1.0);
    VarData notAList = Num(1.0);
    EXPECT_THROW(notAList.SetElement(0, Num(2.0)), TypeErrorException);

    VarData grid = VarData::sequence();
    grid.SetElement(1, VarData::sequence());
    grid.SetElement(1, 2, Num(7.0));
    EXPECT_EQ(static_cast<double>(grid.GetElement(1, 2)), 7.0);
    EXPECT_EQ(grid.GetElement(1).GetLength(), 3u);
}

// A sequence whose store throws must still be freed with everything it
// holds: the element's payload count tells whether the sequence was.
TEST(VarData, FailedSetElementLeaksNoReference) {
    const VarData inner = VarData::dict();
    {
        VarData list = VarData::sequence();
        list.SetElement(0, inner);
        EXPECT_EQ(Count(inner), 2);
        EXPECT_THROW(list.SetElement(0xFFFFFFFFu, Num(1.0)), zo::kel::exception::OutOfRange);
        EXPECT_EQ(list.GetLength(), 1u);
        EXPECT_EQ(Count(inner), 2);
    }
    EXPECT_EQ(Count(inner), 1);
}

TEST(VarData, SequencesCompareIgnoringTrailingEmpties) {
    VarData shortList = VarData::sequence(), padded = VarData::sequence(), longer = VarData::sequence();
    for (VarData* list : {&shortList, &padded, &longer}) {
        list->SetElement(0, Num(1.0));
        list->SetElement(1, Num(2.0));
    }
    padded.SetElement(3, VarData::pulse());
    padded.SetElement(3, VarData());  // stored: the index is inside the vector now
    EXPECT_EQ(padded.GetLength(), 4u);
    longer.SetElement(2, Num(0.0));
    EXPECT_EQ(shortList.Compare(padded), 0);
    EXPECT_EQ(padded.Compare(shortList), 0);
    EXPECT_EQ(shortList.Compare(longer), -1);
    EXPECT_EQ(longer.Compare(shortList), 1);
}

TEST(VarData, CopyOnWriteKeepsCopiesIndependent) {
    VarData first = VarData::sequence();
    first.SetElement(0, Num(1.0));
    VarData second = first;
    second.SetElement(0, Num(2.0));
    EXPECT_EQ(static_cast<double>(first.GetElement(0)), 1.0);
    EXPECT_EQ(static_cast<double>(second.GetElement(0)), 2.0);

    VarData dictionary = VarData::dict();
    IVarDataDictionary* sole = dictionary.getIDict();
    dictionary.setValue(Num(1.0), Num(1.0));
    EXPECT_EQ(dictionary.getIDict(), sole) << "a sole owner writes in place";
    VarData shared = dictionary;
    EXPECT_EQ(Count(dictionary), 2);
    shared.setValue(Num(2.0), Num(2.0));
    EXPECT_NE(shared.getIDict(), sole);
    EXPECT_EQ(Count(dictionary), 1);
    EXPECT_FALSE(dictionary.hasKey(Num(2.0)));
}

TEST(VarData, ReferenceCountsFollowCopiesAssignmentsAndDestruction) {
    VarData dictionary = VarData::dict();
    EXPECT_EQ(Count(dictionary), 1);
    {
        VarData copy(dictionary);
        EXPECT_EQ(Count(dictionary), 2);
        VarData assigned;
        assigned = copy;
        EXPECT_EQ(Count(dictionary), 3);
        assigned = Num(1.0);
        EXPECT_EQ(Count(dictionary), 2);
        VarData moved(std::move(copy));
        EXPECT_EQ(Count(dictionary), 2);
        copy = moved;
        EXPECT_EQ(Count(dictionary), 3);
        copy = copy;  // self-assignment changes nothing
        EXPECT_EQ(Count(dictionary), 3);
    }
    EXPECT_EQ(Count(dictionary), 1);

    // A sequence and a cell each hold one reference to what they contain.
    VarData list = VarData::sequence();
    list.SetElement(0, dictionary);
    VarData cell(1, 1, dictionary);
    EXPECT_EQ(Count(dictionary), 3);
    list.Clear();
    cell.Clear();
    EXPECT_EQ(Count(dictionary), 1);
}

TEST(VarData, AssigningAnElementToItsContainerKeepsTheElement) {
    VarData inner = VarData::dict(), outer = VarData::dict();
    inner.setValue(Num(1.0), Num(42.0));
    outer.setValue(Num(0.0), inner);
    inner.Clear();
    // The source lives inside the payload that the assignment releases.
    outer = outer.getValue(Num(0.0));
    EXPECT_EQ(static_cast<double>(outer.getValue(Num(1.0))), 42.0);
    EXPECT_EQ(Count(outer), 1);

    VarData list = VarData::sequence(), element = VarData::sequence();
    element.SetElement(0, Num(5.0));
    list.SetElement(0, element);
    element.Clear();
    list = list.GetElement(0);
    EXPECT_EQ(static_cast<double>(list.GetElement(0)), 5.0);
}

TEST(VarData, PayloadsAnswerOnlyTheirInterfaces) {
    const VarData empty;
    IVarDataGuts* cell = NewCellGuts(1, 2, &empty);
    void* answer = nullptr;
    // The cell answers the byte-block identifier with its cell interface.
    for (const _GUID& iid : {IID_IVarDataCell, IID_IVarDataRaw}) {
        EXPECT_EQ(cell->QueryInterface(iid, &answer), kStatusOk);
        EXPECT_EQ(answer, static_cast<void*>(static_cast<IVarDataCell*>(cell)));
        static_cast<IUnknown*>(answer)->Release();
    }
    answer = cell;
    EXPECT_EQ(cell->QueryInterface(IID_IVarDataSequence, &answer), kNoInterface);
    EXPECT_EQ(answer, nullptr);
    EXPECT_EQ(cell->Release(), 0);

    IVarDataGuts* vector = NewVectorGuts();
    EXPECT_EQ(vector->QueryInterface(IID_IUnknown, &answer), kStatusOk);
    EXPECT_EQ(vector->Release(), 1);
    EXPECT_EQ(vector->QueryInterface(IID_IVarDataDictionary, &answer), kNoInterface);
    EXPECT_EQ(vector->Release(), 0);
}

TEST(VarData, ExceptionTexts) {
    EXPECT_STREQ(TypeErrorException().what(), "VarData type error");
    EXPECT_STREQ(KeyErrorException().what(), "VarData key error");
    EXPECT_STREQ(DeserializationErrorException().what(), "VarData deserialization error");
}

// Values that share payload objects are copied, read and dropped on many
// threads at once; the counts must come out exact (checked under tsan/asan).
TEST(VarData, SharedPayloadsSurviveConcurrentCopies) {
    VarData dictionary = VarData::dict(), list = VarData::sequence();
    dictionary.setValue(Num(1.0), Num(2.0));
    list.SetElement(0, dictionary);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&list] {
            for (int i = 0; i < 5000; ++i) {
                VarData copy = list;
                const VarData element = copy.GetElement(0);
                if (static_cast<double>(element.getValue(VarData::num(1.0))) != 2.0) std::abort();
                VarData another;
                another = element;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(Count(dictionary), 2);  // this value and the list's element
}

}  // namespace
