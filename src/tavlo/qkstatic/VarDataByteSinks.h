// The three cursors of the VarData byte form. A body writer is written once
// against the sink interface (put, bytes, units16) and run twice: over a
// ByteCounter for the exact size, then over a ByteWriter into the room that
// size reserved, so the two passes cannot disagree. ByteReader checks every
// field against the end before it touches a byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zo/kel/ByteForm.h"
#include "zo/kel/Exception.h"
#include "zo/kel/SafeInteger.h"

namespace internal {

// The size pass: counts what a ByteWriter would write, in checked 32-bit
// arithmetic (OutOfRange past 4294967295).
class ByteCounter {
public:
    using Size = zo::kel::SafeInteger<unsigned int>;

    template <class Integer>
    void put(Integer) {
        size_ += static_cast<unsigned int>(sizeof(Integer));
    }
    void counted(const void*, unsigned int count) { size_ += Size(4u) + count; }
    void units16(const wchar_t*, unsigned int count) { size_ += Size(2u) * count; }
    void add(Size count) { size_ += count; }
    // A body its payload writes itself.
    template <class Payload>
    void serialized(const Payload& payload) {
        add(payload.serializationSize());
    }

    Size size() const noexcept { return size_; }

private:
    Size size_ = 0u;
};

// The write pass: stores little-endian fields; BufferOverflow when the room runs out.
class ByteWriter {
public:
    ByteWriter(unsigned char*& cursor, const unsigned char* end) : cursor_(cursor), end_(end) {}

    void need(std::size_t count) const {
        if (zo::kel::byteform::Room(cursor_, end_) < count) ZO_THROW(zo::kel::exception::BufferOverflow);
    }
    template <class Integer>
    void put(Integer value) {
        bytes(&value, sizeof value);
    }
    void bytes(const void* data, std::size_t count) {
        need(count);
        if (count) std::memcpy(cursor_, data, count);
        cursor_ += count;
    }
    // A u32 count, then the `count` bytes at `data`.
    void counted(const void* data, unsigned int count) {
        need(std::size_t{4} + count);
        std::memcpy(cursor_, &count, 4);
        if (count) std::memcpy(cursor_ + 4, data, count);
        cursor_ += std::size_t{4} + count;
    }
    // Each wide character cut to its low 16 bits.
    void units16(const wchar_t* text, unsigned int count) {
        need(std::size_t{2} * count);
        for (unsigned int i = 0; i < count; ++i) {
            const auto unit = static_cast<std::uint16_t>(text[i]);
            std::memcpy(cursor_ + 2 * static_cast<std::size_t>(i), &unit, sizeof unit);
        }
        cursor_ += std::size_t{2} * count;
    }
    // A body its payload writes itself, checking its own room.
    template <class Payload>
    void serialized(const Payload& payload) {
        payload.serialize(cursor_, end_);
    }

private:
    unsigned char*& cursor_;
    const unsigned char* end_;
};

// The reader of outside bytes: DeserializationError for anything short.
class ByteReader {
public:
    ByteReader(const unsigned char*& cursor, const unsigned char* end) : cursor_(cursor), end_(end) {}

    void need(std::size_t count) const {
        if (zo::kel::byteform::Room(cursor_, end_) < count) ZO_THROW(zo::kel::exception::DeserializationError);
    }
    std::size_t room() const noexcept { return zo::kel::byteform::Room(cursor_, end_); }
    template <class Integer>
    Integer get() {
        Integer value;
        std::memcpy(&value, take(sizeof value), sizeof value);
        return value;
    }
    const unsigned char* take(std::size_t count) {
        need(count);
        const unsigned char* at = cursor_;
        cursor_ += count;
        return at;
    }
    // A body its payload reads itself: `read(cursor, end)` moves the cursor
    // past what it took.
    template <class Read>
    auto readBy(Read read) {
        return read(cursor_, end_);
    }

private:
    const unsigned char*& cursor_;
    const unsigned char* end_;
};

}  // namespace internal
