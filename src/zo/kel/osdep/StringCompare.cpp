#include "zo/kel/osdep/StringCompare.h"

#include <ctype.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include "zo/kel/Utf8.h"
#include "zo/kel/osdep/CharacterAttributes.h"
#include "zo/kel/osdep/StringCompareInternal.h"

namespace zo::kel::osdep {

namespace {

int Clamped(std::int64_t difference) {
    return static_cast<int>(std::clamp<std::int64_t>(difference, INT_MIN, INT_MAX));
}

template <typename Char>
std::size_t RangeLength(const Char* first, const Char* last) {
    return first && last > first ? static_cast<std::size_t>(last - first) : 0;
}

// Index of the first unequal unit in [from, count), or count.
std::size_t FirstMismatch(const char* a, const char* b, std::size_t from, std::size_t count) {
    std::size_t at = from;
    for (; count - at >= 8; at += 8) {
        std::uint64_t wordA;
        std::uint64_t wordB;
        std::memcpy(&wordA, a + at, sizeof wordA);
        std::memcpy(&wordB, b + at, sizeof wordB);
        if (wordA != wordB) return at + static_cast<std::size_t>(__builtin_ctzll(wordA ^ wordB)) / 8;
    }
    for (; at < count; ++at) {
        if (a[at] != b[at]) break;
    }
    return at;
}

std::size_t FirstMismatch(const wchar_t* a, const wchar_t* b, std::size_t from, std::size_t count) {
    return static_cast<std::size_t>(std::mismatch(a + from, a + count, b + from).first - a);
}

// Walks the common part unit by unit, skipping equal runs fast, and answers
// fold(a) - fold(b) at the first real difference, else the length difference.
template <typename Char, typename Fold>
int CompareRanges(const Char* aFirst, const Char* aLast, const Char* bFirst, const Char* bLast, Fold fold) {
    const std::size_t aLength = RangeLength(aFirst, aLast);
    const std::size_t bLength = RangeLength(bFirst, bLast);
    const std::size_t common = std::min(aLength, bLength);
    for (std::size_t at = 0; (at = FirstMismatch(aFirst, bFirst, at, common)) < common; ++at) {
        const std::int64_t difference = std::int64_t{fold(aFirst[at])} - fold(bFirst[at]);
        if (difference != 0) return Clamped(difference);
    }
    return Clamped(static_cast<std::int64_t>(aLength) - static_cast<std::int64_t>(bLength));
}

// The current locale's upper-casing table, read once per comparison.
struct NarrowUpper {
    const std::int32_t* table = *__ctype_toupper_loc();
    std::int32_t operator()(char c) const { return table[static_cast<unsigned char>(c)]; }
};
struct NarrowExact {
    std::int32_t operator()(char c) const { return static_cast<unsigned char>(c); }
};
struct WideUpper {
    std::int64_t operator()(wchar_t c) const { return static_cast<std::int32_t>(std::towupper(static_cast<wint_t>(c))); }
};
struct WideExact {
    std::int64_t operator()(wchar_t c) const { return c; }
};

constexpr std::uint64_t kOnes = 0x0101010101010101ull;
constexpr std::uint64_t kHighBits = 0x80 * kOnes;

// True when `table` upper-cases 0..127 as ASCII does, so that whole words of
// ASCII can be folded at once. Locale tables live for the whole process, so
// the last verdict of each kind is kept (plain globals: a lost race only
// repeats the check).
bool FoldsAsciiPlainly(const std::int32_t* table) {
    static std::atomic<const std::int32_t*> lastPlain{nullptr};
    static std::atomic<const std::int32_t*> lastOther{nullptr};
    if (table == lastPlain.load(std::memory_order_relaxed)) return true;
    if (table == lastOther.load(std::memory_order_relaxed)) return false;
    bool plain = true;
    for (int c = 0; c < 0x80; ++c) plain = plain && table[c] == (c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    (plain ? lastPlain : lastOther).store(table, std::memory_order_relaxed);
    return plain;
}

// Sixteen bytes as one SIMD register (compiler vector extension).
using Lanes = std::uint8_t __attribute__((vector_size(16)));

Lanes LoadLanes(const char* at) {
    Lanes lanes;
    std::memcpy(&lanes, at, sizeof lanes);
    return lanes;
}

// The two 64-bit halves of `lanes` OR-ed together: zero when every lane is.
std::uint64_t AnyLane(Lanes lanes) {
    std::uint64_t halves[2];
    std::memcpy(halves, &lanes, sizeof halves);
    return halves[0] | halves[1];
}

// Upper-cases sixteen ASCII bytes at once.
Lanes AsciiUpper(Lanes lanes) {
    const auto isLower = reinterpret_cast<Lanes>((lanes >= 'a') & (lanes <= 'z'));
    return lanes - (isLower & 0x20);
}

// The difference of the first unequal lanes of two upper-cased blocks.
int FirstLaneDifference(Lanes a, Lanes b) {
    std::uint8_t bytesA[16];
    std::uint8_t bytesB[16];
    std::memcpy(bytesA, &a, sizeof bytesA);
    std::memcpy(bytesB, &b, sizeof bytesB);
    std::size_t lane = 0;
    while (bytesA[lane] == bytesB[lane]) ++lane;
    return bytesA[lane] - bytesB[lane];
}

// The narrow case-insensitive comparison, sixteen ASCII bytes per step where
// the locale allows it, unit by unit elsewhere.
int NarrowCaseCompare(const char* aFirst, const char* aLast, const char* bFirst, const char* bLast) {
    const NarrowUpper upper;
    const bool blockwise = FoldsAsciiPlainly(upper.table);
    const std::size_t aLength = RangeLength(aFirst, aLast);
    const std::size_t bLength = RangeLength(bFirst, bLast);
    const std::size_t common = std::min(aLength, bLength);
    std::size_t at = 0;
    while (at < common) {
        if (blockwise && common - at >= sizeof(Lanes)) {
            const Lanes blockA = LoadLanes(aFirst + at);
            const Lanes blockB = LoadLanes(bFirst + at);
            if ((AnyLane(blockA | blockB) & kHighBits) == 0) {
                const Lanes upperA = AsciiUpper(blockA);
                const Lanes upperB = AsciiUpper(blockB);
                if (AnyLane(upperA ^ upperB) != 0) return FirstLaneDifference(upperA, upperB);
                at += sizeof(Lanes);
                continue;
            }
        }
        if (const std::int32_t difference = upper(aFirst[at]) - upper(bFirst[at]); difference != 0) return difference;
        ++at;
    }
    return Clamped(static_cast<std::int64_t>(aLength) - static_cast<std::int64_t>(bLength));
}

template <typename Char>
const Char* TerminatorOf(const Char* text) {
    if (!text) return text;
    if constexpr (sizeof(Char) == 1) {
        return text + std::strlen(text);
    } else {
        return text + std::wcslen(text);
    }
}

}  // namespace

int StringCaseCompare(const char* aFirst, const char* aLast, const char* bFirst, const char* bLast) noexcept {
    return NarrowCaseCompare(aFirst, aLast, bFirst, bLast);
}
int StringCaseCompare(const char* a, const char* b) noexcept {
    return StringCaseCompare(a, TerminatorOf(a), b, TerminatorOf(b));
}
int StringCaseCompare(const wchar_t* aFirst, const wchar_t* aLast, const wchar_t* bFirst,
                      const wchar_t* bLast) noexcept {
    return CompareRanges(aFirst, aLast, bFirst, bLast, WideUpper{});
}
int StringCaseCompare(const wchar_t* a, const wchar_t* b) noexcept {
    return StringCaseCompare(a, TerminatorOf(a), b, TerminatorOf(b));
}

int StringExactCompare(const char* aFirst, const char* aLast, const char* bFirst, const char* bLast) noexcept {
    return CompareRanges(aFirst, aLast, bFirst, bLast, NarrowExact{});
}
int StringExactCompare(const char* a, const char* b) noexcept {
    return StringExactCompare(a, TerminatorOf(a), b, TerminatorOf(b));
}
int StringExactCompare(const wchar_t* aFirst, const wchar_t* aLast, const wchar_t* bFirst,
                       const wchar_t* bLast) noexcept {
    return CompareRanges(aFirst, aLast, bFirst, bLast, WideExact{});
}
int StringExactCompare(const wchar_t* a, const wchar_t* b) noexcept {
    return StringExactCompare(a, TerminatorOf(a), b, TerminatorOf(b));
}

int internal::Utf8StringCompareInternal(const unsigned char* aFirst, const unsigned char* aLast,
                                        const unsigned char* bFirst, const unsigned char* bLast, bool caseSensitive,
                                        const CharacterAttributes<wchar_t>* attributes) {
    const auto fold = [&](wchar_t c) -> std::int64_t {
        if (caseSensitive) return c;
        return attributes ? attributes->toUpper(c) : static_cast<std::int32_t>(std::towupper(static_cast<wint_t>(c)));
    };
    if (!aFirst) aLast = aFirst;
    if (!bFirst) bLast = bFirst;
    while (aFirst < aLast && bFirst < bLast) {
        wchar_t a;
        wchar_t b;
        aFirst = ConvertNextUtf8Character(aFirst, aLast, a);
        bFirst = ConvertNextUtf8Character(bFirst, bLast, b);
        if (a == b) continue;
        if (const std::int64_t difference = fold(a) - fold(b); difference != 0) return Clamped(difference);
    }
    return Clamped(std::int64_t{GetUtf8StringLength(aFirst, aLast)} - GetUtf8StringLength(bFirst, bLast));
}

int Utf8StringCaseInsensitiveCompare(const unsigned char* aFirst, const unsigned char* aLast,
                                     const unsigned char* bFirst, const unsigned char* bLast) {
    return internal::Utf8StringCompareInternal(aFirst, aLast, bFirst, bLast, false, nullptr);
}

int Utf8StringExactCompare(const unsigned char* aFirst, const unsigned char* aLast, const unsigned char* bFirst,
                           const unsigned char* bLast) {
    return internal::Utf8StringCompareInternal(aFirst, aLast, bFirst, bLast, true, nullptr);
}

}  // namespace zo::kel::osdep
