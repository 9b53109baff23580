// SerializeUtf16::DeserializeFromUtf16 on arbitrary bytes: an odd count
// throws DeserializationError, malformed UTF-16 UnableToConvert; decoded text
// serializes and decodes again to the same characters.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "FuzzCheck.h"
#include "zo/kel/Exception.h"
#include "zo/kel/osdep/SerializeUtf16.h"

using fuzzcheck::Require;
using zo::kel::osdep::SerializeUtf16;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zo::kel::WideString wide;
    try {
        wide = SerializeUtf16::DeserializeFromUtf16(data, data + size);
    } catch (const zo::kel::exception::DeserializationError&) {
        Require(size % 2 != 0);
        return 0;
    } catch (const zo::kel::exception::UnableToConvert&) {
        return 0;
    }
    wide.checkInvariants();
    std::vector<unsigned char> utf16(SerializeUtf16::GetUtf16SerializationSize(wide));
    Require(utf16.size() == size);
    unsigned char* end = SerializeUtf16::SerializeAsUtf16(wide, utf16.data(), utf16.data() + utf16.size());
    Require(end == utf16.data() + utf16.size());
    const zo::kel::WideString again = SerializeUtf16::DeserializeFromUtf16(utf16.data(), utf16.data() + utf16.size());
    Require(again.exactCompare(wide) == 0);
    return 0;
}
