#include <gtest/gtest.h>

#include <cstdint>

#include "zo/kel/FlexData.h"
#include "zo/kel/FlexDataTestSupport.h"
#include "zo/kel/fd.h"

namespace {

using namespace kel_test;
using zo::kel::BufferWrapper;
using zo::kel::FlexData;
using zo::kel::NarrowString;
using zo::kel::Vector;
namespace fd = zo::kel::fd;
namespace exception = zo::kel::exception;

TEST(FlexDataCluster, WireFormShapeAndElements) {
    FlexData labelled(static_cast<short>(-2));
    labelled.setAttribute("k", FlexData(true));
    const Vector<FlexData> values{labelled, FlexData("abc", 3), FlexData(0.5)};
    const FlexData record(values);
    const Bytes attribute = {0x00, 0x40, 0x12, 0, 0, 0, 1, 0, 0, 0, 'k', 0, 8, 0, 0, 0, 0x02, 0x01, 0xFF, 0};
    Bytes expected = {64, 0, 0, 0, 0x01, 0x08, 3, 0, 26, 0, 0, 0};
    expected.insert(expected.end(), attribute.begin(), attribute.end());
    expected.insert(expected.end(), {0x00, 0x02, 6, 0, 0, 0, 0x00, 0x09, 6, 0, 0, 0, 0x02, 0x04});
    expected.insert(expected.end(), {0xFE, 0xFF, 3, 0, 0, 0, 'a', 'b', 'c', 0, 0, 0, 0, 0, 0, 0, 0xE0, 0x3F});
    EXPECT_EQ(Packet(record), expected);

    EXPECT_EQ(record.getDims(), 1u);
    EXPECT_EQ(record.getDimSize(0), 3u);
    EXPECT_EQ(record.getDimSize(1), 0u);
    EXPECT_EQ(record.getNumElts(), 3u);

    Vector<FlexData> elements;
    record.getClusterElements(elements);
    ASSERT_EQ(elements.size(), 3u);
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_TRUE(elements[i] == values[i]) << i;
        FlexData one;
        record.getClusterElement(i, one);
        EXPECT_TRUE(one == values[i]) << i;
    }
    EXPECT_TRUE(elements[0].getAttribute("k").getBool());
    FlexData out(1);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { record.getClusterElement(3, out); }).thrown);
    EXPECT_EQ(out.getI32(), 1);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { FlexData(1).getClusterElements(elements); }).thrown);

    // A value read into itself, and a cluster that holds its own former self.
    FlexData self(values);
    self.getClusterElement(1, self);
    EXPECT_EQ(self.getAString(), NarrowString("abc"));
    self.setClusterElements(Vector<FlexData>{self, self});
    self.getClusterElement(1, out);
    EXPECT_EQ(out.getAString(), NarrowString("abc"));
}

TEST(FlexDataCluster, ElementCountLimits) {
    FlexData target(7);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { target.setClusterElements(Vector<FlexData>()); }).thrown);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { target.setClusterElements(Vector<FlexData>(65536u)); }).thrown);
    EXPECT_EQ(target.getI32(), 7);
    Vector<FlexData> many;
    many.reserve(65535);
    for (unsigned int i = 0; i < 65535; ++i) many.emplace_back().setVoid();
    target.setClusterElements(many);
    EXPECT_EQ(target.getDimSize(0), 65535u);
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] { target.setClusterElements(Vector<FlexData>{FlexData()}); }).thrown);
}

TEST(FlexDataCluster, FixedSizeClusterArrayFromColumns) {
    const std::int8_t small[2] = {1, -1};
    const double large[2] = {0.5, -2.0};
    const Vector<fd::FlexType> types{fd::kInt8, fd::kFloat64};
    const Vector<BufferWrapper> columns{BufferWrapper(reinterpret_cast<const unsigned char*>(small), 2),
                                        BufferWrapper(reinterpret_cast<const unsigned char*>(large), 16)};
    const FlexData rows(types, columns);
    EXPECT_EQ(Packet(rows), (Bytes{52, 0, 0, 0, 0x00, 0x08, 1, 0, 20, 0, 0, 0,              // array, descriptor
                                   0x01, 0x08, 2, 0, 6, 0, 0, 0, 0x00, 0x01, 6, 0, 0, 0, 0x02, 0x04,  // cluster
                                   2, 0, 0, 0,                                                        // 2 rows
                                   1, 0, 0, 0, 0, 0, 0, 0, 0xE0, 0x3F,                                // row 0
                                   0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0xC0}));                             // row 1
    Vector<FlexData> elements;
    rows.getArrayElements(elements);
    ASSERT_EQ(elements.size(), 2u);
    FlexData field;
    elements[1].getClusterElement(0, field);
    EXPECT_EQ(field.getI8(), -1);
    elements[1].getClusterElement(1, field);
    EXPECT_EQ(field.getF64(), -2.0);

    FlexData target;
    const Thrown notFixed = ThrownBy<exception::InvalidArgument>([&] {
        target.setFixedSizeClusterArrayElements(Vector<fd::FlexType>{fd::kAnsiString}, Vector<BufferWrapper>{BufferWrapper()});
    });
    EXPECT_EQ(notFixed.what, "Invalid argument(s): Invalid cluster element type.  Each type must be fixed size.");
    const Thrown tooMany = ThrownBy<exception::InvalidArgument>([&] {
        target.setFixedSizeClusterArrayElements(Vector<fd::FlexType>(65536u), Vector<BufferWrapper>(65536u));
    });
    EXPECT_EQ(tooMany.what, "Invalid argument(s): Cluster has too many elements.  Max elements is 2^16.");
    // Columns of different row counts.
    EXPECT_TRUE(ThrownBy<exception::InvalidArgument>([&] {
        target.setFixedSizeClusterArrayElements(types, Vector<BufferWrapper>{columns[0], BufferWrapper(columns[1].Data(), 8)});
    }).thrown);
    EXPECT_TRUE(target.isEmpty());
}

}  // namespace
