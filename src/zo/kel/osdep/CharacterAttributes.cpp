#include "zo/kel/osdep/CharacterAttributes.h"

#include <ctype.h>
#include <wctype.h>

#include <cerrno>

#include "zo/kel/Exception.h"

namespace zo::kel::osdep {

namespace {

locale_t OpenLocale(const char* localeName) {
    if (!localeName) {
        const locale_t current = duplocale(LC_GLOBAL_LOCALE);
        if (!current) ZO_THROW(exception::InvalidLocale);
        return current;
    }
    errno = 0;  // the C library sets it on a name's first failure only; repeats leave it alone
    if (const locale_t named = newlocale(LC_ALL_MASK, localeName, static_cast<locale_t>(nullptr))) return named;
    if (errno != ENOMEM) ZO_THROW(exception::InvalidArgument2, localeName);
    ZO_THROW(exception::InvalidLocale);
}

// The narrow or the wide C library form of one query, picked by character
// type; classifiers answer int in both forms, case mappings wint_t in the wide one.
template <typename Char, typename WideResult>
auto Query(Char c, locale_t locale, int (*narrow)(int, locale_t), WideResult (*wide)(wint_t, locale_t)) {
    if constexpr (sizeof(Char) == 1) {
        return narrow(static_cast<unsigned char>(c), locale);
    } else {
        return wide(static_cast<wint_t>(c), locale);
    }
}

}  // namespace

template <typename Char>
CharacterAttributes<Char>::CharacterAttributes(const char* localeName) : locale_(OpenLocale(localeName)) {}

template <typename Char>
CharacterAttributes<Char>::~CharacterAttributes() {
    freelocale(locale_);
}

#define ZO_CLASSIFIER(Member, narrow, wide)                                \
    template <typename Char>                                               \
    bool CharacterAttributes<Char>::Member(Char c) const noexcept {       \
        return Query(c, locale_, narrow, wide) != 0;                      \
    }

ZO_CLASSIFIER(isAlpha, isalpha_l, iswalpha_l)
ZO_CLASSIFIER(isDigit, isdigit_l, iswdigit_l)
ZO_CLASSIFIER(isAlnum, isalnum_l, iswalnum_l)
ZO_CLASSIFIER(isSpace, isspace_l, iswspace_l)
ZO_CLASSIFIER(isPunct, ispunct_l, iswpunct_l)
ZO_CLASSIFIER(isUpper, isupper_l, iswupper_l)
ZO_CLASSIFIER(isLower, islower_l, iswlower_l)
ZO_CLASSIFIER(isPrint, isprint_l, iswprint_l)
ZO_CLASSIFIER(isGraph, isgraph_l, iswgraph_l)
ZO_CLASSIFIER(isControl, iscntrl_l, iswcntrl_l)
ZO_CLASSIFIER(isXDigit, isxdigit_l, iswxdigit_l)

#undef ZO_CLASSIFIER

template <typename Char>
Char CharacterAttributes<Char>::toUpper(Char c) const noexcept {
    return static_cast<Char>(Query(c, locale_, toupper_l, towupper_l));
}

template <typename Char>
Char CharacterAttributes<Char>::toLower(Char c) const noexcept {
    return static_cast<Char>(Query(c, locale_, tolower_l, towlower_l));
}

template class CharacterAttributes<char>;
template class CharacterAttributes<wchar_t>;

}  // namespace zo::kel::osdep
