#include "tavlo/qkdynamic/AnsiGuts.h"

#include <cctype>

#include "tavlo/qkdynamic/TextReading.h"
#include "zo/kel/osdep/CharacterAttributes.h"

using zo::kel::NarrowString;

namespace {

IAnsiGuts* NewText(NarrowString text) { return new AnsiGuts(std::move(text)); }

template <class ByteMap>
IAnsiGuts* Mapped(const NarrowString& text, ByteMap map) {
    NarrowString result(text);
    for (char& c : result) c = static_cast<char>(map(static_cast<unsigned char>(c)));
    return NewText(std::move(result));
}

}  // namespace

std::int32_t AnsiGuts::QueryInterface(const _GUID& iid, void** object) {
    if (iid == IID_IUnknown || iid == IID_IVarDataGuts || iid == IID_IVarDataAnsi) {
        *object = static_cast<IVarDataAnsi*>(this);
    } else if (iid == IID_IAnsiGuts) {
        *object = static_cast<IAnsiGuts*>(this);
    } else {
        *object = nullptr;
        return kNoInterface;
    }
    AddRef();
    return kStatusOk;
}

std::int32_t AnsiGuts::Release() {
    const std::int32_t count = referenceCount_.decrement();
    if (count == 0) delete this;
    return count;
}

AnsiGuts::operator bool() const { return internal::TextTruth(text_.c_str()); }
AnsiGuts::operator double() const { return internal::TextNumber(text_.c_str()); }

const NarrowString& AnsiGuts::TextOf(const IAnsiGuts* other) { return static_cast<const AnsiGuts*>(other)->text_; }

std::int32_t AnsiGuts::Compare(const IVarDataGuts* other) const { return text_.compare(TextOf(other)); }

std::int32_t AnsiGuts::Compare(const IAnsiGuts* other) const { return text_.compare(TextOf(other)); }
std::int32_t AnsiGuts::ExactCompare(const IAnsiGuts* other) const { return text_.exactCompare(TextOf(other)); }
std::int32_t AnsiGuts::Compare(const char* other) const { return text_.compare(other); }
std::int32_t AnsiGuts::ExactCompare(const char* other) const { return text_.exactCompare(other); }

IAnsiGuts* AnsiGuts::ToLower() const { return Mapped(text_, [](unsigned char c) { return std::tolower(c); }); }
IAnsiGuts* AnsiGuts::ToUpper() const { return Mapped(text_, [](unsigned char c) { return std::toupper(c); }); }

IAnsiGuts* AnsiGuts::Concat(const IAnsiGuts* other) const {
    return NewText(NarrowString(text_).append(other->GetData(), other->GetLength()));
}

IAnsiGuts* AnsiGuts::Concat(const char* other) const { return NewText(text_ + other); }

IAnsiGuts* AnsiGuts::Left(unsigned int count) const { return NewText(text_.substr(0, count)); }

IAnsiGuts* AnsiGuts::Right(unsigned int count) const {
    const unsigned int length = text_.length();
    return NewText(text_.substr(count > length ? 0 : length - count));
}

IAnsiGuts* AnsiGuts::Mid(unsigned int start, unsigned int count) const {
    return NewText(text_.substr(std::min(start, text_.length()), count));
}

IAnsiGuts* AnsiGuts::Proper() const {
    const zo::kel::osdep::CharacterAttributes<char> attributes;
    NarrowString result(text_);
    bool wordStart = true;
    for (unsigned int i = 0; i < result.length(); ++i) {
        const auto c = static_cast<unsigned char>(result[i]);
        if (i == 0) {
            result[i] = static_cast<char>(std::toupper(c));
            wordStart = false;
        } else if (attributes.isAlpha(static_cast<char>(c))) {
            result[i] = static_cast<char>(wordStart ? std::toupper(c) : std::tolower(c));
            wordStart = false;
        } else {
            wordStart = true;
        }
    }
    return NewText(std::move(result));
}
