// AsciiToNumber on arbitrary text: only OutOfRange may escape, a refused text
// leaves the output alone, and an integral result re-encoded as hexadecimal
// (or signed decimal) decodes to the same value. A letter right after 0x
// is refused, so the hexadecimal form leads with a zero.
#include <cinttypes>
#include <cmath>
#include <cstdio>

#include "FuzzText.h"
#include "tavlo/qkstatic/TextToValue.h"

namespace {

constexpr double kUntouched = -0.125;
constexpr double kExactIntegers = 9007199254740992.0;

void CheckIntegerRoundTrip(double value) {
    if (!(std::fabs(value) < kExactIntegers) || value != std::trunc(value) || std::signbit(value)) return;
    char text[32];
    std::snprintf(text, sizeof(text), "0x0%" PRIX64, static_cast<std::uint64_t>(value));
    double again = kUntouched;
    fuzz_text::Require(AsciiToNumber(text, &again) != 0 && again == value);
    std::snprintf(text, sizeof(text), " -%" PRIu64 " ", static_cast<std::uint64_t>(value));
    fuzz_text::Require(AsciiToNumber(text, &again) != 0 && again == -value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzz_text::AsText(data, size);
    double value = kUntouched;
    const bool accepted = fuzz_text::OnlyOutOfRange([&] { return AsciiToNumber(text.c_str(), &value) != 0; });
    if (!accepted) {
        fuzz_text::Require(std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(kUntouched));
        return 0;
    }
    CheckIntegerRoundTrip(value);
    return 0;
}
