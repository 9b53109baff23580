// Vector<T>::deserialize over arbitrary bytes, T chosen by the first byte: a
// rejected input (DeserializationError, or InvalidSequence for the UTF-8 of
// wide strings) leaves the vector and the cursor as they were (a declared
// count beyond the input is refused before anything is allocated); an
// accepted one re-encodes to exactly the bytes consumed (for wide strings,
// whose UTF-8 need not be written the one way, to a form that reads back
// to the same value).
#include <cstdint>
#include <type_traits>
#include <vector>

#include "FuzzCheck.h"
#include "zo/kel/BufferWrapper.h"
#include "zo/kel/StringBase.h"
#include "zo/kel/Vector.h"

using fuzzcheck::Encode;
using fuzzcheck::Require;

namespace {

template <typename T>
constexpr bool kFormIsCanonical = !std::is_same_v<T, zo::kel::WideString>;

template <typename T>
void RoundTrip(const fuzzcheck::ExactInput& input, zo::kel::Vector<T> vector) {
    const std::vector<unsigned char> before = Encode(vector);
    const unsigned char* const begin = input.begin();
    const unsigned char* cursor = begin;
    try {
        vector.deserialize(cursor, input.end());
    } catch (const zo::kel::exception::DeserializationError&) {
        Require(cursor == begin && Encode(vector) == before);
        return;
    } catch (const zo::kel::exception::InvalidSequence&) {  // malformed UTF-8 of a wide string
        Require(cursor == begin && Encode(vector) == before);
        return;
    }
    const std::vector<unsigned char> encoded = Encode(vector);
    if constexpr (kFormIsCanonical<T>) Require(encoded == input.Consumed(cursor));

    zo::kel::Vector<T> again = fuzzcheck::Reread<zo::kel::Vector<T>>(encoded);
    Require(Encode(again) == encoded);
    if constexpr (!kFormIsCanonical<T>) {
        for (unsigned int i = 0; i < vector.size(); ++i) Require(again[i].exactCompare(vector[i]) == 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const fuzzcheck::ExactInput input(data + 1, size - 1);
    static const unsigned char kBytes[] = {'o', 'l', 'd'};
    switch (data[0] % 7) {
        case 0: return RoundTrip<unsigned char>(input, {1, 2, 3}), 0;
        case 1: return RoundTrip<unsigned short>(input, {0x1234}), 0;
        case 2: return RoundTrip<unsigned int>(input, {7, 8}), 0;
        case 3: return RoundTrip<double>(input, {0.5}), 0;
        case 4: return RoundTrip<zo::kel::BufferWrapper>(input, {zo::kel::BufferWrapper(kBytes, 3)}), 0;
        case 5: return RoundTrip<zo::kel::NarrowString>(input, {"old"}), 0;
        default: return RoundTrip<zo::kel::WideString>(input, {L"old"}), 0;
    }
}
