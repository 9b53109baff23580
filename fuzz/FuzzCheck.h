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

// The input bytes in a block of their own, with its bounds.
class ExactInput {
public:
    ExactInput(const std::uint8_t* data, std::size_t size) : bytes_(data, data + size) {}
    const unsigned char* begin() const { return bytes_.data(); }
    const unsigned char* end() const { return bytes_.data() + bytes_.size(); }
    std::size_t size() const { return bytes_.size(); }
    unsigned char operator[](std::size_t at) const { return bytes_[at]; }
    // The bytes a reader consumed, from the start up to `cursor`.
    std::vector<unsigned char> Consumed(const unsigned char* cursor) const { return {begin(), cursor}; }

private:
    std::vector<unsigned char> bytes_;
};

// The byte form of `value`, which must fill exactly its serializationSize().
template <typename Value>
std::vector<unsigned char> Encode(const Value& value) {
    std::vector<unsigned char> encoded(value.serializationSize());
    unsigned char* write = encoded.data();
    value.serialize(write, encoded.data() + encoded.size());
    Require(write == encoded.data() + encoded.size());
    return encoded;
}

// `encoded` read into a fresh Value, which must consume all of it.
template <typename Value>
Value Reread(const std::vector<unsigned char>& encoded) {
    Value again;
    const unsigned char* reread = encoded.data();
    again.deserialize(reread, encoded.data() + encoded.size());
    Require(reread == encoded.data() + encoded.size());
    return again;
}

}  // namespace fuzzcheck
