// The dictionary side of VarData and its key-order iterator. Every member
// throws TypeErrorException unless the tag is exactly Dictionary.
#include "tavlo/qkstatic/vardata.h"

#include <utility>

IVarDataDictionary* VarData::dictionaryOrThrow() const {
    if (type_ != vardata_type::Word(VarDataType::Dictionary) || !holdsGuts()) throw TypeErrorException();
    return getIDict();
}

void VarData::setValue(const VarData& key, const VarData& value) {
    dictionaryOrThrow();
    unshare();
    getIDict()->setValue(key, value);
}

VarData& VarData::operator[](const VarData& key) {
    dictionaryOrThrow();
    unshare();
    return getIDict()->getValueReference(key);
}

const VarData& VarData::operator[](const VarData& key) const { return getValue(key); }

const VarData& VarData::getValue(const VarData& key) const { return dictionaryOrThrow()->getValue(key); }

void VarData::erase(const VarData& key) {
    dictionaryOrThrow();
    unshare();
    getIDict()->erase(key);
}

void VarData::eraseWithoutCopyOnWrite(const VarData& key) { dictionaryOrThrow()->erase(key); }

bool VarData::hasKey(const VarData& key) const { return dictionaryOrThrow()->hasKey(key); }

VarData::const_iterator VarData::find(const VarData& key) const {
    return const_iterator(dictionaryOrThrow()->find(*this, key));
}

VarData::const_iterator VarData::begin() const { return const_iterator(dictionaryOrThrow()->begin(*this)); }

VarData::const_iterator VarData::end() const { return const_iterator(dictionaryOrThrow()->end(*this)); }

// --- const_iterator ------------------------------------------------------------------

VarData::const_iterator::const_iterator(const const_iterator& other)
    : position_(other.position_ ? other.position_->copy() : nullptr) {}

VarData::const_iterator::const_iterator(const_iterator&& other) noexcept
    : position_(std::exchange(other.position_, nullptr)) {}

VarData::const_iterator& VarData::const_iterator::operator=(const const_iterator& other) {
    if (this != &other) *this = const_iterator(other);
    return *this;
}

VarData::const_iterator& VarData::const_iterator::operator=(const_iterator&& other) noexcept {
    std::swap(position_, other.position_);
    return *this;
}

VarData::const_iterator::~const_iterator() {
    if (position_) position_->Release();
}

VarData::const_iterator& VarData::const_iterator::operator++() {
    position_->increment();
    return *this;
}

VarData::const_iterator VarData::const_iterator::operator++(int) {
    const_iterator before(*this);
    position_->increment();
    return before;
}

VarData::const_iterator& VarData::const_iterator::operator--() {
    position_->decrement();
    return *this;
}

VarData::const_iterator VarData::const_iterator::operator--(int) {
    const_iterator before(*this);
    position_->decrement();
    return before;
}

bool VarData::const_iterator::operator==(const const_iterator& other) const {
    if (!position_ || !other.position_) return position_ == other.position_;
    return position_->compare(other.position_);
}
