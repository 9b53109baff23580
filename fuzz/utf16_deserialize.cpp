// SerializeUtf16::DeserializeFromUtf16 on arbitrary bytes: an odd count
// throws DeserializationError, malformed UTF-16 UnableToConvert; decoded text
// serializes and decodes again to the same characters.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zo/kel/Exception.h"
#include "zo/kel/osdep/SerializeUtf16.h"

using zo::kel::osdep::SerializeUtf16;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zo::kel::WideString wide;
    try {
        wide = SerializeUtf16::DeserializeFromUtf16(data, data + size);
    } catch (const zo::kel::exception::DeserializationError&) {
        if (size % 2 == 0) __builtin_trap();
        return 0;
    } catch (const zo::kel::exception::UnableToConvert&) {
        return 0;
    }
    wide.checkInvariants();
    std::vector<unsigned char> utf16(SerializeUtf16::GetUtf16SerializationSize(wide));
    if (utf16.size() != size) __builtin_trap();
    unsigned char* end = SerializeUtf16::SerializeAsUtf16(wide, utf16.data(), utf16.data() + utf16.size());
    if (end != utf16.data() + utf16.size()) __builtin_trap();
    const zo::kel::WideString again = SerializeUtf16::DeserializeFromUtf16(utf16.data(), utf16.data() + utf16.size());
    if (again.exactCompare(wide) != 0) __builtin_trap();
    return 0;
}
