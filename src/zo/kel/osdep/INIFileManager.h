// zo::kel::osdep::INIFileManager: one INI file loaded into a zoini document
// and read and written through typed keys. An empty section or key stands for
// the defaults "Orvellan" and "Default". Reads return false (and leave the
// output as it was) for a missing or malformed key, so the caller's initial
// value is the default; writes change memory only until writeFile(). Only the
// narrow-string operations throw. Not safe to use from two threads at once.
#pragma once

#include "qkdynam_platform.h"
#include "zo/kel/StringBase.h"
#include "zo/kel/Vector.h"
#include "zoini/zoini.h"

namespace zo::kel::osdep {

class QKDYNAM_API INIFileManager {
public:
    using String = NarrowString;

    // Reads `path` (relative to the current directory when relative); a
    // missing or unreadable file leaves the manager empty, not failed.
    // Throws std::bad_alloc when no document can be made.
    INIFileManager(const String& path, const String& name);
    ~INIFileManager();  // never saves
    INIFileManager(const INIFileManager&) = delete;
    INIFileManager& operator=(const INIFileManager&) = delete;

    const String& name() const noexcept { return name_; }
    const String& path() const noexcept { return path_; }
    // True when the last load succeeded or any save did.
    bool fileValid() const noexcept { return fileValid_; }

    // Discards unsaved changes and reads the file again.
    bool reloadFile();
    // Safe save through a temporary file (the document's default write options).
    bool writeFile();

    bool keyPresent(const String& section, const String& key) const;
    // 1 removed, 0 missing, or zoini's negative code.
    int removeKey(const String& section, const String& key);

    // Writes: true when stored. Strings are escaped and quoted; raw ones only quoted.
    bool write(const String& section, const String& key, const String& value);
    bool write(const String& section, const String& key, const char* value) {
        return write(section, key, String(value));
    }
    bool writeRaw(const String& section, const String& key, const String& value);
    bool write(const String& section, const String& key, bool value);
    bool write(const String& section, const String& key, int value);
    bool write(const String& section, const String& key, unsigned int value);
    bool write(const String& section, const String& key, double value);

    // Reads: true when the key is present and of the right form.
    bool read(const String& section, const String& key, String& value) const;
    bool readRaw(const String& section, const String& key, String& value) const;
    bool read(const String& section, const String& key, bool& value) const;
    bool read(const String& section, const String& key, int& value) const;
    bool read(const String& section, const String& key, unsigned int& value) const;
    bool read(const String& section, const String& key, double& value) const;

    // The section's key names in file order (none for a missing section).
    void enumKeys(const String& section, Vector<String>& keys) const;

private:
    String name_;
    String path_;
    IniHandle document_;
    bool fileValid_;
};

}  // namespace zo::kel::osdep
