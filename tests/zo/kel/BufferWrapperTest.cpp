#include "zo/kel/BufferWrapper.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

#include "zo/kel/AutoBuffer.h"
#include "zo/kel/StringBase.h"

namespace {

using zo::kel::AutoBuffer;
using zo::kel::BufferWrapper;
using zo::kel::CompareBuffers;
using zo::kel::exception::BufferOverflow;
using zo::kel::exception::DeserializationError;

BufferWrapper View(std::string_view text) {
    return BufferWrapper(reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned int>(text.size()));
}

TEST(CompareBuffers, OrdersByBytesThenLength) {
    struct Row {
        std::string_view a, b;
        int expected;
    };
    constexpr Row kRows[] = {
        {"ab", "abc", -1}, {"abd", "abc", 1}, {"abc", "abc", 0}, {"", "", 0},
        {"", "a", -1},     {"b", "abc", 1},   {"\xff", "\x01", 1},  // bytes compare unsigned
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(CompareBuffers(View(row.a), View(row.b)), row.expected) << row.a << " vs " << row.b;
        EXPECT_EQ(CompareBuffers(View(row.b), View(row.a)), -row.expected) << row.b << " vs " << row.a;
        EXPECT_EQ(View(row.a) == View(row.b), row.expected == 0);
        EXPECT_EQ(View(row.a) < View(row.b), row.expected < 0);
    }
    EXPECT_EQ(CompareBuffers(BufferWrapper(), View("")), 0);
}

TEST(BufferWrapper, ViewsWithoutCopying) {
    const AutoBuffer buffer(reinterpret_cast<const unsigned char*>("abc"), 3);
    const BufferWrapper view(buffer);
    EXPECT_EQ(view.Data(), buffer.Data());
    EXPECT_EQ(view.Len(), 3u);

    const std::array<unsigned char, 5> bytes{1, 2, 3, 4, 5};
    const BufferWrapper range(bytes.data() + 1, bytes.data() + 4);
    EXPECT_EQ(range.Data(), bytes.data() + 1);
    EXPECT_EQ(range.Len(), 3u);

    const zo::kel::NarrowString text("text");
    const BufferWrapper characters(text);
    EXPECT_EQ(characters.Data(), reinterpret_cast<const unsigned char*>(text.c_str()));
    EXPECT_EQ(characters.Len(), 4u);  // without the terminator

    const AutoBuffer copy(range);
    EXPECT_NE(copy.Data(), range.Data());
    EXPECT_TRUE(BufferWrapper(copy) == range);
}

TEST(BufferWrapper, FormPointsIntoTheInput) {
    std::array<unsigned char, 8> out{};
    unsigned char* cursor = out.data();
    View("xyz").serialize(cursor, out.data() + out.size());
    constexpr std::array<unsigned char, 8> kExpected{3, 0, 0, 0, 'x', 'y', 'z', 0};
    EXPECT_EQ(out, kExpected);
    EXPECT_EQ(cursor, out.data() + 7);
    EXPECT_EQ(View("xyz").serializationSize(), 7u);
    EXPECT_EQ(BufferWrapper(nullptr, 0xFFFFFFFFu).serializationSize(), 0xFFFFFFFFu);
    EXPECT_THROW(View("xyz").serialize(cursor, out.data() + out.size()), BufferOverflow);

    const unsigned char* read = out.data();
    BufferWrapper decoded;
    decoded.deserialize(read, out.data() + 7);
    EXPECT_EQ(decoded.Data(), out.data() + 4);
    EXPECT_EQ(decoded.Len(), 3u);
    EXPECT_EQ(read, out.data() + 7);

    const unsigned char* shortRead = out.data();
    EXPECT_THROW(decoded.deserialize(shortRead, out.data() + 6), DeserializationError);
    EXPECT_THROW(decoded.deserialize(shortRead, out.data() + 3), DeserializationError);
    EXPECT_EQ(shortRead, out.data());
    EXPECT_EQ(decoded.Data(), out.data() + 4);
}
}  // namespace
