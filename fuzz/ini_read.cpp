// Arbitrary bytes through the memory line source under every combination of
// read options and comparison modes; a document that reads is written and read
// back, and a second round trip must reproduce the first one's text.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzCheck.h"
#include "zoini/zoini.h"

using fuzzcheck::Require;

namespace {

int AppendLine(void* context, const char* line, size_t length) {
    static_cast<std::string*>(context)->append(line, length).push_back('\n');
    return 0;
}

struct Options {
    int read;
    int duplicateChecking;
    int caseSensitive;
};

// Reads `bytes` into a fresh document and writes it back: the read result.
int RoundTrip(const Options& options, const void* bytes, size_t size, std::string& text) {
    IniHandle doc = IniNew(0);
    Require(doc != nullptr);
    IniSetReadOptions(doc, options.read);
    IniSetDuplicateChecking(doc, options.duplicateChecking);
    IniSetCaseAndWhitespaceSensitiveChecking(doc, options.caseSensitive);
    IniSetWriteOptions(doc, -1, 0, 8);
    const int result = IniReadFromMemory(doc, bytes, size);
    text.clear();
    if (result == 0) {
        Require(IniWrite(doc, AppendLine, &text) == 0);
        // Lookups of every name must find a record of that name.
        const char* section = nullptr;
        for (int i = 1; IniNthSectionName(doc, i, &section) == 1; ++i) {
            Require(IniSectionExists(doc, section));
        }
    }
    IniDispose(doc);
    return result;
}

bool StartsLikeByteOrderMark(const std::string& text) {
    static constexpr std::string_view kMarks[] = {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", std::string_view("\0\0\xFE\xFF", 4)};
    for (const std::string_view mark : kMarks) {
        if (text.starts_with(mark)) return true;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const Options options{data[0] & 15, (data[0] >> 4) & 1, (data[0] >> 5) & 1};
    std::string first, second, third;
    const int result = RoundTrip(options, data + 1, size - 1, first);
    Require(result == 0 || result == kIniErrUnsupportedEncoding);
    if (result != 0) return 0;
    // A written first name may itself begin like a byte-order mark.
    if (StartsLikeByteOrderMark(first)) return 0;
    Require(RoundTrip(options, first.data(), first.size(), second) == 0);
    // Leading blank lines go on rewriting, which can bring such a name to the front.
    if (StartsLikeByteOrderMark(second)) return 0;
    Require(RoundTrip(options, second.data(), second.size(), third) == 0);
    // Names ending like continuation items are joined again on every reading,
    // and the implicit section has no header: only other texts must be stable.
    Require(first.find(" Line") != std::string::npos || first.find("(null)") != std::string::npos || second == third);
    return 0;
}
