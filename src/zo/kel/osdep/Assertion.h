// Assertion reporting and process services. Reporters never throw and never
// stop the process: an assertion writes one line to standard error (ending in
// BEL so that a terminal beeps) and then offers the assertion alert, if the
// embedding application installed one. Release assertions are silent unless
// the configuration switched them on.
#pragma once

#include "qkdynam_platform.h"
#include "zo/kel/SourceSite.h"

namespace zo::kel::osdep {

QKDYNAM_API void OutputAssertion(const char* expression, const char* message, const char* file,
                                 unsigned int line) noexcept;
QKDYNAM_API void OutputReleaseAssertion(const char* expression, const char* message, const char* file,
                                        unsigned int line) noexcept;

// True when a tracer (debugger) is attached to this process.
QKDYNAM_API bool BeingDebugged() noexcept;

// Kills the own process with SIGKILL: no handlers run, nothing is flushed.
[[noreturn]] QKDYNAM_API void Abort() noexcept;

// The blocking alert of a failed assertion. There is no desktop notification
// service to call here, so an application that can show one installs it; with
// none installed only the standard-error line appears. Answering IgnoreAll
// silences the alert (not the standard-error line) for the rest of the process.
enum class AssertionAnswer { Acknowledge, IgnoreAll };
using AssertionAlert = AssertionAnswer (*)(const char* header, const char* text, const char* defaultButton,
                                           const char* alternateButton);

// Installs `alert` (null removes it) and returns the previous one.
QKDYNAM_API AssertionAlert SetAssertionAlert(AssertionAlert alert) noexcept;

}  // namespace zo::kel::osdep

// Debug-build assertion; compiled out with NDEBUG.
#ifdef NDEBUG
#define ZO_ASSERT_MSG(expression, message) ((void)0)
#else
#define ZO_ASSERT_MSG(expression, message) \
    ((expression) ? (void)0                \
                  : ::zo::kel::osdep::OutputAssertion(#expression, message, ZO_SOURCE_FILE, __LINE__))
#endif
#define ZO_ASSERT(expression) ZO_ASSERT_MSG(expression, "")

// Always evaluated; reported only when release assertions are switched on.
#define ZO_RELEASE_ASSERT_MSG(expression, message) \
    ((expression) ? (void)0                        \
                  : ::zo::kel::osdep::OutputReleaseAssertion(#expression, message, ZO_SOURCE_FILE, __LINE__))
#define ZO_RELEASE_ASSERT(expression) ZO_RELEASE_ASSERT_MSG(expression, "")
