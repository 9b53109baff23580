// StringBase::deserialize on arbitrary bytes, for the form picked by the
// first byte (narrow, wide, UTF-8 bytes). Bad input must throw the documented
// exception and leave target and cursor alone; good input must survive a
// serialize/deserialize round trip unchanged.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zo/kel/Exception.h"
#include "zo/kel/StringBase.h"

namespace {

template <typename String>
void Check(const std::uint8_t* data, std::size_t size) {
    const String before(L"previous contents");
    String target(before);
    const unsigned char* cursor = data;
    try {
        target.deserialize(cursor, data + size);
    } catch (const zo::kel::exception::DeserializationError&) {
        if (cursor != data || target.exactCompare(before) != 0) __builtin_trap();
        return;
    } catch (const zo::kel::exception::InvalidSequence&) {
        if (cursor != data || target.exactCompare(before) != 0) __builtin_trap();
        return;
    }
    if (cursor < data + 4 || cursor > data + size) __builtin_trap();
    target.checkInvariants();

    std::vector<unsigned char> form(target.serializationSize());
    unsigned char* out = form.data();
    target.serialize(out, form.data() + form.size());
    if (out != form.data() + form.size()) __builtin_trap();
    String again;
    const unsigned char* in = form.data();
    again.deserialize(in, form.data() + form.size());
    if (in != form.data() + form.size() || again.exactCompare(target) != 0) __builtin_trap();
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
