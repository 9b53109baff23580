// The host-variant reader. One recursive step reads one descriptor record and
// the data it describes; cursors are stored back only when the step
// succeeds. Line numbers of the failures are fixed: callers and logs key on them.
#include "tavlo/qkstatic/GXVariantToVarData.h"

#include <bit>
#include <vector>

#include "tavlo/qkdynamic/VectorGuts.h"
#include "tavlo/qkstatic/GXVariantFormat.h"
#include "tavlo/qkstatic/VarDataCodec.h"
#include "zo/kel/Exception.h"

using namespace internal::gxvariant;
using zo::kel::NarrowString;
using zo::kel::WideString;

namespace {

constexpr const char* kSource = "tavlo/qkstatic/GXVariantToVarData";
constexpr unsigned int kShortInputLine = 41;

[[noreturn]] void Syntax(unsigned int line) { throw zo::kel::exception::SyntaxError(line, kSource); }
[[noreturn]] void Unable(unsigned int line) { throw zo::kel::exception::UnableToConvert(line, kSource); }

// Guards every read: fewer than `count` elements of T left before `end`.
// Depth and value-budget overruns are reported from the same site.
template <class T>
void CheckLength(const T* at, const T* end, std::size_t count) {
    if (static_cast<std::size_t>(end - at) < count) Syntax(kShortInputLine);
}

// What stays the same through one conversion.
struct Walk {
    bool wide;
    std::size_t valuesLeft;  // the value budget

    void charge(std::size_t values) {
        if (values > valuesLeft) Syntax(kShortInputLine);
        valuesLeft -= values;
    }
};

VarData Text(const char* bytes, unsigned int length, bool wide) {
    if (wide) return VarData(WideString(NarrowString(bytes, length)));
    return VarData::ansi(bytes, length);
}

// `count` numbers of `number`'s form from the big-endian bytes at `in`, each
// handed to `emit` as a VarData of `number`'s subtype: one loop per form, so
// a run of numbers costs one dispatch.
template <class Emit, class Load>
void LoadEach(const NumberCode& number, const unsigned char* in, std::uint32_t count, Emit& emit, Load load) {
    const std::uint32_t type = static_cast<std::uint32_t>(number.subtype) << 16 | vardata_type::Word(VarDataType::Numeric);
    for (std::uint32_t i = 0; i < count; ++i, in += number.bytes) {
        emit(internal::VarDataCodec::Inline(type, std::bit_cast<std::uint64_t>(static_cast<double>(load(in)))));
    }
}

template <class Emit>
void ReadNumbers(const NumberCode& number, const unsigned char* in, std::uint32_t count, Emit emit) {
    switch (number.form) {
        case NumberForm::Int8: return LoadEach(number, in, count, emit, [](auto at) { return std::int8_t(at[0]); });
        case NumberForm::Int16:
            return LoadEach(number, in, count, emit, [](auto at) { return std::int16_t(LoadBig16(at)); });
        case NumberForm::Int32:
            return LoadEach(number, in, count, emit, [](auto at) { return std::int32_t(LoadBig32(at)); });
        case NumberForm::UInt8: return LoadEach(number, in, count, emit, [](auto at) { return at[0]; });
        case NumberForm::UInt16: return LoadEach(number, in, count, emit, [](auto at) { return LoadBig16(at); });
        case NumberForm::UInt32: return LoadEach(number, in, count, emit, [](auto at) { return LoadBig32(at); });
        case NumberForm::Float32:
            return LoadEach(number, in, count, emit, [](auto at) { return std::bit_cast<float>(LoadBig32(at)); });
        case NumberForm::Float64:
            return LoadEach(number, in, count, emit, [](auto at) { return std::bit_cast<double>(LoadBig64(at)); });
    }
}


class Reader {
public:
    explicit Reader(Walk& walk) : walk_(walk) {}

    // One descriptor record and its data (DoGXVariantToVarData).
    VarData Value(const unsigned short*& descriptor, const unsigned short* descriptorEnd, const unsigned char*& data,
                  const unsigned char* dataEnd, vek::DictionaryConversion conversion, NarrowString& name,
                  unsigned int depth);
    // An embedded flattened variant in the data stream (ReadVariant).
    VarData Variant(const unsigned char*& data, const unsigned char* dataEnd, vek::DictionaryConversion conversion,
                    unsigned int depth);

private:
    VarData Array(const unsigned short*& at, const unsigned short* end, const unsigned char*& in,
                  const unsigned char* dataEnd, vek::DictionaryConversion conversion, unsigned int depth);
    VarData Cluster(const unsigned short*& at, const unsigned short* end, const unsigned char*& in,
                    const unsigned char* dataEnd, unsigned int depth);
    VarData Key(const NarrowString& text) const { return walk_.wide ? VarData(WideString(text)) : VarData(text); }

    Walk& walk_;
};

VarData ReadString(const unsigned char*& in, const unsigned char* end, bool wide) {
    CheckLength(in, end, 4);
    const std::uint32_t length = LoadBig32(in);
    CheckLength(in + 4, end, length);
    VarData text = Text(reinterpret_cast<const char*>(in + 4), length, wide);
    in += std::size_t{4} + length;
    return text;
}

VarData ReadTimestamp(const unsigned char*& in, const unsigned char* end) {
    CheckLength(in, end, 16);
    const auto seconds = static_cast<std::int64_t>(LoadBig64(in));
    const std::uint64_t fraction = LoadBig64(in + 8);
    in += 16;
    return VarData(zo::kel::AbsTime::fromWords(seconds, fraction));
}

// The name words of a record: the length and first byte, then pairs.
NarrowString ReadName(const unsigned short*& at, const unsigned short* end) {
    CheckLength(at, end, 1);
    const std::size_t length = at[0] >> 8;
    CheckLength(at, end, NameWords(length));
    NarrowString name(static_cast<unsigned int>(length), '\0');
    for (std::size_t i = 0; i < length; ++i) {
        // Byte 0 is the low half of word 0; then byte i is in word (i + 1) / 2, odd i in the high half.
        const std::uint16_t word = at[(i + 1) / 2];
        name[static_cast<unsigned int>(i)] = static_cast<char>(i % 2 == 0 ? word & 0xFF : word >> 8);
    }
    at += NameWords(length);
    return name;
}

VarData Reader::Value(const unsigned short*& descriptor, const unsigned short* descriptorEnd,
                      const unsigned char*& data, const unsigned char* dataEnd, vek::DictionaryConversion conversion,
                      NarrowString& name, unsigned int depth) {
    if (depth > vek::kMaxGXVariantDepth) Syntax(kShortInputLine);
    const unsigned short* const start = descriptor;
    CheckLength(start, descriptorEnd, 1);
    const std::size_t recordWords = start[0] >> 1;
    if (recordWords == 0) Syntax(141);
    CheckLength(start, descriptorEnd, 2);
    const std::uint16_t typeWord = start[1];
    const unsigned short* at = start + 2;
    const unsigned char* in = data;
    walk_.charge(1);

    VarData value;
    switch (const std::uint16_t code = typeWord & kCodeMask) {
        case kVoid: break;
        case kBoolean:
            CheckLength(in, dataEnd, 1);
            value = *in++ != 0;
            break;
        case kString:
            CheckLength(at, descriptorEnd, 2);
            if (at[0] != kVariableDimension || at[1] != kVariableDimension) Unable(320);
            at += 2;
            value = ReadString(in, dataEnd, walk_.wide);
            break;
        case kArray: value = Array(at, descriptorEnd, in, dataEnd, conversion, depth); break;
        case kCluster:
            if (conversion != vek::ClustersToDictionaries) Unable(407);
            value = Cluster(at, descriptorEnd, in, dataEnd, depth);
            break;
        case kVariant:
            if (conversion != vek::VariantsToDictionaries) Unable(445);
            value = Variant(in, dataEnd, vek::VariantsToDictionaries, depth + 1);
            if (value.GetType() != vardata_type::Word(VarDataType::Dictionary)) Unable(437);
            break;
        case kTimestamp: value = ReadTimestamp(in, dataEnd); break;
        default: {
            const NumberCode* number = FindNumberCode(code);
            if (!number) Unable(449);
            CheckLength(in, dataEnd, number->bytes);
            ReadNumbers(*number, in, 1, [&](const VarData& read) { value = read; });
            in += number->bytes;
        }
    }

    NarrowString recordName;
    const bool named = (typeWord & kNamedFlag) != 0;
    if (named) recordName = ReadName(at, descriptorEnd);
    if (recordWords > static_cast<std::size_t>(descriptorEnd - start)) Syntax(477);
    if (static_cast<std::size_t>(at - start) > recordWords) Syntax(480);
    descriptor = start + recordWords;
    data = in;
    if (named) name = std::move(recordName);
    return value;
}

VarData Reader::Array(const unsigned short*& at, const unsigned short* end, const unsigned char*& in,
                      const unsigned char* dataEnd, vek::DictionaryConversion conversion, unsigned int depth) {
    CheckLength(at, end, 3);
    if (at[0] != 1) Unable(340);
    if (at[1] != kVariableDimension || at[2] != kVariableDimension) Unable(349);
    at += 3;
    CheckLength(in, dataEnd, 4);
    const std::uint32_t count = LoadBig32(in);
    in += 4;

    std::vector<VarData> elements;
    if (count != 0) {
        // Every element restarts at the element record.
        const unsigned short* const elementRecord = at;
        const unsigned char* const firstData = in;
        NarrowString ignored;
        VarData first = Value(at, end, in, dataEnd, conversion, ignored, depth + 1);
        if (in == firstData) {
            // A type that takes no data bytes reads the same value every time;
            // Empty elements are never stored, as SetElement does not grow for them.
            if (first.GetType() != vardata_type::Word(VarDataType::Empty)) {
                walk_.charge(count - 1);
                elements.assign(count, first);
            }
        } else {
            // Every further element takes at least one byte as well.
            CheckLength(in, dataEnd, count - 1);
            walk_.charge(count - 1);
            elements.reserve(count);
            elements.push_back(std::move(first));
            const NumberCode* number = nullptr;
            if (elementRecord[0] == 4 && (number = FindNumberCode(elementRecord[1])) != nullptr) {
                // A bare number (no name, no further words): the same reading without the walk.
                CheckLength(in, dataEnd, std::size_t{number->bytes} * (count - 1));
                ReadNumbers(*number, in, count - 1, [&](const VarData& read) { elements.push_back(read); });
                in += std::size_t{number->bytes} * (count - 1);
            } else {
                for (std::uint32_t i = 1; i < count; ++i) {
                    const unsigned short* element = elementRecord;
                    elements.push_back(Value(element, end, in, dataEnd, conversion, ignored, depth + 1));
                }
            }
        }
    }
    while (!elements.empty() && elements.back().GetType() == vardata_type::Word(VarDataType::Empty)) elements.pop_back();
    return internal::VarDataCodec::Adopt(vardata_type::Word(VarDataType::Sequence), new VectorGuts(std::move(elements)));
}

VarData Reader::Cluster(const unsigned short*& at, const unsigned short* end, const unsigned char*& in,
                        const unsigned char* dataEnd, unsigned int depth) {
    CheckLength(at, end, 1);
    const unsigned int count = *at++;
    VarData dictionary = VarData::dict();
    for (unsigned int i = 0; i < count; ++i) {
        NarrowString elementName;
        VarData element = Value(at, end, in, dataEnd, vek::ClustersToDictionaries, elementName, depth + 1);
        if (elementName.empty()) Unable(393);
        // A later element of the same name replaces the earlier one.
        dictionary.setValue(Key(elementName), element);
    }
    return dictionary;
}

VarData Reader::Variant(const unsigned char*& data, const unsigned char* dataEnd,
                        vek::DictionaryConversion conversion, unsigned int depth) {
    if (depth > vek::kMaxGXVariantDepth) Syntax(kShortInputLine);
    const unsigned char* in = data;
    CheckLength(in, dataEnd, 4);
    const std::uint32_t length = LoadBig32(in);
    in += 4;
    if (length < 4) Syntax(kShortInputLine);
    CheckLength(in, dataEnd, length - 4);

    // The descriptor travels inside the data, big-endian.
    CheckLength(in, dataEnd, 2);
    const std::size_t words = LoadBig16(in) / 2;
    CheckLength(in, dataEnd, 2 * words);
    std::vector<unsigned short> descriptor(words);
    for (std::size_t i = 0; i < words; ++i) descriptor[i] = LoadBig16(in + 2 * i);
    in += 2 * words;
    const unsigned short* record = descriptor.data();
    NarrowString ignored;
    VarData value = Value(record, record + words, in, dataEnd, conversion, ignored, depth + 1);

    CheckLength(in, dataEnd, 4);
    const std::uint32_t attributes = LoadBig32(in);
    in += 4;
    if (value.GetType() != vardata_type::Word(VarDataType::Empty)) {
        if (attributes != 0) Unable(242);
        data = in;
        return value;
    }
    VarData dictionary = VarData::dict();
    for (std::uint32_t i = 0; i < attributes; ++i) {
        CheckLength(in, dataEnd, 4);
        const std::uint32_t nameLength = LoadBig32(in);
        CheckLength(in + 4, dataEnd, nameLength);
        const NarrowString name(reinterpret_cast<const char*>(in + 4), nameLength);
        in += std::size_t{4} + nameLength;
        dictionary.setValue(Key(name), Variant(in, dataEnd, conversion, depth + 1));
    }
    data = in;
    return dictionary;
}

}  // namespace

VarData vek::GXVariantToVarData(const unsigned short* descriptorBegin, const unsigned short* descriptorEnd,
                                const unsigned char* dataBegin, const unsigned char* dataEnd,
                                DictionaryConversion conversion, NarrowString& name, bool wideStrings) {
    const std::size_t inputBytes = 2 * static_cast<std::size_t>(descriptorEnd - descriptorBegin) +
                                   static_cast<std::size_t>(dataEnd - dataBegin);
    Walk walk{wideStrings, inputBytes * kMaxGXVariantValuesPerByte + kGXVariantValueAllowance};
    Reader reader(walk);
    return reader.Value(descriptorBegin, descriptorEnd, dataBegin, dataEnd, conversion, name, 0);
}
