#include "tavlo/qkstatic/TextToValue.h"

#include <cstdint>

#include "zo/kel/TruncateToInt64.h"
#include "zo/kel/osdep/CharsetConversion.h"

namespace {

constexpr std::uint64_t kNanosecondsPerSecond = 1000000000;

// Runs the narrow form of a recogniser on the text converted to narrow.
template <typename Result>
bool OnNarrow(const wchar_t* text, Result& out, bool (*recognise)(const char*, Result&)) {
    if (text == nullptr) return false;
    const zo::kel::NarrowString narrow =
        zo::kel::osdep::WideToAnsi(text, zo::kel::osdep::kNarrowStringCharset);
    return recognise(narrow.c_str(), out);
}

}  // namespace

bool TextToNumber0(const char* text, double* out, int format) {
    if (text == nullptr || *text == '\0') return false;
    return AsciiToNumber(text, out) != 0 || AsciiToDays(text, out) != 0 || AsciiToDateTime(text, out, format) != 0;
}

bool IsNumericText(const char* text, double& out) { return AsciiToNumber(text, &out) != 0; }

bool IsTimeText(const char* text, double& out) { return AsciiToDays(text, &out) != 0 || AsciiToDateTime(text, &out, 0) != 0; }

bool IsTimeText(const char* text, long& out) {
    double days = 0.0;
    if (!IsTimeText(text, days)) return false;
    const auto seconds = static_cast<std::uint64_t>(zo::kel::internal::TruncateToInt64(days * 24.0 * 60.0 * 60.0));
    out = static_cast<long>(seconds * kNanosecondsPerSecond);
    return true;
}

bool IsNumericText(const wchar_t* text, double& out) { return OnNarrow<double>(text, out, IsNumericText); }

bool IsTimeText(const wchar_t* text, double& out) { return OnNarrow<double>(text, out, IsTimeText); }

bool IsTimeText(const wchar_t* text, long& out) { return OnNarrow<long>(text, out, IsTimeText); }
