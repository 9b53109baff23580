// A VarData whose payload wraps another system's value (a FlexData packet),
// turned into the ordinary value it stands for.
#include "tavlo/qkstatic/PayloadRef.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/Exception.h"

using internal::PayloadRef;

bool VarData::convertSelfToNativeType() {
    if (tag() != VarDataType::FlexDataTag) return false;
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

VarData VarData::convertToNativeType() const {
    VarData copy(*this);
    copy.convertSelfToNativeType();
    return copy;
}

VarData VarData::convertToNativeTypeOrDictionary(bool wideStrings) const {
    if (tag() != VarDataType::FlexDataTag) return *this;
    const PayloadRef<IVarDataFlexData2> flex(guts());
    if (!flex) return *this;
    try {
        return flex->convertToNativeTypeOrDictionary(wideStrings);
    } catch (const zo::kel::exception::Exception&) {
        return *this;
    }
}
