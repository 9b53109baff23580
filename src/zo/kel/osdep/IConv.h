// The library's one road into iconv, used by the charset conversions and the
// UTF-16 serialization. Descriptors are opened once per thread and charset
// pair and reset before each use, so no descriptor is ever shared between
// threads.
#pragma once

#include <cstddef>

namespace zo::kel::osdep::internal {

// Converts the In units [first, last) from `fromCharset` to Out units in
// `toCharset`. With a null `outFirst` nothing is written and the result is the
// number of Out units the conversion produces; otherwise the units are written
// into [outFirst, outLast), `outLast` is set to the end of what was written
// and the count returned (too little room: BufferOverflow). When iconv cannot
// open or perform the conversion, `throwing` selects UnableToConvert or one
// '?' per unconvertible unit (nothing at all when the pair cannot be opened).
template <typename In, typename Out>
std::size_t IConv(const In* first, const In* last, const char* fromCharset, Out* outFirst, Out*& outLast,
                  const char* toCharset, bool throwing);

}  // namespace zo::kel::osdep::internal
