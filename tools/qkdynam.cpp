// qkdynam: look at, make and convert the library's values from a shell.
// Input comes from a file or standard input, results go to standard output,
// diagnostics to standard error. Exit codes: 0 success, 1 bad input, 2 bad usage.
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <qkdynam.h>
#include <qkdynam_json/VarDataJson.h>

namespace {

using qkdynam_json::Json;

constexpr int kBadInput = 1;
constexpr int kBadUsage = 2;
constexpr std::size_t kChunk = 64 * 1024;

// A failure caused by the input; main prints it and exits with kBadInput.
struct BadInput : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct FileCloser {
    void operator()(std::FILE* file) const {
        if (file != stdin) std::fclose(file);
    }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File OpenInput(const std::string& path) {
    if (path.empty() || path == "-") return File(stdin);
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) throw BadInput("cannot open " + path + ": " + std::strerror(errno));
    return File(file);
}

std::string ReadAll(const std::string& path) {
    File file = OpenInput(path);
    std::string out;
    char chunk[kChunk];
    while (std::size_t got = std::fread(chunk, 1, sizeof chunk, file.get())) out.append(chunk, got);
    if (std::ferror(file.get())) throw BadInput("cannot read " + (path.empty() ? std::string("standard input") : path));
    return out;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string ToHex(const unsigned char* data, std::size_t length) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string out;
    out.reserve(2 * length);
    for (std::size_t i = 0; i < length; ++i) {
        out += kDigits[data[i] >> 4];
        out += kDigits[data[i] & 15];
    }
    return out;
}

std::vector<unsigned char> FromHex(const std::string& text) {
    std::vector<unsigned char> out;
    int high = -1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (std::isspace(static_cast<unsigned char>(text[i]))) continue;
        const int digit = HexDigit(text[i]);
        if (digit < 0) throw BadInput("not a hexadecimal digit at character " + std::to_string(i));
        if (high < 0) high = digit;
        else out.push_back(static_cast<unsigned char>(high << 4 | digit)), high = -1;
    }
    if (high >= 0) throw BadInput("odd number of hexadecimal digits");
    return out;
}

// Bytes from a file or standard input, raw or as hex text, in pieces.
class ByteSource {
public:
    ByteSource(const std::string& path, bool hex) : file_(OpenInput(path)), hex_(hex) {}

    // Appends up to one piece to `out`; false at the end of the input.
    bool readPiece(std::vector<unsigned char>& out) {
        char chunk[kChunk];
        const std::size_t got = std::fread(chunk, 1, sizeof chunk, file_.get());
        if (got == 0) {
            if (std::ferror(file_.get())) throw BadInput("read error");
            if (hex_ && high_ >= 0) throw BadInput("odd number of hexadecimal digits");
            return false;
        }
        if (!hex_) {
            out.insert(out.end(), chunk, chunk + got);
        } else {
            for (std::size_t i = 0; i < got; ++i, ++textOffset_) {
                if (std::isspace(static_cast<unsigned char>(chunk[i]))) continue;
                const int digit = HexDigit(chunk[i]);
                if (digit < 0) throw BadInput("not a hexadecimal digit at character " + std::to_string(textOffset_));
                if (high_ < 0) high_ = digit;
                else out.push_back(static_cast<unsigned char>(high_ << 4 | digit)), high_ = -1;
            }
        }
        return true;
    }

private:
    File file_;
    bool hex_;
    int high_ = -1;
    std::uint64_t textOffset_ = 0;
};

void WriteOut(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

std::string TextForm(const VarData& value) {
    const zo::kel::Utf8String utf8(value.coerceToString());
    return std::string(reinterpret_cast<const char*>(utf8.c_str()), utf8.length());
}

// --- decode

struct DecodeOptions {
    std::string input;
    bool bare = false, stream = false, full = false, hex = false, text = false;
};

std::string Shown(const VarData& value, const DecodeOptions& options, bool pretty) {
    if (options.text) return TextForm(value) + "\n";
    return qkdynam_json::ToJson(value).dump(pretty ? 2 : -1) + "\n";
}

VarData ReadRecord(const unsigned char* data, std::size_t length, bool full) {
    if (length > 0xFFFFFFFFu) throw BadInput("record longer than 4 GiB");
    unsigned int used = 0;
    return VarData::DeserializeWithoutSize(data, static_cast<unsigned int>(length), used, !full);
}

int DecodeBare(const DecodeOptions& options) {
    ByteSource source(options.input, options.hex);
    std::vector<unsigned char> bytes;
    while (source.readPiece(bytes)) {}
    unsigned int used = 0;
    VarData value;
    try {
        if (bytes.size() > 0xFFFFFFFFu) throw BadInput("record longer than 4 GiB");
        value = VarData::DeserializeWithoutSize(bytes.data(), static_cast<unsigned int>(bytes.size()), used, !options.full);
    } catch (const DeserializationErrorException& bad) {
        throw BadInput(std::string("unreadable record at offset 0: ") + bad.what());
    }
    if (used != bytes.size())
        throw BadInput("bytes after the record: " + std::to_string(bytes.size() - used) + " at offset " + std::to_string(used));
    WriteOut(Shown(value, options, true));
    return 0;
}

// Length-prefixed records, one JSON line each. Memory stays at one piece plus
// the longest record; an unreadable record is reported by offset and skipped.
int DecodeStream(const DecodeOptions& options) {
    ByteSource source(options.input, options.hex);
    std::vector<unsigned char> pending;
    std::size_t head = 0;        // first unread byte in `pending`
    std::uint64_t offset = 0;    // stream offset of pending[head]
    bool more = true;
    bool bad = false;
    auto fill = [&](std::size_t wanted) {
        while (more && pending.size() - head < wanted) {
            if (head > kChunk) {
                pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(head));
                head = 0;
            }
            more = source.readPiece(pending);
        }
        return pending.size() - head >= wanted;
    };
    while (fill(4)) {
        std::uint32_t length;
        std::memcpy(&length, pending.data() + head, 4);
        if (!fill(4 + std::size_t{length})) {
            std::fprintf(stderr, "qkdynam decode: record at offset %llu: truncated: %u bytes declared, %zu present\n",
                         static_cast<unsigned long long>(offset), length, pending.size() - head - 4);
            return kBadInput;
        }
        try {
            WriteOut(Shown(ReadRecord(pending.data() + head + 4, length, options.full), options, false));
        } catch (const std::exception& failure) {  // unreadable, or (--text) without a text form
            std::fprintf(stderr, "qkdynam decode: record at offset %llu: %s; skipped\n",
                         static_cast<unsigned long long>(offset), failure.what());
            bad = true;
        }
        head += 4 + std::size_t{length};
        offset += 4 + std::uint64_t{length};
    }
    if (pending.size() != head) {
        std::fprintf(stderr, "qkdynam decode: record at offset %llu: truncated length prefix\n",
                     static_cast<unsigned long long>(offset));
        return kBadInput;
    }
    return bad ? kBadInput : 0;
}

// --- encode

struct EncodeOptions {
    std::string input;
    bool bare = false, stream = false, full = false, hex = false;
};

Json ParseJson(const std::string& text, const std::string& where) {
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& bad) {
        throw BadInput(where + "bad JSON: " + bad.what());
    }
}

VarData Mapped(const Json& json, const std::string& where) {
    try {
        return qkdynam_json::FromJson(json);
    } catch (const qkdynam_json::JsonMappingError& bad) {
        throw BadInput(where + bad.what());
    }
}

void AppendRecord(std::string& out, const VarData& value, bool full, bool withSize) {
    zo::kel::AutoBuffer buffer;
    value.SerializeWithoutSize(buffer, !full);
    if (withSize) {
        const auto length = static_cast<std::uint32_t>(buffer.Len());
        out.append(reinterpret_cast<const char*>(&length), 4);
    }
    out.append(reinterpret_cast<const char*>(buffer.Data()), buffer.Len());
}

int Encode(const EncodeOptions& options) {
    const std::string text = ReadAll(options.input);
    std::string out;
    if (options.bare) {
        AppendRecord(out, Mapped(ParseJson(text, ""), ""), options.full, false);
    } else {
        std::size_t start = 0;
        for (unsigned int line = 1; start < text.size(); ++line) {
            std::size_t end = text.find('\n', start);
            if (end == std::string::npos) end = text.size();
            const std::string one = text.substr(start, end - start);
            start = end + 1;
            if (one.find_first_not_of(" \t\r") == std::string::npos) continue;
            const std::string where = "line " + std::to_string(line) + ": ";
            AppendRecord(out, Mapped(ParseJson(one, where), where), options.full, true);
        }
    }
    if (options.hex) WriteOut(ToHex(reinterpret_cast<const unsigned char*>(out.data()), out.size()) + "\n");
    else WriteOut(out);
    return 0;
}

// --- format and parse

unsigned int FormatIndex(const std::string& format) {
    if (!format.empty() && format.find_first_not_of("0123456789") == std::string::npos && format.size() < 6)
        return static_cast<unsigned int>(std::stoul(format));
    short index = 0;
    if (!IsFormat0(format.c_str(), &index)) throw BadInput("unknown display format \"" + format + "\" (see format --list)");
    return static_cast<unsigned int>(index);
}

int Format(const std::string& valueText, const std::string& format, bool list) {
    if (list) {
        for (unsigned int i = 0; i < kDisplayFormatCount; ++i) {
            char name[64];
            GetFormatText0(i, name, sizeof name);
            std::printf("%u\t%s\n", i, name);
        }
        return 0;
    }
    double value = 0;
    if (!IsNumericText(valueText.c_str(), value) && !IsTimeText(valueText.c_str(), value))
        throw BadInput("not a number, elapsed time or date-time: \"" + valueText + "\"");
    char text[256];
    try {
        NumberToText0(FormatIndex(format), text, sizeof text, value);
    } catch (const zo::kel::exception::Exception& failure) {
        throw BadInput(std::string("cannot show ") + valueText + " in that format: " + failure.what());
    }
    std::printf("%s\n", text);
    return 0;
}

int Parse(const std::string& text, int dateFormat) {
    Json out;
    out["text"] = text;
    bool any = false;
    auto days = [&](const char* name, auto recogniser) {
        double value = 0;
        bool accepted = false;
        try {
            accepted = recogniser(value);
        } catch (const zo::kel::exception::Exception&) {
            accepted = false;  // an over-long digit run: not this kind of text
        }
        out[name] = accepted ? Json(value) : Json(nullptr);
        any = any || accepted;
    };
    days("number", [&](double& value) { return AsciiToNumber(text.c_str(), &value) != 0; });
    days("elapsed", [&](double& value) { return AsciiToDays(text.c_str(), &value) != 0; });
    days("datetime", [&](double& value) { return AsciiToDateTime(text.c_str(), &value, dateFormat) != 0; });
    bool logical = false;
    const bool isLogical = IsLogicalText(text.c_str(), logical);
    out["logical"] = isLogical ? Json(logical) : Json(nullptr);
    WriteOut(out.dump(2) + "\n");
    if (any || isLogical) return 0;
    std::fprintf(stderr, "qkdynam parse: no recogniser accepts \"%s\"\n", text.c_str());
    return kBadInput;
}

// --- ini

struct Ini {
    IniHandle handle = IniNew(0);
    ~Ini() { IniDispose(handle); }
};

void ReadIni(Ini& ini, const std::string& path, bool mayBeMissing) {
    const int code = IniReadFromFile(ini.handle, path.c_str());
    if (code == 0 || (code == -22 && mayBeMissing)) return;
    throw BadInput("cannot read " + path + " (code " + std::to_string(code) + ")");
}

int IniGet(const std::string& path, const std::string& section, const std::string& key) {
    Ini ini;
    ReadIni(ini, path, false);
    const char* value = nullptr;
    if (IniGetPointerToString(ini.handle, section.c_str(), key.c_str(), &value) != 1 || !value)
        throw BadInput("no key \"" + key + "\" in section \"" + section + "\"");
    std::printf("%s\n", value);
    return 0;
}

int IniSet(const std::string& path, const std::string& section, const std::string& key, const std::string& value) {
    Ini ini;
    ReadIni(ini, path, true);
    if (const int code = IniPutString(ini.handle, section.c_str(), key.c_str(), value.c_str()); code < 0)
        throw BadInput("cannot set the key (code " + std::to_string(code) + ")");
    if (const int code = IniWriteToFile(ini.handle, path.c_str()); code < 0)
        throw BadInput("cannot save " + path + " (code " + std::to_string(code) + ")");
    return 0;
}

int IniDump(const std::string& path) {
    Ini ini;
    ReadIni(ini, path, false);
    Json out = Json::object();
    const int sections = IniNumberOfSections(ini.handle);
    for (int s = 1; s <= sections; ++s) {
        const char* section = nullptr;
        if (IniNthSectionName(ini.handle, s, &section) != 1 || !section) continue;
        Json items = Json::object();
        const int count = IniNumberOfItems(ini.handle, section);
        for (int i = 1; i <= count; ++i) {
            const char* name = nullptr;
            const char* value = nullptr;
            if (IniNthItemName(ini.handle, section, i, &name) == 1 &&
                IniNthItemPointerToString(ini.handle, section, i, &value) == 1 && name)
                items[name] = value ? value : "";
        }
        out[section] = std::move(items);
    }
    WriteOut(out.dump(2) + "\n");
    return 0;
}

// --- gx

std::vector<unsigned short> DescriptorWords(const std::string& text) {
    std::vector<unsigned short> words;
    std::string digits;
    for (char c : text)
        if (!std::isspace(static_cast<unsigned char>(c))) digits += c;
    if (digits.size() % 4 != 0) throw BadInput("a descriptor is 16-bit words: 4 hexadecimal digits each");
    const std::vector<unsigned char> bytes = FromHex(digits);
    for (std::size_t i = 0; i < bytes.size(); i += 2)
        words.push_back(static_cast<unsigned short>(bytes[i] << 8 | bytes[i + 1]));
    return words;
}

std::string WordsHex(const unsigned short* words, std::size_t count) {
    std::string out;
    char word[8];
    for (std::size_t i = 0; i < count; ++i) {
        std::snprintf(word, sizeof word, i ? " %04X" : "%04X", words[i]);
        out += word;
    }
    return out;
}

int GxToJson(const std::string& descriptor, const std::string& data) {
    const std::vector<unsigned short> words = DescriptorWords(descriptor);
    const std::vector<unsigned char> bytes = FromHex(data);
    const VarData value = VarData::gxvar(words.data(), words.data() + words.size(), bytes.data(), bytes.data() + bytes.size());
    WriteOut(qkdynam_json::ToJson(value).dump(2) + "\n");
    return 0;
}

int GxFromJson(const std::string& input) {
    const VarData value = Mapped(ParseJson(ReadAll(input), ""), "");
    Json out;
    try {
        if (vardata_type::TagOf(value.GetType()) == static_cast<std::uint16_t>(VarDataType::GXVariant)) {
            const unsigned short* words = nullptr;
            const unsigned char* data = nullptr;
            unsigned int count = 0, length = 0;
            value.getGXVariant(words, count, data, length);
            out["descriptor"] = WordsHex(words, count);
            out["data"] = ToHex(data, length);
        } else {
            unsigned int count = 0, length = 0;
            const zo::kel::NarrowString name;
            vek::VarDataToGXVariantLength(value, name, vek::ClustersToDictionaries, count, length);
            std::vector<unsigned short> words(count);
            std::vector<unsigned char> data(length);
            vek::VarDataToGXVariant(value, name, vek::ClustersToDictionaries, words.data(), words.data() + count,
                                    data.data(), data.data() + length);
            out["descriptor"] = WordsHex(words.data(), count);
            out["data"] = ToHex(data.data(), length);
        }
    } catch (const zo::kel::exception::Exception& failure) {
        throw BadInput(std::string("no host form for this value: ") + failure.what());
    }
    WriteOut(out.dump(2) + "\n");
    return 0;
}

// --- flexdata

constexpr struct {
    std::uint16_t code;
    const char* name;
} kFlexKinds[] = {
    {0x0001, "Void"},         {0x0100, "I8"},          {0x0101, "U8"},          {0x0102, "Boolean"},
    {0x0200, "I16"},          {0x0201, "U16"},         {0x0202, "Boolean16"},   {0x0300, "I32"},
    {0x0301, "U32"},          {0x0302, "F32"},         {0x0305, "EmptyMarker"}, {0x0400, "I64"},
    {0x0401, "U64"},          {0x0402, "F64"},         {0x0504, "Time"},        {0x0800, "Array"},
    {0x0801, "Cluster"},      {0x0802, "FixedPoint"},  {0x0803, "FixedPointWithRange"},
    {0x0900, "AnsiString"},   {0x0901, "AnsiString"},  {0x0902, "FlexData"},    {0x0903, "FlexData"},
    {0x0905, "ShortStringList"}, {0x0A00, "UTF16String"},
};

std::string FlexKindName(std::uint16_t code) {
    for (const auto& kind : kFlexKinds)
        if (kind.code == code) return kind.name;
    return (code & 0xFF00) == 0x0B00 ? "String32" : "Unknown";
}

std::string Word16(std::uint16_t word) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", word);
    return text;
}

// One packet as a tree: its metadata elements with their offsets, where its
// data starts, its attributes, its elements (arrays, clusters, a nested
// packet) and, when it has one, its value as a VarData.
Json FlexTree(const zo::kel::FlexData& packet, unsigned int depth) {
    Json tree = Json::object();
    if (packet.isEmpty()) {
        tree["size"] = 0;
        return tree;
    }
    namespace fd = zo::kel::fd;
    const unsigned char* begin = packet.begin();
    const unsigned char* end = packet.end();
    const unsigned char* type = fd::GetTypeFromPacket(begin, end);
    tree["size"] = packet.getPacketSize();
    Json metadata = Json::array();
    for (const unsigned char* md = begin + 4; md <= type; md = fd::GetNextElt(md, end)) {
        std::uint16_t word = 0;
        std::memcpy(&word, md, sizeof word);
        metadata.push_back({{"offset", md - begin}, {"word", Word16(word)}, {"size", fd::GetMDEltSize(md, end)}});
    }
    tree["metadata"] = std::move(metadata);
    tree["type"] = Word16(packet.getType());
    tree["kind"] = FlexKindName(packet.getType());
    tree["dataOffset"] = fd::GetDataFromType(begin, type, end) - begin;
    tree["dataSize"] = packet.getDataBuffer().Len();
    if (packet.hasAttributes()) {
        Json attributes = Json::object();
        const zo::kel::Vector<zo::kel::NarrowString> names = packet.getAttributeNames();
        for (unsigned int i = 0; i < names.size(); ++i) {
            attributes[names[i].c_str()] = FlexTree(packet.getAttribute(names[i]), depth + 1);
        }
        tree["attributes"] = std::move(attributes);
    }
    if (depth >= zo::kel::fd::kMaxNestingDepth) return tree;
    zo::kel::Vector<zo::kel::FlexData> elements;
    switch (packet.getType()) {
        case zo::kel::fd::kArray:
            tree["dims"] = Json::array();
            for (unsigned int i = 0; i < packet.getDims(); ++i) tree["dims"].push_back(packet.getDimSize(i));
            packet.getArrayElements(elements);
            break;
        case zo::kel::fd::kCluster: packet.getClusterElements(elements); break;
        case zo::kel::fd::kFlexData:
        case zo::kel::fd::kFlexData2: tree["packet"] = FlexTree(packet.getFlexData(), depth + 1); return tree;
        default: break;
    }
    if (!elements.empty() || packet.getType() == zo::kel::fd::kArray || packet.getType() == zo::kel::fd::kCluster) {
        tree["elements"] = Json::array();
        for (unsigned int i = 0; i < elements.size(); ++i) tree["elements"].push_back(FlexTree(elements[i], depth + 1));
        return tree;
    }
    zo::kel::FlexData plain(packet);
    for (const zo::kel::NarrowString& name : packet.getAttributeNames()) plain.deleteAttribute(name);
    const VarData native = VarData(plain).convertToNativeType();
    if (vardata_type::TagOf(native.GetType()) != static_cast<std::uint16_t>(VarDataType::FlexDataTag)) {
        tree["value"] = qkdynam_json::ToJson(native);
    }
    return tree;
}

int FlexDataTree(const std::string& input, bool hex) {
    std::string text = ReadAll(input);
    std::vector<unsigned char> bytes = hex ? FromHex(text) : std::vector<unsigned char>(text.begin(), text.end());
    zo::kel::FlexData packet;
    const unsigned char* cursor = bytes.data();
    try {
        packet.deserialize(cursor, bytes.data() + bytes.size());
        WriteOut(FlexTree(packet, 0).dump(2) + "\n");
    } catch (const zo::kel::exception::Exception& failure) {
        throw BadInput(std::string("not a readable packet: ") + failure.what());
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"qkdynam: decode, encode and inspect the values of libqkdynam"};
    app.set_version_flag("--version", std::string("qkdynam ") + QKDYNAM_TOOL_VERSION);
    app.require_subcommand(1);

    DecodeOptions decode;
    CLI::App* decodeCommand = app.add_subcommand("decode", "Byte form to JSON, one line per record of a stream");
    decodeCommand->add_option("input", decode.input, "Input file (default: standard input)");
    auto* decodeBare = decodeCommand->add_flag("--bare", decode.bare, "One record without a length prefix");
    decodeCommand->add_flag("--stream", decode.stream, "Length-prefixed records (the default)")->excludes(decodeBare);
    decodeCommand->add_flag("--full", decode.full, "Records in the full form rather than the compact one");
    decodeCommand->add_flag("--hex", decode.hex, "Input is hexadecimal text (blanks ignored)");
    decodeCommand->add_flag("--text", decode.text, "Print the library's own text form instead of JSON");

    EncodeOptions encode;
    CLI::App* encodeCommand = app.add_subcommand("encode", "JSON to the byte form (one JSON value per line for a stream)");
    encodeCommand->add_option("input", encode.input, "Input file (default: standard input)");
    auto* encodeBare = encodeCommand->add_flag("--bare", encode.bare, "One value, one record without a length prefix");
    encodeCommand->add_flag("--stream", encode.stream, "Length-prefixed records (the default)")->excludes(encodeBare);
    encodeCommand->add_flag("--full", encode.full, "Write the full form rather than the compact one");
    encodeCommand->add_flag("--hex", encode.hex, "Write hexadecimal text instead of bytes");

    std::string formatValue, formatName = "0";
    bool formatList = false;
    CLI::App* formatCommand = app.add_subcommand("format", "A number or time under a display format");
    formatCommand->add_option("value", formatValue, "A number, an elapsed time or a date-time");
    formatCommand->add_option("--format,-f", formatName, "Display format index or name, such as \"HH:MM:SS\"");
    formatCommand->add_flag("--list", formatList, "List the display formats by index and name");

    std::string parseText;
    int parseDateFormat = 0;
    CLI::App* parseCommand = app.add_subcommand("parse", "Which recognisers accept a text, and their values");
    parseCommand->add_option("text", parseText, "The text")->required();
    parseCommand->add_option("--format,-f", parseDateFormat, "Display format index that orders date fields");

    std::string iniFile, iniSection, iniKey, iniValue;
    CLI::App* iniCommand = app.add_subcommand("ini", "Read and write INI files");
    iniCommand->require_subcommand(1);
    CLI::App* iniGet = iniCommand->add_subcommand("get", "Print one key's value");
    CLI::App* iniSet = iniCommand->add_subcommand("set", "Set one key and save the file safely");
    CLI::App* iniDump = iniCommand->add_subcommand("dump", "The whole file as JSON, in file order");
    for (CLI::App* command : {iniGet, iniSet, iniDump}) command->add_option("file", iniFile, "INI file")->required();
    for (CLI::App* command : {iniGet, iniSet}) {
        command->add_option("section", iniSection, "Section")->required();
        command->add_option("key", iniKey, "Key")->required();
    }
    iniSet->add_option("value", iniValue, "New value")->required();

    std::string gxDescriptor, gxData, gxInput;
    bool gxBack = false;
    CLI::App* gxCommand = app.add_subcommand("gx", "A host variant to JSON, or (--from-json) a value to a host variant");
    gxCommand->add_option("--descriptor,-d", gxDescriptor, "Type descriptor, 16-bit words in hex");
    gxCommand->add_option("--data", gxData, "Flattened data bytes in hex");
    gxCommand->add_flag("--from-json", gxBack, "Read a JSON value and print its descriptor and data");
    gxCommand->add_option("input", gxInput, "JSON input for --from-json (default: standard input)");

    std::string flexInput;
    bool flexHex = false;
    CLI::App* flexCommand =
        app.add_subcommand("flexdata", "A FlexData packet's metadata, data offsets, attributes, elements and values");
    flexCommand->add_option("input", flexInput, "Packet file (default: standard input)");
    flexCommand->add_flag("--hex", flexHex, "Input is hexadecimal text (blanks ignored)");

    if (argc > 1 && argv[1][0] != '-') {
        try {
            app.get_subcommand_ptr(argv[1]);
        } catch (const CLI::OptionNotFound&) {
            std::fprintf(stderr, "qkdynam: unknown subcommand \"%s\"\nRun with --help for more information.\n", argv[1]);
            return kBadUsage;
        }
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kBadUsage;
    }

    try {
        if (*decodeCommand) return decode.bare ? DecodeBare(decode) : DecodeStream(decode);
        if (*encodeCommand) return Encode(encode);
        if (*formatCommand) {
            if (!formatList && formatValue.empty()) {
                std::fprintf(stderr, "qkdynam format: a value is required (or --list)\n");
                return kBadUsage;
            }
            return Format(formatValue, formatName, formatList);
        }
        if (*parseCommand) return Parse(parseText, parseDateFormat);
        if (*iniGet) return IniGet(iniFile, iniSection, iniKey);
        if (*iniSet) return IniSet(iniFile, iniSection, iniKey, iniValue);
        if (*iniDump) return IniDump(iniFile);
        if (*gxCommand) {
            if (gxBack) return GxFromJson(gxInput);
            if (gxDescriptor.empty()) {
                std::fprintf(stderr, "qkdynam gx: --descriptor is required (or --from-json)\n");
                return kBadUsage;
            }
            return GxToJson(gxDescriptor, gxData);
        }
        if (*flexCommand) return FlexDataTree(flexInput, flexHex);
    } catch (const BadInput& bad) {
        std::fprintf(stderr, "qkdynam %s: %s\n", app.get_subcommands().front()->get_name().c_str(), bad.what());
        return kBadInput;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "qkdynam %s: %s\n", app.get_subcommands().front()->get_name().c_str(), failure.what());
        return kBadInput;
    }
    return kBadUsage;
}
