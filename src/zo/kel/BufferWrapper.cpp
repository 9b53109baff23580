#include "zo/kel/BufferWrapper.h"

#include <algorithm>
#include <cstring>

#include "zo/kel/AutoBuffer.h"
#include "zo/kel/ByteForm.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/StringBase.h"

namespace zo::kel {

BufferWrapper::BufferWrapper(const unsigned char* first, const unsigned char* last)
    : data_(first), length_(NumericCast<unsigned int>(last - first)) {}

BufferWrapper::BufferWrapper(const AutoBuffer& buffer) : data_(buffer.Data()), length_(buffer.Len()) {}

BufferWrapper::BufferWrapper(const NarrowString& text) noexcept
    : data_(reinterpret_cast<const unsigned char*>(text.c_str())), length_(text.length()) {}

unsigned int BufferWrapper::serializationSize() const noexcept { return byteform::SaturatedFormSize(length_); }

void BufferWrapper::serialize(unsigned char*& cursor, const unsigned char* limit) const {
    if (byteform::Room(cursor, limit) < byteform::kCountSize + std::size_t{length_}) byteform::ThrowBufferOverflow();
    byteform::StoreCount(cursor, length_);
    if (length_ != 0) std::memcpy(cursor + byteform::kCountSize, data_, length_);
    cursor += byteform::kCountSize + length_;
}

void BufferWrapper::deserialize(const unsigned char*& cursor, const unsigned char* limit) {
    const std::size_t room = byteform::Room(cursor, limit);
    if (room < byteform::kCountSize) ZO_THROW(exception::DeserializationError);
    const unsigned int length = byteform::LoadCount(cursor);
    if (room - byteform::kCountSize < length) ZO_THROW(exception::DeserializationError);
    data_ = cursor + byteform::kCountSize;
    length_ = length;
    cursor += byteform::kCountSize + length;
}

int CompareBuffers(const BufferWrapper& a, const BufferWrapper& b) noexcept {
    const unsigned int common = std::min(a.Len(), b.Len());
    if (common != 0) {
        if (const int order = std::memcmp(a.Data(), b.Data(), common); order != 0) return order < 0 ? -1 : 1;
    }
    if (a.Len() == b.Len()) return 0;
    return a.Len() < b.Len() ? -1 : 1;
}

}  // namespace zo::kel
