// Helpers of the zoini tests: an owning document, reading from and writing to
// strings, and a scratch directory removed with its contents.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "zoini/zoini.h"

namespace ini_test {

struct DocumentDeleter {
    void operator()(IniHandle doc) const { IniDispose(doc); }
};
using Document = std::unique_ptr<std::remove_pointer_t<IniHandle>, DocumentDeleter>;

inline Document NewDocument() { return Document(IniNew(0)); }

inline int ReadText(IniHandle doc, const std::string& text) { return IniReadFromMemory(doc, text.data(), text.size()); }

inline Document ParseText(const std::string& text, int readOptions = kIniReadStripDoubleQuotes) {
    Document doc = NewDocument();
    IniSetReadOptions(doc.get(), readOptions);
    EXPECT_EQ(ReadText(doc.get(), text), 0);
    return doc;
}

inline int AppendLine(void* context, const char* line, size_t length) {
    static_cast<std::string*>(context)->append(line, length).push_back('\n');
    return 0;
}

inline std::string WriteText(IniHandle doc) {
    std::string text;
    EXPECT_EQ(IniWrite(doc, AppendLine, &text), 0);
    return text;
}

// The item's raw value, "<none>" when it is missing or blank.
inline std::string RawValue(IniHandle doc, const char* section, const char* item) {
    const char* value = nullptr;
    return IniGetPointerToRawString(doc, section, item, &value) == 1 ? value : "<none>";
}

// RawValue and IniLineOfItem of each named item of `section`.
inline void ExpectRawValues(IniHandle doc, const char* section,
                            std::initializer_list<std::pair<const char*, std::string>> expected) {
    for (const auto& [item, value] : expected) EXPECT_EQ(RawValue(doc, section, item), value) << section << ", " << item;
}

inline void ExpectItemLines(IniHandle doc, const char* section, std::initializer_list<std::pair<const char*, int>> expected) {
    for (const auto& [item, line] : expected) EXPECT_EQ(IniLineOfItem(doc, section, item), line) << section << ", " << item;
}

// The name of the n-th section (or, given a section, item), "<none>" when there is none.
inline std::string NthName(IniHandle doc, int n) {
    const char* name = nullptr;
    return IniNthSectionName(doc, n, &name) == 1 ? name : "<none>";
}

inline std::string NthName(IniHandle doc, const char* section, int n) {
    const char* name = nullptr;
    return IniNthItemName(doc, section, n, &name) == 1 ? name : "<none>";
}

inline std::string FileContents(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream contents;
    contents << in.rdbuf();
    return contents.str();
}

inline void WriteFileContents(const std::filesystem::path& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

class ScratchDirectory {
public:
    ScratchDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zoini-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~ScratchDirectory() { std::filesystem::remove_all(path_); }
    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

}  // namespace ini_test
