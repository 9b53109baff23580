#include "zo/kel/osdep/INIFileManager.h"

#include <new>

namespace zo::kel::osdep {

namespace {

using String = INIFileManager::String;

// Made on first use, which is the release-assertion switch at load time.
const String& DefaultSection() {
    static const String name("Orvellan");
    return name;
}

const String& DefaultKey() {
    static const String name("Default");
    return name;
}

const char* SectionName(const String& section) { return (section.empty() ? DefaultSection() : section).c_str(); }

const char* KeyName(const String& key) { return (key.empty() ? DefaultKey() : key).c_str(); }

// A fresh document holding `path`, and whether it read cleanly.
IniHandle LoadDocument(const String& path, bool& valid) {
    IniHandle document = IniNew(0);
    valid = document && IniReadFromFile(document, path.c_str()) == 0;
    return document;
}

// Reads the key's C form `Raw` through `get`; `value` changes only on success.
template <typename Raw, typename Value, typename Get>
bool ReadValue(IniHandle document, const String& section, const String& key, Value& value, Get get) {
    Raw read{};
    if (get(document, SectionName(section), KeyName(key), &read) != 1) return false;
    value = Value(read);
    return true;
}

}  // namespace

INIFileManager::INIFileManager(const String& path, const String& name)
    : name_(name), path_(path), document_(LoadDocument(path_, fileValid_)) {
    if (!document_) throw std::bad_alloc();
}

INIFileManager::~INIFileManager() { IniDispose(document_); }

bool INIFileManager::reloadFile() {
    IniDispose(document_);
    document_ = LoadDocument(path_, fileValid_);
    return fileValid_;
}

bool INIFileManager::writeFile() {
    const bool written = IniWriteToFile(document_, path_.c_str()) == 0;
    if (written) fileValid_ = true;
    return written;
}

bool INIFileManager::keyPresent(const String& section, const String& key) const {
    return IniItemExists(document_, SectionName(section), KeyName(key)) == 1;
}

int INIFileManager::removeKey(const String& section, const String& key) {
    return IniRemoveItem(document_, SectionName(section), KeyName(key));
}

bool INIFileManager::write(const String& section, const String& key, const String& value) {
    return IniPutString(document_, SectionName(section), KeyName(key), value.c_str()) == 1;
}

bool INIFileManager::writeRaw(const String& section, const String& key, const String& value) {
    return IniPutRawString(document_, SectionName(section), KeyName(key), value.c_str()) == 1;
}

bool INIFileManager::write(const String& section, const String& key, bool value) {
    return IniPutBoolean(document_, SectionName(section), KeyName(key), value) == 1;
}

bool INIFileManager::write(const String& section, const String& key, int value) {
    return IniPutInt(document_, SectionName(section), KeyName(key), value) == 1;
}

bool INIFileManager::write(const String& section, const String& key, unsigned int value) {
    return IniPutUInt(document_, SectionName(section), KeyName(key), value) == 1;
}

bool INIFileManager::write(const String& section, const String& key, double value) {
    return IniPutDouble(document_, SectionName(section), KeyName(key), value) == 1;
}

bool INIFileManager::read(const String& section, const String& key, String& value) const {
    return ReadValue<const char*>(document_, section, key, value, IniGetPointerToString);
}

bool INIFileManager::readRaw(const String& section, const String& key, String& value) const {
    return ReadValue<const char*>(document_, section, key, value, IniGetPointerToRawString);
}

bool INIFileManager::read(const String& section, const String& key, bool& value) const {
    return ReadValue<int>(document_, section, key, value, IniGetBoolean);
}

bool INIFileManager::read(const String& section, const String& key, int& value) const {
    return ReadValue<int>(document_, section, key, value, IniGetInt);
}

bool INIFileManager::read(const String& section, const String& key, unsigned int& value) const {
    return ReadValue<unsigned int>(document_, section, key, value, IniGetUInt);
}

bool INIFileManager::read(const String& section, const String& key, double& value) const {
    return ReadValue<double>(document_, section, key, value, IniGetDouble);
}

void INIFileManager::enumKeys(const String& section, Vector<String>& keys) const {
    keys.clear();
    const char* sectionName = SectionName(section);
    const int count = IniNumberOfItems(document_, sectionName);
    keys.reserve(static_cast<unsigned int>(count));
    const char* key = nullptr;
    for (int n = 1; n <= count && IniNthItemName(document_, sectionName, n, &key) == 1; ++n) keys.push_back(String(key));
}

}  // namespace zo::kel::osdep
