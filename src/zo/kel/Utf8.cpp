#include "zo/kel/Utf8.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "zo/kel/Exception.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/StringBase.h"
#include "zo/kel/Utf8Internal.h"

namespace zo::kel {

namespace {

// How a lead byte starts a sequence: its total length (0: not a lead), the
// bits of the lead that belong to the value, and the lowest second byte
// allowed (which rules out the overlong forms).
struct LeadRule {
    std::uint8_t length;
    std::uint8_t valueMask;
    std::uint8_t minimumSecond;
};

constexpr LeadRule RuleFor(unsigned lead) {
    if (lead < 0x80) return {1, 0x7F, 0};
    if (lead < 0xC2) return {0, 0, 0};
    if (lead < 0xE0) return {2, 0x1F, 0x80};
    if (lead == 0xE0) return {3, 0x0F, 0xA0};
    if (lead < 0xF0) return {3, 0x0F, 0x80};
    if (lead == 0xF0) return {4, 0x07, 0x90};
    if (lead < 0xF8) return {4, 0x07, 0x80};
    // Leads 0xF8-0xFB are read like 0xFC: six bytes, bit 0 of the lead on
    // top of thirty continuation bits. Kept as the wire has always had it.
    if (lead < 0xFD) return {6, 0x01, 0x84};
    if (lead == 0xFD) return {6, 0x01, 0x80};
    return {0, 0, 0};
}

constexpr auto kLeadRules = [] {
    std::array<LeadRule, 256> rules{};
    for (unsigned lead = 0; lead < 256; ++lead) rules[lead] = RuleFor(lead);
    return rules;
}();

constexpr std::uint64_t kHighBits = 0x8080808080808080ull;
constexpr char kUnencodable = '?';

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Decodes the character at `at`, which must be before `last`; advances `at`.
wchar_t DecodeOne(const unsigned char*& at, const unsigned char* last) {
    const LeadRule rule = kLeadRules[*at];
    if (rule.length == 0 || last - at < rule.length) ZO_THROW(exception::InvalidSequence);
    std::uint32_t value = *at & rule.valueMask;
    if (rule.length > 1) {
        if (at[1] < rule.minimumSecond) ZO_THROW(exception::InvalidSequence);
        for (unsigned i = 1; i < rule.length; ++i) {
            if (!IsContinuation(at[i])) ZO_THROW(exception::InvalidSequence);
            value = (value << 6) | (at[i] & 0x3Fu);
        }
    }
    at += rule.length;
    return static_cast<wchar_t>(value);
}

// True when the eight bytes at `at` are all ASCII.
bool EightAscii(const unsigned char* at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return (word & kHighBits) == 0;
}

// Decodes [first, last) into `out` (when kStore) until the input ends or
// `room` characters are done; returns the number of characters. The common
// forms are decoded inline; the rare ones and every error go to DecodeOne.
template <bool kStore>
std::size_t Decode(const unsigned char* first, const unsigned char* last, wchar_t* out, std::size_t room) {
    std::size_t count = 0;
    while (first < last && count < room) {
        const unsigned lead = *first;
        const std::ptrdiff_t left = last - first;
        if (lead < 0x80) {
            if (left >= 8 && room - count >= 8 && EightAscii(first)) {
                if constexpr (kStore) {
                    for (int i = 0; i < 8; ++i) out[count + i] = first[i];
                }
                first += 8;
                count += 8;
                continue;
            }
            if constexpr (kStore) out[count] = static_cast<wchar_t>(lead);
            ++first;
            ++count;
            continue;
        }
        if (lead - 0xC2u < 0x1Eu && left >= 2 && IsContinuation(first[1])) {
            if constexpr (kStore) out[count] = static_cast<wchar_t>(((lead & 0x1Fu) << 6) | (first[1] & 0x3Fu));
            first += 2;
            ++count;
            continue;
        }
        if ((lead & 0xF0u) == 0xE0u && left >= 3 && IsContinuation(first[1]) && IsContinuation(first[2]) &&
            (lead != 0xE0u || first[1] >= 0xA0u)) {
            if constexpr (kStore) {
                out[count] = static_cast<wchar_t>(((lead & 0x0Fu) << 12) | ((first[1] & 0x3Fu) << 6) |
                                                  (first[2] & 0x3Fu));
            }
            first += 3;
            ++count;
            continue;
        }
        const wchar_t character = DecodeOne(first, last);
        if constexpr (kStore) out[count] = character;
        ++count;
    }
    return count;
}

unsigned EncodedLength(wchar_t character) {
    const auto value = static_cast<std::uint32_t>(character);
    if (value < 0x80) return 1;
    if (value < 0x800) return 2;
    if (value < 0x10000) return 3;
    if (value < 0x200000) return 4;
    if (value < 0x4000000) return 5;
    if (value < 0x80000000) return 6;
    return 1;
}

// Writes the `length` bytes of `character` at `out`.
void EncodeOne(wchar_t character, unsigned length, unsigned char* out) {
    constexpr std::array<std::uint8_t, 7> kLeadMarks = {0, 0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};
    auto value = static_cast<std::uint32_t>(character);
    if (length == 1) {
        out[0] = value < 0x80 ? static_cast<unsigned char>(value) : kUnencodable;
        return;
    }
    for (unsigned i = length - 1; i > 0; --i) {
        out[i] = static_cast<unsigned char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    out[0] = static_cast<unsigned char>(kLeadMarks[length] | value);
}

}  // namespace

unsigned int GetUtf8StringLength(const unsigned char* first, const unsigned char* last) {
    return NumericCast<unsigned int>(Decode<false>(first, last, nullptr, SIZE_MAX));
}

wchar_t* Utf8ToWide(const unsigned char* first, const unsigned char* last, wchar_t* outFirst, wchar_t* outLast) {
    const std::size_t room = outFirst && outLast > outFirst ? static_cast<std::size_t>(outLast - outFirst) : 0;
    return outFirst + Decode<true>(first, last, outFirst, room);
}

StringBase<wchar_t, char, wchar_t> Utf8ToWide(const unsigned char* bytes, unsigned int length) {
    if (!bytes) length = 0;
    const unsigned int count = GetUtf8StringLength(bytes, bytes + length);
    StringBase<wchar_t, char, wchar_t> text(count, L'\0');
    Utf8ToWide(bytes, bytes + length, text.begin(), text.end());
    return text;
}

const unsigned char* ConvertNextUtf8Character(const unsigned char* first, const unsigned char* last, wchar_t& out) {
    if (first >= last) ZO_THROW(exception::InvalidSequence);
    out = DecodeOne(first, last);
    return first;
}

unsigned int GetUtf8EncodingBytesWithBufferLimit(const wchar_t* first, const wchar_t* last, unsigned int limit) {
    unsigned int total = 0;
    for (; first < last; ++first) {
        const unsigned length = EncodedLength(*first);
        if (length > limit - total) break;
        total += length;
    }
    return total;
}

std::size_t internal::Utf8EncodedSize(const wchar_t* first, const wchar_t* last) noexcept {
    std::size_t total = 0;
    for (; first < last; ++first) total += EncodedLength(*first);
    return total;
}

unsigned char* WideToUtf8(const wchar_t* first, const wchar_t* last, unsigned char* outFirst, unsigned char* outLast) {
    if (!outFirst || outLast < outFirst) ZO_THROW(exception::InvalidArgument);
    unsigned char* out = outFirst;
    for (; first < last; ++first) {
        const auto value = static_cast<std::uint32_t>(*first);
        if (value < 0x80 && out < outLast) {
            *out++ = static_cast<unsigned char>(value);
            continue;
        }
        const unsigned length = EncodedLength(*first);
        if (static_cast<std::size_t>(outLast - out) < length) break;
        EncodeOne(*first, length, out);
        out += length;
    }
    return out;
}

}  // namespace zo::kel
