// The switch is read once when the library loads, from "tavlo.ini" in the
// current directory: each case starts the probe program in its own directory.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "zoini/IniTestSupport.h"

namespace {

using ini_test::ScratchDirectory;
using ini_test::WriteFileContents;

// Everything the probe prints, standard error included, run in `directory`.
std::string ProbeOutput(const ScratchDirectory& directory) {
    const std::string command =
        "cd '" + directory.path().string() + "' && '" QKDYNAM_RELEASE_ASSERTION_PROBE "' 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return "popen failed";
    std::string output;
    char buffer[256];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) output.append(buffer, got);
    pclose(pipe);
    return output;
}

TEST(ReleaseAssertionSwitch, OnOnlyWhenTheConfigurationSaysTrue) {
    const struct {
        const char* contents;  // null: no file
        bool shown;
    } cases[] = {
        {"[Other]\nShowReleaseAsserts = False\n\n[ wph ]\n  showreleaseasserts =  TRUE \n", true},
        {"[WPH]\nShowReleaseAsserts = \"True\"\n", true},
        {nullptr, false},
        {"[WPH]\nShowReleaseAsserts = False\n", false},
        {"[WPH]\nShowReleaseAsserts = yes\n", false},
        {"[Other]\nShowReleaseAsserts = True\n", false},
        {"\xFF\xFE[WPH]\nShowReleaseAsserts = True\n", false},
    };
    for (const auto& c : cases) {
        ScratchDirectory directory;
        if (c.contents) WriteFileContents(directory / "tavlo.ini", c.contents);
        const std::string output = ProbeOutput(directory);
        SCOPED_TRACE(c.contents ? c.contents : "(no file)");
        EXPECT_NE(output.find("probe done\n"), std::string::npos) << output;
        EXPECT_EQ(output.find("Release Assertion failed: probe\a\n") != std::string::npos, c.shown) << output;
    }
}

}  // namespace
