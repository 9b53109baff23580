// A VarData whose payload wraps another system's value (a host variant or a
// FlexData packet), turned into the ordinary value it stands for. Neither
// form throws for a value that has no native form: it stays as it is.
#include <exception>

#include "tavlo/qkstatic/GXVariantToVarData.h"
#include "tavlo/qkstatic/PayloadRef.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/Exception.h"

using internal::PayloadRef;

namespace {

// The host value of `value` (a GXVariant) converted; throws what the conversion throws.
VarData HostVariantNative(const VarData& value, bool wideStrings) {
    const unsigned short* descriptor = nullptr;
    const unsigned char* data = nullptr;
    unsigned int words = 0, bytes = 0;
    value.getGXVariant(descriptor, words, data, bytes);
    zo::kel::NarrowString name;
    return vek::GXVariantToVarData(descriptor, descriptor + words, data, data + bytes, vek::ClustersToDictionaries,
                                   name, wideStrings);
}

}  // namespace

bool VarData::convertSelfToNativeType() {
    switch (tag()) {
        case VarDataType::GXVariant:
            try {
                *this = HostVariantNative(*this, false);
                return true;
            } catch (const std::exception&) {
                return false;
            }
        case VarDataType::FlexDataTag: {
            const PayloadRef<IVarDataFlexData2> flex(guts());
            if (!flex) return false;
            try {
                bool ok = false;
                VarData native = flex->convertToNativeTypeNoThrow(ok);
                if (ok) swap(native);
                return ok;
            } catch (const zo::kel::exception::Exception&) {
                return false;  // an unreadable packet has no native form either
            }
        }
        default: return false;
    }
}

VarData VarData::convertToNativeType() const {
    VarData copy(*this);
    copy.convertSelfToNativeType();
    return copy;
}

VarData VarData::convertToNativeTypeOrDictionary(bool wideStrings) const {
    try {
        switch (tag()) {
            case VarDataType::GXVariant: return HostVariantNative(*this, wideStrings);
            case VarDataType::FlexDataTag: {
                const PayloadRef<IVarDataFlexData2> flex(guts());
                return flex ? flex->convertToNativeTypeOrDictionary(wideStrings) : *this;
            }
            default: return *this;
        }
    } catch (const std::exception&) {
        return *this;
    }
}
