// A VarData written as a host-language value: a type descriptor of 16-bit
// words (host order) and flattened big-endian data, the inverse of
// GXVariantToVarData.h for every type that reads. Size both buffers with
// VarDataToGXVariantLength first. Failures throw from the zo::kel::exception
// family, sited at "tavlo/qkstatic/VarDataToGXVariant": BufferOverflow when
// a buffer is too short (nothing is written past its end), UnableToConvert
// for a value the host cannot hold (an empty sequence, elements of different
// host types, a tag without a host type, a name of 256 bytes or more),
// OutOfRange for more than 0xFFFF cluster elements or a record over 0xFFFF bytes.
#pragma once

#include "qkdynam_platform.h"
#include "tavlo/qkstatic/GXVariantToVarData.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/StringBase.h"

namespace vek {

// The descriptor words and data bytes VarDataToGXVariant writes for the same arguments.
QKDYNAM_API void VarDataToGXVariantLength(const VarData& value, const zo::kel::NarrowString& name,
                                          DictionaryConversion conversion, unsigned int& descriptorLength,
                                          unsigned int& dataLength);

// Writes `value`; a non-empty `name` becomes the top-level type's name.
QKDYNAM_API void VarDataToGXVariant(const VarData& value, const zo::kel::NarrowString& name,
                                    DictionaryConversion conversion, unsigned short* descriptorBegin,
                                    unsigned short* descriptorEnd, unsigned char* dataBegin, unsigned char* dataEnd);

}  // namespace vek
