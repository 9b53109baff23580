#include "tavlo/qkdynamic/UnicodeGuts.h"

#include "tavlo/qkdynamic/TextReading.h"

UnicodeGuts::operator bool() const { return internal::TextTruth(text_.c_str()); }
UnicodeGuts::operator double() const { return internal::TextNumber(text_.c_str()); }

std::int32_t UnicodeGuts::Compare(const IVarDataGuts* other) const {
    return text_.compare(static_cast<const UnicodeGuts*>(other)->text_);
}
