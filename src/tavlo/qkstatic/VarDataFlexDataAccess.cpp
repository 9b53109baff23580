// The VarData members that hold, read and deserialize a FlexData payload.
#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/FlexData.h"

using vardata_type::Word;

VarData::VarData(const zo::kel::FlexData& value)
    : type_(Word(VarDataType::FlexDataTag)), payload_(reinterpret_cast<std::uint64_t>(NewVarDataFlexData(value))) {}

const zo::kel::FlexData& VarData::getFlexData() const {
    if (tag() != VarDataType::FlexDataTag) throw TypeErrorException();
    // A null payload stands for an empty value, as it does for texts.
    static const zo::kel::FlexData empty;
    return holdsGuts() ? getIFlexData()->get() : empty;
}

void VarData::deserializeFlexData(const unsigned char*& cursor, const unsigned char* end) {
    const unsigned char* position = cursor;
    IVarDataGuts* read = DeserializeVarDataFlexData(position, end);
    adoptGuts(Word(VarDataType::FlexDataTag), read);
    cursor = position;
}
