#include "tavlo/qkdynamic/VarDataGXVariant.h"

#include <algorithm>

#include "zo/kel/ByteForm.h"

namespace {

template <class T>
zo::kel::Vector<T> CopyOf(const T* items, unsigned int count) {
    zo::kel::Vector<T> copy(count);
    if (count) std::copy_n(items, count, copy.data());
    return copy;
}

// Only "smaller" is told apart: every other difference is 1, so the result
// is not antisymmetric. Kept: callers written against it expect exactly this.
template <class T>
std::int32_t SmallerOrOther(const zo::kel::Vector<T>& mine, const zo::kel::Vector<T>& theirs) {
    if (std::ranges::lexicographical_compare(mine, theirs)) return -1;
    return mine == theirs ? 0 : 1;
}

}  // namespace

VarDataGXVariant::VarDataGXVariant(const unsigned short* typeDescriptor, unsigned int typeCount,
                                   const unsigned char* data, unsigned int dataLength)
    : typeDescriptor_(CopyOf(typeDescriptor, typeCount)), data_(CopyOf(data, dataLength)) {}

internal::PayloadRef<IVarDataGXVariant> VarDataGXVariant::Deserialize(const unsigned char*& cursor,
                                                                      const unsigned char* end) {
    auto read = internal::PayloadRef<IVarDataGXVariant>::Adopt(new VarDataGXVariant());
    auto* object = static_cast<VarDataGXVariant*>(read.get());
    const unsigned char* local = cursor;
    object->typeDescriptor_.deserialize(local, end);
    object->data_.deserialize(local, end);
    cursor = local;
    return read;
}

std::int32_t VarDataGXVariant::Compare(const IVarDataGuts* other) const {
    if (other == this) return 0;
    const auto* theirs = static_cast<const VarDataGXVariant*>(static_cast<const IVarDataGXVariant*>(other));
    if (const std::int32_t order = SmallerOrOther(typeDescriptor_, theirs->typeDescriptor_); order != 0) return order;
    return SmallerOrOther(data_, theirs->data_);
}

void VarDataGXVariant::get(const unsigned short*& typeDescriptor, unsigned int& typeCount,
                           const unsigned char*& data, unsigned int& dataLength) const {
    typeDescriptor = typeDescriptor_.data();
    typeCount = typeDescriptor_.size();
    data = data_.data();
    dataLength = data_.size();
}

unsigned int VarDataGXVariant::serializationSize() const {
    const unsigned int descriptor = typeDescriptor_.serializationSize();
    const unsigned int data = data_.serializationSize();
    return descriptor > 0xFFFFFFFFu - data ? 0xFFFFFFFFu : descriptor + data;
}

void VarDataGXVariant::serialize(unsigned char*& cursor, const unsigned char* end) const {
    // Through the table, as a derived payload's size would be asked.
    const IVarDataGXVariant& self = *this;
    if (zo::kel::byteform::Room(cursor, end) < self.serializationSize()) zo::kel::byteform::ThrowBufferOverflow();
    typeDescriptor_.serialize(cursor, end);
    data_.serialize(cursor, end);
}
