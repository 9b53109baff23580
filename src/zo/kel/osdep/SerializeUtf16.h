// UTF-16 (little-endian, no byte-order mark, no length prefix) form of wide
// strings, converted through iconv. Characters UTF-16 cannot carry (encoded
// surrogates, values past 0x10FFFF) and malformed UTF-16 throw
// UnableToConvert; an odd byte count throws DeserializationError.
#pragma once

#include "qkdynam_platform.h"
#include "zo/kel/StringBase.h"

namespace zo::kel::osdep {

struct QKDYNAM_API SerializeUtf16 {
    // Bytes of the UTF-16 form: 2 per character below 0x10000, else 4.
    static unsigned int GetUtf16SerializationSize(const WideString& text);
    // Writes the form into [out, outEnd) (too small: BufferOverflow) and
    // returns the position after it.
    static unsigned char* SerializeAsUtf16(const WideString& text, unsigned char* out, unsigned char* outEnd);
    static WideString DeserializeFromUtf16(const unsigned char* first, const unsigned char* last);
};

}  // namespace zo::kel::osdep
