// Character classification and case mapping under a named locale, for
// narrow `char` and wide `wchar_t`. The object owns its own locale handle, so
// queries do not depend on (or change) the process's current locale and may
// run on any thread. Construction throws InvalidArgument2 for a name the C
// library does not know and InvalidLocale when a locale cannot be made.
#pragma once

#include <locale.h>

#include "qkdynam_platform.h"

namespace zo::kel::osdep {

template <typename Char>
class QKDYNAM_API CharacterAttributes {
public:
    // A null name is the process's current locale ("C" until one is set).
    explicit CharacterAttributes(const char* localeName = nullptr);
    ~CharacterAttributes();
    CharacterAttributes(const CharacterAttributes&) = delete;
    CharacterAttributes& operator=(const CharacterAttributes&) = delete;

    bool isAlpha(Char c) const noexcept;
    bool isDigit(Char c) const noexcept;
    bool isAlnum(Char c) const noexcept;
    bool isSpace(Char c) const noexcept;
    bool isPunct(Char c) const noexcept;
    bool isUpper(Char c) const noexcept;
    bool isLower(Char c) const noexcept;
    bool isPrint(Char c) const noexcept;
    bool isGraph(Char c) const noexcept;
    bool isControl(Char c) const noexcept;
    bool isXDigit(Char c) const noexcept;
    Char toUpper(Char c) const noexcept;
    Char toLower(Char c) const noexcept;

private:
    locale_t locale_;
};

extern template class QKDYNAM_API CharacterAttributes<char>;
extern template class QKDYNAM_API CharacterAttributes<wchar_t>;

}  // namespace zo::kel::osdep
