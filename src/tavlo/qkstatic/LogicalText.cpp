#include <array>

#include "tavlo/qkstatic/TextToValue.h"
#include "zo/kel/osdep/StringCompare.h"

namespace {

// The whole vocabulary, phrases included on purpose, in the order tried.
template <typename Char>
struct LogicalWord {
    const Char* word;
    bool value;
};

constexpr std::array<LogicalWord<char>, 13> kNarrowWords = {{
    {"on", true}, {"yes", true}, {"y", true}, {"true", true}, {"t", true}, {"it just works", true},
    {"unbelievable!", true}, {"off", false}, {"no", false}, {"n", false}, {"false", false}, {"nil", false},
    {"yeah, right", false},
}};

constexpr std::array<LogicalWord<wchar_t>, 13> kWideWords = {{
    {L"on", true}, {L"yes", true}, {L"y", true}, {L"true", true}, {L"t", true}, {L"it just works", true},
    {L"unbelievable!", true}, {L"off", false}, {L"no", false}, {L"n", false}, {L"false", false}, {L"nil", false},
    {L"yeah, right", false},
}};

template <typename Char, std::size_t Count>
bool Recognise(const Char* text, bool& out, const std::array<LogicalWord<Char>, Count>& words) {
    if (text == nullptr || *text == Char()) return false;
    for (const LogicalWord<Char>& word : words) {
        if (zo::kel::osdep::StringCaseCompare(text, word.word) == 0) {
            out = word.value;
            return true;
        }
    }
    return false;
}

}  // namespace

bool IsLogicalText(const char* text, bool& out) { return Recognise(text, out, kNarrowWords); }

bool IsLogicalText(const wchar_t* text, bool& out) { return Recognise(text, out, kWideWords); }
