// NumberToText0 with any double, any format index and any buffer size (the
// buffer is exactly that big, so ASan sees any write past it): only the
// overflow OutOfRange may escape, the text always ends inside the buffer, a
// text that fits has the returned length, and fixed-point texts of up to
// twelve significant digits read back to a value that prints the same.
#include <cmath>
#include <cstring>
#include <memory>

#include "FuzzText.h"
#include "tavlo/qkstatic/NumberToText.h"
#include "tavlo/qkstatic/TextToValue.h"

namespace {

struct Input {
    double value;
    unsigned int format;
    unsigned short size;
};

void CheckFixedPointRoundTrip(unsigned int format, double value, const char* text) {
    // Twelve significant digits leave the parser's rounding far from a printed digit.
    if (format < 1 || format > 9 || !(std::fabs(value) * std::pow(10.0, format - 1) < 1e12)) return;
    double again = 0.0;
    fuzz_text::Require(AsciiToNumber(text, &again) != 0);
    char reprinted[64];
    NumberToText0(format, reprinted, sizeof(reprinted), again);
    fuzz_text::Require(std::strcmp(text, reprinted) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input{};
    if (size < sizeof(input.value) + sizeof(input.format) + sizeof(input.size)) return 0;
    std::memcpy(&input.value, data, sizeof(input.value));
    std::memcpy(&input.format, data + 8, sizeof(input.format));
    std::memcpy(&input.size, data + 12, sizeof(input.size));
    input.size %= 512;
    auto buffer = std::make_unique<char[]>(input.size == 0 ? 1 : input.size);
    int length = -1;
    const bool written = fuzz_text::OnlyOutOfRange([&] {
        length = NumberToText0(input.format, buffer.get(), input.size, input.value);
        return true;
    });
    if (input.size == 0) {
        fuzz_text::Require(written && length == 0);
        return 0;
    }
    fuzz_text::Require(std::memchr(buffer.get(), '\0', input.size) != nullptr);
    if (!written) return 0;
    fuzz_text::Require(length >= 0);
    if (static_cast<unsigned int>(length) < input.size) {
        fuzz_text::Require(std::strlen(buffer.get()) == static_cast<std::size_t>(length));
        CheckFixedPointRoundTrip(input.format, input.value, buffer.get());
    }
    return 0;
}
