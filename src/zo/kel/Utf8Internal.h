// The UTF-8 codec's pieces for the library's own string code and its
// benchmarks: not exported, not installed.
#pragma once

#include <cstddef>

namespace zo::kel::internal {

// Bytes needed for [first, last), without a limit; characters without a
// UTF-8 form count one byte, as the encoder writes '?' for them.
std::size_t Utf8EncodedSize(const wchar_t* first, const wchar_t* last) noexcept;

}  // namespace zo::kel::internal
