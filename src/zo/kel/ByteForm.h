// Primitives of the library's byte forms: 32-bit counts stored little-endian
// as on the host, and the room left between a cursor and its limit. Callers
// check the room before every load or store; these helpers do not. Public:
// Vector<T> reads and writes its count with them in its callers' code, and an
// element type that brings its own byte form can use them alike.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zo/kel/Exception.h"

namespace zo::kel::byteform {

static_assert(std::endian::native == std::endian::little, "the byte forms are the host's little-endian layout");

inline constexpr std::size_t kCountSize = 4;

// Bytes between cursor and limit; 0 when the cursor is null or not before the limit.
inline std::size_t Room(const unsigned char* cursor, const unsigned char* limit) noexcept {
    return cursor && cursor < limit ? static_cast<std::size_t>(limit - cursor) : 0;
}

inline std::uint32_t LoadCount(const unsigned char* at) noexcept {
    std::uint32_t count;
    std::memcpy(&count, at, kCountSize);
    return count;
}

inline void StoreCount(unsigned char* at, std::uint32_t count) noexcept { std::memcpy(at, &count, kCountSize); }

// Short output. The support library's form writers report it without a
// site, so callers tell it apart by code alone.
[[noreturn]] inline void ThrowBufferOverflow() { throw exception::BufferOverflow(0, nullptr); }

// A serialization size of `count` prefix plus `bytes`, saturating at 0xFFFFFFFF.
inline unsigned int SaturatedFormSize(std::size_t bytes) noexcept {
    return bytes > 0xFFFFFFFFu - kCountSize ? 0xFFFFFFFFu : static_cast<unsigned int>(bytes + kCountSize);
}

}  // namespace zo::kel::byteform
