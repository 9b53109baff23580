// AsciiToDateTime on arbitrary text under a format picked by the first byte:
// only OutOfRange may escape, a refused text leaves the output alone, and an
// accepted date printed as "yyyy-mm-dd hh:mm:ss.sss" reads back to a value
// that prints the same.
#include <cstring>

#include "FuzzText.h"
#include "tavlo/qkstatic/NumberToText.h"
#include "tavlo/qkstatic/TextToValue.h"

namespace {

constexpr unsigned int kIsoWithMilliseconds = 74;
constexpr double kUntouched = -7.5;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const int format = static_cast<int>(data[0]) - 8;
    const std::string text = fuzz_text::AsText(data + 1, size - 1);
    double value = kUntouched;
    if (!fuzz_text::OnlyOutOfRange([&] { return AsciiToDateTime(text.c_str(), &value, format) != 0; })) {
        fuzz_text::Require(value == kUntouched);
        return 0;
    }
    fuzz_text::Require(value >= 1.0 && value < 65536.0);
    char printed[64], reprinted[64];
    NumberToText0(kIsoWithMilliseconds, printed, sizeof(printed), value);
    double again = kUntouched;
    fuzz_text::Require(AsciiToDateTime(printed, &again, static_cast<int>(kIsoWithMilliseconds)) != 0);
    NumberToText0(kIsoWithMilliseconds, reprinted, sizeof(reprinted), again);
    fuzz_text::Require(std::strcmp(printed, reprinted) == 0);
    return 0;
}
