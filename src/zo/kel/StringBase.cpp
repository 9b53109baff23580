#include "zo/kel/StringBase.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <utility>

#include "zo/kel/ByteForm.h"
#include "zo/kel/DLLMalloc.h"
#include "zo/kel/Exception.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/Utf8.h"
#include "zo/kel/Utf8Internal.h"
#include "zo/kel/osdep/Assertion.h"
#include "zo/kel/osdep/CharsetConversion.h"
#include "zo/kel/osdep/StringCompare.h"

namespace zo::kel {

namespace {

constexpr const char* kOffsetOutOfRange = "String offset out of range";
constexpr const char* kResultTooLarge = "Resulting string too large";
constexpr std::uint32_t kLargestCount = 0xFFFFFFFFu;
// The cap on a wide string's UTF-8 byte count, so that count + 4 fits 32 bits.
constexpr unsigned int kWideFormByteLimit = 0xFFFFFFFBu;

// The terminator every moved-from string points at: moving allocates nothing
// and cannot throw. It is read-only, so nothing may write through it; the
// block helpers below see it as "no block".
template <typename Char>
constexpr Char kSharedTerminator[1] = {};

template <typename Char>
Char* SharedTerminator() noexcept {
    return const_cast<Char*>(kSharedTerminator<Char>);
}

template <typename Char>
Char* AllocateSlots(unsigned int capacity) {
    return static_cast<Char*>(DLLMalloc((std::size_t{capacity} + 1) * sizeof(Char)));
}

// The terminator of a zero-terminated text (null for a null text).
template <typename Char>
const Char* TextEnd(const Char* text) noexcept {
    if (!text) return text;
    if constexpr (std::is_same_v<Char, wchar_t>) {
        return text + std::wcslen(text);
    } else {
        return text + std::strlen(reinterpret_cast<const char*>(text));
    }
}

template <typename Char>
unsigned int TextLength(const Char* text) {
    return NumericCast<unsigned int>(TextEnd(text) - text);
}

template <typename Char>
unsigned int RangeLength(const Char* first, const Char* last) {
    return first ? NumericCast<unsigned int>(last - first) : 0u;
}

template <typename Char>
const Char* FindCharacter(const Char* first, const Char* last, Char character) {
    if (first >= last) return nullptr;
    const auto count = static_cast<std::size_t>(last - first);
    if constexpr (std::is_same_v<Char, wchar_t>) {
        return std::wmemchr(first, character, count);
    } else {
        return static_cast<const Char*>(std::memchr(first, character, count));
    }
}

template <typename Char>
bool SetContains(const Char* set, unsigned int setLength, Char character) {
    return FindCharacter(set, set + setLength, character) != nullptr;
}

// First index from `pos` on whose character satisfies `matches`, or npos.
template <typename Char, typename Predicate>
unsigned int FirstWhere(const Char* text, unsigned int length, unsigned int pos, Predicate matches) {
    for (unsigned int at = pos; at < length; ++at) {
        if (matches(text[at])) return at;
    }
    return kLargestCount;
}

// Last index at or before `pos` (clipped to the text) whose character
// satisfies `matches`, or npos.
template <typename Char, typename Predicate>
unsigned int LastWhere(const Char* text, unsigned int length, unsigned int pos, Predicate matches) {
    if (length == 0) return kLargestCount;
    for (unsigned int at = std::min(pos, length - 1) + 1; at-- > 0;) {
        if (matches(text[at])) return at;
    }
    return kLargestCount;
}

unsigned int Clipped(unsigned int count, unsigned int available) { return std::min(count, available); }

void CheckOffset(unsigned int pos, unsigned int length) {
    if (pos > length) ZO_THROW(exception::OutOfRange2, kOffsetOutOfRange);
}

// Short input carries no throw site, as every reader of the string forms expects.
[[noreturn]] void ThrowShortInput() { throw exception::DeserializationError(0, nullptr); }

// How characters of the other type become characters of this one.
template <typename Char, typename OtherChar>
struct Conversion;

template <>
struct Conversion<char, wchar_t> {
    static unsigned int length(const wchar_t* first, const wchar_t* last) {
        return osdep::GetWideToAnsiRequiredBufferLength(first, last, osdep::kNarrowStringCharset);
    }
    static void convert(const wchar_t* first, const wchar_t* last, char* out, char* outEnd) {
        osdep::WideToAnsiNoAlloc(first, last, out, outEnd, osdep::kNarrowStringCharset);
    }
};

template <>
struct Conversion<wchar_t, char> {
    static unsigned int length(const char* first, const char* last) {
        return osdep::GetAnsiToWideRequiredBufferLength(first, last, osdep::kNarrowStringCharset);
    }
    static void convert(const char* first, const char* last, wchar_t* out, wchar_t* outEnd) {
        osdep::AnsiToWideNoAlloc(first, last, out, outEnd, osdep::kNarrowStringCharset);
    }
};

template <>
struct Conversion<unsigned char, wchar_t> {
    static unsigned int length(const wchar_t* first, const wchar_t* last) {
        return NumericCast<unsigned int>(internal::Utf8EncodedSize(first, last));
    }
    static void convert(const wchar_t* first, const wchar_t* last, unsigned char* out, unsigned char* outEnd) {
        WideToUtf8(first, last, out, outEnd);
    }
};

}  // namespace

#define STRING_BASE_TEMPLATE template <typename Char, typename OtherChar, typename WideChar>
#define STRING_BASE StringBase<Char, OtherChar, WideChar>

// ---- block management --------------------------------------------------

STRING_BASE_TEMPLATE
void STRING_BASE::adopt(Char* block, unsigned int length, unsigned int capacity) noexcept {
    begin_ = block;
    end_ = block + length;
    capacityEnd_ = block + capacity;
    *end_ = Char();
}

STRING_BASE_TEMPLATE
void STRING_BASE::setLength(unsigned int length) noexcept {
    end_ = begin_ + length;
    // The shared terminator (length 0) is already zero and must not be written.
    if (begin_ != SharedTerminator<Char>()) *end_ = Char();
}

STRING_BASE_TEMPLATE
Char* STRING_BASE::ownedBlock() const noexcept {
    return begin_ == SharedTerminator<Char>() ? nullptr : begin_;
}

STRING_BASE_TEMPLATE
void STRING_BASE::releaseToSharedTerminator() noexcept {
    begin_ = end_ = capacityEnd_ = SharedTerminator<Char>();
}

// The lazy-shrink rule: a block stays while it is no more than twice the length.
STRING_BASE_TEMPLATE
bool STRING_BASE::keepsBlockFor(unsigned int length) const noexcept {
    return capacity() >= length && 2 * std::uint64_t{length} >= capacity();
}

STRING_BASE_TEMPLATE
void STRING_BASE::grow(unsigned int required) {
    const unsigned int length = this->length();
    Char* block = nullptr;
    unsigned int capacity = required;
    if (required < 0x80000000u) {
        block = static_cast<Char*>(DLLReallocNoThrow(ownedBlock(), (2 * std::size_t{required} + 1) * sizeof(Char)));
        if (block) capacity = 2 * required;
    }
    if (!block) block = static_cast<Char*>(DLLRealloc(ownedBlock(), (std::size_t{required} + 1) * sizeof(Char)));
    adopt(block, length, capacity);
}

STRING_BASE_TEMPLATE
void STRING_BASE::reallocateExactly(unsigned int capacity) {
    const unsigned int length = std::min(this->length(), capacity);
    auto* block = static_cast<Char*>(DLLRealloc(ownedBlock(), (std::size_t{capacity} + 1) * sizeof(Char)));
    adopt(block, length, capacity);
}

STRING_BASE_TEMPLATE
void STRING_BASE::applyStrategy(BufferStrategy strategy) {
    if (strategy == ShrinkIfOversized && !keepsBlockFor(length())) reallocateExactly(length());
}

// `text` may lie inside this string: the old block is freed only after the copy.
STRING_BASE_TEMPLATE
void STRING_BASE::assignCharacters(const Char* text, unsigned int count) {
    if (keepsBlockFor(count)) {
        if (count) std::memmove(begin_, text, count * sizeof(Char));
        setLength(count);
        return;
    }
    Char* block = AllocateSlots<Char>(count);
    if (count) std::memcpy(block, text, count * sizeof(Char));
    DLLFree(ownedBlock());
    adopt(block, count, count);
}

STRING_BASE_TEMPLATE
void STRING_BASE::initializeConverted(const OtherChar* first, const OtherChar* last) {
    const unsigned int length = first ? Conversion<Char, OtherChar>::length(first, last) : 0u;
    Char* block = AllocateSlots<Char>(length);
    try {
        if (length) Conversion<Char, OtherChar>::convert(first, last, block, block + length);
    } catch (...) {
        DLLFree(block);
        throw;
    }
    adopt(block, length, length);
}

// ---- construction ------------------------------------------------------

STRING_BASE_TEMPLATE
STRING_BASE::StringBase() { adopt(AllocateSlots<Char>(0), 0, 0); }

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const StringBase& other) : StringBase(other.begin_, other.length()) {}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(StringBase&& other) noexcept
    : begin_(other.begin_), end_(other.end_), capacityEnd_(other.capacityEnd_) {
    other.releaseToSharedTerminator();
}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const StringBase& source, unsigned int pos, unsigned int count) {
    CheckOffset(pos, source.length());
    count = Clipped(count, source.length() - pos);
    adopt(AllocateSlots<Char>(count), 0, count);
    std::memcpy(begin_, source.begin_ + pos, count * sizeof(Char));
    setLength(count);
}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const StringBase& left, const StringBase& right) {
    const unsigned int length = (SafeInteger<unsigned int>(left.length()) + right.length()).get();
    adopt(AllocateSlots<Char>(length), 0, length);
    std::memcpy(begin_, left.begin_, left.length() * sizeof(Char));
    std::memcpy(begin_ + left.length(), right.begin_, right.length() * sizeof(Char));
    setLength(length);
}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const Char* text) : StringBase(text, TextLength(text)) {}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const OtherChar* text) {
    initializeConverted(text, text + TextLength(text));
}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const Char* text, unsigned int count) {
    if (!text) count = 0;
    adopt(AllocateSlots<Char>(count), 0, count);
    if (count) std::memcpy(begin_, text, count * sizeof(Char));
    setLength(count);
}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const OtherChar* text, unsigned int count) {
    initializeConverted(text, text ? text + count : text);
}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const Char* first, const Char* last) : StringBase(first, RangeLength(first, last)) {}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const OtherChar* first, const OtherChar* last) {
    initializeConverted(first, first ? last : first);
}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(unsigned int count, Char character) {
    adopt(AllocateSlots<Char>(count), 0, count);
    std::fill_n(begin_, count, character);
    setLength(count);
}

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const OtherString& other) { initializeConverted(other.begin(), other.end()); }

STRING_BASE_TEMPLATE
STRING_BASE::StringBase(const unsigned char* bytes, const char* encodingName) {
    const auto* narrow = reinterpret_cast<const char*>(bytes);
    WideString wide = osdep::AnsiToWide(narrow, TextLength(narrow), encodingName);
    if constexpr (std::is_same_v<Char, wchar_t>) {
        releaseToSharedTerminator();
        swap(wide);
    } else {
        initializeConverted(wide.begin(), wide.end());
    }
}

STRING_BASE_TEMPLATE
STRING_BASE::~StringBase() { DLLFree(ownedBlock()); }

// ---- assignment --------------------------------------------------------

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::operator=(const StringBase& other) {
    if (this != &other) assignCharacters(other.begin_, other.length());
    return *this;
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::operator=(StringBase&& other) noexcept {
    if (this != &other) {
        DLLFree(ownedBlock());
        begin_ = other.begin_;
        end_ = other.end_;
        capacityEnd_ = other.capacityEnd_;
        other.releaseToSharedTerminator();
    }
    return *this;
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::operator=(const Char* text) { return assign(text, TextLength(text)); }

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::operator=(const OtherChar* text) { return assign(text, TextLength(text)); }

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::assign(const Char* text, unsigned int count) {
    assignCharacters(text, text ? count : 0u);
    return *this;
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::assign(const OtherChar* text, unsigned int count) {
    StringBase converted(text, count);
    swap(converted);
    return *this;
}

STRING_BASE_TEMPLATE
void STRING_BASE::swap(StringBase& other) noexcept {
    std::swap(begin_, other.begin_);
    std::swap(end_, other.end_);
    std::swap(capacityEnd_, other.capacityEnd_);
}

// ---- appending ---------------------------------------------------------

// Called by the inline append only for what its fast path refuses: no text,
// no characters, or more characters than the room left.
STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::appendGrowing(const Char* text, unsigned int count) {
    if (!text || count == 0) return *this;
    const bool fromOwnBegin = text == begin_;
    grow((SafeInteger<unsigned int>(length()) + count).get());
    if (fromOwnBegin) text = begin_;
    std::memmove(end_, text, count * sizeof(Char));
    setLength(length() + count);
    return *this;
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::append(const Char* text) { return append(text, TextLength(text)); }

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::append(const StringBase& text) { return append(text.begin_, text.length()); }

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::append(const StringBase& text, unsigned int pos, unsigned int count) {
    CheckOffset(pos, text.length());
    count = Clipped(count, text.length() - pos);
    if (&text == this && pos != 0) {
        // Growth would move the source; only a source at begin() is rebased.
        const StringBase part(text, pos, count);
        return append(part.begin_, count);
    }
    return append(text.begin_ + pos, count);
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::append(const OtherChar* text, unsigned int count) {
    if (!text || count == 0) return *this;
    const unsigned int converted = Conversion<Char, OtherChar>::length(text, text + count);
    const unsigned int required = (SafeInteger<unsigned int>(length()) + converted).get();
    if (capacity() < required) grow(required);
    try {
        Conversion<Char, OtherChar>::convert(text, text + count, end_, end_ + converted);
    } catch (...) {
        *end_ = Char();
        throw;
    }
    setLength(required);
    return *this;
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::append(const OtherChar* text) { return append(text, TextLength(text)); }

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::append(const OtherString& text) { return append(text.begin(), text.length()); }

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::append(const OtherString& text, unsigned int pos, unsigned int count) {
    CheckOffset(pos, text.length());
    return append(text.begin() + pos, Clipped(count, text.length() - pos));
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::append(unsigned int count, Char character) {
    const unsigned int required = (SafeInteger<unsigned int>(length()) + count).get();
    if (capacity() < required) grow(required);
    std::fill_n(end_, count, character);
    setLength(required);
    return *this;
}

// ---- access ------------------------------------------------------------

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::copy(Char* dest, unsigned int count, unsigned int pos) const {
    CheckOffset(pos, length());
    count = Clipped(count, length() - pos);
    if (count) std::memcpy(dest, begin_ + pos, count * sizeof(Char));
    return count;
}

// ---- searching ---------------------------------------------------------

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::find(const StringBase& pattern, unsigned int pos) const noexcept {
    const unsigned int length = this->length();
    const unsigned int patternLength = pattern.length();
    if (pos >= length || patternLength > length - pos) return npos;
    if (patternLength == 0) return pos;
    const Char* lastStart = end_ - patternLength;
    for (const Char* at = begin_ + pos; at <= lastStart; ++at) {
        at = FindCharacter(at, lastStart + 1, pattern.begin_[0]);
        if (!at) return npos;
        if (std::memcmp(at + 1, pattern.begin_ + 1, (patternLength - 1) * sizeof(Char)) == 0) {
            return static_cast<unsigned int>(at - begin_);
        }
    }
    return npos;
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::find(Char character, unsigned int pos) const noexcept {
    if (pos >= length()) return npos;
    const Char* at = FindCharacter<Char>(begin_ + pos, end_, character);
    return at ? static_cast<unsigned int>(at - begin_) : npos;
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::rfind(const StringBase& pattern, unsigned int pos) const noexcept {
    const unsigned int length = this->length();
    const unsigned int patternLength = pattern.length();
    if (patternLength > length) return npos;
    for (unsigned int at = std::min(pos, length - patternLength) + 1; at-- > 0;) {
        if (std::memcmp(begin_ + at, pattern.begin_, patternLength * sizeof(Char)) == 0) return at;
    }
    return npos;
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::rfind(Char character, unsigned int pos) const noexcept {
    return LastWhere(begin_, length(), pos, [character](Char c) { return c == character; });
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::find_first_of(const StringBase& set, unsigned int pos) const noexcept {
    return FirstWhere(begin_, length(), pos, [&set](Char c) { return SetContains(set.begin_, set.length(), c); });
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::find_first_not_of(const StringBase& set, unsigned int pos) const noexcept {
    return FirstWhere(begin_, length(), pos, [&set](Char c) { return !SetContains(set.begin_, set.length(), c); });
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::find_last_of(const StringBase& set, unsigned int pos) const noexcept {
    return LastWhere(begin_, length(), pos, [&set](Char c) { return SetContains(set.begin_, set.length(), c); });
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::find_last_of(Char character, unsigned int pos) const noexcept {
    return rfind(character, pos);
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::find_last_not_of(const StringBase& set, unsigned int pos) const noexcept {
    return LastWhere(begin_, length(), pos, [&set](Char c) { return !SetContains(set.begin_, set.length(), c); });
}

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::find_last_not_of(Char character, unsigned int pos) const noexcept {
    return LastWhere(begin_, length(), pos, [character](Char c) { return c != character; });
}

// ---- comparison --------------------------------------------------------

namespace {

// The byte strings compare as narrow text: upper-casing leaves bytes from
// 0x80 up alone, so UTF-8 text orders by code point and folds ASCII case.
template <typename Char>
auto AsComparable(const Char* text) {
    if constexpr (std::is_same_v<Char, unsigned char>) {
        return reinterpret_cast<const char*>(text);
    } else {
        return text;
    }
}

template <typename Char>
int CaseCompare(const Char* aFirst, const Char* aLast, const Char* bFirst, const Char* bLast) {
    return osdep::StringCaseCompare(AsComparable(aFirst), AsComparable(aLast), AsComparable(bFirst),
                                    AsComparable(bLast));
}

template <typename Char>
int ExactCompare(const Char* aFirst, const Char* aLast, const Char* bFirst, const Char* bLast) {
    return osdep::StringExactCompare(AsComparable(aFirst), AsComparable(aLast), AsComparable(bFirst),
                                     AsComparable(bLast));
}

}  // namespace

STRING_BASE_TEMPLATE
int STRING_BASE::compare(const StringBase& other) const { return CaseCompare(begin_, end_, other.begin_, other.end_); }

STRING_BASE_TEMPLATE
int STRING_BASE::compare(const Char* text) const {
    const Char* textEnd = text ? text + TextLength(text) : text;
    return CaseCompare(begin_, end_, text, textEnd);
}

STRING_BASE_TEMPLATE
int STRING_BASE::compare(unsigned int pos, unsigned int count, const Char* text, unsigned int textCount) const {
    CheckOffset(pos, length());
    count = Clipped(count, length() - pos);
    return CaseCompare(begin_ + pos, begin_ + pos + count, text, text ? text + textCount : text);
}

STRING_BASE_TEMPLATE
int STRING_BASE::exactCompare(const StringBase& other) const noexcept {
    return ExactCompare(begin_, end_, other.begin_, other.end_);
}

STRING_BASE_TEMPLATE
int STRING_BASE::exactCompare(const Char* text) const noexcept {
    return ExactCompare(begin_, end_, text, TextEnd(text));
}

// ---- modification ------------------------------------------------------

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::erase(unsigned int pos, unsigned int count, BufferStrategy strategy) {
    const unsigned int length = this->length();
    CheckOffset(pos, length);
    count = Clipped(count, length - pos);
    if (count != 0) {
        // The tail moves down with its terminator (never the shared one: it has no tail).
        std::memmove(begin_ + pos, begin_ + pos + count, (length - pos - count + 1) * sizeof(Char));
        end_ -= count;
    }
    applyStrategy(strategy);
    return *this;
}

STRING_BASE_TEMPLATE
Char* STRING_BASE::erase(Char* first, Char* last, BufferStrategy strategy) {
    const auto pos = NumericCast<unsigned int>(first - begin_);
    erase(pos, NumericCast<unsigned int>(last - first), strategy);
    return begin_ + pos;
}

STRING_BASE_TEMPLATE
void STRING_BASE::replaceCharacters(unsigned int pos, unsigned int count, const Char* text, unsigned int textCount) {
    const unsigned int length = this->length();
    CheckOffset(pos, length);
    count = Clipped(count, length - pos);
    const std::uint64_t newLength = std::uint64_t{length} - count + textCount;
    if (newLength > kLargestCount) ZO_THROW(exception::BoundExceeded2, kResultTooLarge);
    if (newLength > capacity()) grow(static_cast<unsigned int>(newLength));
    // The tail (with its terminator) stays put when the lengths match, which
    // also keeps the shared terminator unwritten.
    if (textCount != count) {
        std::memmove(begin_ + pos + textCount, begin_ + pos + count, (length - pos - count + 1) * sizeof(Char));
    }
    if (textCount) std::memcpy(begin_ + pos, text, textCount * sizeof(Char));
    end_ = begin_ + newLength;
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::replace(unsigned int pos, unsigned int count, const StringBase& text) {
    return replace(pos, count, text, 0, npos);
}

STRING_BASE_TEMPLATE
STRING_BASE& STRING_BASE::replace(unsigned int pos, unsigned int count, const StringBase& text, unsigned int pos2,
                                  unsigned int count2) {
    CheckOffset(pos2, text.length());
    count2 = Clipped(count2, text.length() - pos2);
    if (&text == this) {
        const StringBase source(text, pos2, count2);
        replaceCharacters(pos, count, source.begin_, count2);
    } else {
        replaceCharacters(pos, count, text.begin_ + pos2, count2);
    }
    return *this;
}

STRING_BASE_TEMPLATE
void STRING_BASE::resize(unsigned int length, Char fill, BufferStrategy strategy) {
    if (length > this->length()) {
        append(length - this->length(), fill);
    } else if (length < this->length()) {
        erase(length, npos, strategy);
    }
}

STRING_BASE_TEMPLATE
void STRING_BASE::reserve(unsigned int capacity) {
    if (this->capacity() < capacity) reallocateExactly(capacity);
}

STRING_BASE_TEMPLATE
void STRING_BASE::clear(BufferStrategy strategy) {
    setLength(0);
    applyStrategy(strategy);
}

// ---- binary form -------------------------------------------------------
// Narrow: u32 (length + 1), the characters, a zero byte. UTF-8 bytes: u32
// length, the bytes. Wide: u32 UTF-8 byte count, the text as UTF-8.

STRING_BASE_TEMPLATE
unsigned int STRING_BASE::serializationSize() const noexcept {
    if constexpr (std::is_same_v<Char, char>) {
        return byteform::SaturatedFormSize(std::size_t{length()} + 1);
    } else if constexpr (std::is_same_v<Char, unsigned char>) {
        return byteform::SaturatedFormSize(length());
    } else {
        return GetUtf8EncodingBytesWithBufferLimit(begin_, end_, kWideFormByteLimit) + byteform::kCountSize;
    }
}

STRING_BASE_TEMPLATE
void STRING_BASE::serialize(unsigned char*& cursor, const unsigned char* limit) const {
    if constexpr (std::is_same_v<Char, wchar_t>) {
        const unsigned int byteCount = GetUtf8EncodingBytesWithBufferLimit(begin_, end_, kWideFormByteLimit);
        const std::size_t formSize = byteform::kCountSize + byteCount;
        if (byteform::Room(cursor, limit) < formSize) byteform::ThrowBufferOverflow();
        byteform::StoreCount(cursor, byteCount);
        WideToUtf8(begin_, end_, cursor + byteform::kCountSize, cursor + formSize);
        cursor += formSize;
    } else {
        constexpr unsigned int kTerminatorBytes = std::is_same_v<Char, char> ? 1 : 0;
        const std::size_t formSize = byteform::kCountSize + length() + kTerminatorBytes;
        if (byteform::Room(cursor, limit) < formSize) byteform::ThrowBufferOverflow();
        byteform::StoreCount(cursor, NumericCast<std::uint32_t>(std::uint64_t{length()} + kTerminatorBytes));
        std::memcpy(cursor + byteform::kCountSize, begin_, length());
        if (kTerminatorBytes) cursor[formSize - 1] = 0;
        cursor += formSize;
    }
}

STRING_BASE_TEMPLATE
void STRING_BASE::deserialize(const unsigned char*& cursor, const unsigned char* limit) {
    const std::size_t room = byteform::Room(cursor, limit);
    if (room < byteform::kCountSize) ThrowShortInput();
    const std::uint32_t count = byteform::LoadCount(cursor);
    if (room - byteform::kCountSize < count) ThrowShortInput();
    const unsigned char* bytes = cursor + byteform::kCountSize;
    if constexpr (std::is_same_v<Char, char>) {
        if (count == 0 || bytes[count - 1] != 0) ZO_THROW(exception::DeserializationError);
        assignCharacters(reinterpret_cast<const char*>(bytes), count - 1);
    } else if constexpr (std::is_same_v<Char, unsigned char>) {
        assignCharacters(bytes, count);
    } else {
        const unsigned int characters = GetUtf8StringLength(bytes, bytes + count);
        if (!keepsBlockFor(characters)) {
            Char* block = AllocateSlots<Char>(characters);
            DLLFree(ownedBlock());
            adopt(block, 0, characters);
        }
        Utf8ToWide(bytes, bytes + count, begin_, begin_ + characters);
        setLength(characters);
    }
    cursor = bytes + count;
}

// ---- debugging ---------------------------------------------------------

STRING_BASE_TEMPLATE
void STRING_BASE::checkInvariants() const {
    ZO_ASSERT(begin_ != nullptr);
    ZO_ASSERT(begin_ <= end_ && end_ <= capacityEnd_);
    ZO_ASSERT(*end_ == Char());
}

STRING_BASE_TEMPLATE
void STRING_BASE::freeString() {
    Char* block = AllocateSlots<Char>(0);
    DLLFree(ownedBlock());
    adopt(block, 0, 0);
}

#undef STRING_BASE
#undef STRING_BASE_TEMPLATE

template class StringBase<char, wchar_t, wchar_t>;
template class StringBase<wchar_t, char, wchar_t>;
template class StringBase<unsigned char, wchar_t, wchar_t>;

}  // namespace zo::kel
