#include "zo/kel/osdep/INIFileManager.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "zoini/IniTestSupport.h"

namespace {

using zo::kel::NarrowString;
using zo::kel::Vector;
using zo::kel::osdep::INIFileManager;
using namespace ini_test;

// A file path in a scratch directory of its own, written with `contents` when given.
class INIFileManagerTest : public ::testing::Test {
protected:
    std::string file(const char* contents = nullptr) {
        if (contents) WriteFileContents(path, contents);
        return path;
    }
    ScratchDirectory scratch;
    const std::string path = (scratch / "test.ini").string();
};

TEST_F(INIFileManagerTest, MissingFileStartsEmptyAndIsCreatedBySaving) {
    INIFileManager manager(file().c_str(), "Name");
    EXPECT_FALSE(manager.fileValid());
    EXPECT_STREQ(manager.name().c_str(), "Name");
    int number = 5;
    EXPECT_FALSE(manager.read("S", "k", number));
    EXPECT_EQ(number, 5);
    Vector<NarrowString> keys;
    keys.push_back(NarrowString("stale"));
    manager.enumKeys("S", keys);
    EXPECT_EQ(keys.size(), 0u);

    EXPECT_TRUE(manager.write("S", "text", "a\tb"));
    EXPECT_TRUE(manager.writeRaw("S", "raw", "c\\d"));
    EXPECT_TRUE(manager.write("S", "flag", true));
    EXPECT_TRUE(manager.write("S", "int", -3));
    EXPECT_TRUE(manager.write("S", "uint", 7u));
    EXPECT_TRUE(manager.write("S", "double", 0.5));
    EXPECT_TRUE(manager.writeFile());
    EXPECT_TRUE(manager.fileValid());
    EXPECT_EQ(FileContents(path),
              "[S]\ntext = \"a\\tb\"\nraw = \"c\\d\"\nflag = True\nint = -3\nuint = 7\n"
              "double = 5.00000000000000e-01\n\n");

    INIFileManager again(path.c_str(), "Name");
    EXPECT_TRUE(again.fileValid());
    NarrowString text;
    EXPECT_TRUE(again.read("s", " TEXT ", text));
    EXPECT_STREQ(text.c_str(), "a\tb");
    EXPECT_TRUE(again.readRaw("S", "text", text));
    EXPECT_STREQ(text.c_str(), "a\\tb");
    bool flag = false;
    unsigned int uint = 0;
    double real = 0;
    EXPECT_TRUE(again.read("S", "flag", flag) && flag);
    EXPECT_TRUE(again.read("S", "int", number) && number == -3);
    EXPECT_TRUE(again.read("S", "uint", uint) && uint == 7u);
    EXPECT_TRUE(again.read("S", "double", real) && real == 0.5);
    again.enumKeys("S", keys);
    std::string names;
    for (unsigned int n = 0; n < keys.size(); ++n) names = names + keys[n].c_str() + ";";
    EXPECT_EQ(names, "text;raw;flag;int;uint;double;");
}

TEST_F(INIFileManagerTest, EmptyNamesMeanTheDefaults) {
    INIFileManager manager(file("[Orvellan]\nDefault = 42\nother = 1\n").c_str(), "");
    int number = 0;
    EXPECT_TRUE(manager.read("", "", number));
    EXPECT_EQ(number, 42);
    EXPECT_TRUE(manager.keyPresent("", "OTHER"));
    EXPECT_TRUE(manager.write("", "", 43));
    EXPECT_TRUE(manager.read("orvellan", "default", number));
    EXPECT_EQ(number, 43);
    EXPECT_EQ(manager.removeKey("", "other"), 1);
    EXPECT_EQ(manager.removeKey("", "other"), 0);
    EXPECT_FALSE(manager.keyPresent("", "other"));
}

TEST_F(INIFileManagerTest, MalformedValuesLeaveOutputsAlone) {
    INIFileManager manager(file("[S]\nb = yes\nn = 12abc\nd = 1.5x\n").c_str(), "S");
    bool flag = true;
    int number = 9;
    unsigned int uint = 9;
    double real = 9;
    EXPECT_EQ(std::tuple(manager.read("S", "b", flag), manager.read("S", "n", number), manager.read("S", "n", uint),
                         manager.read("S", "d", real)),
              std::tuple(false, false, false, false));
    EXPECT_EQ(std::tuple(flag, number, uint, real), std::tuple(true, 9, 9u, 9.0));
}

TEST_F(INIFileManagerTest, ReloadDiscardsUnsavedChanges) {
    INIFileManager manager(file("[S]\nk = 1\n").c_str(), "S");
    EXPECT_TRUE(manager.write("S", "k", 2));
    EXPECT_TRUE(manager.reloadFile());
    int number = 0;
    EXPECT_TRUE(manager.read("S", "k", number));
    EXPECT_EQ(number, 1);
    WriteFileContents(path, "\xFF\xFE");
    EXPECT_FALSE(manager.reloadFile());
    EXPECT_FALSE(manager.fileValid());
    EXPECT_FALSE(manager.keyPresent("S", "k"));
}

}  // namespace
