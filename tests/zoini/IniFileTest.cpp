#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "zoini/IniTestSupport.h"

namespace {

using namespace ini_test;
namespace fs = std::filesystem;

int CountEntries(const fs::path& directory) {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(directory)) ++count;
    return count;
}

TEST(IniFile, ReadFromFileResults) {
    ScratchDirectory scratch;
    Document doc = NewDocument();
    EXPECT_EQ(IniReadFromFile(doc.get(), nullptr), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromFile(doc.get(), (scratch / "missing.ini").c_str()), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromFilePtr(doc.get(), nullptr), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromFile(doc.get(), scratch.path().c_str()), kIniErrReadFailed);  // a directory
    EXPECT_EQ(IniIsFileNewer(doc.get()), kIniErrNoFile);

    const fs::path path = scratch / "a.ini";
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

TEST(IniFile, SafeSaveReplacesTheFileAndKeepsItsMode) {
    ScratchDirectory scratch;
    const fs::path path = scratch / "config.ini";
    WriteFileContents(path, "old contents\n");
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    Document doc = NewDocument();
    IniPutString(doc.get(), "S", "k", "v");
    ASSERT_EQ(IniWriteToFile(doc.get(), path.c_str()), 0);
    EXPECT_EQ(FileContents(path), "[S]\nk = \"v\"\n\n");
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_EQ(CountEntries(scratch.path()), 1);
    EXPECT_EQ(IniIsFileNewer(doc.get()), 0);

    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteByteOrderMark | kIniWriteSafeSave);
    ASSERT_EQ(IniWriteToFile(doc.get(), path.c_str()), 0);
    EXPECT_EQ(FileContents(path), "\xEF\xBB\xBF[S]\nk=\"v\"\n\n");
    EXPECT_EQ(CountEntries(scratch.path()), 1);
    EXPECT_EQ(IniWriteToFile(doc.get(), ""), kIniErrInvalidArgument);
}

TEST(IniFile, FailedSaveKeepsTheOldFileAndRemovesTheTemporary) {
    ScratchDirectory scratch;
    const fs::path path = scratch / "config.ini";
    WriteFileContents(path, "old contents\n");
    Document doc = NewDocument();
    IniPut(doc.get(), "S", "a rather long item name", "value", 0);
    for (const int flags : {int{kIniWriteSafeSave | kIniWriteTempFileMkstemp}, int{kIniWriteSafeSave}, 0}) {
        IniSetWriteOptions(doc.get(), 20, 0, flags);
        EXPECT_EQ(IniWriteToFile(doc.get(), path.c_str()), kIniErrLineTooShort);
        EXPECT_EQ(CountEntries(scratch.path()), flags ? 1 : 0);
        if (flags) {
            EXPECT_EQ(FileContents(path), "old contents\n");
        }
    }
    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteSafeSave);
    EXPECT_EQ(IniWriteToFile(doc.get(), (scratch / "no/such/dir.ini").c_str()), kIniErrNotWritable);
}

// Without mkstemp the temporary name is derived from the target; a directory
// squatting on exactly that name makes the save fail, which shows the name.
TEST(IniFile, DerivedTemporaryNames) {
    ScratchDirectory scratch;
    Document doc = NewDocument();
    IniPutInt(doc.get(), "S", "k", 1);
    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteSafeSave);
    const struct {
        const char* target;
        const char* temporary;
    } cases[] = {{"c.ini", "c.TMP"}, {"d.TMP", "d.TMP.TMP"}, {"noext", "noext.TMP"}, {"e.tar.gz", "e.tar.TMP"}};
    for (const auto& c : cases) {
        fs::create_directory(scratch / c.temporary);
        EXPECT_EQ(IniWriteToFile(doc.get(), (scratch / c.target).c_str()), kIniErrOutputNotOpenable) << c.target;
        fs::remove(scratch / c.temporary);
        EXPECT_EQ(IniWriteToFile(doc.get(), (scratch / c.target).c_str()), 0) << c.target;
        EXPECT_FALSE(fs::exists(scratch / c.temporary)) << c.target;
    }

    // A path without a directory appends ".TMP" to the whole name.
    const fs::path previous = fs::current_path();
    fs::current_path(scratch.path());
    fs::create_directory("f.ini.TMP");
    EXPECT_EQ(IniWriteToFile(doc.get(), "f.ini"), kIniErrOutputNotOpenable);
    fs::remove("f.ini.TMP");
    EXPECT_EQ(IniWriteToFile(doc.get(), "f.ini"), 0);
    fs::current_path(previous);
    EXPECT_EQ(FileContents(scratch / "f.ini"), "[S]\nk=1\n\n");
}

TEST(IniFile, WriteToOpenStream) {
    ScratchDirectory scratch;
    const fs::path path = scratch / "stream.ini";
    Document doc = NewDocument();
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
