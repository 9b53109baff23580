#include "tavlo/qkdynamic/VarDataSSTimeValue.h"

VarDataSSTimeValue::operator double() const {
    return static_cast<double>(static_cast<long double>(getRelTime().fixedPoint()));
}

std::int32_t VarDataSSTimeValue::Compare(const IVarDataGuts* other) const {
    const tSSTimeValue& theirs = static_cast<const VarDataSSTimeValue*>(other)->value_;
    if (value_.seconds != theirs.seconds) return value_.seconds < theirs.seconds ? -1 : 1;
    if (value_.fraction != theirs.fraction) return value_.fraction < theirs.fraction ? -1 : 1;
    return 0;
}
