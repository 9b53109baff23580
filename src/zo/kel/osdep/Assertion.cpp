#include "zo/kel/osdep/Assertion.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "zo/kel/osdep/AssertionInternal.h"
#include "zo/kel/osdep/INIFileManager.h"

namespace zo::kel::osdep {

namespace {

// Process-wide and never reset: once ignored, always ignored.
std::atomic<bool> gIgnoreAllAssertions{false};
std::atomic<AssertionAlert> gAssertionAlert{nullptr};

// On only when "tavlo.ini" in the current directory says so; any failure
// leaves release assertions silent.
bool ConfiguredToShowReleaseAsserts() noexcept {
    try {
        const INIFileManager configuration("tavlo.ini", "WPH");
        bool show = false;
        return configuration.read(configuration.name(), "ShowReleaseAsserts", show) && show;
    } catch (...) {
        return false;
    }
}

// Read once, at load.
const bool gShowReleaseAsserts = ConfiguredToShowReleaseAsserts();

const char* TextOrEmpty(const char* text) { return text ? text : ""; }

const char* Reported(const char* expression, const char* message) {
    return (message && *message) ? message : TextOrEmpty(expression);
}

void WriteAssertionLine(const char* kind, const char* expression, const char* message, const char* file,
                        unsigned int line) {
    std::fprintf(stderr, "%s(%d): %s failed: %s\a\n", TextOrEmpty(file), static_cast<int>(line), kind,
                 Reported(expression, message));
    std::fflush(stderr);
}

std::string ExecutablePath() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    if (length <= 0) return "{unknown}";
    return std::string(path, static_cast<std::size_t>(length));
}

std::string AlertText(const char* expression, const char* message, const char* file, unsigned int line) {
    const std::string module = ExecutablePath();
    const char* format =
        "Assertion failed:\n    Module: %s\n    Process ID: %u\n    Expression: %s\n    File: %s\n"
        "    Line: %d\n    Message: %s\nYou can attach a debugger to the process now.\n"
        "(Hit Ignore All to disable this dialog box.)";
    const auto pid = static_cast<unsigned int>(getpid());
    // Measured first, then written: the same arguments both times.
    const auto print = [&](char* out, std::size_t size) {
        return std::snprintf(out, size, format, module.c_str(), pid, TextOrEmpty(expression), TextOrEmpty(file),
                             static_cast<int>(line), TextOrEmpty(message));
    };
    const int length = print(nullptr, 0);
    if (length < 0) return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    print(text.data(), text.size() + 1);
    return text;
}

void ShowAssertionAlert(const char* expression, const char* message, const char* file, unsigned int line) {
    const AssertionAlert alert = gAssertionAlert.load();
    if (!alert) return;
    try {
        const std::string text = AlertText(expression, message, file, line);
        if (alert("ASSERTION FAILURE!", text.c_str(), "Acknowledge", "Ignore All") == AssertionAnswer::IgnoreAll) {
            gIgnoreAllAssertions = true;
        }
    } catch (...) {
        // A failing alert must not turn an assertion into a crash.
    }
}

}  // namespace

void OutputAssertion(const char* expression, const char* message, const char* file, unsigned int line) noexcept {
    WriteAssertionLine("Assertion", expression, message, file, line);
    if (gIgnoreAllAssertions || BeingDebugged()) return;
    ShowAssertionAlert(expression, message, file, line);
}

void OutputReleaseAssertion(const char* expression, const char* message, const char* file,
                            unsigned int line) noexcept {
    if (!gShowReleaseAsserts) return;
    WriteAssertionLine("Release Assertion", expression, message, file, line);
}

bool internal::ReleaseAssertionsShown() noexcept { return gShowReleaseAsserts; }

AssertionAlert SetAssertionAlert(AssertionAlert alert) noexcept { return gAssertionAlert.exchange(alert); }

bool BeingDebugged() noexcept {
    try {
        std::ifstream status("/proc/self/status");
        std::string line;
        while (std::getline(status, line)) {
            if (line.starts_with("TracerPid:")) return std::atol(line.c_str() + std::strlen("TracerPid:")) != 0;
        }
    } catch (...) {
    }
    return false;
}

void Abort() noexcept {
    kill(getpid(), SIGKILL);
    std::_Exit(EXIT_FAILURE);  // not reached: SIGKILL cannot be caught
}

}  // namespace zo::kel::osdep
