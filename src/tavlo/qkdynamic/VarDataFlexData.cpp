// The FlexData payload and its conversions both ways. One table pairs the
// numeric FlexData kinds with the VarData numeric subtypes; it drives the
// conversion of a Numeric into a FlexData and of a FlexData number back.
#include "tavlo/qkdynamic/VarDataFlexData.h"

#include <algorithm>

#include "tavlo/qkstatic/VarDataCodec.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/Exception.h"
#include "zo/kel/TruncateToInt64.h"
#include "zo/kel/fd.h"

using vardata_type::Word;
using zo::kel::FlexData;
using zo::kel::internal::TruncateToInt64;
namespace fd = zo::kel::fd;

namespace {

// Where a value without a native form has always been reported.
constexpr unsigned int kUnableToConvertLine = 238;

// Attribute values nest inside one another; converting them to dictionaries
// recurses, so the depth is bounded like every walk of outside packets.
constexpr unsigned int kMaxAttributeDepth = fd::kMaxNestingDepth;

// Integers go through a 64-bit truncation and are then cut to their width.
template <typename T>
T Truncated(double value) {
    return static_cast<T>(TruncateToInt64(value));
}

struct NumericSubtype {
    std::uint16_t subtype;
    fd::FlexType type;
    void (*set)(FlexData& out, double value);
};

constexpr NumericSubtype kNumericSubtypes[] = {
    {0, fd::kFloat64, [](FlexData& out, double value) { out.setF64(value); }},
    {1, fd::kInt8, [](FlexData& out, double value) { out.setI8(Truncated<signed char>(value)); }},
    {2, fd::kInt16, [](FlexData& out, double value) { out.setI16(Truncated<short>(value)); }},
    {3, fd::kInt32, [](FlexData& out, double value) { out.setI32(Truncated<int>(value)); }},
    {4, fd::kUInt8, [](FlexData& out, double value) { out.setUI8(Truncated<unsigned char>(value)); }},
    {5, fd::kUInt16, [](FlexData& out, double value) { out.setUI16(Truncated<unsigned short>(value)); }},
    {6, fd::kUInt32, [](FlexData& out, double value) { out.setUI32(Truncated<unsigned int>(value)); }},
    {7, fd::kFloat32, [](FlexData& out, double value) { out.setF32(static_cast<float>(value)); }},
};

template <typename Match>
const NumericSubtype* FindSubtype(Match match) {
    const auto* row = std::find_if(std::begin(kNumericSubtypes), std::end(kNumericSubtypes), match);
    return row == std::end(kNumericSubtypes) ? nullptr : row;
}

// The native value of a FlexData without attributes; Empty and ok false for
// kinds that have none.
VarData NativeValue(const FlexData& value, bool& ok) {
    ok = true;
    const fd::FlexType type = value.getType();
    if (const NumericSubtype* row = FindSubtype([type](const NumericSubtype& r) { return r.type == type; })) {
        return VarData::num(value.getF64(), row->subtype);
    }
    switch (type) {
        case fd::kVoid: return VarData();
        case fd::kBoolean:
        case fd::kBoolean16: {
            VarData logical;
            logical = value.getBool();
            return logical;
        }
        case fd::kTime: return VarData(value.getTime());
        case fd::kAnsiString:
        case fd::kAnsiString2: return VarData(value.getAString());
        case fd::kUtf16String: return VarData(value.getUnicode());
        default: ok = false; return VarData();
    }
}

VarData NativeOrThrow(const FlexData& value) {
    bool ok = !value.hasAttributes();
    VarData native = ok ? NativeValue(value, ok) : VarData();
    if (!ok) throw zo::kel::exception::UnableToConvert(kUnableToConvertLine, ZO_SOURCE_FILE);
    return native;
}

VarData NativeOrDictionary(const FlexData& value, bool wideKeys, unsigned int depth) {
    if (!value.hasAttributes()) return NativeOrThrow(value);
    if (depth >= kMaxAttributeDepth) ZO_THROW(zo::kel::exception::UnableToConvert);
    VarData dictionary = VarData::dict();
    for (const zo::kel::NarrowString& name : value.getAttributeNames()) {
        VarData item = NativeOrDictionary(value.getAttribute(name), wideKeys, depth + 1);
        const VarData key = wideKeys ? VarData(zo::kel::WideString(name)) : VarData(name);
        dictionary[key] = std::move(item);
    }
    return dictionary;
}

// A dictionary becomes the I32 0 carrying one attribute per entry, in key order.
FlexData FlexDataFromDictionary(const VarData& dictionary) {
    FlexData result(0);
    for (auto entry = dictionary.begin(); entry != dictionary.end(); ++entry) {
        VarData key = entry.key();
        if (vardata_type::TagOf(key.GetType()) != Word(VarDataType::Ansi)) key.Convert_(VarDataType::Ansi);
        VarData item = entry.value();
        if (vardata_type::TagOf(item.GetType()) != Word(VarDataType::FlexDataTag)) item.Convert_(VarDataType::FlexDataTag);
        result.setAttribute(key.getAnsiString(), item.getFlexData());
    }
    return result;
}

}  // namespace

FlexData internal::FlexDataFromVarData(const VarData& value) {
    FlexData result;
    switch (static_cast<VarDataType>(vardata_type::TagOf(value.GetType()))) {
        case VarDataType::Logical: result.setBool((VarDataCodec::Payload(value) & 1u) != 0); break;
        case VarDataType::Numeric: {
            const auto subtype = static_cast<std::uint16_t>((value.GetType() >> 16) & 0xF);
            if (subtype == VarData::BitArraySubtype) {
                result.setUI32(value.getBitArray32Fast());
            } else if (const NumericSubtype* row =
                           FindSubtype([subtype](const NumericSubtype& r) { return r.subtype == subtype; })) {
                row->set(result, static_cast<double>(value));
            }
            break;  // subtypes 9 to 15 have no FlexData kind: the value stays empty
        }
        case VarDataType::Ansi: result.setAString(value.getAnsiString()); break;
        case VarDataType::Unicode: result.setUTF16(value.getString()); break;
        case VarDataType::AbsTimeValue: {
            zo::kel::AbsTime time;
            value.getAbsTime(time);
            result.setTime(time);
            break;
        }
        case VarDataType::FlexDataTag: result = value.getFlexData(); break;
        case VarDataType::Dictionary: result = FlexDataFromDictionary(value); break;
        default: result.setVoid(); break;
    }
    return result;
}

std::int32_t VarDataFlexData::QueryInterface(const _GUID& iid, void** object) {
    if (!object || *object) return kInvalidArgument;
    return PayloadObject::QueryInterface(iid, object);
}

VarDataFlexData::operator bool() const {
    try {
        return value_.getType() == fd::kBoolean && value_.getBool();
    } catch (const zo::kel::exception::Exception&) {
        return false;
    }
}

VarDataFlexData::operator double() const {
    const fd::FlexType type = value_.getType();
    if (!FindSubtype([type](const NumericSubtype& r) { return r.type == type; })) return 0.0;
    try {
        return value_.getF64();
    } catch (const zo::kel::exception::Exception&) {
        return 0.0;
    }
}

std::int32_t VarDataFlexData::Compare(const IVarDataGuts* other) const {
    return value_.compare(static_cast<const IVarDataFlexData*>(other)->get());
}

VarData VarDataFlexData::convertToNativeTypeNoThrow(bool& ok) const {
    if (value_.hasAttributes()) {
        ok = false;
        return VarData();
    }
    return NativeValue(value_, ok);
}

VarData VarDataFlexData::convertToNativeType() const { return NativeOrThrow(value_); }

VarData VarDataFlexData::convertToNativeTypeOrDictionary(bool wideKeys) const {
    return NativeOrDictionary(value_, wideKeys, 0);
}
