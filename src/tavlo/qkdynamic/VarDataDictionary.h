// The payload of a Dictionary: an ordered map from values to values, keyed
// by VarData::Compare (tag first, then value; values that compare equal are
// one key). Mutated only by a VarData that owns it alone (or knowingly not:
// eraseWithoutCopyOnWrite).
#pragma once

#include <map>

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/SmallBlockCache.h"

class VarDataDictionary final
    : public internal::PayloadObject<IVarDataDictionary, IID_IUnknown, IID_IVarDataGuts, IID_IVarDataDictionary> {
public:
    using Map = std::map<VarData, VarData, std::less<VarData>,
                         zo::kel::internal::SmallBlockAllocator<std::pair<const VarData, VarData>>>;

    VarDataDictionary() = default;
    explicit VarDataDictionary(const Map& entries) : entries_(entries) {}
    explicit VarDataDictionary(Map&& entries) noexcept : entries_(std::move(entries)) {}

    explicit operator bool() const override { return !entries_.empty(); }
    explicit operator double() const override { return static_cast<double>(entries_.size()); }
    // -1 when this one's entries are lexicographically less; any other
    // difference gives 1 (deliberately not symmetric).
    std::int32_t Compare(const IVarDataGuts* other) const override;

    void setValue(const VarData& key, const VarData& value) override;
    const VarData& getValue(const VarData& key) const override;
    VarData& getValueReference(const VarData& key) override;
    IVarDataIterator* begin(const VarData& owner) const override;
    IVarDataIterator* end(const VarData& owner) const override;
    IVarDataIterator* find(const VarData& owner, const VarData& key) const override;
    void erase(const VarData& key) override;
    bool hasKey(const VarData& key) const override { return entries_.contains(key); }
    IVarDataDictionary* copy() const override { return new VarDataDictionary(entries_); }
    wchar_t* getString() const override;
    unsigned int size() const override { return static_cast<unsigned int>(entries_.size()); }

    const Map& entries() const noexcept { return entries_; }

private:
    void checkRoomForOneMore(unsigned int line) const;

    // Iterators write through getValueReference, so they hold mutable positions.
    mutable Map entries_;
};
