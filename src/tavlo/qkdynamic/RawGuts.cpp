#include "tavlo/qkdynamic/RawGuts.h"

#include <algorithm>

#include "zo/kel/BufferWrapper.h"

RawGuts::RawGuts(const unsigned char* data, unsigned int size)
    : size_(size), bytes_(std::make_unique_for_overwrite<unsigned char[]>(size)) {
    if (size) std::copy_n(data, size, bytes_.get());
}

std::int32_t RawGuts::Compare(const IVarDataGuts* other) const {
    const auto* raw = static_cast<const RawGuts*>(other);
    return zo::kel::CompareBuffers(zo::kel::BufferWrapper(bytes_.get(), size_),
                                   zo::kel::BufferWrapper(raw->bytes_.get(), raw->size_));
}

bool RawGuts::GetData(const unsigned char*& data, unsigned int& length) const {
    data = bytes_.get();
    length = size_;
    return true;
}
