#include "zo/kel/osdep/SystemClock.h"

#include <sys/time.h>

#include <cstdint>

namespace zo::kel::osdep {

AbsTime CurrentSystemTime() noexcept {
    using Unsigned64_64 = nZOSS100::tFixedPoint128<64u, false>;
    timeval now{};
    gettimeofday(&now, nullptr);
    const std::int64_t microseconds = std::int64_t{now.tv_sec} * 1000000 + now.tv_usec;
    const Unsigned64_64 seconds = Unsigned64_64::DivideInternal(
        Unsigned64_64(static_cast<std::uint64_t>(microseconds), 0), Unsigned64_64(1000000u, 0));
    return AbsTime::fromWords(static_cast<std::int64_t>(seconds.whole() + kSecondsFrom1904To1970), seconds.fraction());
}

AbsTime GetCurrentAbsTime() noexcept { return CurrentSystemTime(); }

}  // namespace zo::kel::osdep
