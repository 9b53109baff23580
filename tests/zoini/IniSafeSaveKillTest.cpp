// A child process saves a large document over an existing file and is killed
// with SIGKILL at random moments of the save; the file must always hold one
// whole document, the old or the new.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <thread>

#include "zoini/IniTestSupport.h"

namespace {

using namespace ini_test;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

Document LargeDocument(const std::string& flavour) {
    Document doc = NewDocument();
    for (int s = 0; s < 500; ++s) {
        const std::string section = "Section " + std::to_string(s);
        for (int i = 0; i < 20; ++i) {
            const std::string item = "item" + std::to_string(i);
            const std::string value = flavour + " value " + std::to_string(s * 100 + i);
            IniPutString(doc.get(), section.c_str(), item.c_str(), value.c_str());
        }
    }
    return doc;
}

void RemoveTemporaries(const fs::path& directory) {
    for (const auto& entry : fs::directory_iterator(directory)) {
        if (entry.path().filename().string().starts_with("ini$$.")) fs::remove(entry.path());
    }
}

// Forks a child that saves `doc` over `path`; returns once the child is about
// to start the save.
pid_t SaveInChild(IniHandle doc, const fs::path& path) {
    int ready[2];
    if (pipe(ready) != 0) return -1;
    const pid_t child = fork();
    if (child == 0) {
        close(ready[0]);
        const char go = 1;
        if (write(ready[1], &go, 1) != 1) _exit(2);
        _exit(IniWriteToFile(doc, path.c_str()) == 0 ? 0 : 1);
    }
    close(ready[1]);
    char go = 0;
    if (child > 0 && read(ready[0], &go, 1) != 1) go = 0;
    close(ready[0]);
    return child;
}

// The child's exit code, or -1 when it did not exit normally.
int WaitFor(pid_t child) {
    int status = 0;
    if (child <= 0 || waitpid(child, &status, 0) != child) return -2;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(IniSafeSave, KilledSaveLeavesOldOrNewDocument) {
    ScratchDirectory scratch;
    const fs::path path = scratch / "target.ini";
    const Document oldDoc = LargeDocument("old");
    const Document newDoc = LargeDocument("new");
    const std::string oldText = WriteText(oldDoc.get());
    const std::string newText = WriteText(newDoc.get());
    ASSERT_GT(newText.size(), 250000u);

    // How long an unhindered child needs from the start of its save to its exit.
    Clock::duration saveTime{};
    for (int i = 0; i < 3; ++i) {
        WriteFileContents(path, oldText);
        const pid_t child = SaveInChild(newDoc.get(), path);
        const auto start = Clock::now();
        ASSERT_EQ(WaitFor(child), 0);
        saveTime = std::max(saveTime, Clock::now() - start);
        ASSERT_EQ(FileContents(path), newText);
    }
    // Kills must reach past the rename however slow the build (sanitizers, a
    // loaded machine); slow saves get fewer runs instead of shorter delays.
    const auto saveMs = std::chrono::duration_cast<std::chrono::milliseconds>(saveTime).count();
    const int runs = static_cast<int>(std::clamp<long long>(6000 / std::max<long long>(saveMs, 1), 40, 200));

    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto longestDelay = std::chrono::duration_cast<std::chrono::microseconds>(saveTime * 3 / 2).count();
    std::uniform_int_distribution<long> delays(0, longestDelay);
    int oldSeen = 0, newSeen = 0;
    // A machine that slows down after the calibration may leave one outcome
    // unseen: go on a while longer (within the test's time limit) rather than fail for it.
    const auto started = Clock::now();
    for (int run = 0; run < runs || ((oldSeen == 0 || newSeen == 0) && run < 2 * runs &&
                                     Clock::now() - started < std::chrono::seconds(30));
         ++run) {
        WriteFileContents(path, oldText);
        const pid_t child = SaveInChild(newDoc.get(), path);
        std::this_thread::sleep_for(std::chrono::microseconds(delays(random)));
        kill(child, SIGKILL);
        WaitFor(child);
        const std::string contents = FileContents(path);
        if (contents == oldText) {
            ++oldSeen;
        } else {
            ASSERT_EQ(contents, newText) << "run " << run << ": a mixed or partial file of " << contents.size()
                                         << " bytes";
            ++newSeen;
        }
        RemoveTemporaries(scratch.path());
    }
    // The kills hit both before and after the rename.
    EXPECT_GT(oldSeen, 0);
    EXPECT_GT(newSeen, 0);
}

}  // namespace
