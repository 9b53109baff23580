#include "zo/kel/BufferWrapper.h"

#include <gtest/gtest.h>

#include <string_view>

#include "zo/kel/AutoBuffer.h"
#include "zo/kel/KelTestSupport.h"
#include "zo/kel/StringBase.h"

namespace {

using namespace kel_test;
using zo::kel::AutoBuffer;
using zo::kel::BufferWrapper;
using zo::kel::CompareBuffers;

TEST(CompareBuffers, OrdersByBytesThenLength) {
    const struct {
        std::string_view a, b;
        int expected;
    } kRows[] = {
        {"ab", "abc", -1}, {"abd", "abc", 1}, {"abc", "abc", 0}, {"", "", 0},
        {"", "a", -1},     {"b", "abc", 1},   {"\xff", "\x01", 1},  // bytes compare unsigned
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(CompareBuffers(View(row.a), View(row.b)), row.expected) << row.a << " vs " << row.b;
        EXPECT_EQ(CompareBuffers(View(row.b), View(row.a)), -row.expected) << row.b << " vs " << row.a;
        EXPECT_EQ(View(row.a) == View(row.b), row.expected == 0);
        EXPECT_EQ(View(row.a) < View(row.b), row.expected < 0);
    }
    EXPECT_EQ(CompareBuffers(BufferWrapper(), View("")), 0);
}

TEST(BufferWrapper, ViewsWithoutCopying) {
    const AutoBuffer buffer(AsBytes("abc"), 3);
    const Bytes bytes{1, 2, 3, 4, 5};
    const zo::kel::NarrowString text("text");
    const BufferWrapper view(buffer), range(bytes.data() + 1, bytes.data() + 4), characters(text);
    EXPECT_EQ(std::pair(view.Data(), view.Len()), std::pair(buffer.Data(), 3u));
    EXPECT_EQ(std::pair(range.Data(), range.Len()), std::pair(bytes.data() + 1, 3u));
    // Without the terminator.
    EXPECT_EQ(std::pair(characters.Data(), characters.Len()), std::pair(AsBytes(text.c_str()), 4u));

    const AutoBuffer copy(range);
    EXPECT_NE(copy.Data(), range.Data());
    EXPECT_TRUE(BufferWrapper(copy) == range);
}

TEST(BufferWrapper, FormPointsIntoTheInput) {
    const Bytes form = Form(View("xyz"));
    EXPECT_EQ(form, (Bytes{3, 0, 0, 0, 'x', 'y', 'z'}));  // serializationSize() is 7
    EXPECT_EQ(BufferWrapper(nullptr, 0xFFFFFFFFu).serializationSize(), 0xFFFFFFFFu);
    ExpectOverflow(View("xyz"), 6);

    BufferWrapper decoded;
    EXPECT_EQ(Read(decoded, form), 7u);
    EXPECT_EQ(std::pair(decoded.Data(), decoded.Len()), std::pair(form.data() + 4, 3u));
    for (const std::size_t shortSize : {6, 3}) {
        const unsigned char* cursor = form.data();
        EXPECT_THROW(decoded.deserialize(cursor, form.data() + shortSize), zo::kel::exception::DeserializationError);
        EXPECT_EQ(cursor, form.data());
    }
    EXPECT_EQ(decoded.Data(), form.data() + 4);  // still the earlier view
}

}  // namespace
