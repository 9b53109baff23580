// A VarData whose payload wraps a value of another system, as the plain
// VarData that value stands for. Each such payload tag has its own case.
#include "tavlo/qkstatic/PayloadRef.h"
#include "tavlo/qkstatic/vardata.h"

using internal::PayloadRef;

bool VarData::convertSelfToNativeType() {
    switch (tag()) {
        case VarDataType::FlexDataTag: {
            const PayloadRef<IVarDataFlexData2> flex(guts());
            if (!flex) return false;
            bool ok = false;
            VarData native = flex->convertToNativeTypeNoThrow(ok);
            if (ok) swap(native);
            return ok;
        }
        default: return false;
    }
}

VarData VarData::convertToNativeType() const {
    switch (tag()) {
        case VarDataType::FlexDataTag: {
            const PayloadRef<IVarDataFlexData2> flex(guts());
            return flex ? flex->convertToNativeType() : VarData();
        }
        default: return *this;
    }
}

VarData VarData::convertToNativeTypeOrDictionary(bool wideKeys) const {
    switch (tag()) {
        case VarDataType::FlexDataTag: {
            const PayloadRef<IVarDataFlexData2> flex(guts());
            return flex ? flex->convertToNativeTypeOrDictionary(wideKeys) : VarData();
        }
        default: return *this;
    }
}
