#include "zo/kel/osdep/CharsetConversion.h"

#include <strings.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <cwchar>

#include "zo/kel/Exception.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/osdep/IConv.h"

namespace zo::kel::osdep {

namespace {

std::atomic<bool> gAnsiToWideThrows{true};
std::atomic<bool> gWideToAnsiThrows{true};

// Charsets whose first 128 codes are ASCII and that carry no shift state, so
// ASCII-only text converts one unit to one unit without iconv.
constexpr const char* kAsciiCompatibleCharsets[] = {
    "US-ASCII", "ASCII", "ANSI_X3.4-1968", "UTF-8", "UTF8", "ISO-8859-1", "ISO8859-1", "LATIN1", "ISO-8859-15",
    "CP1252", "WINDOWS-1252",
};

bool IsAsciiCompatible(const char* charsetName) {
    for (const char* name : kAsciiCompatibleCharsets) {
        if (strcasecmp(charsetName, name) == 0) return true;
    }
    return false;
}

bool IsAscii(const char* first, const char* last) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080ull;
    std::uint64_t seen = 0;
    for (; last - first >= 8; first += 8) {
        std::uint64_t word;
        std::memcpy(&word, first, sizeof word);
        seen |= word;
    }
    for (; first < last; ++first) seen |= static_cast<unsigned char>(*first);
    return (seen & kHighBits) == 0;
}

bool IsAscii(const wchar_t* first, const wchar_t* last) {
    std::uint32_t seen = 0;
    for (; first < last; ++first) seen |= static_cast<std::uint32_t>(*first);
    return seen < 0x80;
}

// True when [first, last) can take the ASCII shortcut. The name is checked
// first: it is short, the text may be long.
template <typename Char>
bool TakesAsciiShortcut(const Char* first, const Char* last, const char* charsetName) {
    return IsAsciiCompatible(charsetName) && IsAscii(first, last);
}

template <typename Char>
unsigned int RangeLength(const Char* first, const Char* last) {
    return first < last ? NumericCast<unsigned int>(last - first) : 0u;
}

template <typename Out>
void CheckOutputRange(const Out* outFirst, const Out* outLast) {
    if (!outFirst || outLast < outFirst) ZO_THROW(exception::InvalidArgument);
}

// Copies ASCII units one for one into [outFirst, outLast).
template <typename In, typename Out>
Out* CopyAscii(const In* first, const In* last, Out* outFirst, Out* outLast) {
    const unsigned int count = RangeLength(first, last);
    if (static_cast<std::size_t>(outLast - outFirst) < count) ZO_THROW(exception::BufferOverflow);
    for (unsigned int i = 0; i < count; ++i) outFirst[i] = static_cast<Out>(first[i]);
    return outFirst + count;
}

// One direction of conversion: the iconv charset pair, which side is the
// narrow charset (for the ASCII shortcut) and the direction's throw switch.
struct Route {
    const char* from;
    const char* to;
    const char* narrowCharset;
    bool throwing;
};

Route ToWide(const char* charsetName) { return {charsetName, kWideCharset, charsetName, gAnsiToWideThrows}; }
Route FromWide(const char* charsetName) { return {kWideCharset, charsetName, charsetName, gWideToAnsiThrows}; }

// The parts below take `ascii`, the shortcut verdict, so that a conversion
// that both measures and writes scans the text and the name only once.
template <typename In, typename Out>
unsigned int RequiredLength(const In* first, const In* last, const Route& route, bool ascii) {
    if (ascii) return RangeLength(first, last);
    Out* none = nullptr;
    return NumericCast<unsigned int>(
        internal::IConv<In, Out>(first, last, route.from, nullptr, none, route.to, route.throwing));
}

template <typename In, typename Out>
Out* ConvertInto(const In* first, const In* last, Out* outFirst, Out* outLast, const Route& route, bool ascii) {
    if (ascii) return CopyAscii(first, last, outFirst, outLast);
    internal::IConv<In, Out>(first, last, route.from, outFirst, outLast, route.to, route.throwing);
    return outLast;
}

template <typename In, typename Out>
unsigned int RequiredLength(const In* first, const In* last, const Route& route) {
    return RequiredLength<In, Out>(first, last, route, TakesAsciiShortcut(first, last, route.narrowCharset));
}

template <typename In, typename Out>
Out* ConvertInto(const In* first, const In* last, Out* outFirst, Out* outLast, const Route& route) {
    CheckOutputRange(outFirst, outLast);  // before the input is looked at
    return ConvertInto(first, last, outFirst, outLast, route, TakesAsciiShortcut(first, last, route.narrowCharset));
}

// A new string of exactly the converted length (its storage is never null).
template <typename String, typename In>
String Converted(const In* first, const In* last, const Route& route) {
    using Out = typename String::value_type;
    if (!first) return String();
    const bool ascii = TakesAsciiShortcut(first, last, route.narrowCharset);
    String text(RequiredLength<In, Out>(first, last, route, ascii), Out());
    Out* written = ConvertInto(first, last, text.begin(), text.end(), route, ascii);
    text.resize(static_cast<unsigned int>(written - text.begin()));
    return text;
}

}  // namespace

bool MakeAnsiToWideThrow(bool throws) noexcept { return gAnsiToWideThrows.exchange(throws); }
bool MakeWideToAnsiThrow(bool throws) noexcept { return gWideToAnsiThrows.exchange(throws); }

unsigned int GetAnsiToWideRequiredBufferLength(const char* first, const char* last, const char* charsetName) {
    return RequiredLength<char, wchar_t>(first, last, ToWide(charsetName));
}

wchar_t* AnsiToWideNoAlloc(const char* first, const char* last, wchar_t* outFirst, wchar_t* outLast,
                           const char* charsetName) {
    return ConvertInto(first, last, outFirst, outLast, ToWide(charsetName));
}

WideString AnsiToWide(const char* text, const char* end, const char* charsetName) {
    return Converted<WideString>(text, end, ToWide(charsetName));
}

WideString AnsiToWide(const char* text, unsigned int length, const char* charsetName) {
    return Converted<WideString>(text, text ? text + length : text, ToWide(charsetName));
}

unsigned int GetWideToAnsiRequiredBufferLength(const wchar_t* first, const wchar_t* last, const char* charsetName) {
    return RequiredLength<wchar_t, char>(first, last, FromWide(charsetName));
}

char* WideToAnsiNoAlloc(const wchar_t* first, const wchar_t* last, char* outFirst, char* outLast,
                        const char* charsetName) {
    return ConvertInto(first, last, outFirst, outLast, FromWide(charsetName));
}

NarrowString WideToAnsi(const wchar_t* first, const wchar_t* last, const char* charsetName) {
    return Converted<NarrowString>(first, last, FromWide(charsetName));
}

NarrowString WideToAnsi(const wchar_t* text, const char* charsetName) {
    return Converted<NarrowString>(text, text ? text + std::wcslen(text) : text, FromWide(charsetName));
}

}  // namespace zo::kel::osdep
