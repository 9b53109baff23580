// Text and time values of VarData: construction and typed access.
#include <cstring>
#include <cwchar>

#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/PayloadRef.h"
#include "tavlo/qkstatic/vardata.h"

using internal::PayloadRef;
using vardata_type::Word;
using zo::kel::NarrowString;
using zo::kel::WideString;

namespace {

IVarDataGuts* AnsiOrNull(const char* text, std::size_t length) {
    return (text && length) ? NewAnsiGutsLen(text, length) : nullptr;
}

IVarDataGuts* UnicodeOrNull(const wchar_t* text, std::size_t length) {
    return (text && length) ? NewUnicodeGutsLen(text, length) : nullptr;
}

std::size_t LengthOf(const char* text) { return text ? std::strlen(text) : 0; }
std::size_t LengthOf(const wchar_t* text) { return text ? std::wcslen(text) : 0; }

}  // namespace

VarData::VarData(const char* text) : type_(Word(VarDataType::Ansi)), payload_(0) {
    payload_ = reinterpret_cast<std::uint64_t>(AnsiOrNull(text, LengthOf(text)));
}

VarData::VarData(const NarrowString& text) : type_(Word(VarDataType::Ansi)), payload_(0) {
    payload_ = reinterpret_cast<std::uint64_t>(AnsiOrNull(text.c_str(), text.length()));
}

VarData::VarData(const wchar_t* text) : type_(Word(VarDataType::Unicode)), payload_(0) {
    payload_ = reinterpret_cast<std::uint64_t>(UnicodeOrNull(text, LengthOf(text)));
}

VarData::VarData(const WideString& text) : type_(Word(VarDataType::Unicode)), payload_(0) {
    payload_ = reinterpret_cast<std::uint64_t>(UnicodeOrNull(text.c_str(), text.length()));
}

VarData::VarData(const zo::kel::AbsTime& time) : VarData() { setAbsTime(time); }
VarData::VarData(const zo::kel::RelTime& time) : VarData() { setRelTime(time); }

VarData VarData::ansi(const char* text, unsigned int length) {
    VarData value;
    value.adoptGuts(Word(VarDataType::Ansi), AnsiOrNull(text, length));
    return value;
}

VarData VarData::unicode(const wchar_t* text, unsigned int length) {
    VarData value;
    value.adoptGuts(Word(VarDataType::Unicode), UnicodeOrNull(text, length));
    return value;
}

VarData& VarData::operator=(const char* text) {
    adoptGuts(Word(VarDataType::Ansi), AnsiOrNull(text, LengthOf(text)));
    return *this;
}

VarData& VarData::operator=(const wchar_t* text) {
    adoptGuts(Word(VarDataType::Unicode), UnicodeOrNull(text, LengthOf(text)));
    return *this;
}

bool VarData::GetAnsi(const char*& text) const {
    if (tag() != VarDataType::Ansi) return false;
    if (!holdsGuts()) {
        text = "";
        return true;
    }
    // The text lives as long as this value holds the object.
    const PayloadRef<IVarDataAnsi> ansi(guts());
    if (!ansi) return false;
    text = ansi->GetData();
    return true;
}

bool VarData::GetUni(const wchar_t*& text) const {
    if (tag() != VarDataType::Unicode) return false;
    if (!holdsGuts()) {
        text = L"";
        return true;
    }
    const PayloadRef<IVarDataUnicode> unicode(guts());
    if (!unicode) return false;
    text = unicode->GetData();
    return true;
}

NarrowString VarData::getAnsiString() const {
    throwIfWrongType(Word(VarDataType::Ansi));
    if (!holdsGuts()) return NarrowString();
    return NarrowString(getIAnsi()->GetData(), getIAnsi()->GetLength());
}

WideString VarData::getString() const {
    throwIfWrongType(Word(VarDataType::Unicode));
    if (!holdsGuts()) return WideString();
    return WideString(getIUnicode()->GetData(), getIUnicode()->GetLength());
}

// --- Times ------------------------------------------------------------------------

void VarData::setISSTimeValue(unsigned int typeWord, const tSSTimeValue& value) {
    adoptGuts(typeWord, NewVarDataSSTimeValue(&value));
}

void VarData::setAbsTime(const zo::kel::AbsTime& time) {
    setISSTimeValue(Word(VarDataType::AbsTimeValue), tSSTimeValue{time.fractionWord(), time.secondsWord()});
}

void VarData::setRelTime(const zo::kel::RelTime& time) {
    setISSTimeValue(Word(VarDataType::RelTimeValue), tSSTimeValue{time.fractionWord(), time.secondsWord()});
}

bool VarData::getAbsTime(zo::kel::AbsTime& time) const {
    if (tag() != VarDataType::AbsTimeValue || !holdsGuts()) return false;
    time = getISSTimeValue()->getAbsTime();
    return true;
}

bool VarData::getRelTime(zo::kel::RelTime& time) const {
    if (tag() != VarDataType::RelTimeValue || !holdsGuts()) return false;
    time = getISSTimeValue()->getRelTime();
    return true;
}
