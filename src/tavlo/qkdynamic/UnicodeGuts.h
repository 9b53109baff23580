// The payload of a Unicode value: immutable wide text; truth and number of
// the text read as a logical, numeric or time text.
#pragma once

#include <utility>

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/StringBase.h"

class UnicodeGuts final
    : public internal::PayloadObject<IVarDataUnicode, IID_IUnknown, IID_IVarDataGuts, IID_IVarDataUnicode> {
public:
    UnicodeGuts(const wchar_t* text, unsigned int length) : text_(text, length) {}
    explicit UnicodeGuts(zo::kel::WideString text) : text_(std::move(text)) {}

    explicit operator bool() const override;
    explicit operator double() const override;
    std::int32_t Compare(const IVarDataGuts* other) const override;
    const wchar_t* GetData() const override { return text_.c_str(); }
    unsigned int GetLength() const override { return text_.length(); }

private:
    zo::kel::WideString text_;
};
