// Helpers shared by the text fuzz targets: the input as a zero-terminated
// string, and the rule that a recogniser may throw OutOfRange and nothing else.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzCheck.h"
#include "zo/kel/Exception.h"

namespace fuzz_text {

inline std::string AsText(const std::uint8_t* data, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size).c_str();
}

// Runs `call`; OutOfRange counts as a refusal, anything else aborts the run.
template <typename Call>
bool OnlyOutOfRange(Call&& call) {
    try {
        return call();
    } catch (const zo::kel::exception::OutOfRange&) {
        return false;
    } catch (...) {
        __builtin_trap();
    }
}

using fuzzcheck::Require;

}  // namespace fuzz_text
