// How two values are ordered (the order of dictionary keys): by tag first,
// then by what each kind holds.
#include <cstdint>

#include "tavlo/qkdynamic/AnsiGuts.h"
#include "tavlo/qkstatic/vardata.h"

namespace {

template <class Unsigned>
std::int32_t UnsignedOrder(Unsigned a, Unsigned b) {
    return a < b ? -1 : (a > b ? 1 : 0);
}

}  // namespace

std::int32_t VarData::Compare(const VarData& other) const {
    const std::int32_t a = vardata_type::TagOf(type_);
    const std::int32_t b = vardata_type::TagOf(other.type_);
    if (a != b) return a - b;
    if (hasPayloadFlag()) {
        if (payload_ == other.payload_) return 0;
        if (payload_ == 0 || other.payload_ == 0) return UnsignedOrder(payload_, other.payload_);
        // Dictionary keys are mostly texts: theirs is the one order worth a shortcut.
        if (tag() == VarDataType::Ansi) return AnsiGuts::CompareTexts(guts(), other.guts());
        return guts()->Compare(other.guts());
    }
    switch (tag()) {
        case VarDataType::Undefined:
        case VarDataType::Empty:
        case VarDataType::Break:
        case VarDataType::Pulse: return 0;
        case VarDataType::Logical:
            return static_cast<std::int32_t>(payload_ & 0xFF) - static_cast<std::int32_t>(other.payload_ & 0xFF);
        case VarDataType::Numeric: {
            const double difference = number() - other.number();
            return difference < 0.0 ? -1 : (difference > 0.0 ? 1 : 0);  // NaN is equal to everything
        }
        default: return UnsignedOrder(payload_, other.payload_);
    }
}
