// The per-tag table of the byte form: the fixed sizes that spare the size
// pass a walk must be what the body writers write, and a payload tag whose
// payload is null (as another module may send) writes its empty body.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkstatic/VarDataCodec.h"

namespace {

using namespace vardata_test;
using internal::ByteCounter;
using internal::RecordCodec;
using internal::VarDataCodec;

constexpr std::uint16_t kKnownTags[] = {0x0000, 0x0001, 0x0002, 0x0003, 0x0004, 0x0008, 0x000B, 0x000D, 0x0011,
                                        0x1005, 0x1006, 0x1009, 0x100A, 0x100C, 0x100E, 0x100F, 0x1010, 0x1013, 0x3007};

// A value of `tag` with every payload bit set, or a real time payload.
VarData Sample(std::uint16_t tag) {
    if (tag == 0x100F) return VarData(zo::kel::AbsTime::fromWords(-1, ~0ull));
    if (tag == 0x1010) return VarData(zo::kel::RelTime::fromWords(-1, ~0ull));
    return VarDataCodec::Inline(tag, ~0ull);
}

TEST(VarDataRecordBodies, FixedSizesAreWhatTheWritersWrite) {
    for (const std::uint16_t tag : kKnownTags) {
        const RecordCodec* codec = VarDataCodec::Find(tag);
        ASSERT_NE(codec, nullptr) << tag;
        EXPECT_EQ(VarDataCodec::Find(tag | 0x0400), nullptr);  // neighbours of a known tag are unknown
        for (const bool compact : {true, false}) {
            const unsigned int fixed = codec->fixedBodySize(compact);
            if (fixed == RecordCodec::kVariableBody || !codec->writable()) continue;
            const VarData value = Sample(tag);
            ByteCounter counter;
            codec->count(value, counter, compact);
            EXPECT_EQ(counter.size().get(), fixed) << tag;
            EXPECT_EQ(Serialized(value, compact).size(), fixed + 4u) << tag;
        }
    }
    EXPECT_FALSE(VarDataCodec::Find(0x100E)->writable());  // read only
    EXPECT_TRUE(VarDataCodec::Find(0x100E)->readable());
}

TEST(VarDataRecordBodies, NullPayloadsWriteEmptyBodies) {
    const struct {
        std::uint16_t tag;
        Bytes body;
    } rows[] = {
        {0x1005, {0, 0, 0, 0}},
        {0x1006, {0, 0, 0, 0}},
        {0x1009, {0, 0, 0, 0}},
        {0x100A, {0, 0, 0, 0, 1, 0, 0, 0}},  // cell (0, 0, Empty)
        {0x100C, {0, 0, 0, 0}},
        {0x3007, {0, 0, 0, 0}},
        {0x100F, Bytes(16, 0)},
        {0x1010, Bytes(16, 0)},
        {0x1013, {0, 0, 0, 0}},  // an empty packet
    };
    for (const auto& row : rows) {
        const VarData value = VarDataCodec::Adopt(row.tag, nullptr);
        Bytes expected = {static_cast<unsigned char>(row.tag), static_cast<unsigned char>(row.tag >> 8), 0, 0};
        expected.insert(expected.end(), row.body.begin(), row.body.end());
        EXPECT_EQ(Serialized(value, true), expected) << row.tag;
        EXPECT_EQ(value.valueSerializationSize(), expected.size()) << row.tag;
    }
}

}  // namespace
