#include "zo/kel/osdep/IntegerToString.h"

#include <concepts>
#include <string_view>
#include <type_traits>

#include "zo/kel/Exception.h"

namespace zo::kel::osdep {

namespace {

constexpr std::string_view kDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

template <std::unsigned_integral Unsigned>
WideString UnsignedText(Unsigned value, unsigned int base, bool negative = false) {
    if (base < 2 || base > kDigits.size()) ZO_THROW(exception::UnableToConvert);
    // Base 2 of the widest type plus a sign.
    wchar_t digits[sizeof(Unsigned) * 8 + 1];
    wchar_t* const end = digits + std::size(digits);
    wchar_t* first = end;
    do {
        *--first = static_cast<wchar_t>(kDigits[value % base]);
        value = static_cast<Unsigned>(value / base);
    } while (value != 0);
    if (negative) *--first = L'-';
    return WideString(first, end);
}

template <std::signed_integral Signed>
WideString SignedText(Signed value, unsigned int base) {
    using Unsigned = std::make_unsigned_t<Signed>;
    const auto bits = static_cast<Unsigned>(value);
    // The magnitude of the most negative value is exact in the unsigned type.
    if (base == 10 && value < 0) return UnsignedText(static_cast<Unsigned>(Unsigned{0} - bits), base, true);
    return UnsignedText(bits, base);
}

}  // namespace

WideString UInt8ToString(std::uint8_t value, unsigned int base) { return UnsignedText(value, base); }
WideString UInt16ToString(std::uint16_t value, unsigned int base) { return UnsignedText(value, base); }
WideString UInt32ToString(std::uint32_t value, unsigned int base) { return UnsignedText(value, base); }
WideString UInt64ToString(std::uint64_t value, unsigned int base) { return UnsignedText(value, base); }
WideString UIntToString(unsigned long value, unsigned int base) { return UnsignedText(value, base); }

WideString Int8ToString(std::int8_t value, unsigned int base) { return SignedText(value, base); }
WideString Int16ToString(std::int16_t value, unsigned int base) { return SignedText(value, base); }
WideString Int32ToString(std::int32_t value, unsigned int base) { return SignedText(value, base); }
WideString Int64ToString(std::int64_t value, unsigned int base) { return SignedText(value, base); }
WideString IntToString(long value, unsigned int base) { return SignedText(value, base); }

}  // namespace zo::kel::osdep
