// Arbitrary bytes as VarData records: the first byte picks the reader (bare
// compact, bare full, or a stream of prefixed records). Whatever decodes must
// be stable: re-encoding it and reading that back gives an equal value whose
// bytes are the same again.
#include <cstddef>
#include <cstdint>

#include "FuzzCheck.h"
#include "tavlo/qkstatic/vardata.h"

using fuzzcheck::Require;

namespace {

zo::kel::AutoBuffer Encoded(const VarData& value, bool compact) {
    zo::kel::AutoBuffer buffer;
    value.SerializeWithoutSize(buffer, compact);
    return buffer;
}

void CheckStable(const VarData& value, bool compact) {
    const zo::kel::AutoBuffer first = Encoded(value, compact);
    unsigned int used = 0;
    const VarData again = VarData::DeserializeWithoutSize(first.Data(), first.Len(), used, compact);
    Require(used == first.Len() && again.Compare(value) == 0);
    Require(Encoded(again, compact) == first);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const unsigned mode = data[0] % 3;
    const unsigned char* bytes = data + 1;
    const auto length = static_cast<unsigned int>(size - 1);
    if (mode < 2) {
        const bool compact = mode == 0;
        try {
            unsigned int used = 0;
            const VarData value = VarData::DeserializeWithoutSize(bytes, length, used, compact);
            Require(used <= length);
            CheckStable(value, compact);
        } catch (const DeserializationErrorException&) {
        }
        return 0;
    }
    const unsigned char* cursor = bytes;
    const unsigned char* end = bytes + length;
    while (cursor < end) {
        const unsigned char* before = cursor;
        const VarData value = VarData::DeserializeWithSize(cursor, static_cast<unsigned int>(end - cursor));
        Require(cursor <= end);
        CheckStable(value, true);
        if (cursor == before) break;  // fewer than 4 bytes left
    }
    return 0;
}
