#include "zo/kel/osdep/SerializeUtf16.h"

#include <gtest/gtest.h>

#include <vector>

#include "zo/kel/Exception.h"

namespace {

using zo::kel::WideString;
using zo::kel::osdep::SerializeUtf16;
using namespace zo::kel::exception;
using Bytes = std::vector<unsigned char>;

TEST(SerializeUtf16, LittleEndianUnitsAndSurrogatePairs) {
    const WideString text(L"A\u00E9\U0001F600");
    ASSERT_EQ(SerializeUtf16::GetUtf16SerializationSize(text), 8u);
    Bytes out(8);
    EXPECT_EQ(SerializeUtf16::SerializeAsUtf16(text, out.data(), out.data() + out.size()), out.data() + 8);
    EXPECT_EQ(out, (Bytes{0x41, 0x00, 0xE9, 0x00, 0x3D, 0xD8, 0x00, 0xDE}));
    EXPECT_EQ(SerializeUtf16::DeserializeFromUtf16(out.data(), out.data() + out.size()).exactCompare(text), 0);
    EXPECT_THROW(SerializeUtf16::SerializeAsUtf16(text, out.data(), out.data() + 7), BufferOverflow);
    EXPECT_TRUE(SerializeUtf16::DeserializeFromUtf16(out.data(), out.data()).empty());
    EXPECT_EQ(SerializeUtf16::SerializeAsUtf16(WideString(), nullptr, nullptr), nullptr);
}

TEST(SerializeUtf16, RejectsWhatUtf16CannotCarry) {
    const Bytes odd = {0x41, 0x00, 0x42};
    EXPECT_THROW(SerializeUtf16::DeserializeFromUtf16(odd.data(), odd.data() + odd.size()), DeserializationError);
    const Bytes loneSurrogate = {0x41, 0x00, 0x00, 0xD8, 0x42, 0x00};
    EXPECT_THROW(SerializeUtf16::DeserializeFromUtf16(loneSurrogate.data(), loneSurrogate.data() + 6),
                 UnableToConvert);
    Bytes out(8);
    const wchar_t surrogate[] = {0xD800, 0};
    EXPECT_THROW(SerializeUtf16::SerializeAsUtf16(WideString(surrogate), out.data(), out.data() + 8), UnableToConvert);
}

}  // namespace
