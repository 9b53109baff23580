// Values and byte forms that the value-layer tests build again and again.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

#include "tavlo/qkstatic/vardata.h"

namespace vardata_test {

using Bytes = std::vector<unsigned char>;

inline VarData Num(double value) { return VarData::num(value); }

template <class T>
VarData Assigned(T value) {
    VarData result;
    result = value;
    return result;
}
inline VarData Logical(bool value) { return Assigned(value); }

// A Sequence of `elements`, in order.
inline VarData Sequence(std::initializer_list<VarData> elements) {
    VarData list = VarData::sequence();
    unsigned int i = 0;
    for (const VarData& element : elements) list.SetElement(i++, element);
    return list;
}

// The reference count of a dictionary payload, read without changing it.
inline std::int32_t Count(const VarData& dictionary) {
    IVarDataDictionary* object = dictionary.getIDict();
    object->AddRef();
    return object->Release();
}

// What a reporting reader gives: the value, or nothing when it says false.
inline std::optional<unsigned int> Bits(const VarData& value) {
    unsigned int bits = 0;
    return value.getBitArray32(bits) ? std::optional(bits) : std::nullopt;
}

inline Bytes Serialized(const VarData& value, bool compact) {
    zo::kel::AutoBuffer buffer;
    value.SerializeWithoutSize(buffer, compact);
    return Bytes(buffer.Data(), buffer.Data() + buffer.Len());
}

inline Bytes WithSize(const VarData& value) {
    zo::kel::AutoBuffer buffer;
    value.SerializeWithSize(buffer);
    return Bytes(buffer.Data(), buffer.Data() + buffer.Len());
}

}  // namespace vardata_test
