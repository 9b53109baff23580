// Helpers of the zo::kel tests: bytes from text, the byte forms written and
// read through a cursor, and the text and site a throw carried.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "zo/kel/BufferWrapper.h"
#include "zo/kel/Exception.h"

namespace kel_test {

using Bytes = std::vector<unsigned char>;

inline const unsigned char* AsBytes(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }
inline Bytes ToBytes(std::string_view text) { return Bytes(text.begin(), text.end()); }
inline zo::kel::BufferWrapper View(std::string_view text) {
    return {AsBytes(text), static_cast<unsigned int>(text.size())};
}
// The bytes of anything with Data() and Len().
template <typename Buffer>
Bytes Contents(const Buffer& buffer) {
    return buffer.Len() == 0 ? Bytes() : Bytes(buffer.Data(), buffer.Data() + buffer.Len());
}

// What a throw of E carried; `thrown` is false, and a failure recorded, when `run` returns.
struct Thrown {
    bool thrown = false;
    std::string what;
    const char* file = nullptr;
    unsigned int line = 0;
};

template <typename E, typename Run>
Thrown ThrownBy(Run&& run) {
    try {
        run();
    } catch (const E& caught) {
        return {true, caught.what(), caught.getFile(), caught.getLine()};
    }
    ADD_FAILURE() << "no exception";
    return {};
}

// The form of `value`, written into exactly serializationSize() bytes, which it must fill.
template <typename T>
Bytes Form(const T& value) {
    Bytes out(value.serializationSize());
    unsigned char* cursor = out.data();
    value.serialize(cursor, out.data() + out.size());
    EXPECT_EQ(cursor, out.data() + out.size());
    return out;
}

// Reads `target` from `input`; returns how many bytes the read took.
template <typename T>
std::size_t Read(T& target, const Bytes& input) {
    const unsigned char* cursor = input.data();
    target.deserialize(cursor, input.data() + input.size());
    return static_cast<std::size_t>(cursor - input.data());
}

// Writing `value` into `room` bytes throws BufferOverflow without a site and
// leaves the cursor where it was.
template <typename T>
void ExpectOverflow(const T& value, std::size_t room) {
    Bytes out(room + 1);  // never empty, so the cursor is a real position
    unsigned char* cursor = out.data();
    const Thrown thrown = ThrownBy<zo::kel::exception::BufferOverflow>([&] { value.serialize(cursor, out.data() + room); });
    EXPECT_EQ(thrown.line, 0u);
    EXPECT_EQ(thrown.file, nullptr);
    EXPECT_EQ(cursor, out.data());
}

// Reading a target made by `make` from `input` throws E stamped with `file`
// (null: no site) and leaves both the target and the cursor as they were.
template <typename E = zo::kel::exception::DeserializationError, typename Make>
void ExpectReadFails(Make make, const Bytes& input, const char* file) {
    auto target = make();
    const unsigned char* cursor = input.data();
    const Thrown thrown = ThrownBy<E>([&] { target.deserialize(cursor, input.data() + input.size()); });
    if (file) {
        EXPECT_STREQ(thrown.file, file);
    } else {
        EXPECT_EQ(thrown.file, nullptr);
    }
    EXPECT_EQ(cursor, input.data());
    EXPECT_TRUE(target == make());
    if constexpr (requires { target.checkInvariants(); }) target.checkInvariants();
}

}  // namespace kel_test
