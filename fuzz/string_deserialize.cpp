// StringBase::deserialize on arbitrary bytes, for the form picked by the
// first byte (narrow, wide, UTF-8 bytes). Bad input must throw the documented
// exception and leave target and cursor alone; good input must survive a
// serialize/deserialize round trip unchanged.
#include <cstddef>
#include <cstdint>

#include "FuzzCheck.h"
#include "zo/kel/Exception.h"
#include "zo/kel/StringBase.h"

using fuzzcheck::Require;

namespace {

template <typename String>
void Check(const std::uint8_t* data, std::size_t size) {
    const String before(L"previous contents");
    String target(before);
    const unsigned char* cursor = data;
    try {
        target.deserialize(cursor, data + size);
    } catch (const zo::kel::exception::DeserializationError&) {
        Require(cursor == data && target.exactCompare(before) == 0);
        return;
    } catch (const zo::kel::exception::InvalidSequence&) {
        Require(cursor == data && target.exactCompare(before) == 0);
        return;
    }
    Require(cursor >= data + 4 && cursor <= data + size);
    target.checkInvariants();
    Require(fuzzcheck::Reread<String>(fuzzcheck::Encode(target)).exactCompare(target) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    switch (data[0] % 3) {
        case 0: Check<zo::kel::NarrowString>(data + 1, size - 1); break;
        case 1: Check<zo::kel::WideString>(data + 1, size - 1); break;
        default: Check<zo::kel::Utf8String>(data + 1, size - 1); break;
    }
    return 0;
}
