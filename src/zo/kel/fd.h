// Walkers of FlexData packets (namespace zo::kel::fd). A packet is a u32 size
// (counting itself), the metadata (prefix elements, then one type element)
// and the data the type element lays out, every field in host order at any
// offset. Every function takes the end of the readable bytes and never reads
// or writes past it: a malformed or short packet raises SyntaxError (source
// "zo/kel/fd", text "SyntaxError: ..."), a short output BufferOverflow,
// overflowing 32-bit arithmetic OutOfRange. Nothing is written before a
// failure. Fields are read and written with memcpy only.
//
// Metadata grammar (GetMDEltSize), by the element's type word:
//   flags 0x4000   u32 length L at offset 2 counting itself and the body; the
//                  element is L + 2 bytes (L below 4 or from 0xFFFFFFFE: malformed)
//   flags 0x8000   the type word alone, 2 bytes
//   other flags    0 bytes (reported; walking by it is malformed)
//   0x0802         10 bytes; 0x0803: 10 bytes and three range records
//   0x0801         u16 count at 2, then count element descriptors
//   0x0800         u16 dimensions at 2, then one element descriptor
//   other codes    2 bytes
// An element descriptor is packet-shaped: a u32 length counting itself, then
// the element's complete metadata.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "qkdynam_platform.h"
#include "zo/kel/AbsTime.h"
#include "zo/kel/FlexType.h"
#include "zo/kel/StringBase.h"
#include "zo/kel/Vector.h"

namespace zo::kel {
class FlexData;
}

namespace zo::kel::fd {

namespace internal {
// The cold ends of GetVal and SetVal, out of line so their sites are this unit's.
[[noreturn]] QKDYNAM_API void ThrowShortPacket();
[[noreturn]] QKDYNAM_API void ThrowShortOutput();
}  // namespace internal

// The scalars a packet holds: 8- to 64-bit integers, float and double.
template <typename T>
concept PacketScalar = (std::integral<T> && !std::same_as<T, bool> && sizeof(T) <= 8) || std::same_as<T, float> ||
                       std::same_as<T, double>;

constexpr bool HasRoom(const unsigned char* p, const unsigned char* end, std::size_t bytes) noexcept {
    return p && end && p <= end && static_cast<std::size_t>(end - p) >= bytes;
}

// One value in host order at p; SyntaxError when it runs past end.
template <PacketScalar T>
inline void GetVal(T& value, const unsigned char* p, const unsigned char* end) {
    if (!HasRoom(p, end, sizeof(T))) internal::ThrowShortPacket();
    std::memcpy(&value, p, sizeof(T));
}

template <PacketScalar T>
inline T GetVal(const unsigned char* p, const unsigned char* end) {
    T value;
    GetVal(value, p, end);
    return value;
}

// Writes one value in host order at p and returns its size; BufferOverflow
// when it does not fit before end.
template <PacketScalar T>
inline unsigned int SetVal(unsigned char* p, T value, const unsigned char* end) {
    if (!HasRoom(p, end, sizeof(T))) internal::ThrowShortOutput();
    std::memcpy(p, &value, sizeof(T));
    return sizeof(T);
}

// ---- Metadata

QKDYNAM_API unsigned int GetMDEltSize(const unsigned char* md, const unsigned char* end);
// The element after md; the second form also reads the type word there.
QKDYNAM_API const unsigned char* GetNextElt(const unsigned char* md, const unsigned char* end);
QKDYNAM_API const unsigned char* GetNextElt(const unsigned char* md, const unsigned char* end, std::uint16_t& word);
// The type element: prefix elements skipped, from metadata or from a packet's size word.
QKDYNAM_API const unsigned char* GetTypeFromMD(const unsigned char* md, const unsigned char* end);
QKDYNAM_API const unsigned char* GetTypeFromPacket(const unsigned char* packet, const unsigned char* end);
// The type element of metadata that must end exactly at mdEnd (a cluster
// element's descriptor body, the metadata of a packet being assembled).
QKDYNAM_API const unsigned char* GetTypeEndingAt(const unsigned char* md, const unsigned char* mdEnd);
// From start to the end of the element at md (the metadata size when start
// is packet offset 4 and md the type element).
QKDYNAM_API unsigned int GetMDSize(const unsigned char* start, const unsigned char* md, const unsigned char* end);
QKDYNAM_API const unsigned char* GetDataFromType(const unsigned char* packet, const unsigned char* type,
                                                 const unsigned char* end);
// p plus the u32 length at p (below 4 is malformed): skips one element
// descriptor or one nested packet.
QKDYNAM_API const unsigned char* GetNextFD(const unsigned char* p, const unsigned char* end);

// ---- Arrays and clusters

QKDYNAM_API unsigned int GetNumClustElts(const unsigned char* md, const unsigned char* end);
QKDYNAM_API unsigned int GetArrayDims(const unsigned char* md, const unsigned char* end);
// The descriptor (u32 length first) of the element with the zero-based index.
QKDYNAM_API const unsigned char* GetClustElt(const unsigned char* md, unsigned int index, const unsigned char* end);
// The type element inside an array's element descriptor.
QKDYNAM_API const unsigned char* GetArrayElementType(const unsigned char* md, const unsigned char* end);

// Data size of the type element at md laid out at data. With data null: the
// least size the type can have (an array's dimension words, 4 for a string,
// 8 or 6 for a nested packet). Arrays and clusters nest at most
// kMaxNestingDepth deep.
QKDYNAM_API unsigned int GetDataSize(const unsigned char* md, const unsigned char* data, const unsigned char* end);

// Checks that every element descriptor nested in the array or cluster type
// element at md lies within the descriptor around it, and all within mdEnd,
// at most kMaxNestingDepth deep: a part cut out of the packet then reads the
// same as in place. Other types pass; a violation is SyntaxError.
QKDYNAM_API void CheckNestedDescriptors(const unsigned char* md, const unsigned char* mdEnd);

// Copies one cluster element out into `out` (its descriptor's metadata and
// its data) and moves descriptor and data to the next element.
QKDYNAM_API void CopyAndAdvanceClusterElement(const unsigned char*& descriptor, const unsigned char*& data,
                                              const unsigned char* end, FlexData& out);

// ---- Time and strings

// The 16 bytes of a time: its four 32-bit words from least to most
// significant, each in host order. GetTime ignores the byte order it is given.
QKDYNAM_API unsigned int SetTime(unsigned char* p, const AbsTime& time, const unsigned char* end);
QKDYNAM_API AbsTime GetTime(const unsigned char* p, const unsigned char* end, TAEndian endian = kHostEndian);

// Narrow: u32 count n, the bytes, a zero pad byte when n is odd; returns
// 4 + n rounded up to even. A length from 0xFFFFFFFC raises OutOfRange.
// Wide: u32 count of UTF-16 units, then UTF-16; returns 4 + its byte size.
QKDYNAM_API unsigned int CopyStringToPacket(unsigned char* p, const unsigned char* end, const char* text,
                                            unsigned int length);
QKDYNAM_API unsigned int CopyStringToPacket(unsigned char* p, const unsigned char* end, const NarrowString& text);
QKDYNAM_API unsigned int CopyStringToPacket(unsigned char* p, const unsigned char* end, const WideString& text);
QKDYNAM_API unsigned int StringSerializationSize(unsigned int length);
QKDYNAM_API unsigned int StringSerializationSize(const NarrowString& text);
QKDYNAM_API unsigned int StringSerializationSize(const WideString& text);

// ---- Array dimensions

// The u16 dimension count, the bytes of the dimension words and the element
// count (the checked product; 1 for no dimensions). 65,536 dimensions or
// more, or a product past 32 bits, raise OutOfRange.
QKDYNAM_API void ProcessArrayDimsVector(const Vector<unsigned int>& dims, std::uint16_t& dimCount,
                                        unsigned int& dimBytes, unsigned int& eltCount);
// One u32 per dimension (one u32 zero for an empty list); returns the bytes written.
QKDYNAM_API unsigned int WriteArrayDimsVector(const Vector<unsigned int>& dims, unsigned char* p,
                                              const unsigned char* end);

// ---- Moving and copying

// p moved by delta, which must land in [start, end]; size moved by delta,
// which must stay in 0..0xFFFFFFFF. Otherwise OutOfRange.
QKDYNAM_API unsigned char* AdjustPointer(unsigned char* p, const unsigned char* start, const unsigned char* end,
                                         std::ptrdiff_t delta);
QKDYNAM_API unsigned int AdjustSize(unsigned int size, std::int64_t delta);
// count bytes from [source, sourceEnd) to [destination, destinationEnd): a
// short source is SyntaxError, a short destination BufferOverflow.
QKDYNAM_API void MemCpy(unsigned char* destination, const unsigned char* destinationEnd, const unsigned char* source,
                        const unsigned char* sourceEnd, unsigned int count);

}  // namespace zo::kel::fd
