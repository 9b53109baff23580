// In-place conversion of a VarData to another tag, and the text of any value.
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <memory>
#include <variant>

#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/NumberToText.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/Exception.h"
#include "zo/kel/osdep/AbsTimeToString.h"
#include "zo/kel/osdep/IntegerToString.h"

using vardata_type::Word;
using zo::kel::NarrowString;
using zo::kel::WideString;

namespace {

// Days since 1899-12-30 to 1904-01-01, the epoch of absolute time.
constexpr double kDaysTo1904 = 1462.0;
constexpr double kSecondsPerDay = 86400.0;
constexpr int kNumberTextSize = 32;

// The text of a value is made narrow or wide, whichever its source is; the
// requested tag then decides the width.
using ValueText = std::variant<NarrowString, WideString>;

NarrowString Narrowed(NarrowString&& text) { return std::move(text); }
NarrowString Narrowed(WideString&& text) { return NarrowString(text); }
WideString Widened(NarrowString&& text) { return WideString(text); }
WideString Widened(WideString&& text) { return std::move(text); }

// "0x" and the digits, zero-padded to `digits`.
NarrowString Hexadecimal(std::uint64_t value, unsigned int digits) {
    const WideString hex = zo::kel::osdep::UInt64ToString(value, 16);
    NarrowString text("0x");
    if (hex.length() < digits) text.append(digits - hex.length(), '0');
    text.append(hex);
    return text;
}

NarrowString NumberText(double number) {
    char buffer[kNumberTextSize];
    const int length = NumberToText0(0, buffer, sizeof buffer, number);
    return NarrowString(buffer, static_cast<unsigned int>(std::clamp<int>(length, 0, kNumberTextSize - 1)));
}

WideString AbsoluteTimeText(const zo::kel::AbsTime& time) {
    try {
        // The system's date and time, local, whole seconds: what an operator expects to read.
        return zo::kel::osdep::AbsTimeToString(time, nullptr, nullptr, 0, zo::kel::osdep::LocalTime, true, nullptr,
                                               zo::kel::osdep::LocaleDecimalSeparator);
    } catch (const zo::kel::exception::Exception&) {
        return WideString(L"Unable to display time value");
    }
}

WideString DictionaryString(const VarData& value) {
    std::unique_ptr<wchar_t, decltype(&std::free)> text(value.getIDict()->getString(), &std::free);
    if (!text) throw std::bad_alloc();
    return WideString(text.get());
}

// The text form of `value` as the conversion to Ansi or Unicode writes it.
ValueText TextOf(const VarData& value) {
    switch (static_cast<VarDataType>(vardata_type::TagOf(value.GetType()))) {
        case VarDataType::Logical: return NarrowString(static_cast<bool>(value) ? "on" : "off");
        case VarDataType::ID64: {
            unsigned long id = 0;
            value.getID64(id);
            return Hexadecimal(id, 16);
        }
        case VarDataType::Numeric: {
            unsigned int bits = 0;
            if (value.getBitArray32(bits)) return Hexadecimal(bits, 8);
            return NumberText(static_cast<double>(value));
        }
        case VarDataType::Ansi: return value.getAnsiString();
        case VarDataType::Unicode: return value.getString();
        case VarDataType::Raw: {
            const unsigned char* data = nullptr;
            unsigned int length = 0;
            value.GetRaw(data, length);
            return NarrowString(reinterpret_cast<const char*>(data), length);
        }
        case VarDataType::Dictionary: return value.getIDict() ? DictionaryString(value) : WideString();
        case VarDataType::AbsTimeValue: {
            zo::kel::AbsTime time;
            return value.getAbsTime(time) ? AbsoluteTimeText(time) : WideString();
        }
        case VarDataType::RelTimeValue: return NumberText(static_cast<double>(value));
        default: return NarrowString();  // no text form of its own
    }
}

}  // namespace

void VarData::Convert_(unsigned short target) {
    const auto to = static_cast<VarDataType>(target);
    // Converting to its own tag keeps a value; only a number sheds its subtype.
    if (tag() == to && to != VarDataType::Numeric) return;
    // A payload that wraps another system's value first becomes its native value.
    if (convertSelfToNativeType() && tag() == to) return;
    switch (to) {
        case VarDataType::Numeric:
            setInline(Word(VarDataType::Numeric), std::bit_cast<std::uint64_t>(static_cast<double>(*this)));
            return;
        case VarDataType::Logical: *this = static_cast<bool>(*this); return;
        case VarDataType::Raw: {
            if (tag() == VarDataType::Unicode) Convert_(VarDataType::Ansi);
            const NarrowString bytes = tag() == VarDataType::Ansi ? getAnsiString() : NarrowString();
            SetRaw(reinterpret_cast<const unsigned char*>(bytes.c_str()), bytes.length());
            return;
        }
        case VarDataType::Dictionary: *this = dict(); return;
        case VarDataType::AbsTimeValue:
            setAbsTime(zo::kel::AbsTime((static_cast<double>(*this) - kDaysTo1904) * kSecondsPerDay, 0.0));
            return;
        case VarDataType::RelTimeValue: setRelTime(zo::kel::RelTime(static_cast<double>(*this) * kSecondsPerDay)); return;
        case VarDataType::Ansi: {
            *this = VarData(std::visit([](auto&& text) { return Narrowed(std::move(text)); }, TextOf(*this)));
            return;
        }
        case VarDataType::Unicode: {
            *this = VarData(std::visit([](auto&& text) { return Widened(std::move(text)); }, TextOf(*this)));
            return;
        }
        case VarDataType::FlexDataTag:
            adoptGuts(Word(VarDataType::FlexDataTag), NewVarDataFlexDataFromVarData(*this));
            return;
        default: return;  // no conversion to this tag
    }
}

WideString VarData::coerceToString() const {
    VarData copy(*this);
    copy.Convert_(VarDataType::Unicode);
    if (copy.tag() != VarDataType::Unicode) throw TypeErrorException();
    return copy.getString();
}
