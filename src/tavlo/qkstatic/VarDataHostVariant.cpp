// The host-variant members of VarData: building a GXVariant and reading its
// payload (VarDataNativeType.cpp turns it into the value it describes).
#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/NumericCast.h"

using vardata_type::Word;

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
