// The JSON mapping of VarData. Inline tags (markers, Logical, Numeric, Time,
// VoidPointer, ID64) are read from and rebuilt through their full byte-form
// record, so the whole type word and every payload byte survive; host variants
// and FlexData packets travel as their exact record in base64.
#include "qkdynam_json/VarDataJson.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string_view>

namespace qkdynam_json {

JsonMappingError::JsonMappingError(std::string path, const std::string& reason)
    : std::runtime_error((path.empty() ? std::string("(root)") : path) + ": " + reason), path_(std::move(path)) {}

namespace {

using Tag = VarDataType;
__extension__ typedef unsigned __int128 Wide128;  // exact 64.64 fraction scaling

// A view is the readable form beside an exact record; a tag without one
// carries the record alone.
using ViewFunction = std::optional<Json> (*)(const VarData&);

// The ordinary value a foreign payload stands for, when the library converts it.
std::optional<Json> NativeView(const VarData& value) {
    try {
        VarData native = value.convertToNativeType();
        if (vardata_type::TagOf(native.GetType()) == vardata_type::TagOf(value.GetType())) return std::nullopt;
        return ToJson(native);
    } catch (const zo::kel::exception::Exception&) {
        return std::nullopt;  // a host value the library cannot convert has no view
    }
}

struct TagRow {
    Tag tag;
    std::string_view name;
    ViewFunction view;  // record tags only
};

constexpr std::array kTags{
    TagRow{Tag::Undefined, "Undefined", nullptr},   TagRow{Tag::Empty, "Empty", nullptr},
    TagRow{Tag::Logical, "Logical", nullptr},       TagRow{Tag::Numeric, "Numeric", nullptr},
    TagRow{Tag::Time, "Time", nullptr},             TagRow{Tag::Break, "Break", nullptr},
    TagRow{Tag::Pulse, "Pulse", nullptr},           TagRow{Tag::VoidPointer, "VoidPointer", nullptr},
    TagRow{Tag::ID64, "ID64", nullptr},             TagRow{Tag::Ansi, "Ansi", nullptr},
    TagRow{Tag::Unicode, "Unicode", nullptr},       TagRow{Tag::Raw, "Raw", nullptr},
    TagRow{Tag::Cell, "Cell", nullptr},             TagRow{Tag::Dictionary, "Dictionary", nullptr},
    TagRow{Tag::AbsTimeValue, "AbsTimeValue", nullptr}, TagRow{Tag::RelTimeValue, "RelTimeValue", nullptr},
    TagRow{Tag::GXVariant, "GXVariant", &NativeView},
    TagRow{Tag::FlexDataTag, "FlexData", &NativeView},
    TagRow{Tag::Sequence, "Sequence", nullptr},
};
constexpr std::string_view kBitArrayName = "BitArray";

const TagRow* RowOf(Tag tag) {
    for (const TagRow& row : kTags)
        if (row.tag == tag) return &row;
    return nullptr;
}
const TagRow* RowNamed(std::string_view name) {
    for (const TagRow& row : kTags)
        if (row.name == name) return &row;
    return nullptr;
}

bool IsMarker(Tag tag) { return tag == Tag::Undefined || tag == Tag::Empty || tag == Tag::Break || tag == Tag::Pulse; }
bool IsInline(Tag tag) {
    return IsMarker(tag) || tag == Tag::Logical || tag == Tag::Numeric || tag == Tag::Time ||
           tag == Tag::VoidPointer || tag == Tag::ID64;
}

std::string Hex(std::uint64_t value, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%0*llX", digits, static_cast<unsigned long long>(value));
    return text;
}

std::vector<unsigned char> Record(const VarData& value, bool compact) {
    zo::kel::AutoBuffer buffer;
    value.SerializeWithoutSize(buffer, compact);
    return {buffer.Data(), buffer.Data() + buffer.Len()};
}

template <class T>
T Read(const std::vector<unsigned char>& bytes, std::size_t offset) {
    T out;
    std::memcpy(&out, bytes.data() + offset, sizeof out);
    return out;
}

// --- Text: UTF-8 when the bytes or characters allow it, exact otherwise.

bool DecodeUtf8(std::string_view text, std::u32string* out) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        int extra = lead < 0x80 ? 0 : (lead >> 5) == 6 ? 1 : (lead >> 4) == 14 ? 2 : (lead >> 3) == 30 ? 3 : -1;
        if (extra < 0 || i + static_cast<std::size_t>(extra) >= text.size()) return false;
        char32_t code = extra == 0 ? lead : lead & (0x3F >> extra);
        for (int k = 1; k <= extra; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) return false;
            code = (code << 6) | (next & 0x3F);
        }
        static constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
        if (code < kSmallest[extra] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
        if (out) out->push_back(code);
        i += 1 + extra;
    }
    return true;
}

bool EncodeUtf8(const wchar_t* text, std::size_t length, std::string& out) {
    for (std::size_t i = 0; i < length; ++i) {
        const auto code = static_cast<std::uint32_t>(text[i]);
        if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
        if (code < 0x80) {
            out += static_cast<char>(code);
        } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return true;
}

// --- Numbers: finite doubles as JSON numbers (printed to round-trip), the
// rest as text that keeps their bits.

Json NumberJson(double number) {
    if (std::isfinite(number)) return number;
    if (std::isinf(number)) return number > 0 ? "Infinity" : "-Infinity";
    const auto bits = std::bit_cast<std::uint64_t>(number);
    if (bits == 0x7FF8000000000000ull) return "NaN";
    return "NaN:" + Hex(bits, 16);
}

// Days from 1970-01-01 to a civil date, proleptic Gregorian.
void CivilFromDays(std::int64_t days, std::int64_t& year, unsigned& month, unsigned& day) {
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned monthIndex = (5 * dayOfYear + 2) / 153;
    day = dayOfYear - (153 * monthIndex + 2) / 5 + 1;
    month = monthIndex < 10 ? monthIndex + 3 : monthIndex - 9;
    year = static_cast<std::int64_t>(yearOfEra) + era * 400 + (month <= 2 ? 1 : 0);
}

// Seconds since 1904-01-01 UTC and nanoseconds as "YYYY-MM-DDTHH:MM:SS.nnnnnnnnnZ".
std::string CivilText(std::int64_t seconds, unsigned nanos) {
    // Floor division without a product that could leave the 64-bit range.
    std::int64_t days = seconds / 86400;
    std::int64_t inDay = seconds % 86400;
    if (inDay < 0) inDay += 86400, --days;
    std::int64_t year;
    unsigned month, day;
    CivilFromDays(days - 24107, year, month, day);  // 1904-01-01 is 24,107 days before 1970-01-01
    char text[64];
    std::snprintf(text, sizeof text, "%04lld-%02u-%02uT%02u:%02u:%02u.%09uZ", static_cast<long long>(year), month, day,
                  static_cast<unsigned>(inDay / 3600), static_cast<unsigned>(inDay / 60 % 60),
                  static_cast<unsigned>(inDay % 60), nanos);
    return text;
}

// --- VarData to JSON.

Json InlineJson(const VarData& value, Tag tag) {
    const std::vector<unsigned char> record = Record(value, false);
    const auto typeWord = Read<std::uint32_t>(record, 0);
    const std::uint16_t subtype = typeWord >> 16;
    Json out;
    // A bit array holds its pattern as a double; one that bitArray() would make is shown as bits.
    if (typeWord == vardata_type::kBitArrayTypeWord) {
        const auto number = Read<double>(record, 4);
        if (number >= 0 && number <= 4294967295.0 && !std::signbit(number) &&
            number == static_cast<double>(static_cast<std::uint32_t>(number))) {
            out["type"] = kBitArrayName;
            out["bits"] = Hex(static_cast<std::uint32_t>(number), 8);
            return out;
        }
    }
    out["type"] = RowOf(tag)->name;
    if (subtype != 0) out["subtype"] = subtype;
    if (IsMarker(tag)) {
        if (const auto payload = Read<std::uint64_t>(record, 4)) out["payload"] = Hex(payload, 16);
    } else if (tag == Tag::Logical) {
        const std::uint8_t byte = record[4];
        out["value"] = byte != 0;
        if (byte > 1) out["byte"] = byte;
    } else if (tag == Tag::Numeric) {
        out["value"] = NumberJson(Read<double>(record, 4));
    } else if (tag == Tag::Time) {
        const auto count = Read<std::int64_t>(record, 4);
        out["nanoseconds"] = count;
        // Nanoseconds since 1899-12-30, which is 1,462 days before 1904-01-01.
        std::int64_t seconds = count / 1000000000;
        std::int64_t nanos = count % 1000000000;
        if (nanos < 0) nanos += 1000000000, --seconds;
        out["utc"] = CivilText(seconds - 126316800, static_cast<unsigned>(nanos));
    } else if (tag == Tag::VoidPointer) {
        out["value"] = Hex(Read<std::uint64_t>(record, 4), 16);
    } else {  // ID64
        out["value"] = Read<std::uint64_t>(record, 4);
    }
    return out;
}

Json TextJson(const zo::kel::NarrowString& text) {
    std::string_view bytes(text.c_str(), text.length());
    Json out;
    out["type"] = "Ansi";
    if (DecodeUtf8(bytes, nullptr)) out["value"] = std::string(bytes);
    else out["base64"] = Base64Encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    return out;
}

Json WideTextJson(const zo::kel::WideString& text) {
    Json out;
    out["type"] = "Unicode";
    std::string utf8;
    if (EncodeUtf8(text.c_str(), text.length(), utf8)) {
        out["value"] = utf8;
    } else {
        Json codes = Json::array();
        for (unsigned int i = 0; i < text.length(); ++i) codes.push_back(static_cast<std::int32_t>(text[i]));
        out["codes"] = codes;
    }
    return out;
}

Json TimeJson(const VarData& value, Tag tag) {
    const std::vector<unsigned char> record = Record(value, true);
    const auto fraction = Read<std::uint64_t>(record, 4);
    const auto seconds = Read<std::int64_t>(record, 12);
    Json out;
    out["type"] = RowOf(tag)->name;
    out["seconds"] = seconds;
    out["fraction"] = fraction;
    if (tag == Tag::AbsTimeValue) out["utc"] = UtcText(seconds, fraction);
    return out;
}

Json RecordJson(const VarData& value, const TagRow& row) {
    const std::vector<unsigned char> record = Record(value, true);
    Json out;
    out["type"] = row.name;
    out["record"] = Base64Encode(record.data(), record.size());
    if (row.view) {
        if (std::optional<Json> view = row.view(value)) out["view"] = std::move(*view);
    }
    return out;
}

// --- JSON to VarData.

class Reader {
public:
    VarData value(const Json& json, const std::string& path) {
        // The byte reader takes a root and kMaxNestingDepth levels below it; so does this.
        if (++depth_ > VarData::kMaxNestingDepth + 1) fail(path, "nested deeper than the byte form allows");
        VarData result = valueAt(json, path);
        --depth_;
        return result;
    }

private:
    [[noreturn]] static void fail(const std::string& path, const std::string& reason) {
        throw JsonMappingError(path, reason);
    }

    static const Json& member(const Json& object, const char* name, const std::string& path) {
        const auto found = object.find(name);
        if (found == object.end()) fail(path, std::string("missing member \"") + name + "\"");
        return *found;
    }

    // Members beyond the allowed ones are refused, so a misspelt name is never ignored.
    static void onlyMembers(const Json& object, std::initializer_list<std::string_view> allowed,
                            const std::string& path) {
        for (const auto& [name, item] : object.items()) {
            bool known = name == "type";
            for (std::string_view one : allowed) known = known || name == one;
            if (!known) fail(path + "/" + name, "unexpected member for this type");
        }
    }

    template <class T>
    static T integer(const Json& json, const std::string& path) {
        if (json.is_number_unsigned()) {
            const auto number = json.get<std::uint64_t>();
            if (number <= static_cast<std::uint64_t>(std::numeric_limits<T>::max())) return static_cast<T>(number);
        } else if (json.is_number_integer()) {
            const auto number = json.get<std::int64_t>();
            if constexpr (std::is_signed_v<T>) {
                if (number >= std::numeric_limits<T>::min() && number <= std::numeric_limits<T>::max())
                    return static_cast<T>(number);
            } else if (number >= 0 && static_cast<std::uint64_t>(number) <= std::numeric_limits<T>::max()) {
                return static_cast<T>(number);
            }
        } else {
            fail(path, "expected an integer");
        }
        fail(path, "integer out of range");
    }

    static std::uint64_t hexWord(const Json& json, const std::string& path, int maxDigits) {
        if (!json.is_string()) fail(path, "expected a hexadecimal text such as \"0x1F\"");
        const std::string& text = json.get_ref<const std::string&>();
        if (text.size() < 3 || text.size() > static_cast<std::size_t>(maxDigits) + 2 || text[0] != '0' ||
            (text[1] != 'x' && text[1] != 'X'))
            fail(path, "expected a hexadecimal text of at most " + std::to_string(maxDigits) + " digits after 0x");
        std::uint64_t out = 0;
        for (std::size_t i = 2; i < text.size(); ++i) {
            const char c = text[i];
            const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                                          : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
            if (digit < 0) fail(path, "not a hexadecimal digit in \"" + text + "\"");
            out = out << 4 | static_cast<unsigned>(digit);
        }
        return out;
    }

    static double number(const Json& json, const std::string& path) {
        if (json.is_number()) return json.get<double>();
        if (json.is_string()) {
            const std::string& text = json.get_ref<const std::string&>();
            if (text == "Infinity") return std::numeric_limits<double>::infinity();
            if (text == "-Infinity") return -std::numeric_limits<double>::infinity();
            if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
            if (text.starts_with("NaN:")) {
                const double out = std::bit_cast<double>(hexWord(Json(text.substr(4)), path, 16));
                if (std::isnan(out)) return out;
            }
        }
        fail(path, "expected a number, \"Infinity\", \"-Infinity\", \"NaN\" or \"NaN:0x<16 digits>\"");
    }

    static std::vector<unsigned char> base64(const Json& json, const std::string& path) {
        if (!json.is_string()) fail(path, "expected base64 text");
        try {
            return Base64Decode(json.get_ref<const std::string&>());
        } catch (const std::invalid_argument& bad) {
            fail(path, bad.what());
        }
    }

    // Inline values are rebuilt from their full record by the library's reader.
    static VarData inlineValue(std::uint32_t typeWord, const void* body, std::size_t length) {
        unsigned char record[12];
        std::memcpy(record, &typeWord, 4);
        std::memcpy(record + 4, body, length);
        unsigned int used = 0;
        return VarData::DeserializeWithoutSize(record, static_cast<unsigned int>(4 + length), used, false);
    }

    VarData valueAt(const Json& json, const std::string& path) {
        if (!json.is_object()) fail(path, "expected an object with a \"type\" member");
        const Json& typeJson = member(json, "type", path);
        if (!typeJson.is_string()) fail(path + "/type", "expected a type name");
        const std::string& name = typeJson.get_ref<const std::string&>();
        if (name == kBitArrayName) {
            onlyMembers(json, {"bits"}, path);
            return VarData::bitArray(static_cast<unsigned int>(hexWord(member(json, "bits", path), path + "/bits", 8)));
        }
        const TagRow* row = RowNamed(name);
        if (!row) fail(path + "/type", "unknown type \"" + name + "\"");
        const Tag tag = row->tag;
        if (IsInline(tag)) return inlineAt(json, tag, path);
        switch (tag) {
        case Tag::Ansi: return ansiAt(json, path);
        case Tag::Unicode: return unicodeAt(json, path);
        case Tag::Raw: {
            onlyMembers(json, {"base64"}, path);
            const std::vector<unsigned char> bytes = base64(member(json, "base64", path), path + "/base64");
            return VarData(bytes.data(), static_cast<unsigned int>(bytes.size()));
        }
        case Tag::Cell: {
            onlyMembers(json, {"row", "column", "value"}, path);
            const auto rowIndex = integer<std::uint16_t>(member(json, "row", path), path + "/row");
            const auto column = integer<std::uint16_t>(member(json, "column", path), path + "/column");
            return VarData(rowIndex, column, value(member(json, "value", path), path + "/value"));
        }
        case Tag::Sequence: return sequenceAt(json, path);
        case Tag::Dictionary: return dictionaryAt(json, path);
        case Tag::AbsTimeValue:
        case Tag::RelTimeValue: {
            onlyMembers(json, {"seconds", "fraction", "utc"}, path);
            tSSTimeValue time;
            time.seconds = integer<std::int64_t>(member(json, "seconds", path), path + "/seconds");
            time.fraction = integer<std::uint64_t>(member(json, "fraction", path), path + "/fraction");
            VarData out;
            out.setISSTimeValue(static_cast<unsigned int>(tag), time);
            return out;
        }
        default: return recordAt(json, *row, path);
        }
    }

    static VarData inlineAt(const Json& json, Tag tag, const std::string& path) {
        std::uint32_t typeWord = static_cast<std::uint32_t>(tag);
        if (json.contains("subtype"))
            typeWord |= static_cast<std::uint32_t>(integer<std::uint16_t>(json["subtype"], path + "/subtype")) << 16;
        std::uint64_t payload = 0;
        if (IsMarker(tag)) {
            onlyMembers(json, {"subtype", "payload"}, path);
            if (json.contains("payload")) payload = hexWord(json["payload"], path + "/payload", 16);
            return inlineValue(typeWord, &payload, 8);
        }
        if (tag == Tag::Logical) {
            onlyMembers(json, {"subtype", "value", "byte"}, path);
            const Json& flag = member(json, "value", path);
            if (!flag.is_boolean()) fail(path + "/value", "expected true or false");
            std::uint8_t byte = flag.get<bool>() ? 1 : 0;
            if (json.contains("byte")) {
                byte = integer<std::uint8_t>(json["byte"], path + "/byte");
                if ((byte != 0) != flag.get<bool>()) fail(path + "/byte", "disagrees with \"value\"");
            }
            return inlineValue(typeWord, &byte, 1);
        }
        if (tag == Tag::Time) {
            onlyMembers(json, {"subtype", "nanoseconds", "utc"}, path);
            const auto count = integer<std::int64_t>(member(json, "nanoseconds", path), path + "/nanoseconds");
            return inlineValue(typeWord, &count, 8);
        }
        onlyMembers(json, {"subtype", "value"}, path);
        const Json& item = member(json, "value", path);
        if (tag == Tag::Numeric) {
            const double value = number(item, path + "/value");
            return inlineValue(typeWord, &value, 8);
        }
        if (tag == Tag::VoidPointer) payload = hexWord(item, path + "/value", 16);
        else payload = integer<std::uint64_t>(item, path + "/value");  // ID64
        return inlineValue(typeWord, &payload, 8);
    }

    static VarData ansiAt(const Json& json, const std::string& path) {
        onlyMembers(json, {"value", "base64"}, path);
        if (json.contains("value") == json.contains("base64")) fail(path, "expected exactly one of \"value\" and \"base64\"");
        if (json.contains("value")) {
            const Json& text = json["value"];
            if (!text.is_string()) fail(path + "/value", "expected a string");
            const std::string& bytes = text.get_ref<const std::string&>();
            return VarData::ansi(bytes.data(), static_cast<unsigned int>(bytes.size()));
        }
        const std::vector<unsigned char> bytes = base64(json["base64"], path + "/base64");
        return VarData::ansi(reinterpret_cast<const char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
    }

    static VarData unicodeAt(const Json& json, const std::string& path) {
        onlyMembers(json, {"value", "codes"}, path);
        if (json.contains("value") == json.contains("codes")) fail(path, "expected exactly one of \"value\" and \"codes\"");
        std::wstring text;
        if (json.contains("value")) {
            const Json& item = json["value"];
            if (!item.is_string()) fail(path + "/value", "expected a string");
            std::u32string codes;
            if (!DecodeUtf8(item.get_ref<const std::string&>(), &codes)) fail(path + "/value", "not UTF-8");
            text.assign(codes.begin(), codes.end());
        } else {
            const Json& codes = json["codes"];
            if (!codes.is_array()) fail(path + "/codes", "expected an array of character codes");
            for (std::size_t i = 0; i < codes.size(); ++i)
                text.push_back(static_cast<wchar_t>(
                    integer<std::int32_t>(codes[i], path + "/codes/" + std::to_string(i))));
        }
        return VarData::unicode(text.data(), static_cast<unsigned int>(text.size()));
    }

    VarData sequenceAt(const Json& json, const std::string& path) {
        onlyMembers(json, {"elements"}, path);
        const Json& elements = member(json, "elements", path);
        if (!elements.is_array()) fail(path + "/elements", "expected an array");
        VarData out = VarData::sequence();
        for (std::size_t i = 0; i < elements.size(); ++i)
            out.SetElement(static_cast<unsigned int>(i), value(elements[i], path + "/elements/" + std::to_string(i)));
        return out;
    }

    VarData dictionaryAt(const Json& json, const std::string& path) {
        onlyMembers(json, {"entries"}, path);
        const Json& entries = member(json, "entries", path);
        if (!entries.is_array()) fail(path + "/entries", "expected an array of {\"key\", \"value\"} objects");
        VarData out = VarData::dict();
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const std::string at = path + "/entries/" + std::to_string(i);
            const Json& entry = entries[i];
            if (!entry.is_object()) fail(at, "expected an object with \"key\" and \"value\"");
            for (const auto& [name, item] : entry.items())
                if (name != "key" && name != "value") fail(at + "/" + name, "unexpected member of an entry");
            VarData key = value(member(entry, "key", at), at + "/key");
            if (out.hasKey(key)) fail(at + "/key", "repeats an earlier key");
            out.setValue(key, value(member(entry, "value", at), at + "/value"));
        }
        return out;
    }

    static VarData recordAt(const Json& json, const TagRow& row, const std::string& path) {
        onlyMembers(json, {"record", "view"}, path);
        const std::vector<unsigned char> bytes = base64(member(json, "record", path), path + "/record");
        std::uint32_t typeWord = 0;
        if (bytes.size() >= 4) std::memcpy(&typeWord, bytes.data(), 4);
        if (bytes.size() < 4 || vardata_type::TagOf(typeWord) != static_cast<std::uint16_t>(row.tag))
            fail(path + "/record", "the record is not of type " + std::string(row.name));
        unsigned int used = 0;
        try {
            VarData out = VarData::DeserializeWithoutSize(bytes.data(), static_cast<unsigned int>(bytes.size()), used, true);
            if (used != bytes.size()) fail(path + "/record", "bytes after the end of the record");
            return out;
        } catch (const DeserializationErrorException& bad) {
            fail(path + "/record", std::string("unreadable record: ") + bad.what());
        }
    }

    unsigned int depth_ = 0;
};

constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

Json ToJson(const VarData& value) {
    const Tag tag = static_cast<Tag>(vardata_type::TagOf(value.GetType()));
    const TagRow* row = RowOf(tag);
    if (!row) throw JsonMappingError("", "a value of unknown tag " + Hex(static_cast<std::uint16_t>(tag), 4));
    if (IsInline(tag)) return InlineJson(value, tag);
    switch (tag) {
    case Tag::Ansi: return TextJson(value.getAnsiString());
    case Tag::Unicode: return WideTextJson(value.getString());
    case Tag::Raw: {
        const unsigned char* data = nullptr;
        unsigned int length = 0;
        value.GetRaw(data, length);
        Json out;
        out["type"] = "Raw";
        out["base64"] = Base64Encode(data, length);
        return out;
    }
    case Tag::Cell: {
        unsigned short rowIndex = 0, column = 0;
        VarData content;
        value.GetCell(rowIndex, column, content);
        Json out;
        out["type"] = "Cell";
        out["row"] = rowIndex;
        out["column"] = column;
        out["value"] = ToJson(content);
        return out;
    }
    case Tag::Sequence: {
        Json elements = Json::array();
        const unsigned int count = value.GetLength();
        for (unsigned int i = 0; i < count; ++i) elements.push_back(ToJson(value.GetElement(i)));
        Json out;
        out["type"] = "Sequence";
        out["elements"] = std::move(elements);
        return out;
    }
    case Tag::Dictionary: {
        Json entries = Json::array();
        for (auto at = value.begin(); at != value.end(); ++at) {
            Json entry;
            entry["key"] = ToJson(at.key());
            entry["value"] = ToJson(at.value());
            entries.push_back(std::move(entry));
        }
        Json out;
        out["type"] = "Dictionary";
        out["entries"] = std::move(entries);
        return out;
    }
    case Tag::AbsTimeValue:
    case Tag::RelTimeValue: return TimeJson(value, tag);
    default: return RecordJson(value, *row);
    }
}

VarData FromJson(const Json& json) { return Reader().value(json, ""); }

std::string Base64Encode(const unsigned char* data, std::size_t length) {
    std::string out;
    out.reserve((length + 2) / 3 * 4);
    for (std::size_t i = 0; i < length; i += 3) {
        const std::uint32_t group = static_cast<std::uint32_t>(data[i]) << 16 |
                                    (i + 1 < length ? static_cast<std::uint32_t>(data[i + 1]) << 8 : 0) |
                                    (i + 2 < length ? data[i + 2] : 0);
        out += kBase64Alphabet[group >> 18 & 63];
        out += kBase64Alphabet[group >> 12 & 63];
        out += i + 1 < length ? kBase64Alphabet[group >> 6 & 63] : '=';
        out += i + 2 < length ? kBase64Alphabet[group & 63] : '=';
    }
    return out;
}

std::vector<unsigned char> Base64Decode(const std::string& text) {
    if (text.size() % 4 != 0) throw std::invalid_argument("base64 length is not a multiple of 4");
    std::vector<unsigned char> out;
    out.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        std::uint32_t group = 0;
        int padding = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const char c = text[i + k];
            const char* at = c ? std::strchr(kBase64Alphabet, c) : nullptr;
            if (c == '=' && i + 4 == text.size() && k >= 2) {
                ++padding;
                group <<= 6;
                continue;
            }
            if (!at || padding) throw std::invalid_argument("not base64 at character " + std::to_string(i + k));
            group = group << 6 | static_cast<std::uint32_t>(at - kBase64Alphabet);
        }
        // Bits below the padding must be zero: each byte string has one text.
        if ((padding == 1 && (group & 0xFF)) || (padding == 2 && (group & 0xFFFF)))
            throw std::invalid_argument("base64 padding bits are not zero");
        out.push_back(static_cast<unsigned char>(group >> 16));
        if (padding < 2) out.push_back(static_cast<unsigned char>(group >> 8));
        if (padding < 1) out.push_back(static_cast<unsigned char>(group));
    }
    return out;
}

std::string UtcText(std::int64_t seconds, std::uint64_t fraction) {
    return CivilText(seconds, static_cast<unsigned>((static_cast<Wide128>(fraction) * 1000000000u) >> 64));
}

}  // namespace qkdynam_json
