#include "zo/kel/RelTime.h"

namespace zo::kel {

RelTime::RelTime(double seconds) noexcept : value_(seconds, nZOSS100::tFixedPoint128FloatingPointCtor{}) {}

double RelTime::toSeconds() const noexcept { return static_cast<double>(static_cast<long double>(value_)); }

}  // namespace zo::kel
