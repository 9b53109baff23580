#include <gtest/gtest.h>

#include <vector>

#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkdynamic/VarDataGXVariant.h"
#include "tavlo/qkstatic/PayloadRef.h"
#include "zo/kel/Exception.h"
#include "zo/kel/KelTestSupport.h"

namespace {

using Words = std::vector<unsigned short>;
using kel_test::Bytes;
using kel_test::Form;
using internal::PayloadRef;

PayloadRef<IVarDataGXVariant> Make(const Words& descriptor, const Bytes& data) {
    return PayloadRef<IVarDataGXVariant>(PayloadRef<IVarDataGuts>::Adopt(NewVarDataGXVariant(
                                             descriptor.data(), static_cast<unsigned int>(descriptor.size()),
                                             data.data(), static_cast<unsigned int>(data.size())))
                                             .get());
}


TEST(VarDataGXVariant, BodyIsDescriptorVectorThenDataVector) {
    EXPECT_EQ(Form(*Make({}, {}).get()), Bytes(8, 0));
    const auto variant = Make({0x0004, 0x000A}, {0x3F, 0xF0, 0xAB});
    EXPECT_EQ(Form(*variant.get()), (Bytes{2, 0, 0, 0, 0x04, 0, 0x0A, 0, 3, 0, 0, 0, 0x3F, 0xF0, 0xAB}));

    const unsigned short* descriptor = nullptr;
    const unsigned char* data = nullptr;
    unsigned int words = 0, bytes = 0;
    variant->get(descriptor, words, data, bytes);
    EXPECT_EQ(Words(descriptor, descriptor + words), (Words{4, 0x0A}));
    EXPECT_EQ(Bytes(data, data + bytes), (Bytes{0x3F, 0xF0, 0xAB}));
    // A host number is still neither true nor a number to the value layer.
    EXPECT_FALSE(static_cast<bool>(*variant.get()));
    EXPECT_EQ(static_cast<double>(*variant.get()), 0.0);
}

TEST(VarDataGXVariant, CompareTellsOnlySmallerApart) {
    struct Row {
        Words leftDescriptor;
        Bytes leftData;
        Words rightDescriptor;
        Bytes rightData;
        std::int32_t expected;
    };
    const Row rows[] = {
        {{1, 2}, {}, {1, 2, 3}, {}, -1},  // a proper prefix is smaller
        {{1, 3}, {}, {1, 2, 3}, {}, 1},
        {{1, 2, 3}, {}, {1, 2}, {}, 1},
        {{0xFFFF}, {}, {1}, {}, 1},        // unsigned words
        {{1}, {1, 2}, {1}, {1, 2}, 0},
        {{1}, {0x80}, {1}, {0x7F}, 1},     // unsigned bytes
        {{1}, {1}, {1}, {1, 0}, -1},
        {{1}, {9, 9}, {2}, {}, -1},        // descriptors decide before data
    };
    for (const Row& row : rows) {
        const auto left = Make(row.leftDescriptor, row.leftData);
        const auto right = Make(row.rightDescriptor, row.rightData);
        EXPECT_EQ(left->Compare(right.get()), row.expected) << row.expected;
    }
    const auto same = Make({5}, {6});
    EXPECT_EQ(same->Compare(same.get()), 0);
}

TEST(VarDataGXVariant, SerializeChecksTheRoomBeforeWriting) {
    const auto variant = Make({1, 2}, {3});
    Bytes out(variant->serializationSize() + 1, 0xEE);
    for (const std::size_t room : {std::size_t{0}, std::size_t{4}, out.size() - 2}) {
        unsigned char* cursor = out.data();
        EXPECT_THROW(variant->serialize(cursor, out.data() + room), zo::kel::exception::BufferOverflow) << room;
        EXPECT_EQ(cursor, out.data());
        EXPECT_EQ(out, Bytes(out.size(), 0xEE)) << room;
    }
    unsigned char* past = out.data() + 5;
    EXPECT_THROW(variant->serialize(past, out.data()), zo::kel::exception::BufferOverflow);
}

TEST(VarDataGXVariant, DeserializeMovesTheCursorOnlyWhenBothHalvesAreRead) {
    const Bytes body = {2, 0, 0, 0, 4, 0, 0x0A, 0, 1, 0, 0, 0, 0x3F, 0x99};
    const unsigned char* cursor = body.data();
    const auto read = PayloadRef<IVarDataGuts>::Adopt(DeserializeVarDataGXVariant(cursor, body.data() + body.size()));
    EXPECT_EQ(cursor, body.data() + 13);
    EXPECT_EQ(Make({4, 0x0A}, {0x3F})->Compare(PayloadRef<IVarDataGXVariant>(read.get()).get()), 0);

    const Bytes bad[] = {
        {3, 0, 0, 0, 4, 0, 0x0A, 0, 0, 0, 0, 0},     // three words claimed, two present
        {0, 0, 0, 0, 5, 0, 0, 0, 1, 2},              // data count past the end
        {1, 0, 0, 0, 4, 0},                          // no data half
        {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0},        // a count the input cannot hold
    };
    for (const Bytes& bytes : bad) {
        const unsigned char* at = bytes.data();
        EXPECT_THROW(DeserializeVarDataGXVariant(at, bytes.data() + bytes.size()),
                     zo::kel::exception::DeserializationError);
        EXPECT_EQ(at, bytes.data());
    }
}

TEST(VarDataGXVariant, AnswersItsThreeInterfaces) {
    const auto variant = Make({}, {});
    EXPECT_TRUE(PayloadRef<IUnknown>(variant.get()));
    EXPECT_TRUE(PayloadRef<IVarDataGuts>(variant.get()));
    EXPECT_TRUE(PayloadRef<IVarDataGXVariant>(variant.get()));
    EXPECT_FALSE(PayloadRef<IVarDataAnsi>(variant.get()));
    EXPECT_EQ(internal::ReferenceCount(variant.get()), 1);
}

}  // namespace
