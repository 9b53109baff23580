// The system's wall clock as an AbsTime, to the microsecond. Reentrant.
#pragma once

#include "qkdynam_platform.h"
#include "zo/kel/AbsTime.h"

namespace zo::kel::osdep {

QKDYNAM_API AbsTime CurrentSystemTime() noexcept;
QKDYNAM_API AbsTime GetCurrentAbsTime() noexcept;

}  // namespace zo::kel::osdep
