#include "zo/kel/Utf8.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <vector>

#include "zo/kel/Exception.h"
#include "zo/kel/KelTestSupport.h"
#include "zo/kel/StringBase.h"

namespace {

using zo::kel::exception::InvalidArgument;
using zo::kel::exception::InvalidSequence;

struct DecodeRow {
    std::vector<unsigned char> bytes;
    std::optional<wchar_t> value;  // nullopt: InvalidSequence
};

const DecodeRow kDecodeRows[] = {
    {{0x41}, L'A'}, {{0x7F}, 0x7F}, {{0xC3, 0xA9}, 0xE9}, {{0xC2, 0x80}, 0x80}, {{0xDF, 0xBF}, 0x7FF},
    {{0xC0, 0x80}, std::nullopt}, {{0xC1, 0xBF}, std::nullopt},  // overlong
    {{0x80}, std::nullopt}, {{0xBF}, std::nullopt},               // stray continuation
    {{0xC3}, std::nullopt}, {{0xE1, 0x80}, std::nullopt}, {{0xF1, 0x80, 0x80}, std::nullopt},  // truncated
    {{0xC3, 0x41}, std::nullopt},                                 // not a continuation
    {{0xE0, 0xA0, 0x80}, 0x800}, {{0xE0, 0x80, 0x80}, std::nullopt}, {{0xE0, 0x9F, 0xBF}, std::nullopt},  // then overlong
    {{0xED, 0xA0, 0x80}, 0xD800}, {{0xED, 0xBF, 0xBF}, 0xDFFF},  // surrogates pass
    {{0xEF, 0xBF, 0xBF}, 0xFFFF}, {{0xF0, 0x90, 0x80, 0x80}, 0x10000}, {{0xF0, 0x8F, 0xBF, 0xBF}, std::nullopt},
    {{0xF4, 0x8F, 0xBF, 0xBF}, 0x10FFFF}, {{0xF4, 0x90, 0x80, 0x80}, 0x110000},  // no limit at 0x10FFFF
    {{0xF7, 0xBF, 0xBF, 0xBF}, 0x1FFFFF},
    {{0xFC, 0x84, 0x80, 0x80, 0x80, 0x80}, 0x4000000}, {{0xFC, 0x83, 0xBF, 0xBF, 0xBF, 0xBF}, std::nullopt},
    {{0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}, 0x7FFFFFFF}, {{0xFD, 0x80, 0x80, 0x80, 0x80, 0x80}, 0x40000000},
    // Five-byte leads read six bytes, taking only bit 0 of the lead.
    {{0xF8, 0x88, 0x80, 0x80, 0x80, 0x80}, 0x8000000}, {{0xF9, 0x84, 0x80, 0x80, 0x80, 0x80}, 0x44000000},
    {{0xFB, 0x83, 0x80, 0x80, 0x80, 0x80}, std::nullopt}, {{0xF8, 0x88, 0x80, 0x80, 0x80}, std::nullopt},
    {{0xFE}, std::nullopt}, {{0xFF}, std::nullopt},
};

TEST(Utf8, AcceptanceRules) {
    for (const DecodeRow& row : kDecodeRows) {
        const unsigned char* first = row.bytes.data();
        const unsigned char* last = first + row.bytes.size();
        wchar_t decoded = 0;
        if (row.value) {
            EXPECT_EQ(zo::kel::ConvertNextUtf8Character(first, last, decoded), last) << std::hex << int{row.bytes[0]};
            EXPECT_EQ(decoded, *row.value) << std::hex << int{row.bytes[0]};
            EXPECT_EQ(zo::kel::GetUtf8StringLength(first, last), 1u);
        } else {
            EXPECT_THROW(zo::kel::ConvertNextUtf8Character(first, last, decoded), InvalidSequence)
                << std::hex << int{row.bytes[0]};
            EXPECT_THROW(zo::kel::GetUtf8StringLength(first, last), InvalidSequence);
            EXPECT_THROW(zo::kel::Utf8ToWide(first, static_cast<unsigned int>(row.bytes.size())), InvalidSequence);
        }
    }
}

TEST(Utf8, InvalidSequenceIsStampedWithTheCodec) {
    const unsigned char bad[] = {0xC0, 0x80};
    const kel_test::Thrown thrown = kel_test::ThrownBy<InvalidSequence>([&] { zo::kel::GetUtf8StringLength(bad, bad + 2); });
    EXPECT_EQ(thrown.what, "Invalid UTF8 encoding sequence");
    EXPECT_STREQ(thrown.file, "zo/kel/Utf8");
}

struct EncodeRow {
    wchar_t value;
    std::vector<unsigned char> bytes;
};

const EncodeRow kEncodeRows[] = {
    {0x00, {0x00}}, {0x7F, {0x7F}}, {0x80, {0xC2, 0x80}}, {0x7FF, {0xDF, 0xBF}}, {0x800, {0xE0, 0xA0, 0x80}},
    {0xFFFF, {0xEF, 0xBF, 0xBF}}, {0x10000, {0xF0, 0x90, 0x80, 0x80}}, {0x1FFFFF, {0xF7, 0xBF, 0xBF, 0xBF}},
    {0x200000, {0xF8, 0x88, 0x80, 0x80, 0x80}}, {0x3FFFFFF, {0xFB, 0xBF, 0xBF, 0xBF, 0xBF}},
    {0x4000000, {0xFC, 0x84, 0x80, 0x80, 0x80, 0x80}}, {0x7FFFFFFF, {0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}},
    {static_cast<wchar_t>(0x80000000u), {'?'}},
};

TEST(Utf8, EncodingForms) {
    for (const EncodeRow& row : kEncodeRows) {
        const wchar_t text[] = {row.value};
        EXPECT_EQ(zo::kel::GetUtf8EncodingBytesWithBufferLimit(text, text + 1, 100), row.bytes.size());
        unsigned char out[8] = {};
        unsigned char* end = zo::kel::WideToUtf8(text, text + 1, out, out + sizeof out);
        EXPECT_EQ(std::vector<unsigned char>(out, end), row.bytes) << std::hex << static_cast<unsigned>(row.value);
    }
}

TEST(Utf8, EncodingStopsAtWholeCharactersWithinTheLimit) {
    const wchar_t text[] = {L'a', 0xE9, 0x20AC, L'b'};  // 1 + 2 + 3 + 1 bytes
    EXPECT_EQ(zo::kel::GetUtf8EncodingBytesWithBufferLimit(text, text + 4, 7), 7u);
    EXPECT_EQ(zo::kel::GetUtf8EncodingBytesWithBufferLimit(text, text + 4, 5), 3u);
    EXPECT_EQ(zo::kel::GetUtf8EncodingBytesWithBufferLimit(text, text + 4, 0), 0u);
    unsigned char out[5];
    EXPECT_EQ(zo::kel::WideToUtf8(text, text + 4, out, out + 5), out + 3);
    EXPECT_THROW(zo::kel::WideToUtf8(text, text + 4, nullptr, nullptr), InvalidArgument);
    EXPECT_THROW(zo::kel::WideToUtf8(text, text + 4, out + 2, out), InvalidArgument);
}

TEST(Utf8, DecodesMixedTextAcrossTheAsciiShortcut) {
    // Long ASCII runs take the eight-at-a-time path; the multi-byte
    // characters sit on and across its boundaries.
    const char* utf8 = "abcdefgh\xC3\xA9ijklmnop\xE2\x82\xAC\xF0\x9F\x98\x80qrstuvwxyz0123";
    const auto* bytes = reinterpret_cast<const unsigned char*>(utf8);
    const auto length = static_cast<unsigned int>(std::strlen(utf8));
    const zo::kel::WideString wide = zo::kel::Utf8ToWide(bytes, length);
    EXPECT_EQ(wide.exactCompare(L"abcdefgh\u00E9ijklmnop\u20AC\U0001F600qrstuvwxyz0123"), 0);
    EXPECT_EQ(zo::kel::GetUtf8StringLength(bytes, bytes + length), wide.length());

    wchar_t small[3];
    EXPECT_EQ(zo::kel::Utf8ToWide(bytes, bytes + length, small, small + 3), small + 3);
    EXPECT_EQ(small[2], L'c');
    // A bad byte after a valid ASCII run is still found.
    const unsigned char tail[] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 0xFF};
    EXPECT_THROW(zo::kel::GetUtf8StringLength(tail, tail + sizeof tail), InvalidSequence);
}

}  // namespace
