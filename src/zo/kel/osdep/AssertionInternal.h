// The release-assertion switch as read when the library was loaded, for the
// tests that check the reporters against it.
#pragma once

namespace zo::kel::osdep::internal {

// Whether the configuration asked for release assertions (fixed at load).
bool ReleaseAssertionsShown() noexcept;

}  // namespace zo::kel::osdep::internal
