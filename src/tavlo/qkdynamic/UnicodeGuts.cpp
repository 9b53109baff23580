#include "tavlo/qkdynamic/UnicodeGuts.h"

#include <cwchar>

#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkdynamic/TextReading.h"
#include "zo/kel/NumericCast.h"

UnicodeGuts::operator bool() const { return internal::TextTruth(text_.c_str()); }
UnicodeGuts::operator double() const { return internal::TextNumber(text_.c_str()); }

std::int32_t UnicodeGuts::Compare(const IVarDataGuts* other) const {
    return text_.compare(static_cast<const UnicodeGuts*>(other)->text_);
}

IVarDataGuts* NewUnicodeGuts(const wchar_t* text) { return NewUnicodeGutsLen(text, text ? std::wcslen(text) : 0); }

IVarDataGuts* NewUnicodeGutsLen(const wchar_t* text, std::size_t length) {
    if (!text) return new UnicodeGuts(L"", 0);
    return new UnicodeGuts(text, zo::kel::NumericCast<unsigned int>(length));
}
