// The UTF-8 comparison under Utf8StringCaseInsensitiveCompare and
// Utf8StringExactCompare, with the character services as a parameter.
#pragma once

namespace zo::kel::osdep {
template <typename Char>
class CharacterAttributes;
}

namespace zo::kel::osdep::internal {

// Upper-cases with `attributes` when given, else with the current locale.
int Utf8StringCompareInternal(const unsigned char* aFirst, const unsigned char* aLast, const unsigned char* bFirst,
                              const unsigned char* bLast, bool caseSensitive,
                              const CharacterAttributes<wchar_t>* attributes);

}  // namespace zo::kel::osdep::internal
