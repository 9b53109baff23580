#include "zo/kel/osdep/CharsetConversion.h"

#include <strings.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string_view>

#include "zo/kel/Exception.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/osdep/IConv.h"

namespace zo::kel::osdep {

namespace {

std::atomic<bool> gAnsiToWideThrows{true};
std::atomic<bool> gWideToAnsiThrows{true};

// Charsets whose first 128 codes are ASCII and that carry no shift state, so
// ASCII-only text converts one unit to one unit without iconv.
constexpr std::string_view kAsciiCompatibleCharsets[] = {
    "US-ASCII", "ASCII", "ANSI_X3.4-1968", "UTF-8", "UTF8", "ISO-8859-1", "ISO8859-1", "LATIN1", "ISO-8859-15",
    "CP1252", "WINDOWS-1252",
};

bool IsAsciiCompatible(const char* charsetName) {
    for (std::string_view name : kAsciiCompatibleCharsets) {
        if (strcasecmp(charsetName, name.data()) == 0) return true;
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

// True when [first, last) can take the ASCII shortcut.
template <typename Char>
bool TakesAsciiShortcut(const Char* first, const Char* last, const char* charsetName) {
    return IsAscii(first, last) && IsAsciiCompatible(charsetName);
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

template <typename In, typename Out>
unsigned int RequiredLength(const In* first, const In* last, const char* from, const char* to, bool throwing) {
    Out* none = nullptr;
    return NumericCast<unsigned int>(detail::IConv<In, Out>(first, last, from, nullptr, none, to, throwing));
}

template <typename In, typename Out>
Out* ConvertInto(const In* first, const In* last, const char* from, Out* outFirst, Out* outLast, const char* to,
                 bool throwing) {
    detail::IConv<In, Out>(first, last, from, outFirst, outLast, to, throwing);
    return outLast;
}

}  // namespace

bool MakeAnsiToWideThrow(bool throws) noexcept { return gAnsiToWideThrows.exchange(throws); }
bool MakeWideToAnsiThrow(bool throws) noexcept { return gWideToAnsiThrows.exchange(throws); }

unsigned int GetAnsiToWideRequiredBufferLength(const char* first, const char* last, const char* charsetName) {
    if (TakesAsciiShortcut(first, last, charsetName)) return RangeLength(first, last);
    return RequiredLength<char, wchar_t>(first, last, charsetName, kWideCharset, gAnsiToWideThrows);
}

wchar_t* AnsiToWideNoAlloc(const char* first, const char* last, wchar_t* outFirst, wchar_t* outLast,
                           const char* charsetName) {
    CheckOutputRange(outFirst, outLast);
    if (TakesAsciiShortcut(first, last, charsetName)) return CopyAscii(first, last, outFirst, outLast);
    return ConvertInto(first, last, charsetName, outFirst, outLast, kWideCharset, gAnsiToWideThrows);
}

WideString AnsiToWide(const char* text, const char* end, const char* charsetName) {
    if (!text) return WideString();
    WideString wide(GetAnsiToWideRequiredBufferLength(text, end, charsetName), L'\0');
    wchar_t* written = AnsiToWideNoAlloc(text, end, wide.begin(), wide.end(), charsetName);
    wide.resize(static_cast<unsigned int>(written - wide.begin()));
    return wide;
}

WideString AnsiToWide(const char* text, unsigned int length, const char* charsetName) {
    return text ? AnsiToWide(text, text + length, charsetName) : WideString();
}

unsigned int GetWideToAnsiRequiredBufferLength(const wchar_t* first, const wchar_t* last, const char* charsetName) {
    if (TakesAsciiShortcut(first, last, charsetName)) return RangeLength(first, last);
    return RequiredLength<wchar_t, char>(first, last, kWideCharset, charsetName, gWideToAnsiThrows);
}

char* WideToAnsiNoAlloc(const wchar_t* first, const wchar_t* last, char* outFirst, char* outLast,
                        const char* charsetName) {
    CheckOutputRange(outFirst, outLast);
    if (TakesAsciiShortcut(first, last, charsetName)) return CopyAscii(first, last, outFirst, outLast);
    return ConvertInto(first, last, kWideCharset, outFirst, outLast, charsetName, gWideToAnsiThrows);
}

NarrowString WideToAnsi(const wchar_t* first, const wchar_t* last, const char* charsetName) {
    if (!first) return NarrowString();
    NarrowString narrow(GetWideToAnsiRequiredBufferLength(first, last, charsetName), '\0');
    char* written = WideToAnsiNoAlloc(first, last, narrow.begin(), narrow.end(), charsetName);
    narrow.resize(static_cast<unsigned int>(written - narrow.begin()));
    return narrow;
}

NarrowString WideToAnsi(const wchar_t* text, const char* charsetName) {
    return text ? WideToAnsi(text, text + std::wcslen(text), charsetName) : NarrowString();
}

}  // namespace zo::kel::osdep
