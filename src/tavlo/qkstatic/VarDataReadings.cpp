// How a VarData reads as a truth value, a number, an integer and a bit
// pattern, and the bit-array operators built on those readings.
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include "tavlo/qkstatic/TimeEncodings.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/TruncateToInt64.h"

using zo::kel::internal::TruncateToInt64;

VarData::operator bool() const {
    if (hasPayloadFlag()) return holdsGuts() && static_cast<bool>(*guts());
    switch (tag()) {
        case VarDataType::Logical: return logicalByte();
        case VarDataType::Numeric: return number() != 0.0;  // NaN reads true
        case VarDataType::Time:
        case VarDataType::VoidPointer:
        case VarDataType::ID64: return payload_ != 0;
        default: return false;
    }
}

VarData::operator double() const {
    if (hasPayloadFlag()) return holdsGuts() ? static_cast<double>(*guts()) : 0.0;
    switch (tag()) {
        case VarDataType::Logical: return logicalByte() ? 1.0 : 0.0;
        case VarDataType::Numeric: return number();
        case VarDataType::Time: return NanosecsToDays(payload_);
        case VarDataType::ID64: return static_cast<double>(payload_);
        default: return 0.0;
    }
}

// Integer readings truncate toward zero without clamping; out of range they
// give what the processor's conversion gives (the "integer indefinite" for
// 32- and 64-bit signed results, the low bits for the narrower unsigned ones).
VarData::operator int() const {
    const std::int64_t whole = TruncateToInt64(static_cast<double>(*this));
    return std::in_range<int>(whole) ? static_cast<int>(whole) : std::numeric_limits<int>::min();
}

VarData::operator unsigned int() const {
    return static_cast<unsigned int>(TruncateToInt64(static_cast<double>(*this)));
}

VarData::operator char() const { return static_cast<char>(static_cast<int>(*this)); }

VarData::operator unsigned long() const {
    constexpr double kTwoTo63 = 9223372036854775808.0;
    const double value = static_cast<double>(*this);
    if (value >= kTwoTo63) return static_cast<unsigned long>(TruncateToInt64(value - kTwoTo63)) + (1ul << 63);
    return static_cast<unsigned long>(TruncateToInt64(value));
}

// --- Bit arrays ------------------------------------------------------------------

unsigned int VarData::getBitArrayUint32WithCoercion() const {
    return VarData::num(static_cast<double>(*this), BitArraySubtype).getBitArray32Fast();
}

VarData operator|(const VarData& a, const VarData& b) {
    return VarData::bitArray(a.getBitArrayUint32WithCoercion() | b.getBitArrayUint32WithCoercion());
}

VarData operator&(const VarData& a, const VarData& b) {
    return VarData::bitArray(a.getBitArrayUint32WithCoercion() & b.getBitArrayUint32WithCoercion());
}

VarData operator^(const VarData& a, const VarData& b) {
    return VarData::bitArray(a.getBitArrayUint32WithCoercion() ^ b.getBitArrayUint32WithCoercion());
}

VarData VarData::operator~() const { return bitArray(~getBitArrayUint32WithCoercion()); }

VarData& VarData::operator|=(const VarData& other) { return *this = *this | other; }
VarData& VarData::operator&=(const VarData& other) { return *this = *this & other; }
VarData& VarData::operator^=(const VarData& other) { return *this = *this ^ other; }
