// IsLogicalText on arbitrary text: nothing escapes, a refused text leaves the
// flag alone, and for ASCII text the wide form gives the same answer.
#include <string>

#include "FuzzText.h"
#include "tavlo/qkstatic/TextToValue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzz_text::AsText(data, size);
    bool narrow = false, wide = false;
    bool narrowAccepted = false;
    try {
        narrowAccepted = IsLogicalText(text.c_str(), narrow);
    } catch (...) {
        __builtin_trap();
    }
    if (!narrowAccepted) fuzz_text::Require(!narrow);
    for (char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) return 0;
    }
    const std::wstring wideText(text.begin(), text.end());
    fuzz_text::Require(IsLogicalText(wideText.c_str(), wide) == narrowAccepted);
    fuzz_text::Require(wide == narrow);
    return 0;
}
