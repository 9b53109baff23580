// AsciiToDays on arbitrary text: it never throws, a refused text leaves the
// output alone, an accepted one is a non-negative number of days, and the
// same text with trailing spaces reads the same.
#include <cmath>

#include "FuzzText.h"
#include "tavlo/qkstatic/TextToValue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzz_text::AsText(data, size);
    double days = -1.0;
    int accepted = 0;
    try {
        accepted = AsciiToDays(text.c_str(), &days);
    } catch (...) {
        __builtin_trap();
    }
    if (!accepted) {
        fuzz_text::Require(days == -1.0);
        return 0;
    }
    fuzz_text::Require(!(days < 0.0));
    if (!text.empty() && text.back() != ' ' && text.back() != ':') {
        double again = -1.0;
        fuzz_text::Require(AsciiToDays((text + "  ").c_str(), &again) != 0);
        fuzz_text::Require(again == days || (std::isnan(again) && std::isnan(days)));
    }
    return 0;
}
