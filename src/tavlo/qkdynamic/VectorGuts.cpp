#include "tavlo/qkdynamic/VectorGuts.h"

#include <algorithm>

#include "zo/kel/NumericCast.h"

namespace {

constexpr std::uint32_t kEmptyWord = vardata_type::Word(VarDataType::Empty);

bool AllEmpty(std::vector<VarData>::const_iterator first, std::vector<VarData>::const_iterator last) {
    return std::all_of(first, last, [](const VarData& element) { return element.GetType() == kEmptyWord; });
}

}  // namespace

VectorGuts::operator bool() const { return !elements_.empty() && static_cast<bool>(elements_.front()); }

VectorGuts::operator double() const { return elements_.empty() ? 0.0 : static_cast<double>(elements_.front()); }

std::int32_t VectorGuts::Compare(const IVarDataGuts* other) const {
    const auto& left = elements_;
    const auto& right = static_cast<const VectorGuts*>(other)->elements_;
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (const std::int32_t order = left[i].Compare(right[i]); order != 0) return order;
    }
    // Trailing Empty elements never make two vectors differ.
    if (left.size() > common) return AllEmpty(left.begin() + common, left.end()) ? 0 : 1;
    if (right.size() > common) return AllEmpty(right.begin() + common, right.end()) ? 0 : -1;
    return 0;
}

VarData VectorGuts::GetElement(unsigned long index) const {
    return index < elements_.size() ? elements_[index] : VarData();
}

void VectorGuts::SetElement(unsigned long index, VarData value) {
    if (index >= elements_.size()) {
        if (value.GetType() == kEmptyWord) return;
        // The length must stay countable in 32 bits.
        elements_.resize(zo::kel::NumericCast<unsigned int>(index + 1u));
    }
    elements_[index] = std::move(value);
}

unsigned int VectorGuts::GetLength() const { return zo::kel::NumericCast<unsigned int>(elements_.size()); }

IVarDataSequence* VectorGuts::Copy() const {
    GetLength();  // the same 32-bit limit applies to a copy
    return new VectorGuts(elements_);
}
