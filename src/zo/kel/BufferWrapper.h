// BufferWrapper: a non-owning view of bytes (pointer and 32-bit length) and
// CompareBuffers, the byte order of buffers. A wrapper never frees anything:
// the viewed bytes must outlive it. Its deserialize points it into the input.
#pragma once

#include "qkdynam_platform.h"
#include "zo/kel/Exception.h"

namespace zo::kel {

class AutoBuffer;
template <typename Char, typename OtherChar, typename WideChar>
class StringBase;

class QKDYNAM_API BufferWrapper {
public:
    // The smallest byte form: the count alone.
    static constexpr unsigned int kMinimumSerializationSize = 4;

    constexpr BufferWrapper() noexcept = default;
    constexpr BufferWrapper(const unsigned char* data, unsigned int length) noexcept : data_(data), length_(length) {}
    // The range [first, last); throws OutOfRange when it is longer than 32 bits.
    BufferWrapper(const unsigned char* first, const unsigned char* last);
    BufferWrapper(const AutoBuffer& buffer);
    // The characters of a narrow string, without its terminator.
    BufferWrapper(const StringBase<char, wchar_t, wchar_t>& text) noexcept;

    const unsigned char* Data() const noexcept { return data_; }
    unsigned int Len() const noexcept { return length_; }

    // Byte form: u32 length, then the bytes. serialize throws BufferOverflow
    // when the form does not fit before `limit`; deserialize throws
    // DeserializationError on short input and then leaves the wrapper as it
    // was. Both advance the cursor past the form only on success.
    unsigned int serializationSize() const noexcept;
    void serialize(unsigned char*& cursor, const unsigned char* limit) const;
    void deserialize(const unsigned char*& cursor, const unsigned char* limit);

private:
    const unsigned char* data_ = nullptr;
    unsigned int length_ = 0;
};

// -1, 0 or +1: memcmp order over the common length, then the shorter first.
QKDYNAM_API int CompareBuffers(const BufferWrapper& a, const BufferWrapper& b) noexcept;

inline bool operator==(const BufferWrapper& a, const BufferWrapper& b) noexcept { return CompareBuffers(a, b) == 0; }
inline bool operator<(const BufferWrapper& a, const BufferWrapper& b) noexcept { return CompareBuffers(a, b) < 0; }

}  // namespace zo::kel
