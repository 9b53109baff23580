// The JSON mapping: exact forms per tag, refusal with a JSON path, and a
// property test over generated values (to JSON and back gives an equal value
// with the same bytes).
#include <qkdynam_json/VarDataJson.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

using qkdynam_json::FromJson;
using qkdynam_json::Json;
using qkdynam_json::JsonMappingError;
using qkdynam_json::ToJson;

namespace {

std::vector<unsigned char> Bytes(const VarData& value, bool compact) {
    zo::kel::AutoBuffer buffer;
    value.SerializeWithoutSize(buffer, compact);
    return {buffer.Data(), buffer.Data() + buffer.Len()};
}

VarData FromRecord(std::vector<unsigned char> record, bool compact) {
    unsigned int used = 0;
    return VarData::DeserializeWithoutSize(record.data(), static_cast<unsigned int>(record.size()), used, compact);
}

const unsigned short kClusterDescriptor[] = {12, 0x50, 1, 6, 0x4021, 0x0161};  // cluster {boolean "a"}
const unsigned char kClusterData[] = {1};

TEST(VarDataJson, EachTagHasItsDocumentedForm) {
    struct Row {
        VarData value;
        const char* json;
    };
    VarData dictionary = VarData::dict();
    dictionary.setValue(VarData::num(2), "two");
    dictionary.setValue("b", VarData::num(1));
    VarData sequence = VarData::sequence();
    sequence.SetElement(0, VarData::num(1.5));
    sequence.SetElement(1, L"x");
    VarData logical;
    logical = true;
    VarData id;
    id.setID64(0xFFFFFFFFFFFFFFFFull);
    VarData time;
    time = 86400000000000L;  // one day after 1899-12-30
    const unsigned char raw[] = {0, 1, 0xFF};
    const wchar_t negative[] = {static_cast<wchar_t>(-1), L'A'};
    VarData halfPastDayOne;
    halfPastDayOne.setISSTimeValue(0x100F, tSSTimeValue{0x8000000000000000ull, 86400});
    const Row rows[] = {
        {VarData(), R"({"type":"Empty"})"},
        {VarData::pulse(), R"({"type":"Pulse"})"},
        {VarData::brake(), R"({"type":"Break"})"},
        {logical, R"({"type":"Logical","value":true})"},
        {VarData::num(-0.0), R"({"type":"Numeric","value":-0.0})"},
        {VarData::num(0.1, 3), R"({"type":"Numeric","subtype":3,"value":0.1})"},
        {VarData::num(std::numeric_limits<double>::infinity()), R"({"type":"Numeric","value":"Infinity"})"},
        {VarData::bitArray(0xF0), R"({"type":"BitArray","bits":"0x000000F0"})"},
        {time, R"({"type":"Time","nanoseconds":86400000000000,"utc":"1899-12-31T00:00:00.000000000Z"})"},
        {id, R"({"type":"ID64","value":18446744073709551615})"},
        {VarData("caf\xC3\xA9"), R"({"type":"Ansi","value":"café"})"},
        {VarData::ansi("\xFF", 1), R"({"type":"Ansi","base64":"/w=="})"},
        {VarData(L"\u00E9\U0001F600"), R"({"type":"Unicode","value":"é😀"})"},
        {VarData::unicode(L"\xD800", 1), R"({"type":"Unicode","codes":[55296]})"},
        {VarData::unicode(negative, 2), R"({"type":"Unicode","codes":[-1,65]})"},
        {VarData(raw, 3), R"({"type":"Raw","base64":"AAH/"})"},
        {VarData(2, 5, VarData::num(1)), R"({"type":"Cell","row":2,"column":5,"value":{"type":"Numeric","value":1.0}})"},
        {sequence, R"({"type":"Sequence","elements":[{"type":"Numeric","value":1.5},{"type":"Unicode","value":"x"}]})"},
        {dictionary, R"({"type":"Dictionary","entries":[{"key":{"type":"Numeric","value":2.0},"value":{"type":"Ansi","value":"two"}},)"
                     R"({"key":{"type":"Ansi","value":"b"},"value":{"type":"Numeric","value":1.0}}]})"},
        {halfPastDayOne,
         R"({"type":"AbsTimeValue","seconds":86400,"fraction":9223372036854775808,"utc":"1904-01-02T00:00:00.500000000Z"})"},
    };
    VarData earliest;
    earliest = std::numeric_limits<long>::min();
    VarData beforeEpoch;
    beforeEpoch.setISSTimeValue(0x100F, tSSTimeValue{0x4000000000000000ull, -126230401});
    const Row extremes[] = {
        {earliest, R"({"type":"Time","nanoseconds":-9223372036854775808,"utc":"1607-09-20T00:12:43.145224192Z"})"},
        {beforeEpoch, R"({"type":"AbsTimeValue","seconds":-126230401,"fraction":4611686018427387904,)"
                      R"("utc":"1899-12-30T23:59:59.250000000Z"})"},
    };
    VarData first;
    first.setISSTimeValue(0x100F, tSSTimeValue{0, std::numeric_limits<std::int64_t>::min()});
    EXPECT_EQ(ToJson(first)["utc"].get<std::string>().substr(0, 14), "-292277022723-");
    for (const Row& row : extremes) {
        EXPECT_EQ(ToJson(row.value).dump(), row.json);
        EXPECT_EQ(Bytes(FromJson(Json::parse(row.json)), false), Bytes(row.value, false)) << row.json;
    }
    for (const Row& row : rows) {
        EXPECT_EQ(ToJson(row.value).dump(), row.json);
        const VarData back = FromJson(Json::parse(row.json));
        EXPECT_EQ(Bytes(back, false), Bytes(row.value, false)) << row.json;
    }
}

TEST(VarDataJson, InlineValuesKeepEveryBitOfTheirFullRecord) {
    // Type word with a subtype on a marker, payload bytes, a Logical byte of 7, a signalling NaN.
    const std::vector<std::vector<unsigned char>> records = {
        {0x01, 0, 0x05, 0, 1, 2, 3, 4, 5, 6, 7, 8},
        {0x02, 0, 0, 0, 7},
        {0x03, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0xF0, 0x7F},
        {0x0D, 0, 0, 0, 0xEF, 0xBE, 0xAD, 0xDE, 0x78, 0x56, 0x34, 0x12},
    };
    const char* expected[] = {
        R"({"type":"Empty","subtype":5,"payload":"0x0807060504030201"})",
        R"({"type":"Logical","value":true,"byte":7})",
        R"({"type":"Numeric","value":"NaN:0x7FF0000000000001"})",
        R"({"type":"VoidPointer","value":"0x12345678DEADBEEF"})",
    };
    for (std::size_t i = 0; i < records.size(); ++i) {
        const VarData value = FromRecord(records[i], false);
        const Json json = ToJson(value);
        EXPECT_EQ(json.dump(), expected[i]);
        EXPECT_EQ(Bytes(FromJson(json), false), records[i]);
    }
}

TEST(VarDataJson, HostVariantCarriesItsRecordAndAView) {
    const VarData value = VarData::gxvar(kClusterDescriptor, 6, kClusterData, 1);
    const Json json = ToJson(value);
    ASSERT_EQ(json["type"], "GXVariant");
    EXPECT_EQ(json["view"].dump(),
              R"({"type":"Dictionary","entries":[{"key":{"type":"Ansi","value":"a"},"value":{"type":"Logical","value":true}}]})");
    const std::vector<unsigned char> record = Bytes(value, true);
    EXPECT_EQ(json["record"], qkdynam_json::Base64Encode(record.data(), record.size()));
    const VarData back = FromJson(json);
    EXPECT_EQ(Bytes(back, true), record);
    EXPECT_EQ(back.Compare(value), 0);

    // A descriptor the reader refuses still travels exactly, without a view.
    const unsigned short broken[] = {4, 0x7777};
    const Json opaque = ToJson(VarData::gxvar(broken, 2, nullptr, 0));
    EXPECT_FALSE(opaque.contains("view"));
    EXPECT_EQ(Bytes(FromJson(opaque), true), Bytes(VarData::gxvar(broken, 2, nullptr, 0), true));
}

TEST(VarDataJson, RefusalsNameTheJsonPath) {
    struct Row {
        const char* json;
        const char* path;
    };
    const Row rows[] = {
        {R"([1])", ""},
        {R"({"value":1})", ""},
        {R"({"type":"Numbr","value":1})", "/type"},
        {R"({"type":"Numeric","value":"1"})", "/value"},
        {R"({"type":"Numeric","value":1,"extra":0})", "/extra"},
        {R"({"type":"Cell","row":70000,"column":0,"value":{"type":"Empty"}})", "/row"},
        {R"({"type":"Sequence","elements":[{"type":"Empty"},{"type":"Raw","base64":"A"}]})", "/elements/1/base64"},
        {R"({"type":"Dictionary","entries":[{"key":{"type":"Ansi","value":"k"},"value":{"type":"Empty"}},)"
         R"({"key":{"type":"Ansi","value":"K"},"value":{"type":"Empty"}}]})", "/entries/1/key"},
        {R"({"type":"Dictionary","entries":[{"key":{"type":"Ansi","value":"r"},"value":{"type":"Sequence","elements":[)"
         R"({"type":"Empty"},{"type":"Empty"},{"type":"Empty"},{"type":"Logical","value":2}]}}]})", "/entries/0/value/elements/3/value"},
        {R"({"type":"Logical","value":false,"byte":3})", "/byte"},
        {R"({"type":"BitArray","bits":"0x123456789"})", "/bits"},
        {R"({"type":"GXVariant","record":"AQAAAA=="})", "/record"},
        {R"({"type":"GXVariant","record":"EhAAAAEAAAA="})", "/record"},
        {R"({"type":"Ansi","value":"a","base64":"YQ=="})", ""},
    };
    // As deep as the byte form may nest is accepted and reads back from bytes;
    // one level more is refused where the limit is crossed.
    Json deep = {{"type", "Empty"}};
    for (unsigned int i = 0; i < VarData::kMaxNestingDepth; ++i)
        deep = Json{{"type", "Cell"}, {"row", 0}, {"column", 1}, {"value", deep}};
    const VarData deepest = FromJson(deep);
    EXPECT_EQ(FromRecord(Bytes(deepest, true), true).Compare(deepest), 0);
    deep = Json{{"type", "Cell"}, {"row", 0}, {"column", 1}, {"value", deep}};
    std::string limit;
    for (unsigned int i = 0; i <= VarData::kMaxNestingDepth; ++i) limit += "/value";
    try {
        FromJson(deep);
        ADD_FAILURE() << "accepted a level more than the byte form";
    } catch (const JsonMappingError& error) {
        EXPECT_EQ(error.path(), limit);
    }
    for (const Row& row : rows) {
        try {
            FromJson(Json::parse(row.json));
            ADD_FAILURE() << "accepted " << row.json;
        } catch (const JsonMappingError& error) {
            EXPECT_EQ(error.path(), row.path) << row.json << " -> " << error.what();
        } catch (const std::exception& other) {
            ADD_FAILURE() << row.json << " -> " << other.what();
        }
    }
}

TEST(VarDataJson, Base64IsCanonical) {
    const unsigned char bytes[] = {'f', 'o', 'o', 'b', 'a'};
    EXPECT_EQ(qkdynam_json::Base64Encode(bytes, 5), "Zm9vYmE=");
    EXPECT_EQ(qkdynam_json::Base64Decode("Zm9vYmE="), std::vector<unsigned char>(bytes, bytes + 5));
    EXPECT_TRUE(qkdynam_json::Base64Decode("").empty());
    for (const char* bad : {"Zm9", "Zm9vYmF=", "Zm=v", "Zm9v\nYmE="}) {
        EXPECT_THROW(qkdynam_json::Base64Decode(bad), std::invalid_argument) << bad;
    }
    EXPECT_EQ(qkdynam_json::Base64Decode("Zg=="), std::vector<unsigned char>{'f'});
}

// --- Property: generated values of every tag survive JSON exactly.

class Generator {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    VarData value(int depth) {
        const int kinds = depth > 3 ? 14 : 17;
        switch (pick(kinds)) {
        case 0: return VarData();
        case 1: return pick(2) ? VarData::pulse() : VarData::brake();
        case 2: return withFullRecord(2, {static_cast<unsigned char>(pick(256))});
        case 3: return VarData::num(number(), static_cast<unsigned short>(pick(3) == 0 ? pick(20) : 0));
        case 4: return VarData::bitArray(static_cast<unsigned int>(random_()));
        case 5: { VarData out; out = static_cast<long>(word()); return out; }
        case 6: { VarData out; out.setID64(word()); return out; }
        case 7: return withFullRecord(0x0D, eight());
        case 8: return VarData::ansi(text().data(), static_cast<unsigned int>(text_.size()));
        case 9: {
            std::wstring wide;
            for (int i = pick(6); i > 0; --i) wide.push_back(static_cast<wchar_t>(pick(3) ? pick(0x80) : pick(0xFFFF)));
            return VarData::unicode(wide.data(), static_cast<unsigned int>(wide.size()));
        }
        case 10: {
            std::vector<unsigned char> bytes(pick(9));
            for (auto& byte : bytes) byte = static_cast<unsigned char>(pick(256));
            return VarData(bytes.data(), static_cast<unsigned int>(bytes.size()));
        }
        case 11: {
            VarData out;
            out.setISSTimeValue(pick(2) ? 0x100F : 0x1010, tSSTimeValue{word(), static_cast<std::int64_t>(word())});
            return out;
        }
        case 12: {
            if (pick(2)) return VarData::gxvar(kClusterDescriptor, 6, kClusterData, 1);
            zo::kel::FlexData packet(static_cast<double>(pick(1000)) / 8);
            if (pick(2)) packet.setAttribute("Units", zo::kel::FlexData(zo::kel::NarrowString("bar")));
            return VarData(packet);
        }
        case 13: return withFullRecord(pick(2) ? 0 : 1, eight());
        case 14: return VarData(static_cast<unsigned short>(pick(70000)), static_cast<unsigned short>(pick(9)),
                                value(depth + 1));
        case 15: {
            VarData out = VarData::sequence();
            for (int i = pick(4); i > 0; --i) out.SetElement(out.GetLength(), value(depth + 1));
            return out;
        }
        default: {
            VarData out = VarData::dict();
            for (int i = pick(4); i > 0; --i) out.setValue(value(depth + 1), value(depth + 1));
            return out;
        }
        }
    }

private:
    int pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
    std::uint64_t word() { return random_(); }
    std::vector<unsigned char> eight() {
        std::vector<unsigned char> out(8);
        const std::uint64_t bits = pick(2) ? 0 : word();
        std::memcpy(out.data(), &bits, 8);
        return out;
    }
    double number() {
        switch (pick(6)) {
        case 0: return static_cast<double>(pick(1000)) - 500;
        case 1: return std::ldexp(static_cast<double>(word() >> 11), pick(200) - 100);
        case 2: return -0.0;
        case 3: return std::numeric_limits<double>::denorm_min();
        case 4: return pick(2) ? std::numeric_limits<double>::infinity() : -std::numeric_limits<double>::max();
        default: return std::bit_cast<double>(word());  // any bits, NaNs with payloads included
        }
    }
    const std::string& text() {
        static const char* const kPieces[] = {"a", "Tag", " ", "\xC3\xA9", "\xFF", "\n", "\"", "\\"};
        text_.clear();
        for (int i = pick(5); i > 0; --i) text_ += kPieces[pick(8)];
        return text_;
    }
    VarData withFullRecord(std::uint32_t typeWord, std::vector<unsigned char> body) {
        typeWord |= static_cast<std::uint32_t>(pick(4) == 0 ? pick(0x10000) : 0) << 16;
        std::vector<unsigned char> record(4);
        std::memcpy(record.data(), &typeWord, 4);
        record.insert(record.end(), body.begin(), body.end());
        return FromRecord(record, false);
    }

    std::mt19937_64 random_;
    std::string text_;
};

bool HasNaN(const VarData& value) {
    return ToJson(value).dump().find("NaN") != std::string::npos;
}

TEST(VarDataJson, GeneratedValuesSurviveJsonExactly) {
    Generator generate(20261123);
    for (int i = 0; i < 3000; ++i) {
        const VarData value = generate.value(0);
        const Json json = ToJson(value);
        const VarData back = FromJson(Json::parse(json.dump()));
        ASSERT_EQ(Bytes(back, false), Bytes(value, false)) << json.dump();
        ASSERT_EQ(Bytes(back, true), Bytes(value, true)) << json.dump();
        if (!HasNaN(value)) {
            ASSERT_EQ(back.Compare(value), 0) << json.dump();
        }
        ASSERT_EQ(ToJson(back), json);
    }
}

}  // namespace
