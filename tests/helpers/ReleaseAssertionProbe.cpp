// Prints the release-assertion switch of the library as loaded in the current
// directory, then fails one release assertion (shown on standard error only
// when the switch is on).
#include <cstdio>

#include "zo/kel/osdep/Assertion.h"

int main() {
    std::printf("shown=%d\n", zo::kel::osdep::ReleaseAssertionsShown() ? 1 : 0);
    std::fflush(stdout);
    ZO_RELEASE_ASSERT_MSG(false, "probe");
    return 0;
}
