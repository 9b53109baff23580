// qkdynam_json: every VarData as JSON and back, without loss. Each value is an
// object whose first member "type" names its tag; the other members are listed
// in the README ("The JSON mapping"). FromJson either returns a whole value or
// throws JsonMappingError naming the JSON path of the first member that does
// not fit; it never returns a value built in part. Thread-safe.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <qkdynam.h>

#if defined(QKDYNAM_JSON_BUILDING)
#define QKDYNAM_JSON_API __attribute__((visibility("default")))
#else
#define QKDYNAM_JSON_API
#endif

namespace qkdynam_json {

// Member order is kept, so "type" stays first and output is stable.
using Json = nlohmann::ordered_json;

// A JSON value that does not fit the mapping. path() is a JSON pointer
// ("" for the root, "/entries/3/value" below it); what() is "path: reason".
class QKDYNAM_JSON_API JsonMappingError : public std::runtime_error {
public:
    JsonMappingError(std::string path, const std::string& reason);
    const std::string& path() const noexcept { return path_; }

private:
    std::string path_;
};

// --- The two directions.
QKDYNAM_JSON_API Json ToJson(const VarData& value);
QKDYNAM_JSON_API VarData FromJson(const Json& json);

// --- Pieces the mapping is made of, for programs that show the same forms.
QKDYNAM_JSON_API std::string Base64Encode(const unsigned char* data, std::size_t length);
// Throws std::invalid_argument on anything but canonical padded base64.
QKDYNAM_JSON_API std::vector<unsigned char> Base64Decode(const std::string& text);
// "YYYY-MM-DDTHH:MM:SS.fffffffffZ" for signed 64.64 seconds since 1904-01-01 UTC.
QKDYNAM_JSON_API std::string UtcText(std::int64_t seconds, std::uint64_t fraction);

}  // namespace qkdynam_json
