#include "zo/kel/AutoBuffer.h"

#include <algorithm>
#include <cstdint>
#include <functional>

#include "zo/kel/ByteForm.h"
#include "zo/kel/DLLMalloc.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/osdep/Assertion.h"

namespace zo::kel {
namespace {

constexpr unsigned int kMinimumGrowth = 128;

// Capacity for a block that must hold `end` bytes: 10 % more, at least 128.
unsigned int GrownCapacity(unsigned int end) noexcept {
    const unsigned int bonus = std::max(end / 10, kMinimumGrowth);
    unsigned int grown;
    return __builtin_add_overflow(end, bonus, &grown) ? end : grown;
}

bool Overlaps(BufferWrapper bytes, const unsigned char* blockStart, std::size_t blockSize) {
    const std::less<const unsigned char*> before;
    return bytes.Len() != 0 && blockStart && before(bytes.Data(), blockStart + blockSize) &&
           before(blockStart, bytes.Data() + bytes.Len());
}


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

void WriteCountWrapped(unsigned char*& cursor, unsigned char* ringStart, unsigned char* ringEnd, std::uint32_t n) {
    unsigned char count[byteform::kCountSize];
    byteform::StoreCount(count, n);
    WriteWrapped(cursor, ringStart, ringEnd, count, sizeof count);
}

}  // namespace

// ---- AutoBufferGuts

void AutoBufferGuts::growToHold(unsigned int end) {
    if (end > capacity) Reserve(GrownCapacity(end));
}

void AutoBufferGuts::resizeIfNeeded(unsigned int extra) {
    growToHold((SafeInteger<unsigned int>(NumericCast<unsigned int>(length())) + extra).get());
}

void AutoBufferGuts::Reserve(unsigned int n) {
    if (n <= capacity) return;
    const std::size_t kept = length();
    data = static_cast<unsigned char*>(DLLRealloc(data, n));
    dataEnd = data + kept;
    capacity = n;
}

// ---- Construction and sharing

AutoBuffer::AutoBuffer(unsigned int capacity) : guts_(new AutoBufferGuts) {
    if (capacity == 0) return;
    try {
        guts_->Reserve(capacity);
    } catch (...) {
        delete guts_;
        throw;
    }
}

AutoBuffer::AutoBuffer(const unsigned char* bytes, unsigned int n) { Append(bytes, n); }

AutoBuffer::AutoBuffer(const BufferWrapper& bytes) { Append(bytes.Data(), bytes.Len()); }

AutoBuffer::AutoBuffer(const AutoBuffer& other) noexcept : guts_(other.guts_) {
    if (guts_) guts_->refCount.increment();
}

AutoBuffer& AutoBuffer::operator=(const AutoBuffer& other) noexcept {
    AutoBuffer(other).swap(*this);
    return *this;
}

AutoBuffer& AutoBuffer::operator=(AutoBuffer&& other) noexcept {
    AutoBuffer(std::move(other)).swap(*this);
    return *this;
}

AutoBuffer& AutoBuffer::operator=(const BufferWrapper& bytes) {
    assign(bytes, BufferWrapper());
    return *this;
}

void AutoBuffer::release() noexcept {
    if (guts_->refCount.decrement() == 0) {
        DLLFree(guts_->data);
        delete guts_;
    }
    guts_ = nullptr;
}

AutoBufferGuts& AutoBuffer::unshared() {
    if (!guts_) {
        guts_ = new AutoBufferGuts;
    } else if (guts_->refCount != 1) {
        auto copy = new AutoBufferGuts;
        const std::size_t length = guts_->length();
        if (guts_->capacity != 0) {
            try {
                copy->data = static_cast<unsigned char*>(DLLMalloc(guts_->capacity));
            } catch (...) {
                delete copy;
                throw;
            }
            if (length != 0) std::memcpy(copy->data, guts_->data, length);
        }
        copy->capacity = guts_->capacity;
        copy->dataEnd = copy->data + length;
        release();
        guts_ = copy;
    }
    return *guts_;
}

// ---- Writing

void AutoBuffer::appendSlow(const void* bytes, unsigned int n) {
    AutoBufferGuts& guts = unshared();
    guts.resizeIfNeeded(n);
    std::memcpy(guts.dataEnd, bytes, n);
    guts.dataEnd += n;
}

void AutoBuffer::appendReverseByteOrder(const void* bytes, unsigned int n) {
    if (n == 0) return;
    AutoBufferGuts& guts = unshared();
    guts.resizeIfNeeded(n);
    std::reverse_copy(static_cast<const unsigned char*>(bytes), static_cast<const unsigned char*>(bytes) + n,
                      guts.dataEnd);
    guts.dataEnd += n;
}

void AutoBuffer::Modify(unsigned int offset, const void* bytes, unsigned int n) {
    const unsigned int end = (SafeInteger<unsigned int>(offset) + n).get();
    AutoBufferGuts& guts = unshared();
    guts.growToHold(end);
    if (n != 0) std::memcpy(guts.data + offset, bytes, n);
}

void AutoBuffer::UnAppend(unsigned int n) {
    AutoBufferGuts& guts = unshared();
    ZO_ASSERT(n <= guts.length());
    guts.dataEnd -= n;
}

void AutoBuffer::Skip(unsigned int n) {
    const unsigned int end = (SafeInteger<unsigned int>(Len()) + n).get();
    AutoBufferGuts& guts = unshared();
    guts.Reserve(end);
    guts.dataEnd += n;
}

void AutoBuffer::Reserve(unsigned int n) {
    if (MemUsage() >= n) return;
    unshared().Reserve(n);
}

void AutoBuffer::Erase() noexcept {
    if (!guts_) return;
    if (guts_->refCount == 1) {
        guts_->dataEnd = guts_->data;
    } else {
        release();
    }
}

void AutoBuffer::Free() noexcept {
    if (guts_) release();
}

void AutoBuffer::assign(BufferWrapper first, BufferWrapper second) {
    const unsigned int total = (SafeInteger<unsigned int>(first.Len()) + second.Len()).get();
    const bool sourceInOwnBlock = guts_ && (Overlaps(first, guts_->data, guts_->capacity) ||
                                            Overlaps(second, guts_->data, guts_->capacity));
    if (sourceInOwnBlock || ShareCount() > 1) {
        // Built aside, so a failure leaves this buffer, and the source, untouched.
        AutoBuffer fresh;
        fresh.Reserve(total);
        fresh.Append(first.Data(), first.Len());
        fresh.Append(second.Data(), second.Len());
        swap(fresh);
        return;
    }
    Reserve(total);
    Erase();
    Append(first.Data(), first.Len());
    Append(second.Data(), second.Len());
}

// ---- Linear byte form

unsigned int AutoBuffer::serializationSize() const noexcept { return view(*this).serializationSize(); }

void AutoBuffer::serialize(unsigned char*& cursor, const unsigned char* limit) const {
    view(*this).serialize(cursor, limit);
}

void AutoBuffer::deserialize(const unsigned char*& cursor, const unsigned char* limit) {
    const unsigned char* read = cursor;
    BufferWrapper bytes;
    bytes.deserialize(read, limit);
    assign(bytes, BufferWrapper());
    cursor = read;
}

// ---- Ring form: the linear form in [ringStart, ringEnd), continuing at
// ringStart past the end.

void AutoBuffer::circularSerializeLength(unsigned char*& cursor, unsigned char* ringStart,
                                         unsigned char* ringEnd) const {
    CheckRingForWriting(cursor, ringStart, ringEnd, 0);
    WriteCountWrapped(cursor, ringStart, ringEnd, Len());
}

void AutoBuffer::circularSerialize(unsigned char*& cursor, unsigned char* ringStart, unsigned char* ringEnd) const {
    CheckRingForWriting(cursor, ringStart, ringEnd, Len());
    WriteCountWrapped(cursor, ringStart, ringEnd, Len());
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
