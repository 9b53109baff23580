// The payload of AbsTimeValue and RelTimeValue: one immutable 16-byte time.
// It does not know which kind it holds; the VarData tag tells.
#pragma once

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/VarDataGuts.h"
#include "zo/kel/AbsTime.h"
#include "zo/kel/RelTime.h"

class VarDataSSTimeValue final
    : public internal::PayloadObject<IVarDataSSTimeValue, IID_IUnknown, IID_IVarDataGuts, IID_IVarDataSSTimeValue> {
public:
    explicit VarDataSSTimeValue(const tSSTimeValue& value) : value_(value) {}

    explicit operator bool() const override { return value_.fraction != 0 || value_.seconds != 0; }
    // Seconds with fraction.
    explicit operator double() const override;
    // Signed seconds, then unsigned fraction: -1, 0 or 1.
    std::int32_t Compare(const IVarDataGuts* other) const override;

    zo::kel::AbsTime getAbsTime() const override { return zo::kel::AbsTime::fromWords(value_.seconds, value_.fraction); }
    zo::kel::RelTime getRelTime() const override { return zo::kel::RelTime::fromWords(value_.seconds, value_.fraction); }
    tSSTimeValue getTimeValue() const override { return value_; }

private:
    tSSTimeValue value_;
};
