#include "zo/kel/osdep/Assertion.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "zo/kel/osdep/AssertionInternal.h"

namespace {

using namespace zo::kel::osdep;

struct AlertCall {
    std::string header, text, defaultButton, alternateButton;
};

std::vector<AlertCall> gAlerts;
AssertionAnswer gAnswer = AssertionAnswer::Acknowledge;

AssertionAnswer RecordingAlert(const char* header, const char* text, const char* defaultButton,
                               const char* alternateButton) {
    gAlerts.push_back({header, text, defaultButton, alternateButton});
    return gAnswer;
}

std::string StderrOf(void (*report)(const char*, const char*, const char*, unsigned int), const char* expression,
                     const char* message) {
    testing::internal::CaptureStderr();
    report(expression, message, "zo/kel/Sample", 321);
    return testing::internal::GetCapturedStderr();
}

TEST(Assertion, StandardErrorLineEndsWithBel) {
    EXPECT_EQ(StderrOf(OutputAssertion, "n > 0", "count must be positive"),
              "zo/kel/Sample(321): Assertion failed: count must be positive\a\n");
    // An empty message falls back to the expression.
    EXPECT_EQ(StderrOf(OutputAssertion, "n > 0", ""), "zo/kel/Sample(321): Assertion failed: n > 0\a\n");
    EXPECT_EQ(StderrOf(OutputAssertion, "n > 0", nullptr), "zo/kel/Sample(321): Assertion failed: n > 0\a\n");
}

TEST(Assertion, ReleaseAssertionsAreSilentUnlessSwitchedOn) {
    ASSERT_FALSE(internal::ReleaseAssertionsShown());
    EXPECT_EQ(StderrOf(OutputReleaseAssertion, "ok", "bad"), "");
}

TEST(Assertion, MacrosReportTheirSite) {
    testing::internal::CaptureStderr();
    [[maybe_unused]] const int line = __LINE__ + 1;
    ZO_ASSERT_MSG(1 + 1 == 3, "arithmetic");
    ZO_ASSERT(2 > 1);
    const std::string printed = testing::internal::GetCapturedStderr();
#ifdef NDEBUG
    EXPECT_EQ(printed, "");
#else
    EXPECT_EQ(printed, "zo/kel/osdep/AssertionTest(" + std::to_string(line) + "): Assertion failed: arithmetic\a\n");
#endif
}

// Runs `check` in a forked child and returns its exit status (0 = passed, 2 =
// not possible here), so that process-wide flags of this program stay as they are.
template <class Check>
int InChild(Check check) {
    const pid_t child = fork();
    if (child == 0) _exit(check());
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

TEST(Assertion, AlertTextAndIgnoreAll) {
    const int result = InChild([] {
        SetAssertionAlert(RecordingAlert);
        testing::internal::CaptureStderr();
        OutputAssertion("p != nullptr", "", "zo/kel/Sample", 9);
        gAnswer = AssertionAnswer::IgnoreAll;
        OutputAssertion("q", "with message", "zo/kel/Sample", 10);
        OutputAssertion("r", "", "zo/kel/Sample", 11);
        const std::string printed = testing::internal::GetCapturedStderr();
        bool ok = gAlerts.size() == 2 && gAlerts[0].header == "ASSERTION FAILURE!" &&
                  gAlerts[0].defaultButton == "Acknowledge" && gAlerts[0].alternateButton == "Ignore All";
        const std::string pid = std::to_string(getpid());
        // The dialog's message line stays empty even though stderr showed the expression.
        ok = ok && gAlerts[0].text.starts_with("Assertion failed:\n    Module: /") &&
             gAlerts[0].text.ends_with("\n    Process ID: " + pid + "\n    Expression: p != nullptr\n"
                                       "    File: zo/kel/Sample\n    Line: 9\n    Message: \n"
                                       "You can attach a debugger to the process now.\n"
                                       "(Hit Ignore All to disable this dialog box.)");
        ok = ok && gAlerts[1].text.find("    Message: with message\n") != std::string::npos;
        // After Ignore All no alert, but every line still reaches stderr.
        ok = ok && printed == "zo/kel/Sample(9): Assertion failed: p != nullptr\a\n"
                              "zo/kel/Sample(10): Assertion failed: with message\a\n"
                              "zo/kel/Sample(11): Assertion failed: r\a\n";
        return ok ? 0 : 1;
    });
    EXPECT_EQ(result, 0);
}

// A child that asks to be traced by its parent sees a tracer, and then gets
// no alert.
TEST(Assertion, TracedProcessIsBeingDebuggedAndGetsNoAlert) {
    EXPECT_FALSE(BeingDebugged());
    const int result = InChild([] {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) return 2;
        SetAssertionAlert(RecordingAlert);
        testing::internal::CaptureStderr();
        OutputAssertion("x", "", "f", 1);
        testing::internal::GetCapturedStderr();
        return BeingDebugged() && gAlerts.empty() ? 0 : 1;
    });
    if (result == 2) GTEST_SKIP() << "ptrace is not permitted here";
    EXPECT_EQ(result, 0);
}

TEST(Assertion, AbortKillsWithSigkill) {
    EXPECT_EXIT(Abort(), testing::KilledBySignal(SIGKILL), "");
}

}  // namespace
