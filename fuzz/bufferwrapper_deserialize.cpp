// BufferWrapper::deserialize over arbitrary bytes: an accepted input leaves a
// view inside the input that re-encodes to exactly the bytes consumed; a
// rejected one leaves the wrapper and the cursor as they were.
#include <cstdint>
#include <vector>

#include "FuzzCheck.h"
#include "zo/kel/BufferWrapper.h"

using fuzzcheck::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzzcheck::ExactInput input(data, size);
    const unsigned char* const begin = input.begin();

    const unsigned char previous[] = {'o', 'l', 'd'};
    zo::kel::BufferWrapper wrapper(previous, sizeof previous);
    const unsigned char* cursor = begin;
    try {
        wrapper.deserialize(cursor, input.end());
    } catch (const zo::kel::exception::DeserializationError&) {
        Require(cursor == begin && wrapper.Data() == previous && wrapper.Len() == 3);
        return 0;
    }
    Require(wrapper.Data() == begin + 4 && wrapper.Data() + wrapper.Len() == cursor && cursor <= input.end());

    const std::vector<unsigned char> encoded = fuzzcheck::Encode(wrapper);
    Require(encoded == input.Consumed(cursor));
    Require(fuzzcheck::Reread<zo::kel::BufferWrapper>(encoded) == wrapper);
    return 0;
}
