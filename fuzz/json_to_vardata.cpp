// Arbitrary bytes as JSON, mapped to a VarData: anything that does not fit
// the mapping must be refused with JsonMappingError, and whatever maps must
// map back to the same JSON, again and again.
#include <cstddef>
#include <cstdint>

#include <qkdynam_json/VarDataJson.h>

#include "FuzzCheck.h"

using fuzzcheck::Require;
using qkdynam_json::Json;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzzcheck::ExactInput input(data, size);
    const Json json = Json::parse(input.begin(), input.end(), nullptr, false);
    if (json.is_discarded()) return 0;
    VarData value;
    try {
        value = qkdynam_json::FromJson(json);
    } catch (const qkdynam_json::JsonMappingError&) {
        return 0;
    }
    const Json mapped = qkdynam_json::ToJson(value);
    Require(qkdynam_json::ToJson(qkdynam_json::FromJson(mapped)) == mapped);
    return 0;
}
