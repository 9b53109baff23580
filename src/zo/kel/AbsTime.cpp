#include "zo/kel/AbsTime.h"

#include <cmath>

namespace zo::kel {

namespace {

// A fraction within this of 1.0 displays as 1.0 and is carried into the seconds.
constexpr double kFractionCarryTolerance = 2.220446049250313e-16;

bool FractionCarries(double fraction) noexcept {
    return fraction >= 1.0 || std::fabs(fraction - 1.0) <= kFractionCarryTolerance;
}

}  // namespace

AbsTime::AbsTime(double seconds, double fraction) noexcept
    : value_(FixedPoint(seconds, nZOSS100::tFixedPoint128FloatingPointCtor{}) +
             FixedPoint(fraction, nZOSS100::tFixedPoint128FloatingPointCtor{})) {}

std::int64_t AbsTime::getSecondsImpl() const noexcept {
    const std::int64_t seconds = secondsWord();
    return seconds < 0 && fractionWord() != 0 ? seconds + 1 : seconds;
}

double AbsTime::getFractionImpl() const noexcept { return std::ldexp(static_cast<double>(fractionWord()), -64); }

std::int64_t AbsTime::getSeconds() const noexcept {
    const std::int64_t seconds = getSecondsImpl();
    if (!FractionCarries(getFractionImpl())) return seconds;
    // Wraps like the hardware at the very top of the range instead of overflowing.
    const auto awayFromZero = static_cast<std::uint64_t>(seconds) + (seconds >= 0 ? 1u : ~std::uint64_t{0});
    return static_cast<std::int64_t>(awayFromZero);
}

double AbsTime::getFraction() const noexcept {
    const double fraction = getFractionImpl();
    return FractionCarries(fraction) ? 0.0 : fraction;
}

bool AbsTime::doRangesIntersect(const AbsTime& aStart, const AbsTime& aEnd, const AbsTime& bStart,
                                const AbsTime& bEnd) noexcept {
    return aStart <= bEnd && aEnd >= bStart;
}

bool AbsTime::isSubRange(const AbsTime& aStart, const AbsTime& aEnd, const AbsTime& bStart,
                         const AbsTime& bEnd) noexcept {
    return aStart >= bStart && aEnd <= bEnd;
}

}  // namespace zo::kel
