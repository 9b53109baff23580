#include "zo/kel/osdep/CharsetConversion.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "zo/kel/Exception.h"

namespace {

using namespace zo::kel::osdep;
using zo::kel::exception::BufferOverflow;
using zo::kel::exception::InvalidArgument;
using zo::kel::exception::UnableToConvert;

// Sets a throw switch for one scope.
struct ThrowSwitch {
    ThrowSwitch(bool (*make)(bool), bool throws) : make(make), previous(make(throws)) {}
    ~ThrowSwitch() { make(previous); }
    bool (*make)(bool);
    bool previous;
};

struct RoundTrip {
    const char* charset;
    std::string narrow;
    std::wstring wide;
};

const RoundTrip kRoundTrips[] = {
    {"US-ASCII", "plain ASCII text", L"plain ASCII text"},
    {"ISO-8859-1", "caf\xE9 \xA9", L"caf\u00E9 \u00A9"},
    {"UTF-8", "\xE2\x82\xAC \xF0\x9F\x98\x80", L"\u20AC \U0001F600"},
    {"UTF-16LE", std::string("a\0\xAC\x20", 4), L"a\u20AC"},
    {"CP1252", "\x80", L"\u20AC"},
    {"US-ASCII", "", L""},
};

TEST(CharsetConversion, RoundTripsThroughIconv) {
    for (const RoundTrip& row : kRoundTrips) {
        const char* first = row.narrow.data();
        const char* last = first + row.narrow.size();
        EXPECT_EQ(GetAnsiToWideRequiredBufferLength(first, last, row.charset), row.wide.size()) << row.charset;
        const zo::kel::WideString wide = AnsiToWide(first, last, row.charset);
        EXPECT_EQ(std::wstring(wide.begin(), wide.end()), row.wide) << row.charset;
        EXPECT_EQ(AnsiToWide(first, static_cast<unsigned int>(row.narrow.size()), row.charset).exactCompare(wide), 0);

        const wchar_t* wideFirst = row.wide.data();
        const wchar_t* wideLast = wideFirst + row.wide.size();
        EXPECT_EQ(GetWideToAnsiRequiredBufferLength(wideFirst, wideLast, row.charset), row.narrow.size());
        const zo::kel::NarrowString narrow = WideToAnsi(wideFirst, wideLast, row.charset);
        EXPECT_EQ(std::string(narrow.begin(), narrow.end()), row.narrow) << row.charset;
    }
    EXPECT_EQ(WideToAnsi(L"zero-terminated", "US-ASCII").exactCompare("zero-terminated"), 0);
}

TEST(CharsetConversion, FailuresThrowUnlessSwitchedOff) {
    const wchar_t wide[] = L"a\u00E9b";
    const char narrow[] = "a\xE9" "b";
    EXPECT_THROW(WideToAnsi(wide, "US-ASCII"), UnableToConvert);
    EXPECT_THROW(GetAnsiToWideRequiredBufferLength(narrow, narrow + 3, "US-ASCII"), UnableToConvert);
    EXPECT_THROW(AnsiToWide(narrow, 3u, "UTF-8"), UnableToConvert);
    EXPECT_THROW(AnsiToWide("x", 1u, "no-such-charset"), UnableToConvert);
    {
        ThrowSwitch quiet(MakeWideToAnsiThrow, false);
        EXPECT_EQ(WideToAnsi(wide, "US-ASCII").exactCompare("a?b"), 0);
        EXPECT_THROW(AnsiToWide(narrow, 3u, "US-ASCII"), UnableToConvert);  // the other direction still throws
    }
    {
        ThrowSwitch quiet(MakeAnsiToWideThrow, false);
        EXPECT_EQ(AnsiToWide(narrow, 3u, "US-ASCII").exactCompare(L"a?b"), 0);
        EXPECT_EQ(AnsiToWide("ab\xC3", 3u, "UTF-8").exactCompare(L"ab?"), 0);  // truncated sequence
        EXPECT_TRUE(AnsiToWide("x", 1u, "no-such-charset").empty());
    }
    EXPECT_THROW(WideToAnsi(wide, "US-ASCII"), UnableToConvert);
}

TEST(CharsetConversion, CallerBuffers) {
    const char text[] = "hello";
    wchar_t out[5];
    EXPECT_EQ(AnsiToWideNoAlloc(text, text + 5, out, out + 5, "US-ASCII"), out + 5);
    EXPECT_EQ(std::wstring(out, 5), L"hello");
    EXPECT_THROW(AnsiToWideNoAlloc(text, text + 5, out, out + 4, "US-ASCII"), BufferOverflow);
    const char utf16[] = "h\0e\0l\0l\0";
    EXPECT_THROW(AnsiToWideNoAlloc(utf16, utf16 + 8, out, out + 3, "UTF-16LE"), BufferOverflow);
    EXPECT_THROW(AnsiToWideNoAlloc(text, text + 5, nullptr, nullptr, "US-ASCII"), InvalidArgument);
    char narrow[3];
    const wchar_t euro[] = L"\u20AC";
    EXPECT_EQ(WideToAnsiNoAlloc(euro, euro + 1, narrow, narrow + 3, "UTF-8"), narrow + 3);
    EXPECT_EQ(std::string(narrow, 3), "\xE2\x82\xAC");
    EXPECT_THROW(WideToAnsiNoAlloc(euro, euro + 1, narrow, narrow + 2, "UTF-8"), BufferOverflow);
    EXPECT_THROW(WideToAnsiNoAlloc(euro, euro + 1, narrow + 2, narrow, "UTF-8"), InvalidArgument);
}

TEST(CharsetConversion, LongTextsAndStatefulCharsets) {
    // Longer than the counting scratch area, through iconv.
    const std::wstring wide(3000, L'\u00E9');
    EXPECT_EQ(GetWideToAnsiRequiredBufferLength(wide.data(), wide.data() + wide.size(), "UTF-8"), 6000u);
    // A stateful charset ends with its closing shift sequence.
    const zo::kel::NarrowString jis = WideToAnsi(L"\u3042a", "ISO-2022-JP");
    EXPECT_EQ(std::string(jis.begin(), jis.end()), "\x1B$B$\"\x1B(Ba");
    EXPECT_EQ(AnsiToWide(jis.begin(), jis.end(), "ISO-2022-JP").exactCompare(L"\u3042a"), 0);
}

TEST(CharsetConversion, ThreadsKeepTheirOwnDescriptors) {
    std::vector<std::thread> threads;
    std::vector<int> failures(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&failures, t] {
            for (int i = 0; i < 200; ++i) {
                const zo::kel::WideString wide = AnsiToWide("caf\xC3\xA9", 5u, "UTF-8");
                if (wide.exactCompare(L"caf\u00E9") != 0) ++failures[t];
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures, std::vector<int>(4, 0));
}

}  // namespace
