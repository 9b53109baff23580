// The payload of tag FlexDataTag: one zo::kel::FlexData, owned alone and
// never changed after construction, so any number of threads may read it.
// Its QueryInterface first refuses (0x80070057) a null out pointer and one
// that is not null on entry. operator bool and operator double never throw.
// The conversions to a native VarData are tables in VarDataFlexData.cpp.
#pragma once

#include <utility>

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/VarDataGuts.h"
#include "zo/kel/FlexData.h"

class VarDataFlexData final : public internal::PayloadObject<IVarDataFlexData2, IID_IUnknown, IID_IVarDataGuts,
                                                             IID_IVarDataFlexData, IID_IVarDataFlexData2> {
public:
    explicit VarDataFlexData(zo::kel::FlexData value) noexcept : value_(std::move(value)) {}

    std::int32_t QueryInterface(const _GUID& iid, void** object) override;

    // True only for a one-byte Boolean that is true.
    explicit operator bool() const override;
    // The eight kinds up to 32 bits and the two floats; 0.0 for all others.
    explicit operator double() const override;
    // FlexData::compare of the two packets.
    std::int32_t Compare(const IVarDataGuts* other) const override;

    const zo::kel::FlexData& get() const override { return value_; }
    unsigned int serializationSize() const noexcept override { return value_.serializationSize(); }
    void serialize(unsigned char*& cursor, const unsigned char* end) const override { value_.serialize(cursor, end); }

    VarData convertToNativeType() const override;
    VarData convertToNativeTypeOrDictionary(bool wideKeys) const override;
    VarData convertToNativeTypeNoThrow(bool& ok) const override;

private:
    zo::kel::FlexData value_;
};

namespace internal {
// The FlexData that `value` converts to, by its tag (NewVarDataFlexDataFromVarData).
zo::kel::FlexData FlexDataFromVarData(const VarData& value);
}  // namespace internal
