// AutoBuffer::deserialize over arbitrary bytes: a rejected input leaves the
// buffer and the cursor as they were; an accepted one re-encodes to exactly
// the bytes consumed.
#include <cstdint>
#include <vector>

#include "FuzzCheck.h"
#include "zo/kel/AutoBuffer.h"

using fuzzcheck::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzzcheck::ExactInput input(data, size);
    const unsigned char* const begin = input.begin();

    const unsigned char previous[] = {'o', 'l', 'd'};
    zo::kel::AutoBuffer buffer(previous, sizeof previous);
    const zo::kel::AutoBuffer sharer = buffer;
    const unsigned char* cursor = begin;
    try {
        buffer.deserialize(cursor, input.end());
    } catch (const zo::kel::exception::DeserializationError&) {
        Require(cursor == begin && buffer == sharer && buffer.Len() == 3);
        return 0;
    }
    Require(sharer.Len() == 3);

    const std::vector<unsigned char> encoded = fuzzcheck::Encode(buffer);
    Require(encoded == input.Consumed(cursor));
    Require(fuzzcheck::Reread<zo::kel::AutoBuffer>(encoded) == buffer);
    return 0;
}
