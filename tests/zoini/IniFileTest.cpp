#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "zoini/IniTestSupport.h"

namespace {

using namespace ini_test;
namespace fs = std::filesystem;

// A scratch directory holding config.ini with old contents, and an empty document.
class IniFile : public testing::Test {
protected:
    IniFile() { WriteFileContents(path, "old contents\n"); }
    int Entries() const {
        return static_cast<int>(std::distance(fs::directory_iterator(scratch.path()), fs::directory_iterator()));
    }
    int Write(const fs::path& target) { return IniWriteToFile(doc.get(), target.c_str()); }

    ScratchDirectory scratch;
    const fs::path path = scratch / "config.ini";
    Document doc = NewDocument();
};

TEST_F(IniFile, ReadFromFileResults) {
    EXPECT_EQ(IniReadFromFile(doc.get(), nullptr), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromFile(doc.get(), (scratch / "missing.ini").c_str()), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromFile(doc.get(), (path / "child.ini").c_str()), kIniErrInvalidArgument);  // through a file
    EXPECT_EQ(IniReadFromFilePtr(doc.get(), nullptr), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromFile(doc.get(), scratch.path().c_str()), kIniErrReadFailed);  // a directory
    EXPECT_EQ(IniIsFileNewer(doc.get()), kIniErrNoFile);

    WriteFileContents(path, "\xEF\xBB\xBF[S]\r\nkey = value\r\n");
    ASSERT_EQ(IniReadFromFile(doc.get(), path.c_str()), 0);
    EXPECT_EQ(RawValue(doc.get(), "S", "key"), "value");
    EXPECT_EQ(IniIsFileNewer(doc.get()), 0);
    const timespec older[2] = {{1000000, 0}, {1000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), older, 0), 0);
    EXPECT_EQ(IniIsFileNewer(doc.get()), 1);
    fs::remove(path);
    EXPECT_EQ(IniIsFileNewer(doc.get()), kIniErrInvalidArgument);
}

// A file that is there but cannot be opened is told apart from a missing one.
// A socket cannot be opened as a file, whoever runs the test.
TEST_F(IniFile, PresentButUnopenableFile) {
    const fs::path socketPath = scratch / "socket";
    const int socketFd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(socketFd, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(socketPath.native().size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, socketPath.c_str());
    ASSERT_EQ(bind(socketFd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(IniReadFromFile(doc.get(), socketPath.c_str()), kIniErrCannotOpen);
    close(socketFd);
}

// A stream whose reads fail once `good` bytes of INI text were delivered.
struct FailingStream {
    std::string good;
    size_t offset = 0;
};

ssize_t ReadFailing(void* cookie, char* buffer, size_t size) {
    auto* stream = static_cast<FailingStream*>(cookie);
    if (stream->offset == stream->good.size()) return -1;
    const size_t count = std::min(size, stream->good.size() - stream->offset);
    std::memcpy(buffer, stream->good.data() + stream->offset, count);
    stream->offset += count;
    return static_cast<ssize_t>(count);
}

// A read error after the first bytes fails the read instead of keeping a
// document cut short.
TEST_F(IniFile, ReadErrorInsideTheStream) {
    FailingStream source;
    for (int i = 0; source.good.size() < 3000; ++i) source.good += "[S" + std::to_string(i) + "]\nkey = value\n";
    FILE* stream = fopencookie(&source, "r", {ReadFailing, nullptr, nullptr, nullptr});
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(IniReadFromFilePtr(doc.get(), stream), kIniErrReadFailed);
    std::fclose(stream);
}

TEST_F(IniFile, SafeSaveReplacesTheFileAndKeepsItsMode) {
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    IniPutString(doc.get(), "S", "k", "v");
    ASSERT_EQ(Write(path), 0);
    EXPECT_EQ(FileContents(path), "[S]\nk = \"v\"\n\n");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(Entries(), 1);
    EXPECT_EQ(IniIsFileNewer(doc.get()), 0);

    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteByteOrderMark | kIniWriteSafeSave);
    ASSERT_EQ(Write(path), 0);
    EXPECT_EQ(FileContents(path), "\xEF\xBB\xBF[S]\nk=\"v\"\n\n");
    EXPECT_EQ(Entries(), 1);
    EXPECT_EQ(Write(""), kIniErrInvalidArgument);
}

TEST_F(IniFile, FailedSaveKeepsTheOldFileAndRemovesTheTemporary) {
    IniPut(doc.get(), "S", "a rather long item name", "value", 0);
    for (const int flags : {int{kIniWriteSafeSave | kIniWriteTempFileMkstemp}, int{kIniWriteSafeSave}, 0}) {
        IniSetWriteOptions(doc.get(), 20, 0, flags);
        EXPECT_EQ(Write(path), kIniErrLineTooShort);
        EXPECT_EQ(Entries(), flags ? 1 : 0);
        if (flags) {
            EXPECT_EQ(FileContents(path), "old contents\n");
        }
    }
    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteSafeSave);
    EXPECT_EQ(Write(scratch / "no/such/dir.ini"), kIniErrNotWritable);
}

// Without mkstemp the temporary name is derived from the target; a directory
// squatting on exactly that name makes the save fail, which shows the name.
TEST_F(IniFile, DerivedTemporaryNames) {
    IniPutInt(doc.get(), "S", "k", 1);
    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteSafeSave);
    // A path without a directory appends ".TMP" to the whole name.
    const fs::path previous = fs::current_path();
    fs::current_path(scratch.path());
    for (const auto& [target, temporary] : {std::pair<fs::path, fs::path>{scratch / "c.ini", scratch / "c.TMP"},
                                            {scratch / "d.TMP", scratch / "d.TMP.TMP"},
                                            {scratch / "noext", scratch / "noext.TMP"},
                                            {scratch / "e.tar.gz", scratch / "e.tar.TMP"},
                                            {"f.ini", "f.ini.TMP"}}) {
        fs::create_directory(temporary);
        EXPECT_EQ(Write(target), kIniErrOutputNotOpenable) << target;
        fs::remove(temporary);
        EXPECT_EQ(Write(target), 0) << target;
        EXPECT_FALSE(fs::exists(temporary)) << target;
    }
    fs::current_path(previous);
    EXPECT_EQ(FileContents(scratch / "f.ini"), "[S]\nk=1\n\n");
}

TEST_F(IniFile, WriteToOpenStream) {
    IniPutInt(doc.get(), "S", "k", 1);
    FILE* stream = std::fopen(path.c_str(), "w+b");
    ASSERT_NE(stream, nullptr);
    std::fputs("previous text that is longer\n", stream);
    EXPECT_EQ(IniWriteToFilePtr(doc.get(), stream, 0), kIniErrStreamUnusable);  // safe save needs a path
    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteSpacedSeparator);
    EXPECT_EQ(IniWriteToFilePtr(doc.get(), stream, 0), 0);
    EXPECT_EQ(IniWriteToFilePtr(doc.get(), stream, 1), 0);
    std::fclose(stream);
    EXPECT_EQ(FileContents(path), "[S]\nk = 1\n\n[S]\nk = 1\n\n");
    EXPECT_EQ(IniWriteToFilePtr(doc.get(), nullptr, 0), kIniErrInvalidArgument);
}

}  // namespace
