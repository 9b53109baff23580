#include "tavlo/qkstatic/TimeEncodings.h"

#include "zo/kel/TruncateToInt64.h"

using zo::kel::internal::TruncateToInt64;

namespace {

constexpr std::uint64_t kNanosecondsPerTick = 100;
constexpr std::uint64_t kTopBit = std::uint64_t{1} << 63;
constexpr double kTwoTo63 = 9223372036854775808.0;

static_assert(kQKTIMEOffsetTicks * kNanosecondsPerTick == kQKTIMEOffsetNanoseconds);
static_assert(0 - kQKTIMEOffsetNanoseconds == 0x7D0F09B9F7050000u);
static_assert(kQKTIMEOffsetTicks / 864000000000u == 109205u);

std::uint64_t TicksToNanoseconds(std::uint64_t ticks) noexcept {
    return ticks * kNanosecondsPerTick - kQKTIMEOffsetNanoseconds;
}

std::uint64_t NanosecondsToTicks(std::uint64_t nanoseconds) noexcept {
    return nanoseconds / kNanosecondsPerTick + kQKTIMEOffsetTicks;
}

}  // namespace

double NanosecsToDays(unsigned long nanoseconds) noexcept {
    return static_cast<double>(nanoseconds) / kNanosecondsPerDay;
}

std::uint64_t DaysToNanosecs(double days) noexcept {
    const double product = days * kNanosecondsPerDay;
    if (product >= kTwoTo63) return static_cast<std::uint64_t>(TruncateToInt64(product - kTwoTo63)) | kTopBit;
    return static_cast<std::uint64_t>(TruncateToInt64(product));
}

long Time64ToQKTIME(unsigned long nanoseconds) noexcept { return static_cast<long>(NanosecondsToTicks(nanoseconds)); }

std::uint64_t QKTIMEToTime64(long ticks) noexcept { return TicksToNanoseconds(static_cast<std::uint64_t>(ticks)); }

_FILETIME Time64ToFILETIME(unsigned long nanoseconds) noexcept {
    const std::uint64_t ticks = NanosecondsToTicks(nanoseconds);
    return {static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)};
}

std::uint64_t FILETIMEToTime64(_FILETIME ticks) noexcept {
    return TicksToNanoseconds((std::uint64_t{ticks.dwHighDateTime} << 32) | ticks.dwLowDateTime);
}

long DaysToQKTIME(double days) noexcept { return static_cast<long>(NanosecondsToTicks(DaysToNanosecs(days))); }

double QKTIMEToDays(long ticks) noexcept { return NanosecsToDays(QKTIMEToTime64(ticks)); }
