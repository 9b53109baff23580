// The ring (circular) byte form of AutoBuffer: the linear form written into
// or read from [ringStart, ringEnd), continuing at ringStart past the end.
#include <algorithm>
#include <cstdint>
#include <functional>

#include "zo/kel/AutoBuffer.h"
#include "zo/kel/ByteForm.h"

namespace zo::kel {
namespace {

template <typename Byte>
bool IsCursorInRing(const Byte* cursor, const Byte* ringStart, const Byte* ringEnd) {
    const std::less<const Byte*> before;
    return !before(cursor, ringStart) && before(cursor, ringEnd);
}

// Moves the cursor n bytes on (n <= ring size), landing on ringStart rather than ringEnd.
template <typename Byte>
void Advance(Byte*& cursor, Byte* ringStart, Byte* ringEnd, std::size_t n) {
    const auto tail = static_cast<std::size_t>(ringEnd - cursor);
    cursor = n < tail ? cursor + n : ringStart + (n - tail);
}

void WriteWrapped(unsigned char*& cursor, unsigned char* ringStart, unsigned char* ringEnd, const unsigned char* bytes,
                  std::size_t n) {
    const std::size_t first = std::min(n, static_cast<std::size_t>(ringEnd - cursor));
    std::copy_n(bytes, first, cursor);
    std::copy_n(bytes + first, n - first, ringStart);
    Advance(cursor, ringStart, ringEnd, n);
}

// Checks the ring and the cursor, then the room for a record of `payload`
// bytes after its count.
void CheckRingForWriting(const unsigned char* cursor, const unsigned char* ringStart, const unsigned char* ringEnd,
                         std::size_t payload) {
    if (!IsCursorInRing(cursor, ringStart, ringEnd) ||
        static_cast<std::size_t>(ringEnd - ringStart) < byteform::kCountSize + payload) {
        byteform::ThrowBufferOverflow();
    }
}

std::uint32_t ReadCountWrapped(const unsigned char*& cursor, const unsigned char* ringStart,
                               const unsigned char* ringEnd) {
    if (!IsCursorInRing(cursor, ringStart, ringEnd) ||
        static_cast<std::size_t>(ringEnd - ringStart) < byteform::kCountSize) {
        ZO_THROW(exception::DeserializationError);
    }
    unsigned char count[byteform::kCountSize];
    for (unsigned char& byte : count) {
        byte = *cursor;
        AutoBuffer::circularIncrement(cursor, ringStart, ringEnd);
    }
    return byteform::LoadCount(count);
}

}  // namespace

void AutoBuffer::circularSerializeLength(unsigned char*& cursor, unsigned char* ringStart,
                                         unsigned char* ringEnd) const {
    CheckRingForWriting(cursor, ringStart, ringEnd, 0);
    unsigned char count[byteform::kCountSize];
    byteform::StoreCount(count, Len());
    WriteWrapped(cursor, ringStart, ringEnd, count, sizeof count);
}

void AutoBuffer::circularSerialize(unsigned char*& cursor, unsigned char* ringStart, unsigned char* ringEnd) const {
    CheckRingForWriting(cursor, ringStart, ringEnd, Len());
    circularSerializeLength(cursor, ringStart, ringEnd);
    if (Len() != 0) WriteWrapped(cursor, ringStart, ringEnd, Data(), Len());
}

unsigned int AutoBuffer::GetCircularDeserializationSize(const unsigned char* cursor, const unsigned char* ringStart,
                                                        const unsigned char* ringEnd) {
    return ReadCountWrapped(cursor, ringStart, ringEnd);
}

void AutoBuffer::circularDeserialize(const unsigned char*& cursor, const unsigned char* ringStart,
                                     const unsigned char* ringEnd) {
    const unsigned char* read = cursor;
    const std::uint32_t length = ReadCountWrapped(read, ringStart, ringEnd);
    if (static_cast<std::size_t>(ringEnd - ringStart) < byteform::kCountSize + std::size_t{length}) {
        ZO_THROW(exception::DeserializationError);
    }
    const auto first = static_cast<unsigned int>(std::min<std::size_t>(length, ringEnd - read));
    assign(BufferWrapper(read, first), BufferWrapper(ringStart, length - first));
    Advance(read, ringStart, ringEnd, length);
    cursor = read;
}

}  // namespace zo::kel
