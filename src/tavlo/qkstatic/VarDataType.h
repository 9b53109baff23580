// The type word of a VarData: the tag in the low 16 bits (two of its bits are
// flags), the numeric subtype in the high 16 bits. Only the low 16 bits decide
// comparison and conversion; the subtype matters only for bit arrays.
#pragma once

#include <cstdint>

enum class VarDataType : std::uint16_t {
    Undefined = 0x0000,
    Empty = 0x0001,
    Logical = 0x0002,
    Numeric = 0x0003,
    Time = 0x0004,
    Break = 0x0008,
    Pulse = 0x000B,
    VoidPointer = 0x000D,
    ID64 = 0x0011,
    Ansi = 0x1005,
    Unicode = 0x1006,
    Raw = 0x1009,
    Cell = 0x100A,
    Dictionary = 0x100C,
    AbsTimeValue = 0x100F,
    RelTimeValue = 0x1010,
    GXVariant = 0x1012,
    FlexDataTag = 0x1013,
    Sequence = 0x3007,
};

namespace vardata_type {

inline constexpr std::uint32_t kTagMask = 0xFFFF;
inline constexpr std::uint32_t PayloadFlag = 0x1000;   // payload is a payload-object pointer
inline constexpr std::uint32_t SequenceFlag = 0x2000;  // payload answers IVarDataSequence
inline constexpr std::uint16_t BitArraySubtype = 8;
// Bit-array tests look at the low 20 bits only.
inline constexpr std::uint32_t kBitArrayMask = 0xFFFFF;
inline constexpr std::uint32_t kBitArrayTypeWord = 0x80003;

constexpr std::uint32_t Word(VarDataType tag) noexcept { return static_cast<std::uint32_t>(tag); }
constexpr std::uint16_t TagOf(std::uint32_t typeWord) noexcept { return static_cast<std::uint16_t>(typeWord & kTagMask); }

}  // namespace vardata_type
