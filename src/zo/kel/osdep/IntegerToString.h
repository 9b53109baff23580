// Integers as wide text in any base from 2 to 36: digits "0-9A-Z", most
// significant first, no padding or prefix. Signed values get a '-' only in
// base 10; in other bases they print as the unsigned value of the same bits.
// A base outside 2..36 throws UnableToConvert.
#pragma once

#include <cstdint>

#include "qkdynam_platform.h"
#include "zo/kel/StringBase.h"

namespace zo::kel::osdep {

QKDYNAM_API WideString UInt8ToString(std::uint8_t value, unsigned int base = 10);
QKDYNAM_API WideString UInt16ToString(std::uint16_t value, unsigned int base = 10);
QKDYNAM_API WideString UInt32ToString(std::uint32_t value, unsigned int base = 10);
QKDYNAM_API WideString UInt64ToString(std::uint64_t value, unsigned int base = 10);
// The platform word (64-bit long).
QKDYNAM_API WideString UIntToString(unsigned long value, unsigned int base = 10);

QKDYNAM_API WideString Int8ToString(std::int8_t value, unsigned int base = 10);
QKDYNAM_API WideString Int16ToString(std::int16_t value, unsigned int base = 10);
QKDYNAM_API WideString Int32ToString(std::int32_t value, unsigned int base = 10);
QKDYNAM_API WideString Int64ToString(std::int64_t value, unsigned int base = 10);
QKDYNAM_API WideString IntToString(long value, unsigned int base = 10);

}  // namespace zo::kel::osdep
