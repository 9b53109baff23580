// What the host-variant reader and writer share: the type codes of the host
// descriptor, the numeric codes as a table, big-endian loads and stores, and
// the packing of a name into descriptor words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace internal::gxvariant {

inline constexpr std::uint16_t kNamedFlag = 0x4000;
inline constexpr std::uint16_t kCodeMask = 0x00FF;
inline constexpr std::uint16_t kVariableDimension = 0xFFFF;  // both words of a dimension of size -1

enum TypeCode : std::uint8_t {
    kVoid = 0x00,
    kBoolean = 0x21,
    kString = 0x30,
    kArray = 0x40,
    kCluster = 0x50,
    kVariant = 0x53,
    kTimestamp = 0x54,
};

// How a number is stored in the data stream.
enum class NumberForm : std::uint8_t { Int8, Int16, Int32, UInt8, UInt16, UInt32, Float32, Float64 };

struct NumberCode {
    std::uint8_t code;
    std::uint8_t bytes;
    std::uint16_t subtype;  // of VarData::num
    NumberForm form;
};

inline constexpr NumberCode kNumberCodes[] = {
    {0x01, 1, 1, NumberForm::Int8},   {0x02, 2, 2, NumberForm::Int16},   {0x03, 4, 3, NumberForm::Int32},
    {0x05, 1, 4, NumberForm::UInt8},  {0x06, 2, 5, NumberForm::UInt16},  {0x07, 4, 6, NumberForm::UInt32},
    {0x09, 4, 7, NumberForm::Float32}, {0x0A, 8, 0, NumberForm::Float64},
};

// The row of a host numeric code, or null.
constexpr const NumberCode* FindNumberCode(std::uint16_t code) noexcept {
    for (const NumberCode& row : kNumberCodes) {
        if (row.code == code) return &row;
    }
    return nullptr;
}

inline std::uint16_t LoadBig16(const unsigned char* at) noexcept {
    std::uint16_t value;
    std::memcpy(&value, at, sizeof value);
    return __builtin_bswap16(value);
}
inline std::uint32_t LoadBig32(const unsigned char* at) noexcept {
    std::uint32_t value;
    std::memcpy(&value, at, sizeof value);
    return __builtin_bswap32(value);
}
inline std::uint64_t LoadBig64(const unsigned char* at) noexcept {
    std::uint64_t value;
    std::memcpy(&value, at, sizeof value);
    return __builtin_bswap64(value);
}
inline void StoreBig16(unsigned char* at, std::uint16_t value) noexcept {
    value = __builtin_bswap16(value);
    std::memcpy(at, &value, sizeof value);
}
inline void StoreBig32(unsigned char* at, std::uint32_t value) noexcept {
    value = __builtin_bswap32(value);
    std::memcpy(at, &value, sizeof value);
}
inline void StoreBig64(unsigned char* at, std::uint64_t value) noexcept {
    value = __builtin_bswap64(value);
    std::memcpy(at, &value, sizeof value);
}

// A name of n bytes takes one word for n and its first byte, then one word
// per further pair of bytes, the first of each pair in the high half.
constexpr std::size_t NameWords(std::size_t length) noexcept { return 1 + length / 2; }

}  // namespace internal::gxvariant
