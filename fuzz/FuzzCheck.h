// What every fuzz target relies on: a failed expectation stops the run at
// once, and the input is copied into a block of exactly its size so that the
// sanitizer sees any read past its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace fuzzcheck {

inline void Require(bool holds) {
    if (!holds) __builtin_trap();
}

inline std::vector<unsigned char> ExactCopy(const std::uint8_t* data, std::size_t size) {
    return std::vector<unsigned char>(data, data + size);
}

// The byte form of `value`, which must fill exactly its serializationSize().
template <typename Value>
std::vector<unsigned char> Encode(const Value& value) {
    std::vector<unsigned char> encoded(value.serializationSize());
    unsigned char* write = encoded.data();
    value.serialize(write, encoded.data() + encoded.size());
    Require(write == encoded.data() + encoded.size());
    return encoded;
}

}  // namespace fuzzcheck
