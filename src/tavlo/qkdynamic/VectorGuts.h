// The payload of a Sequence: a growable vector of values. Mutated only by a
// VarData that has just made itself its sole owner.
#pragma once

#include <vector>

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/vardata.h"

class VectorGuts final
    : public internal::PayloadObject<IVarDataSequence, IID_IUnknown, IID_IVarDataGuts, IID_IVarDataSequence> {
public:
    VectorGuts() = default;
    explicit VectorGuts(const std::vector<VarData>& elements) : elements_(elements) {}
    explicit VectorGuts(std::vector<VarData>&& elements) : elements_(std::move(elements)) {}

    explicit operator bool() const override;
    explicit operator double() const override;
    std::int32_t Compare(const IVarDataGuts* other) const override;

    VarData GetElement(unsigned long index) const override;
    // Writing Empty past the end stores nothing; anything else grows the vector.
    void SetElement(unsigned long index, VarData value) override;
    unsigned int GetLength() const override;
    IVarDataSequence* Copy() const override;

    // Read in place by writers that walk every element.
    const std::vector<VarData>& elements() const noexcept { return elements_; }

private:
    std::vector<VarData> elements_;
};
