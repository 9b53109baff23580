// AutoBuffer: a growable byte buffer whose copies share one storage block
// (AutoBufferGuts, atomic reference count) until one of them is written.
// Copying, reading and destroying buffers that share storage is thread-safe;
// one AutoBuffer object must not be mutated from two threads at once.
// Lengths are 32-bit: sums that would not fit throw OutOfRange.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "qkdynam_platform.h"
#include "zo/kel/BufferWrapper.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/osdep/AtomicInt.h"

namespace zo::kel {
namespace internal {

// Copies 1 to 16 bytes with at most two overlapping loads and stores of one
// width, inline: the byte forms append mostly fields of that size, and a
// library memcpy call costs more than the copy.
inline void CopySmall(unsigned char* to, const unsigned char* from, unsigned int n) noexcept {
    const auto copyPair = [&]<typename Word>(Word) {
        Word head, tail;
        std::memcpy(&head, from, sizeof(Word));
        std::memcpy(&tail, from + n - sizeof(Word), sizeof(Word));
        std::memcpy(to, &head, sizeof(Word));
        std::memcpy(to + n - sizeof(Word), &tail, sizeof(Word));
    };
    if (n >= 8) {
        copyPair(std::uint64_t{});
    } else if (n >= 4) {
        copyPair(std::uint32_t{});
    } else {
        const unsigned char first = from[0], middle = from[n / 2], last = from[n - 1];
        to[0] = first;
        to[n / 2] = middle;
        to[n - 1] = last;
    }
}

}  // namespace internal

// The shared storage. `capacity` is what the block really holds, so the
// block of an unshared copy is as large as the capacity it records.
struct QKDYNAM_API AutoBufferGuts {
    osdep::AtomicInt refCount{1};
    unsigned char* data = nullptr;
    unsigned int capacity = 0;
    unsigned char* dataEnd = nullptr;

    std::size_t length() const noexcept { return static_cast<std::size_t>(dataEnd - data); }
    std::size_t room() const noexcept { return capacity - length(); }

    // Makes room for `extra` more bytes, growing to L + max(L / 10, 128)
    // for a new length L (the bonus is dropped when it would overflow).
    void resizeIfNeeded(unsigned int extra);
    // Makes the block hold `end` bytes by the same growth rule.
    void growToHold(unsigned int end);
    // Reallocates to exactly n bytes when the capacity is smaller.
    void Reserve(unsigned int n);
};

class QKDYNAM_API AutoBuffer {
public:
    // Construction. Copies share the storage in O(1).
    AutoBuffer() noexcept = default;
    // Empty, with a block of exactly `capacity` bytes.
    explicit AutoBuffer(unsigned int capacity);
    AutoBuffer(const unsigned char* bytes, unsigned int n);
    explicit AutoBuffer(const BufferWrapper& bytes);
    AutoBuffer(const AutoBuffer& other) noexcept;
    AutoBuffer(AutoBuffer&& other) noexcept : guts_(std::exchange(other.guts_, nullptr)) {}
    AutoBuffer& operator=(const AutoBuffer& other) noexcept;
    AutoBuffer& operator=(AutoBuffer&& other) noexcept;
    AutoBuffer& operator=(const BufferWrapper& bytes);
    ~AutoBuffer() {
        if (guts_) release();
    }
    void swap(AutoBuffer& other) noexcept { std::swap(guts_, other.guts_); }

    // Reading. Data() is null for a buffer that owns nothing.
    const unsigned char* Data() const noexcept { return guts_ ? guts_->data : nullptr; }
    unsigned int Len() const { return guts_ ? NumericCast<unsigned int>(guts_->length()) : 0; }
    unsigned int MemUsage() const noexcept { return guts_ ? guts_->capacity : 0; }
    // How many holders share the storage (0 for a buffer that owns nothing).
    int ShareCount() const noexcept { return guts_ ? guts_->refCount.value() : 0; }

    // Writing. Each first makes the storage private to this buffer; a failed
    // write (std::bad_alloc, OutOfRange) leaves the bytes as they were.
    void Append(const void* bytes, unsigned int n) {
        if (n == 0) return;
        if (AutoBufferGuts* guts = guts_; guts && n <= guts->room() && guts->refCount == 1) {
            if (n <= 16) {
                internal::CopySmall(guts->dataEnd, static_cast<const unsigned char*>(bytes), n);
            } else {
                std::memcpy(guts->dataEnd, bytes, n);
            }
            guts->dataEnd += n;
            return;
        }
        appendSlow(bytes, n);
    }
    // Appends the n bytes last first: the byte-swapping primitive of the
    // big-endian forms.
    void appendReverseByteOrder(const void* bytes, unsigned int n);
    // The bytes, writable in place (null for a buffer that owns nothing):
    // how a byte form is written into room made by Skip.
    unsigned char* WritableData() { return guts_ ? unshared().data : nullptr; }
    // Writes n bytes at `offset` without moving the end: bytes past the end
    // belong to the contents only once Skip moves the end over them.
    void Modify(unsigned int offset, const void* bytes, unsigned int n);
    // Moves the end back by n; the caller guarantees n <= Len().
    void UnAppend(unsigned int n);
    // Moves the end forward by n over room reserved exactly, unwritten, for
    // a later Modify.
    void Skip(unsigned int n);
    // Makes the block hold at least n bytes (exactly n when it must grow).
    void Reserve(unsigned int n);
    // Length 0: an unshared buffer keeps its block, a shared one lets go.
    void Erase() noexcept;
    void Free() noexcept;

    friend bool operator==(const AutoBuffer& a, const AutoBuffer& b) noexcept {
        return CompareBuffers(view(a), view(b)) == 0;
    }
    friend bool operator<(const AutoBuffer& a, const AutoBuffer& b) noexcept {
        return CompareBuffers(view(a), view(b)) < 0;
    }

    // Linear byte form: u32 length, then the bytes. serialize throws
    // BufferOverflow when the form does not fit before `limit`; deserialize
    // throws DeserializationError on short input and then leaves the buffer
    // unchanged. Both advance the cursor only on success.
    unsigned int serializationSize() const noexcept;
    void serialize(unsigned char*& cursor, const unsigned char* limit) const;
    void deserialize(const unsigned char*& cursor, const unsigned char* limit);

    // The same form in the ring [ringStart, ringEnd), where a cursor that
    // reaches ringEnd continues at ringStart. The cursor must lie in the ring.
    // Writers throw BufferOverflow when the record is larger than the ring;
    // readers throw DeserializationError (the buffer is then unchanged).
    static void circularIncrement(unsigned char*& cursor, unsigned char* ringStart, unsigned char* ringEnd) noexcept {
        if (++cursor == ringEnd) cursor = ringStart;
    }
    static void circularIncrement(const unsigned char*& cursor, const unsigned char* ringStart,
                                  const unsigned char* ringEnd) noexcept {
        if (++cursor == ringEnd) cursor = ringStart;
    }
    void circularSerializeLength(unsigned char*& cursor, unsigned char* ringStart, unsigned char* ringEnd) const;
    void circularSerialize(unsigned char*& cursor, unsigned char* ringStart, unsigned char* ringEnd) const;
    // The byte count of the record at `cursor`, read without moving it.
    static unsigned int GetCircularDeserializationSize(const unsigned char* cursor, const unsigned char* ringStart,
                                                       const unsigned char* ringEnd);
    void circularDeserialize(const unsigned char*& cursor, const unsigned char* ringStart,
                             const unsigned char* ringEnd);

private:
    static BufferWrapper view(const AutoBuffer& buffer) noexcept {
        return buffer.guts_ ? BufferWrapper(buffer.guts_->data, static_cast<unsigned int>(buffer.guts_->length()))
                            : BufferWrapper();
    }
    void release() noexcept;
    // Fresh guts for a buffer that owns nothing, a private copy for a shared one.
    AutoBufferGuts& unshared();
    void appendSlow(const void* bytes, unsigned int n);
    // Replaces the contents with the bytes of `first` followed by `second`.
    void assign(BufferWrapper first, BufferWrapper second);

    AutoBufferGuts* guts_ = nullptr;
};

}  // namespace zo::kel
