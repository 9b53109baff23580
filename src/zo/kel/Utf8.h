// UTF-8 codec between bytes and 32-bit wide characters (code values, no
// surrogate pairs). Decoding accepts the classic forms up to six bytes and
// encoded surrogates, throws InvalidSequence for anything else, and never
// reads or writes outside the ranges it is given.
#pragma once

#include <cstddef>

#include "qkdynam_platform.h"

namespace zo::kel {

template <typename Char, typename OtherChar, typename WideChar>
class StringBase;

// Decoding. Every form validates the whole input it reads.
// Number of characters the bytes decode to.
QKDYNAM_API unsigned int GetUtf8StringLength(const unsigned char* first, const unsigned char* last);
// Decodes into [outFirst, outLast) until either range is used up; returns
// the position after the last character written.
QKDYNAM_API wchar_t* Utf8ToWide(const unsigned char* first, const unsigned char* last, wchar_t* outFirst,
                                wchar_t* outLast);
QKDYNAM_API StringBase<wchar_t, char, wchar_t> Utf8ToWide(const unsigned char* bytes, unsigned int length);
// Decodes one character into `out`; returns the position after it.
QKDYNAM_API const unsigned char* ConvertNextUtf8Character(const unsigned char* first, const unsigned char* last,
                                                          wchar_t& out);

// Encoding. Values from 0x80000000 up (negative wchar_t) have no UTF-8 form;
// each is counted as one byte and written as '?'.
// Bytes needed for [first, last), counting whole characters only while the
// total stays within `limit`.
QKDYNAM_API unsigned int GetUtf8EncodingBytesWithBufferLimit(const wchar_t* first, const wchar_t* last,
                                                             unsigned int limit);
// Encodes whole characters while they fit into [outFirst, outLast); returns
// the position after the last byte written. A null or inverted output range
// throws InvalidArgument.
QKDYNAM_API unsigned char* WideToUtf8(const wchar_t* first, const wchar_t* last, unsigned char* outFirst,
                                      unsigned char* outLast);

}  // namespace zo::kel
