// A host-language value (a type descriptor of 16-bit words, host order, and
// big-endian flattened data) turned into an ordinary VarData: numbers,
// booleans, strings, arrays, clusters, embedded variants and timestamps.
// The inverse is VarDataToGXVariant.h. Both inputs may come from another
// process or the network: every read is checked against its end, nesting
// stops at kMaxGXVariantDepth and the values built are bounded by the input
// (kMaxGXVariantValuesPerByte). Failures throw zo::kel::exception::SyntaxError
// (malformed or oversized input) or UnableToConvert (a type this conversion
// does not take), sited at "tavlo/qkstatic/GXVariantToVarData".
#pragma once

#include "qkdynam_platform.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/StringBase.h"

namespace vek {

// What clusters and embedded variants may become. Array elements follow the
// caller's choice; cluster elements are always converted with 1.
enum DictionaryConversion : int {
    NoDictionaries = 0,          // clusters and embedded variants are refused
    ClustersToDictionaries = 1,  // a cluster becomes a Dictionary keyed by element names
    VariantsToDictionaries = 2,  // an embedded variant of a void with attributes becomes a Dictionary
};

// Clusters, arrays and embedded variants nest at most this deep (SyntaxError
// beyond): far above what host programs write, far below a thread's stack.
inline constexpr unsigned int kMaxGXVariantDepth = 64;
// One conversion builds at most this many values per input byte (descriptor
// and data bytes together) plus kGXVariantValueAllowance: arrays that repeat
// elements taking no data bytes (voids, empty clusters) cannot make the work
// outgrow the input. SyntaxError beyond.
inline constexpr unsigned int kMaxGXVariantValuesPerByte = 16;
inline constexpr unsigned int kGXVariantValueAllowance = 1024;

// Converts the one value the descriptor describes. `name` receives the
// top-level type's name when it has one and is left alone otherwise;
// `wideStrings` makes strings and dictionary keys Unicode instead of Ansi.
QKDYNAM_API VarData GXVariantToVarData(const unsigned short* descriptorBegin, const unsigned short* descriptorEnd,
                                       const unsigned char* dataBegin, const unsigned char* dataEnd,
                                       DictionaryConversion conversion, zo::kel::NarrowString& name, bool wideStrings);

}  // namespace vek
