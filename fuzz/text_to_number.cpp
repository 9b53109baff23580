// TextToNumber0 on arbitrary text under a format picked by the first byte:
// only OutOfRange may escape, a refused text leaves the output alone, and the
// answer agrees with the first recogniser that accepts the text.
#include <cstdint>

#include "FuzzText.h"
#include "tavlo/qkstatic/TextToValue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const int format = static_cast<int>(data[0]) - 8;
    const std::string text = fuzz_text::AsText(data + 1, size - 1);
    double value = -3.25;
    const bool accepted = fuzz_text::OnlyOutOfRange([&] { return TextToNumber0(text.c_str(), &value, format); });
    if (!accepted) {
        fuzz_text::Require(value == -3.25);
        return 0;
    }
    fuzz_text::Require(!text.empty());
    double number = 0.0;
    if (AsciiToNumber(text.c_str(), &number) != 0) {
        fuzz_text::Require(std::bit_cast<std::uint64_t>(number) == std::bit_cast<std::uint64_t>(value));
    }
    return 0;
}
