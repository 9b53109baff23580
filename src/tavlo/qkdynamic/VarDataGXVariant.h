// The payload of a GXVariant value: a host-language type descriptor (16-bit
// words) and flattened data (bytes), both copied in and held exactly as
// received; reading them is the host-variant conversions' business. Immutable
// once made, so it is shared freely between values and threads.
#pragma once

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/PayloadRef.h"
#include "tavlo/qkstatic/VarDataGuts.h"
#include "zo/kel/Vector.h"

class VarDataGXVariant final
    : public internal::PayloadObject<IVarDataGXVariant, IID_IUnknown, IID_IVarDataGuts, IID_IVarDataGXVariant> {
public:
    VarDataGXVariant(const unsigned short* typeDescriptor, unsigned int typeCount, const unsigned char* data,
                     unsigned int dataLength);

    // The byte-form body: the descriptor vector, then the data vector. The
    // caller's cursor moves only once both are read; DeserializationError otherwise.
    static internal::PayloadRef<IVarDataGXVariant> Deserialize(const unsigned char*& cursor, const unsigned char* end);

    // A host value never reads as true or as a number, whatever it holds.
    explicit operator bool() const override { return false; }
    explicit operator double() const override { return 0.0; }
    // Descriptors first, then data, as unsigned sequences: -1 when this one is
    // smaller or a proper prefix, 0 when equal, 1 for any other difference.
    std::int32_t Compare(const IVarDataGuts* other) const override;

    void get(const unsigned short*& typeDescriptor, unsigned int& typeCount, const unsigned char*& data,
             unsigned int& dataLength) const override;
    unsigned int serializationSize() const override;
    void serialize(unsigned char*& cursor, const unsigned char* end) const override;

private:
    VarDataGXVariant() = default;

    zo::kel::Vector<unsigned short> typeDescriptor_;
    zo::kel::Vector<unsigned char> data_;
};
