// The formatter's exponent clean-up, declared apart so that tests reach it.
#pragma once

namespace internal {

// Drops leading zeros of a three-digit exponent at the end of `text`
// (E+015 → E+15, E+005 → E+5); returns the new length.
int RemoveExponentLeadingZeros(char* text, int length) noexcept;

}  // namespace internal
