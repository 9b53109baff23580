// zo::kel::StringBase: the library's one string class, instantiated for
// narrow `char`, wide `wchar_t` (32-bit code points) and UTF-8 bytes. A string
// owns its block alone (copies are deep), is always zero-terminated, and counts
// in unsigned 32-bit units with npos = 0xFFFFFFFF. Equality and ordering ignore
// case: code that needs exact equality calls exactCompare. Failures throw the
// zo::kel::exception family and leave the string valid. Moving neither
// allocates nor throws: the source is left empty on a shared read-only
// terminator, so write only inside [begin(), end()).
#pragma once

#include <cstddef>
#include <cstring>

#include "qkdynam_platform.h"

namespace zo::kel {

// What erase, clear and resize do with a block the string no longer needs:
// ShrinkIfOversized gives it back once it is more than twice the length.
enum BufferStrategy { KeepBuffer = 0, ShrinkIfOversized = 1 };

template <typename Char, typename OtherChar, typename WideChar>
class StringBase;

namespace internal {
// The instantiation whose element type is Char.
template <typename Char>
struct StringOf;
template <>
struct StringOf<char> {
    using type = StringBase<char, wchar_t, wchar_t>;
};
template <>
struct StringOf<wchar_t> {
    using type = StringBase<wchar_t, char, wchar_t>;
};
template <>
struct StringOf<unsigned char> {
    using type = StringBase<unsigned char, wchar_t, wchar_t>;
};
}  // namespace internal

// Char is the element; OtherChar the character type accepted (and converted)
// by constructors, append and operator+: the narrow side is "US-ASCII", UTF-8
// strings go through the UTF-8 codec. WideChar is the wide type conversions
// pivot through.
template <typename Char, typename OtherChar, typename WideChar>
class QKDYNAM_API StringBase {
public:
    using value_type = Char;
    using iterator = Char*;
    using const_iterator = const Char*;
    using OtherString = typename internal::StringOf<OtherChar>::type;
    static constexpr unsigned int npos = 0xFFFFFFFFu;

    // Construction. A position past the length throws OutOfRange2; counts are
    // clipped to what remains; a null pointer is an empty text. Conversions
    // from other characters throw what the converter throws.
    StringBase();
    StringBase(const StringBase& other);
    StringBase(StringBase&& other) noexcept;  // leaves `other` empty
    StringBase(const StringBase& source, unsigned int pos, unsigned int count = npos);
    StringBase(const StringBase& left, const StringBase& right);
    StringBase(const Char* text);
    explicit StringBase(const OtherChar* text);
    StringBase(const Char* text, unsigned int count);
    StringBase(const OtherChar* text, unsigned int count);
    StringBase(const Char* first, const Char* last);
    StringBase(const OtherChar* first, const OtherChar* last);
    StringBase(unsigned int count, Char character);
    explicit StringBase(const OtherString& other);
    // A zero-terminated byte sequence in the named character set.
    StringBase(const unsigned char* bytes, const char* encodingName);
    ~StringBase();

    // Assignment.
    StringBase& operator=(const StringBase& other);
    StringBase& operator=(StringBase&& other) noexcept;  // leaves `other` empty
    StringBase& operator=(const Char* text);
    StringBase& operator=(const OtherChar* text);
    StringBase& assign(const Char* text, unsigned int count);
    StringBase& assign(const OtherChar* text, unsigned int count);
    void swap(StringBase& other) noexcept;

    // Appending. Growth doubles the required length; a length past 32 bits
    // throws OutOfRange. A pointer source may be the string's own begin(),
    // but no other position inside it.
    StringBase& append(const StringBase& text);
    StringBase& append(const StringBase& text, unsigned int pos, unsigned int count);
    StringBase& append(const OtherString& text);
    StringBase& append(const OtherString& text, unsigned int pos, unsigned int count);
    StringBase& append(const Char* text);
    StringBase& append(const Char* text, unsigned int count) {
        // The fast path of the hot appends; growth, and an empty append that
        // must not write a shared terminator, are handled out of line.
        if (text && count != 0 && count <= static_cast<std::size_t>(capacityEnd_ - end_)) {
            std::memmove(end_, text, count * sizeof(Char));
            end_ += count;
            *end_ = Char();
            return *this;
        }
        return appendGrowing(text, count);
    }
    StringBase& append(const OtherChar* text);
    StringBase& append(const OtherChar* text, unsigned int count);
    StringBase& append(unsigned int count, Char character);
    StringBase& operator+=(const StringBase& text) { return append(text); }
    StringBase& operator+=(const OtherString& text) { return append(text); }
    StringBase& operator+=(const Char* text) { return append(text); }
    StringBase& operator+=(const OtherChar* text) { return append(text); }
    StringBase& operator+=(Char character) { return append(&character, 1u); }

    friend StringBase operator+(const StringBase& left, const StringBase& right) { return StringBase(left, right); }
    friend StringBase operator+(const StringBase& left, const OtherString& right) { return Joined(left, right); }
    friend StringBase operator+(const StringBase& left, const Char* right) { return Joined(left, right); }
    friend StringBase operator+(const StringBase& left, const OtherChar* right) { return Joined(left, right); }
    friend StringBase operator+(const StringBase& left, Char right) { return Joined(left, right); }

    // Access. c_str() is never null.
    Char* begin() noexcept { return begin_; }
    Char* end() noexcept { return end_; }
    const Char* begin() const noexcept { return begin_; }
    const Char* end() const noexcept { return end_; }
    Char& operator[](unsigned int pos) noexcept { return begin_[pos]; }
    const Char& operator[](unsigned int pos) const noexcept { return begin_[pos]; }
    const Char* c_str() const noexcept { return begin_; }
    unsigned int length() const noexcept { return static_cast<unsigned int>(end_ - begin_); }
    unsigned int size() const noexcept { return length(); }
    bool empty() const noexcept { return end_ == begin_; }
    unsigned int capacity() const noexcept { return static_cast<unsigned int>(capacityEnd_ - begin_); }
    // Copies up to `count` characters from `pos` (no terminator); returns how many.
    unsigned int copy(Char* dest, unsigned int count, unsigned int pos = 0) const;

    // Searching compares characters exactly and answers npos when nothing is
    // found. find() from a position at or past the length is npos, even for
    // an empty pattern.
    unsigned int find(const StringBase& pattern, unsigned int pos = 0) const noexcept;
    unsigned int find(Char character, unsigned int pos = 0) const noexcept;
    unsigned int rfind(const StringBase& pattern, unsigned int pos = npos) const noexcept;
    unsigned int rfind(Char character, unsigned int pos = npos) const noexcept;
    unsigned int find_first_of(const StringBase& set, unsigned int pos = 0) const noexcept;
    unsigned int find_first_not_of(const StringBase& set, unsigned int pos = 0) const noexcept;
    unsigned int find_last_of(const StringBase& set, unsigned int pos = npos) const noexcept;
    unsigned int find_last_of(Char character, unsigned int pos = npos) const noexcept;
    unsigned int find_last_not_of(const StringBase& set, unsigned int pos = npos) const noexcept;
    unsigned int find_last_not_of(Char character, unsigned int pos = npos) const noexcept;

    // Comparison ignores case (the current locale's upper-casing) and returns
    // a signed magnitude whose sign is the order; exactCompare does not.
    int compare(const StringBase& other) const;
    int compare(const Char* text) const;
    int compare(unsigned int pos, unsigned int count, const Char* text, unsigned int textCount) const;
    int exactCompare(const StringBase& other) const noexcept;
    int exactCompare(const Char* text) const noexcept;
    friend bool operator==(const StringBase& left, const StringBase& right) { return left.compare(right) == 0; }
    friend bool operator==(const StringBase& left, const Char* right) { return left.compare(right) == 0; }
    friend bool operator<(const StringBase& left, const StringBase& right) { return left.compare(right) < 0; }
    friend bool operator<(const StringBase& left, const Char* right) { return left.compare(right) < 0; }
    friend bool operator>(const StringBase& left, const StringBase& right) { return left.compare(right) > 0; }
    friend bool operator>(const StringBase& left, const Char* right) { return left.compare(right) > 0; }

    // Modification. Positions past the length throw OutOfRange2, a result
    // longer than 32 bits BoundExceeded2; counts are clipped.
    StringBase& erase(unsigned int pos, unsigned int count = npos, BufferStrategy strategy = ShrinkIfOversized);
    // Returns the position of `first` in the (possibly new) block.
    Char* erase(Char* first, Char* last, BufferStrategy strategy = ShrinkIfOversized);
    StringBase& replace(unsigned int pos, unsigned int count, const StringBase& text);
    StringBase& replace(unsigned int pos, unsigned int count, const StringBase& text, unsigned int pos2,
                        unsigned int count2);
    StringBase substr(unsigned int pos = 0, unsigned int count = npos) const { return StringBase(*this, pos, count); }
    void resize(unsigned int length, Char fill = Char(), BufferStrategy strategy = ShrinkIfOversized);
    void reserve(unsigned int capacity);  // exact, never shrinks
    void clear(BufferStrategy strategy = ShrinkIfOversized);

    // Binary form (little-endian count, then the text). serialize throws
    // BufferOverflow when the form does not fit before `limit`; deserialize
    // throws DeserializationError or InvalidSequence and then leaves both the
    // string and the cursor as they were.
    unsigned int serializationSize() const noexcept;
    void serialize(unsigned char*& cursor, const unsigned char* limit) const;
    void deserialize(const unsigned char*& cursor, const unsigned char* limit);

    // Debugging.
    void checkInvariants() const;
    bool hasEmbeddedNull() const noexcept { return find(Char(), 0) != npos; }
    // Gives back the block, leaving an empty string with a one-slot block.
    void freeString();

private:
    template <typename Tail>
    static StringBase Joined(const StringBase& left, const Tail& right) {
        StringBase joined(left);
        joined += right;
        return joined;
    }

    bool keepsBlockFor(unsigned int length) const noexcept;
    void adopt(Char* block, unsigned int length, unsigned int capacity) noexcept;
    void setLength(unsigned int length) noexcept;
    // The block to reallocate or free: null while on the shared terminator.
    Char* ownedBlock() const noexcept;
    void releaseToSharedTerminator() noexcept;
    void grow(unsigned int required);
    StringBase& appendGrowing(const Char* text, unsigned int count);
    void reallocateExactly(unsigned int capacity);
    void applyStrategy(BufferStrategy strategy);
    void assignCharacters(const Char* text, unsigned int count);
    void replaceCharacters(unsigned int pos, unsigned int count, const Char* text, unsigned int textCount);
    void initializeConverted(const OtherChar* first, const OtherChar* last);

    Char* begin_;
    Char* end_;
    Char* capacityEnd_;
};

extern template class QKDYNAM_API StringBase<char, wchar_t, wchar_t>;
extern template class QKDYNAM_API StringBase<wchar_t, char, wchar_t>;
extern template class QKDYNAM_API StringBase<unsigned char, wchar_t, wchar_t>;

using NarrowString = StringBase<char, wchar_t, wchar_t>;
using WideString = StringBase<wchar_t, char, wchar_t>;
using Utf8String = StringBase<unsigned char, wchar_t, wchar_t>;

template <typename Char, typename OtherChar, typename WideChar>
void swap(StringBase<Char, OtherChar, WideChar>& a, StringBase<Char, OtherChar, WideChar>& b) noexcept {
    a.swap(b);
}

}  // namespace zo::kel
