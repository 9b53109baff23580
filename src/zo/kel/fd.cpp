#include "zo/kel/fd.h"

#include <string_view>

#include "zo/kel/ByteForm.h"
#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/osdep/SerializeUtf16.h"

namespace zo::kel::fd {

namespace {

using Size = SafeInteger<unsigned int>;

[[noreturn]] void Malformed(std::string_view text, unsigned int line) {
    exception::SyntaxError error(line, ZO_SOURCE_FILE);
    error.initialize(text);
    throw error;
}
#define FD_MALFORMED(text) Malformed(text, __LINE__)

// A field at p + offset, checked before the address is even formed.
template <PacketScalar T>
T FieldAt(const unsigned char* p, std::size_t offset, const unsigned char* end) {
    if (!HasRoom(p, end, offset) || !HasRoom(p + offset, end, sizeof(T))) internal::ThrowShortPacket();
    T value;
    std::memcpy(&value, p + offset, sizeof(T));
    return value;
}

Size RoundUpEven(Size size) { return size + (size.get() & 1u); }

std::uint16_t CodeOf(const unsigned char* md, const unsigned char* end) {
    return FieldAt<std::uint16_t>(md, 0, end) & kCodeMask;
}

// ---- Element sizes by the grammar

unsigned int LengthPrefixedSize(const unsigned char* md, const unsigned char* end) {
    const auto length = FieldAt<std::uint32_t>(md, 2, end);
    if (length < 4 || length >= 0xFFFFFFFEu) FD_MALFORMED("bad length of a length-prefixed element");
    return length + 2;
}

// The 10-byte head, then three range records: an 8-byte head whose u16 at 2
// is a word length, then that many value bytes padded to even.
unsigned int FixedPointWithRangeSize(const unsigned char* md, const unsigned char* end) {
    Size total = 10u;
    for (int record = 0; record < 3; ++record) {
        const auto wordLength = FieldAt<std::uint16_t>(md, total.get() + 2, end);
        total += 8u;
        total += RoundUpEven(FixedPointValueBytes(wordLength));
    }
    return total.get();
}

unsigned int ClusterMDSize(const unsigned char* md, const unsigned char* end) {
    const unsigned int count = GetNumClustElts(md, end);
    const unsigned char* descriptor = md + 4;
    for (unsigned int i = 0; i < count; ++i) descriptor = GetNextFD(descriptor, end);
    return static_cast<unsigned int>(descriptor - md);
}

unsigned int ArrayMDSize(const unsigned char* md, const unsigned char* end) {
    if (!HasRoom(md, end, 8)) FD_MALFORMED("array element without its descriptor");
    return static_cast<unsigned int>(GetNextFD(md + 4, end) - md);
}

// ---- Data sizes by the code

unsigned int DataSize(const unsigned char* md, const unsigned char* data, const unsigned char* end,
                      unsigned int depth);

unsigned int FixedPointDataSize(const unsigned char* md, const unsigned char* end) {
    const bool hasStatus = FieldAt<std::uint8_t>(md, 3, end) != 0;
    const auto wordLength = FieldAt<std::uint16_t>(md, 4, end);
    return RoundUpEven(Size(FixedPointValueBytes(wordLength)) + (hasStatus ? 1u : 0u)).get();
}

unsigned int CountedSize(const unsigned char* data, const unsigned char* end, unsigned int unit) {
    if (!data) return 4;
    return (Size(4u) + Size(FieldAt<std::uint32_t>(data, 0, end)) * unit).get();
}

unsigned int NestedPacketSize(std::uint16_t code, const unsigned char* data, const unsigned char* end) {
    if (!data) return code == kFlexData ? 8 : 6;
    const auto size = FieldAt<std::uint32_t>(data, 0, end);
    if (size < 4) FD_MALFORMED("nested packet shorter than its size word");
    return size;
}

// Two bytes, a u16 count, then count entries of a u8 length and its bytes.
unsigned int ShortStringListSize(const unsigned char* data, const unsigned char* end) {
    if (!data) return 4;
    const unsigned int count = FieldAt<std::uint16_t>(data, 2, end);
    Size total = 4u;
    for (unsigned int i = 0; i < count; ++i) total += 1u + FieldAt<std::uint8_t>(data, total.get(), end);
    return total.get();
}

unsigned int ClusterDataSize(const unsigned char* md, const unsigned char* data, const unsigned char* end,
                             unsigned int depth) {
    const unsigned int count = GetNumClustElts(md, end);
    const unsigned char* descriptor = md + 4;
    Size total = 0u;
    for (unsigned int i = 0; i < count; ++i) {
        const unsigned char* next = GetNextFD(descriptor, end);
        if (data && !HasRoom(data, end, total.get())) FD_MALFORMED("cluster data past the end of the packet");
        const unsigned char* type = GetTypeFromMD(descriptor + 4, next);
        total += RoundUpEven(DataSize(type, data ? data + total.get() : nullptr, end, depth - 1));
        descriptor = next;
    }
    return total.get();
}

// Fixed-size elements are packed; variable ones each padded to even. An
// element of size 0 is of a type whose every value is empty (strings,
// nested packets, fixed point and dimensioned arrays all take bytes), so the
// rest take none either: the walk stops rather than stand still.
unsigned int ArrayDataSize(const unsigned char* md, const unsigned char* data, const unsigned char* end,
                           unsigned int depth) {
    const unsigned int dims = GetArrayDims(md, end);
    const Size dimBytes = Size(dims) * 4u;
    if (!data) return dimBytes.get();
    const unsigned char* type = GetArrayElementType(md, end);
    if (!HasRoom(data, end, dimBytes.get())) FD_MALFORMED("array dimensions past the end of the packet");
    Size count = 1u;
    for (unsigned int i = 0; i < dims; ++i) count *= FieldAt<std::uint32_t>(data, 4 * std::size_t{i}, end);
    const std::uint16_t code = CodeOf(type, end);
    if (IsFixedSizeCode(code)) return (dimBytes + count * GetDataSize(FlexType(code))).get();
    const unsigned char* element = data + dimBytes.get();
    for (unsigned int i = 0; i < count.get(); ++i) {
        const Size size = RoundUpEven(DataSize(type, element, end, depth - 1));
        if (size.get() == 0) break;
        if (!HasRoom(element, end, size.get())) FD_MALFORMED("array element past the end of the packet");
        element += size.get();
    }
    return static_cast<unsigned int>(element - data);
}

unsigned int DataSizeByCode(const unsigned char* md, const unsigned char* data, const unsigned char* end,
                            unsigned int depth) {
    const std::uint16_t code = CodeOf(md, end);
    if (IsFixedSizeCode(code)) return GetDataSize(FlexType(code));
    if ((code == kArray || code == kCluster) && depth == 0) FD_MALFORMED("arrays and clusters nested too deep");
    switch (code >> 8) {
        case 0x08:
            if (code == kArray) return ArrayDataSize(md, data, end, depth);
            if (code == kCluster) return ClusterDataSize(md, data, end, depth);
            return IsFixedPointCode(code) ? FixedPointDataSize(md, end) : 0;
        case 0x09:
            if (code == kFlexData || code == kFlexData2) return NestedPacketSize(code, data, end);
            return code == kShortStringList ? ShortStringListSize(data, end) : CountedSize(data, end, 1);
        case 0x0A: return CountedSize(data, end, 2);
        case 0x0B: return CountedSize(data, end, 4);
        default: return 0;
    }
}

// No element may claim every byte a 32-bit size can count.
unsigned int DataSize(const unsigned char* md, const unsigned char* data, const unsigned char* end,
                      unsigned int depth) {
    const unsigned int size = DataSizeByCode(md, data, end, depth);
    if (size == 0xFFFFFFFFu) FD_MALFORMED("data size of 0xFFFFFFFF");
    return size;
}

// The walkers above bound metadata by the end of the packet; this bounds
// each nested descriptor by the one around it.
void CheckDescriptorsWithin(const unsigned char* md, const unsigned char* mdEnd, unsigned int depth) {
    const std::uint16_t code = CodeOf(md, mdEnd);
    if (code != kArray && code != kCluster) return;
    if (depth == 0) FD_MALFORMED("arrays and clusters nested too deep");
    const unsigned int count = code == kArray ? 1 : GetNumClustElts(md, mdEnd);
    const unsigned char* descriptor = md + 4;
    for (unsigned int i = 0; i < count; ++i) {
        const unsigned char* next = GetNextFD(descriptor, mdEnd);
        CheckDescriptorsWithin(GetTypeEndingAt(descriptor + 4, next), next, depth - 1);
        descriptor = next;
    }
}

}  // namespace

namespace internal {
void ThrowShortPacket() { FD_MALFORMED("field runs past the end of the packet"); }
void ThrowShortOutput() { byteform::ThrowBufferOverflow(); }
}  // namespace internal

// ---- Metadata

unsigned int GetMDEltSize(const unsigned char* md, const unsigned char* end) {
    const auto word = FieldAt<std::uint16_t>(md, 0, end);
    unsigned int size;
    switch (word & kFlagMask) {
        case kLengthPrefixedFlag: size = LengthPrefixedSize(md, end); break;
        case kMarkerFlag: size = 2; break;
        case 0:
            switch (word) {
                case kFixedPoint: size = 10; break;
                case kFixedPointWithRange: size = FixedPointWithRangeSize(md, end); break;
                case kCluster: size = ClusterMDSize(md, end); break;
                case kArray: size = ArrayMDSize(md, end); break;
                default: size = 2; break;
            }
            break;
        default: return 0;  // no writer makes these; walks refuse them
    }
    if (!HasRoom(md, end, size)) FD_MALFORMED("metadata element past the end of the packet");
    return size;
}

const unsigned char* GetNextElt(const unsigned char* md, const unsigned char* end) {
    const unsigned int size = GetMDEltSize(md, end);
    if (size == 0) FD_MALFORMED("metadata element of no size");
    return md + size;
}

const unsigned char* GetNextElt(const unsigned char* md, const unsigned char* end, std::uint16_t& word) {
    const unsigned char* next = GetNextElt(md, end);
    word = FieldAt<std::uint16_t>(next, 0, end);
    return next;
}

const unsigned char* GetTypeFromMD(const unsigned char* md, const unsigned char* end) {
    while (IsPrefixWord(FieldAt<std::uint16_t>(md, 0, end))) md = GetNextElt(md, end);
    return md;
}

const unsigned char* GetTypeFromPacket(const unsigned char* packet, const unsigned char* end) {
    if (!HasRoom(packet, end, 4)) FD_MALFORMED("packet shorter than its size word");
    return GetTypeFromMD(packet + 4, end);
}

const unsigned char* GetTypeEndingAt(const unsigned char* md, const unsigned char* mdEnd) {
    const unsigned char* type = GetTypeFromMD(md, mdEnd);
    if (type + GetMDEltSize(type, mdEnd) != mdEnd) FD_MALFORMED("bytes after the type element");
    return type;
}

unsigned int GetMDSize(const unsigned char* start, const unsigned char* md, const unsigned char* end) {
    if (!start || md < start) FD_MALFORMED("metadata element before its start");
    return (Size(static_cast<unsigned int>(md - start)) + GetMDEltSize(md, end)).get();
}

const unsigned char* GetDataFromType(const unsigned char* packet, const unsigned char* type,
                                     const unsigned char* end) {
    if (!HasRoom(packet, end, 4)) FD_MALFORMED("packet shorter than its size word");
    return packet + 4 + GetMDSize(packet + 4, type, end);
}

const unsigned char* GetNextFD(const unsigned char* p, const unsigned char* end) {
    const auto length = FieldAt<std::uint32_t>(p, 0, end);
    if (length < 4) FD_MALFORMED("descriptor shorter than its length word");
    if (!HasRoom(p, end, length)) FD_MALFORMED("descriptor past the end of the packet");
    return p + length;
}

// ---- Arrays and clusters

unsigned int GetNumClustElts(const unsigned char* md, const unsigned char* end) {
    return FieldAt<std::uint16_t>(md, 2, end);
}

unsigned int GetArrayDims(const unsigned char* md, const unsigned char* end) {
    return FieldAt<std::uint16_t>(md, 2, end);
}

const unsigned char* GetClustElt(const unsigned char* md, unsigned int index, const unsigned char* end) {
    if (!HasRoom(md, end, 8)) FD_MALFORMED("cluster element without descriptors");
    const unsigned char* descriptor = md + 4;
    for (unsigned int i = 0; i < index; ++i) descriptor = GetNextFD(descriptor, end);
    if (!HasRoom(descriptor, end, 4)) FD_MALFORMED("cluster descriptor past the end of the packet");
    return descriptor;
}

const unsigned char* GetArrayElementType(const unsigned char* md, const unsigned char* end) {
    if (!HasRoom(md, end, 8)) FD_MALFORMED("array element without its descriptor");
    return GetTypeFromMD(md + 8, GetNextFD(md + 4, end));
}

unsigned int GetDataSize(const unsigned char* md, const unsigned char* data, const unsigned char* end) {
    return DataSize(md, data, end, kMaxNestingDepth);
}

void CheckNestedDescriptors(const unsigned char* md, const unsigned char* mdEnd) {
    CheckDescriptorsWithin(md, mdEnd, kMaxNestingDepth);
}

void CopyAndAdvanceClusterElement(const unsigned char*& descriptor, const unsigned char*& data,
                                  const unsigned char* end, FlexData& out) {
    const unsigned char* next = GetNextFD(descriptor, end);
    const unsigned char* type = GetTypeEndingAt(descriptor + 4, next);
    const unsigned int size = GetDataSize(type, data, end);
    const unsigned int padded = RoundUpEven(size).get();
    if (!HasRoom(data, end, padded)) FD_MALFORMED("cluster element data past the end of the packet");
    out.copyFromParts(BufferWrapper(descriptor + 4, next), BufferWrapper(data, size));
    descriptor = next;
    data += padded;
}

// ---- Time and strings

unsigned int SetTime(unsigned char* p, const AbsTime& time, const unsigned char* end) {
    if (!HasRoom(p, end, 16)) internal::ThrowShortOutput();
    const std::uint64_t fraction = time.fractionWord();
    const std::int64_t seconds = time.secondsWord();
    std::memcpy(p, &fraction, 8);
    std::memcpy(p + 8, &seconds, 8);
    return 16;
}

AbsTime GetTime(const unsigned char* p, const unsigned char* end, TAEndian) {
    if (!HasRoom(p, end, 16)) internal::ThrowShortPacket();
    return AbsTime::fromWords(FieldAt<std::int64_t>(p, 8, end), FieldAt<std::uint64_t>(p, 0, end));
}

unsigned int StringSerializationSize(unsigned int length) {
    if (length >= 0xFFFFFFFCu) ZO_THROW(exception::OutOfRange);
    return 4 + length + (length & 1u);
}

unsigned int StringSerializationSize(const NarrowString& text) { return StringSerializationSize(text.length()); }

unsigned int StringSerializationSize(const WideString& text) {
    return (Size(4u) + osdep::SerializeUtf16::GetUtf16SerializationSize(text)).get();
}

unsigned int CopyStringToPacket(unsigned char* p, const unsigned char* end, const char* text, unsigned int length) {
    const unsigned int total = StringSerializationSize(length);
    if (!HasRoom(p, end, total)) internal::ThrowShortOutput();
    std::memcpy(p, &length, 4);
    if (length != 0) std::memcpy(p + 4, text, length);
    if (length & 1u) p[4 + length] = 0;
    return total;
}

unsigned int CopyStringToPacket(unsigned char* p, const unsigned char* end, const NarrowString& text) {
    return CopyStringToPacket(p, end, text.c_str(), text.length());
}

unsigned int CopyStringToPacket(unsigned char* p, const unsigned char* end, const WideString& text) {
    const unsigned int total = StringSerializationSize(text);
    if (!HasRoom(p, end, total)) internal::ThrowShortOutput();
    const std::uint32_t units = (total - 4) / 2;
    std::memcpy(p, &units, 4);
    osdep::SerializeUtf16::SerializeAsUtf16(text, p + 4, p + total);
    return total;
}

// ---- Array dimensions

void ProcessArrayDimsVector(const Vector<unsigned int>& dims, std::uint16_t& dimCount, unsigned int& dimBytes,
                            unsigned int& eltCount) {
    if (dims.size() > 0xFFFFu) ZO_THROW(exception::OutOfRange);
    Size product = 1u;
    for (const unsigned int size : dims) product *= size;
    dimCount = static_cast<std::uint16_t>(dims.size());
    dimBytes = dims.size() * 4;
    eltCount = product.get();
}

unsigned int WriteArrayDimsVector(const Vector<unsigned int>& dims, unsigned char* p, const unsigned char* end) {
    const unsigned int bytes = (dims.empty() ? Size(4u) : Size(dims.size()) * 4u).get();
    if (!HasRoom(p, end, bytes)) internal::ThrowShortOutput();
    if (dims.empty()) {
        std::memset(p, 0, 4);
    } else {
        std::memcpy(p, dims.data(), bytes);
    }
    return bytes;
}

// ---- Moving and copying

unsigned char* AdjustPointer(unsigned char* p, const unsigned char* start, const unsigned char* end,
                             std::ptrdiff_t delta) {
    if (!p || p < start || p > end) ZO_THROW(exception::OutOfRange);
    const std::ptrdiff_t offset = p - start;
    if (delta < -offset || delta > end - p) ZO_THROW(exception::OutOfRange);
    return p + delta;
}

unsigned int AdjustSize(unsigned int size, std::int64_t delta) {
    const std::int64_t adjusted = static_cast<std::int64_t>(size) + delta;
    if (adjusted < 0 || adjusted > 0xFFFFFFFFll) ZO_THROW(exception::OutOfRange);
    return static_cast<unsigned int>(adjusted);
}

void MemCpy(unsigned char* destination, const unsigned char* destinationEnd, const unsigned char* source,
            const unsigned char* sourceEnd, unsigned int count) {
    if (count == 0) return;
    if (!HasRoom(source, sourceEnd, count)) internal::ThrowShortPacket();
    if (!HasRoom(destination, destinationEnd, count)) internal::ThrowShortOutput();
    std::memmove(destination, source, count);
}

}  // namespace zo::kel::fd
