// Utf8ToWide on arbitrary bytes: malformed input throws InvalidSequence;
// decoded text encodes and decodes again to the same characters.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "FuzzCheck.h"
#include "zo/kel/Exception.h"
#include "zo/kel/StringBase.h"
#include "zo/kel/Utf8.h"
#include "zo/kel/Utf8Internal.h"

using fuzzcheck::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zo::kel::WideString wide;
    try {
        wide = zo::kel::Utf8ToWide(data, static_cast<unsigned int>(size));
    } catch (const zo::kel::exception::InvalidSequence&) {
        return 0;
    }
    Require(wide.length() == zo::kel::GetUtf8StringLength(data, data + size));

    std::vector<unsigned char> utf8(zo::kel::internal::Utf8EncodedSize(wide.begin(), wide.end()) + 1);
    unsigned char* end = zo::kel::WideToUtf8(wide.begin(), wide.end(), utf8.data(), utf8.data() + utf8.size());
    Require(end == utf8.data() + utf8.size() - 1);
    const zo::kel::WideString again = zo::kel::Utf8ToWide(utf8.data(), static_cast<unsigned int>(utf8.size() - 1));
    Require(again.exactCompare(wide) == 0);
    return 0;
}
