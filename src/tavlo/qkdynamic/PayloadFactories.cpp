#include "tavlo/qkdynamic/PayloadFactories.h"

#include <cstring>
#include <cwchar>
#include <utility>

#include "tavlo/qkdynamic/AnsiGuts.h"
#include "tavlo/qkdynamic/CellGuts.h"
#include "tavlo/qkdynamic/RawGuts.h"
#include "tavlo/qkdynamic/UnicodeGuts.h"
#include "tavlo/qkdynamic/VarDataDictionary.h"
#include "tavlo/qkdynamic/VarDataGXVariant.h"
#include "tavlo/qkdynamic/VarDataFlexData.h"
#include "tavlo/qkdynamic/VarDataSSTimeValue.h"
#include "tavlo/qkdynamic/VectorGuts.h"
#include "zo/kel/NumericCast.h"

IVarDataGuts* NewAnsiGuts(const char* text) { return NewAnsiGutsLen(text, text ? std::strlen(text) : 0); }

IVarDataGuts* NewAnsiGutsLen(const char* text, std::size_t length) {
    if (!text) return new AnsiGuts("", 0);
    return new AnsiGuts(text, zo::kel::NumericCast<unsigned int>(length));
}

IVarDataGuts* NewUnicodeGuts(const wchar_t* text) { return NewUnicodeGutsLen(text, text ? std::wcslen(text) : 0); }

IVarDataGuts* NewUnicodeGutsLen(const wchar_t* text, std::size_t length) {
    if (!text) return new UnicodeGuts(L"", 0);
    return new UnicodeGuts(text, zo::kel::NumericCast<unsigned int>(length));
}

IVarDataGuts* NewRawGuts(const unsigned char* data, unsigned int size) { return new RawGuts(data, size); }

IVarDataGuts* NewCellGuts(unsigned short row, unsigned short column, const VarData* value) {
    return new CellGuts(row, column, *value);
}

IVarDataGuts* NewVectorGuts() { return new VectorGuts(); }

IVarDataGuts* NewVarDataDictionary() { return new VarDataDictionary(); }

IVarDataGuts* NewVarDataSSTimeValue(const tSSTimeValue* value) { return new VarDataSSTimeValue(*value); }

IVarDataGuts* NewVarDataGXVariant(const unsigned short* typeDescriptor, unsigned int typeCount,
                                  const unsigned char* data, unsigned int dataLength) {
    return new VarDataGXVariant(typeDescriptor, typeCount, data, dataLength);
}

IVarDataGuts* DeserializeVarDataGXVariant(const unsigned char*& cursor, const unsigned char* end) {
    return VarDataGXVariant::Deserialize(cursor, end).release();
}

IVarDataGuts* NewVarDataFlexData(const zo::kel::FlexData& value) { return new VarDataFlexData(value); }

IVarDataGuts* NewVarDataFlexDataFromVarData(const VarData& value) {
    return new VarDataFlexData(internal::FlexDataFromVarData(value));
}

// The packet is read before the object exists, so a failure leaves nothing behind.
IVarDataGuts* DeserializeVarDataFlexData(const unsigned char*& cursor, const unsigned char* end) {
    zo::kel::FlexData value;
    value.deserialize(cursor, end);
    return new VarDataFlexData(std::move(value));
}
