#include "zo/kel/osdep/AbsTimeToString.h"

#include <cstdint>

#include "zo/kel/Exception.h"

namespace zo::kel::osdep {

namespace {

// Users and logs match these lines of this source, so they stay fixed.
constexpr unsigned int kLocalBreakDownFailureLine = 104;
constexpr unsigned int kUTCBreakDownFailureLine = 143;

constexpr std::uint64_t kHalfSecond = std::uint64_t{1} << 63;

// Unix seconds of `time`, truncated toward zero or rounded half to even.
std::int64_t UnixSeconds(const AbsTime& time, bool round) noexcept {
    const auto unixWord = static_cast<std::uint64_t>(time.secondsWord()) - static_cast<std::uint64_t>(kSecondsFrom1904To1970);
    const bool negative = static_cast<std::int64_t>(unixWord) < 0;
    std::uint64_t seconds = unixWord;
    std::uint64_t magnitude = time.fractionWord();
    if (negative && magnitude != 0) {
        magnitude = 0 - magnitude;
        seconds += 1;
    }
    if (round && (magnitude > kHalfSecond || (magnitude == kHalfSecond && (seconds & 1) != 0))) {
        seconds += negative ? ~std::uint64_t{0} : 1;
    }
    return static_cast<std::int64_t>(seconds);
}

}  // namespace

std::tm AbsTimeToLocalDateTime(const AbsTime& time, bool round) {
    const std::time_t seconds = UnixSeconds(time, round);
    std::tm broken{};
    if (localtime_r(&seconds, &broken) == nullptr) throw exception::OutOfRange(kLocalBreakDownFailureLine, ZO_SOURCE_FILE);
    return broken;
}

std::tm AbsTimeToUTCDateTime(const AbsTime& time, bool round) {
    const std::time_t seconds = UnixSeconds(time, round);
    std::tm broken{};
    if (gmtime_r(&seconds, &broken) == nullptr) throw exception::OutOfRange(kUTCBreakDownFailureLine, ZO_SOURCE_FILE);
    return broken;
}

}  // namespace zo::kel::osdep
