// The host-variant members of VarData: building a GXVariant, reading its
// payload, and turning it into the ordinary value it describes.
#include <exception>

#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/GXVariantToVarData.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/NumericCast.h"

using vardata_type::Word;

namespace {

// The host value of `value` (a GXVariant) converted; throws what the conversion throws.
VarData NativeOf(const VarData& value, bool wideStrings) {
    const unsigned short* descriptor = nullptr;
    const unsigned char* data = nullptr;
    unsigned int words = 0, bytes = 0;
    value.getGXVariant(descriptor, words, data, bytes);
    zo::kel::NarrowString name;
    return vek::GXVariantToVarData(descriptor, descriptor + words, data, data + bytes, vek::ClustersToDictionaries,
                                   name, wideStrings);
}

}  // namespace

VarData VarData::gxvar(const unsigned short* typeDescriptor, unsigned int typeCount, const unsigned char* data,
                       unsigned int dataLength) {
    VarData value;
    value.adoptGuts(Word(VarDataType::GXVariant), NewVarDataGXVariant(typeDescriptor, typeCount, data, dataLength));
    return value;
}

VarData VarData::gxvar(const unsigned short* typeBegin, const unsigned short* typeEnd, const unsigned char* dataBegin,
                       const unsigned char* dataEnd) {
    return gxvar(typeBegin, zo::kel::NumericCast<unsigned int>(typeEnd - typeBegin), dataBegin,
                 zo::kel::NumericCast<unsigned int>(dataEnd - dataBegin));
}

void VarData::getGXVariant(const unsigned short*& typeDescriptor, unsigned int& typeCount, const unsigned char*& data,
                           unsigned int& dataLength) const {
    throwIfWrongType(Word(VarDataType::GXVariant));
    if (!holdsGuts()) {
        typeDescriptor = nullptr;
        data = nullptr;
        typeCount = dataLength = 0;
        return;
    }
    getIGXVariant()->get(typeDescriptor, typeCount, data, dataLength);
}

bool VarData::convertSelfToNativeType() {
    if (tag() != VarDataType::GXVariant) return false;
    try {
        *this = NativeOf(*this, false);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

VarData VarData::convertToNativeType() const {
    VarData copy(*this);
    copy.convertSelfToNativeType();
    return copy;
}

VarData VarData::convertToNativeTypeOrDictionary(bool wideStrings) const {
    if (tag() != VarDataType::GXVariant) return *this;
    try {
        return NativeOf(*this, wideStrings);
    } catch (const std::exception&) {
        return *this;
    }
}
