// The exported factories of payload objects. Each returns a new object
// holding one reference that belongs to the caller.
#pragma once

#include <cstddef>

#include "qkdynam_platform.h"
#include "tavlo/qkstatic/VarDataGuts.h"

QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewRawGuts(const unsigned char* data, unsigned int size);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewCellGuts(unsigned short row, unsigned short column, const VarData* value);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewVectorGuts();
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewVarDataDictionary();
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewAnsiGuts(const char* text);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewAnsiGutsLen(const char* text, std::size_t length);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewUnicodeGuts(const wchar_t* text);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewUnicodeGutsLen(const wchar_t* text, std::size_t length);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewVarDataSSTimeValue(const tSSTimeValue* value);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewVarDataGXVariant(const unsigned short* typeDescriptor, unsigned int typeCount,
                                                               const unsigned char* data, unsigned int dataLength);
// Reads the body of a GXVariant record; the cursor moves past it only on
// success. DeserializationError on short or inconsistent bytes.
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* DeserializeVarDataGXVariant(const unsigned char*& cursor,
                                                                       const unsigned char* end);

// FlexData payloads: a copy of a value; the FlexData a VarData converts to
// (conversion errors pass on); the packet read at the cursor, which moves
// past it (DeserializationError and SyntaxError pass on).
namespace zo::kel {
class FlexData;
}  // namespace zo::kel
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewVarDataFlexData(const zo::kel::FlexData& value);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* NewVarDataFlexDataFromVarData(const VarData& value);
QKDYNAM_EXTERN_C QKDYNAM_API IVarDataGuts* DeserializeVarDataFlexData(const unsigned char*& cursor,
                                                                     const unsigned char* end);
