// The type codes of FlexData packets and the facts that follow from a code
// alone: its data-size class, whether it is a prefix element, the value bytes
// of a fixed-point word length. Everything here is constexpr and never throws.
// A metadata element begins with a u16 type word: three flag bits (0xE000)
// over a thirteen-bit code (0x1FFF); a word of 0x2000 or more is a prefix
// element (attribute or marker), never a type.
#pragma once

#include <array>
#include <cstdint>

namespace zo::kel::fd {

enum FlexType : std::uint16_t {
    kVoid = 0x0001,
    kInt8 = 0x0100,
    kUInt8 = 0x0101,
    kBoolean = 0x0102,  // writers store 0xFF or 0x00; readers take non-zero as true
    kInt16 = 0x0200,
    kUInt16 = 0x0201,
    kBoolean16 = 0x0202,
    kInt32 = 0x0300,
    kUInt32 = 0x0301,
    kFloat32 = 0x0302,
    kEmpty = 0x0305,  // the marker setEmpty writes: four zero bytes
    kInt64 = 0x0400,
    kUInt64 = 0x0401,
    kFloat64 = 0x0402,
    kTime = 0x0504,
    kArray = 0x0800,
    kCluster = 0x0801,
    kFixedPoint = 0x0802,
    kFixedPointWithRange = 0x0803,
    kAnsiString = 0x0900,
    kAnsiString2 = 0x0901,  // laid out and read like 0x0900; never written here
    kFlexData = 0x0902,     // a nested packet; also the waveform's last member
    kFlexData2 = 0x0903,
    kShortStringList = 0x0905,
    kUtf16String = 0x0A00,
    kString32 = 0x0B00,  // any 0x0Bxx: u32 count of 4-byte units
};

// Byte order of array elements for the element conversion; packets
// themselves are always in host order.
enum TAEndian : std::uint8_t { kLittleEndian = 0, kBigEndian = 1, kHostEndian = kLittleEndian };

inline constexpr std::uint16_t kFlagMask = 0xE000;
inline constexpr std::uint16_t kCodeMask = 0x1FFF;
inline constexpr std::uint16_t kFirstPrefixWord = 0x2000;
// Flags of a length-prefixed prefix element: a u32 length counting itself and the body follows.
inline constexpr std::uint16_t kLengthPrefixedFlag = 0x4000;
// Flags of a prefix element that is its type word alone.
inline constexpr std::uint16_t kMarkerFlag = 0x8000;
// Codes from here up have a size known only from the packet.
inline constexpr std::uint16_t kFirstVariableCode = 0x0700;

// Arrays and clusters nest at most this deep in one type description; a
// deeper description is refused as malformed (SyntaxError), which bounds
// every recursive walk of outside bytes.
inline constexpr unsigned int kMaxNestingDepth = 64;

namespace internal {
// Data bytes by the class of a code below 0x0700, (code & 0x1F00) >> 8.
inline constexpr std::array<unsigned int, 7> kClassSizes = {0, 1, 2, 4, 8, 16, 32};
}  // namespace internal

constexpr bool IsPrefixWord(std::uint16_t word) noexcept { return word >= kFirstPrefixWord; }
constexpr bool IsFixedSizeCode(std::uint16_t code) noexcept { return code < kFirstVariableCode; }
constexpr bool IsFixedPointCode(std::uint16_t code) noexcept { return (code & ~1u) == kFixedPoint; }

// The data size of a code by its class; 0 for codes of 0x0700 or more.
constexpr unsigned int GetDataSize(FlexType type) noexcept {
    const unsigned int code = type & kCodeMask;
    return code < kFirstVariableCode ? internal::kClassSizes[(code & 0x1F00u) >> 8] : 0u;
}

// Value bytes of a fixed-point number: 1 up to 8 bits, then the smallest
// power of two from 2 whose bits hold the word length.
constexpr unsigned int FixedPointValueBytes(unsigned short wordLength) noexcept {
    if (wordLength < 9) return 1;
    unsigned int bytes = 2;
    while (bytes * 8 < wordLength) bytes *= 2;
    return bytes;
}

}  // namespace zo::kel::fd
