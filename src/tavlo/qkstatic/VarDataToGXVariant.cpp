// The host-variant writer. One walk serves both the size pass (streams that
// only count) and the write pass, so the two cannot disagree. Every item
// checks its room before it writes; line numbers of the failures are fixed.
#include "tavlo/qkstatic/VarDataToGXVariant.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "tavlo/qkdynamic/AnsiGuts.h"
#include "tavlo/qkdynamic/VarDataDictionary.h"
#include "tavlo/qkdynamic/VectorGuts.h"
#include "tavlo/qkstatic/GXVariantFormat.h"
#include "tavlo/qkstatic/VarDataCodec.h"
#include "zo/kel/Exception.h"
#include "zo/kel/TruncateToInt64.h"

using namespace internal::gxvariant;
using zo::kel::NarrowString;

namespace {

constexpr const char* kSource = "tavlo/qkstatic/VarDataToGXVariant";
// The checked narrowings report as the support library's cast does.
constexpr const char* kNarrowingSource = "zo/kel/NumericCast";
constexpr unsigned int kNarrowingLine = 67;
constexpr std::size_t kMaxNameLength = 255;

[[noreturn]] void Unable(unsigned int line) { throw zo::kel::exception::UnableToConvert(line, kSource); }
[[noreturn]] void Overflow() { throw zo::kel::exception::BufferOverflow(40, kSource); }

template <class To>
To Narrow(std::size_t value) {
    if (value > std::numeric_limits<To>::max()) throw zo::kel::exception::OutOfRange(kNarrowingLine, kNarrowingSource);
    return static_cast<To>(value);
}

// A cursor into caller memory, or (counting) an unbounded tally.
template <class Unit>
class Stream {
public:
    Stream(Unit* begin, Unit* end) : base_(begin), capacity_(begin && end > begin ? std::size_t(end - begin) : 0) {}
    // Room for one later sequence element's record, as long as the first's:
    // a record that does not fit is of another host type.
    static Stream Scratch(std::vector<Unit>& room) {
        Stream scratch(room.data(), room.data() + room.size());
        scratch.scratch_ = true;
        return scratch;
    }
    static Stream Counting() {
        Stream tally(nullptr, nullptr);
        tally.capacity_ = std::numeric_limits<std::size_t>::max();
        tally.counting_ = true;
        return tally;
    }

    bool counting() const noexcept { return counting_; }
    std::size_t at() const noexcept { return at_; }
    Unit* where(std::size_t offset) const noexcept { return base_ + offset; }
    void need(std::size_t count) const {
        if (capacity_ - at_ < count) scratch_ ? Unable(602) : Overflow();
    }
    // Room for `count` units, filled later; returns where it starts.
    std::size_t skip(std::size_t count) {
        need(count);
        return std::exchange(at_, at_ + count);
    }
    void set(std::size_t offset, Unit unit) noexcept {
        if (!counting_) base_[offset] = unit;
    }
    void put(Unit unit) { set(skip(1), unit); }

private:
    Unit* base_;
    std::size_t capacity_;
    std::size_t at_ = 0;
    bool counting_ = false;
    bool scratch_ = false;
};

using Descriptor = Stream<unsigned short>;

class Data : public Stream<unsigned char> {
public:
    using Stream::Stream;
    Data(Stream<unsigned char> stream) : Stream(stream) {}

    void big16(std::uint16_t value) { store(skip(2), value, StoreBig16); }
    void big32(std::uint32_t value) { store(skip(4), value, StoreBig32); }
    void big64(std::uint64_t value) { store(skip(8), value, StoreBig64); }
    void bytes(const void* from, std::size_t count) {
        const std::size_t offset = skip(count);
        if (!counting() && count) std::memcpy(where(offset), from, count);
    }

private:
    template <class Value>
    void store(std::size_t offset, Value value, void (*storeBig)(unsigned char*, Value)) {
        if (!counting()) storeBig(where(offset), value);
    }
};

// The processor's 32-bit truncation: INT32_MIN for NaN and out-of-range values.
std::int32_t TruncateToInt32(double value) noexcept {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

// IEEE rounding to single: past the largest single by half a unit is infinite.
float ToSingle(double value) noexcept {
    constexpr double kOverflow = 0x1.ffffffp127;
    if (std::fabs(value) >= kOverflow) return value > 0 ? HUGE_VALF : -HUGE_VALF;
    return static_cast<float>(value);
}

// The host code for a numeric subtype: subtype 8 (bit array) goes out as 6.
const NumberCode& NumberCodeOf(std::uint32_t typeWord) {
    const unsigned int subtype = typeWord >> 16;
    if (subtype > vardata_type::BitArraySubtype) Unable(511);
    const unsigned int target = subtype == vardata_type::BitArraySubtype ? 6 : subtype;
    for (const NumberCode& row : kNumberCodes) {
        if (row.subtype == target) return row;
    }
    Unable(511);
}

double NumberOf(const VarData& value) noexcept {
    return std::bit_cast<double>(internal::VarDataCodec::Payload(value));
}

// Big-endian bytes of each value in [first, last), `bytes` apart from `out`:
// one loop per form, so a run of numbers costs one dispatch.
template <class Store>
void StoreEach(const VarData* first, const VarData* last, unsigned char* out, std::size_t bytes, Store store) {
    for (; first != last; ++first, out += bytes) store(out, NumberOf(*first));
}

void StoreNumbers(NumberForm form, const VarData* first, const VarData* last, unsigned char* out) {
    switch (form) {
        case NumberForm::Int8:
        case NumberForm::UInt8:
            return StoreEach(first, last, out, 1, [](unsigned char* at, double value) {
                *at = static_cast<unsigned char>(TruncateToInt32(value));
            });
        case NumberForm::Int16:
        case NumberForm::UInt16:
            return StoreEach(first, last, out, 2, [](unsigned char* at, double value) {
                StoreBig16(at, static_cast<std::uint16_t>(TruncateToInt32(value)));
            });
        case NumberForm::Int32:
            return StoreEach(first, last, out, 4, [](unsigned char* at, double value) {
                StoreBig32(at, static_cast<std::uint32_t>(TruncateToInt32(value)));
            });
        case NumberForm::UInt32:
            return StoreEach(first, last, out, 4, [](unsigned char* at, double value) {
                StoreBig32(at, static_cast<std::uint32_t>(zo::kel::internal::TruncateToInt64(value)));
            });
        case NumberForm::Float32:
            return StoreEach(first, last, out, 4, [](unsigned char* at, double value) {
                StoreBig32(at, std::bit_cast<std::uint32_t>(ToSingle(value)));
            });
        case NumberForm::Float64:
            return StoreEach(first, last, out, 8, [](unsigned char* at, double value) {
                StoreBig64(at, std::bit_cast<std::uint64_t>(value));
            });
    }
}

// The values in [first, last), all of `number`'s type word, with one room check.
void WriteNumbers(const NumberCode& number, const VarData* first, const VarData* last, Data& data) {
    const std::size_t offset = data.skip(number.bytes * static_cast<std::size_t>(last - first));
    if (!data.counting()) StoreNumbers(number.form, first, last, data.where(offset));
}

// A dictionary key as narrow text; any other key is refused at `line`.
NarrowString KeyText(const VarData& key, unsigned int line) {
    switch (static_cast<VarDataType>(vardata_type::TagOf(key.GetType()))) {
        case VarDataType::Ansi: return key.getAnsiString();
        case VarDataType::Unicode: return NarrowString(key.getString());
        default: Unable(line);
    }
}

const VarDataDictionary::Map& EntriesOf(const VarData& dictionary) {
    // Every dictionary payload is a VarDataDictionary, made by the factory.
    static const VarDataDictionary::Map kNone;
    const IVarDataDictionary* guts = dictionary.getIDict();
    return guts ? static_cast<const VarDataDictionary*>(guts)->entries() : kNone;
}

class Writer {
public:
    // One record (DoVarDataToGXVariant).
    void Record(const VarData& value, const NarrowString& name, vek::DictionaryConversion conversion,
                Descriptor& descriptor, Data& data);

private:
    std::uint16_t Content(const VarData& value, vek::DictionaryConversion conversion, Descriptor& descriptor,
                          Data& data);
    void Text(const VarData& value, Descriptor& descriptor, Data& data);
    void Cluster(const VarData& dictionary, Descriptor& descriptor, Data& data);
    void Array(const VarData& sequence, vek::DictionaryConversion conversion, Descriptor& descriptor, Data& data);
    // An embedded variant (WriteVariant): `value`, then `attributes` (a
    // Dictionary, or null for none) as its attributes.
    void Variant(const VarData& value, const VarData* attributes, Data& data);
    static void Name(const NarrowString& name, Descriptor& descriptor);
};

void Writer::Record(const VarData& value, const NarrowString& name, vek::DictionaryConversion conversion,
                    Descriptor& descriptor, Data& data) {
    const std::size_t start = descriptor.skip(2);
    const std::uint16_t named = name.empty() ? 0 : kNamedFlag;
    descriptor.set(start + 1, named);
    descriptor.set(start + 1, named | Content(value, conversion, descriptor, data));
    if (named) Name(name, descriptor);
    descriptor.set(start, Narrow<std::uint16_t>(2 * (descriptor.at() - start)));
}

std::uint16_t Writer::Content(const VarData& value, vek::DictionaryConversion conversion, Descriptor& descriptor,
                              Data& data) {
    switch (static_cast<VarDataType>(vardata_type::TagOf(value.GetType()))) {
        case VarDataType::Empty: return kVoid;
        case VarDataType::Logical: {
            const unsigned char byte = static_cast<bool>(value) ? 1 : 0;
            data.bytes(&byte, 1);
            return kBoolean;
        }
        case VarDataType::Numeric: {
            const NumberCode& number = NumberCodeOf(value.GetType());
            WriteNumbers(number, &value, &value + 1, data);
            return number.code;
        }
        case VarDataType::Ansi:
        case VarDataType::Unicode:
        case VarDataType::Raw: Text(value, descriptor, data); return kString;
        case VarDataType::AbsTimeValue: {
            const tSSTimeValue time = value.getISSTimeValue()->getTimeValue();
            data.need(16);
            data.big64(static_cast<std::uint64_t>(time.seconds));
            data.big64(time.fraction);
            return kTimestamp;
        }
        case VarDataType::Dictionary:
            switch (conversion) {
                case vek::NoDictionaries: Unable(612);
                case vek::ClustersToDictionaries: Cluster(value, descriptor, data); return kCluster;
                case vek::VariantsToDictionaries: Variant(VarData(), &value, data); return kVariant;
                default: return kVoid;  // no code is added and nothing written
            }
        case VarDataType::Sequence: Array(value, conversion, descriptor, data); return kArray;
        default: Unable(0);  // no host type; the site has no line of its own
    }
}

void Writer::Text(const VarData& value, Descriptor& descriptor, Data& data) {
    descriptor.need(2);
    descriptor.put(kVariableDimension);
    descriptor.put(kVariableDimension);
    VarData narrow(value);
    if (vardata_type::TagOf(narrow.GetType()) != static_cast<std::uint16_t>(VarDataType::Ansi)) {
        narrow.Convert_(VarDataType::Ansi);
    }
    const IVarDataGuts* guts = internal::VarDataCodec::Guts(narrow);
    const char* text = "";
    unsigned int length = 0;
    if (guts) {
        const NarrowString& held = AnsiGuts::TextOf(guts);
        text = held.c_str();
        length = held.length();
    }
    data.need(std::size_t{4} + length);
    data.big32(length);
    data.bytes(text, length);
}

void Writer::Cluster(const VarData& dictionary, Descriptor& descriptor, Data& data) {
    const VarDataDictionary::Map& entries = EntriesOf(dictionary);
    const auto count = Narrow<std::uint16_t>(entries.size());
    descriptor.put(count);
    for (const auto& [key, item] : entries) Record(item, KeyText(key, 634), vek::ClustersToDictionaries, descriptor, data);
}

void Writer::Array(const VarData& sequence, vek::DictionaryConversion conversion, Descriptor& descriptor,
                   Data& data) {
    // Every sequence payload is a VectorGuts, made by the factory.
    const auto* guts = static_cast<const VectorGuts*>(static_cast<IVarDataSequence*>(internal::VarDataCodec::Guts(sequence)));
    const std::vector<VarData>* elements = guts ? &guts->elements() : nullptr;
    if (!elements || elements->empty()) Unable(562);
    descriptor.need(3);
    descriptor.put(1);
    descriptor.put(kVariableDimension);
    descriptor.put(kVariableDimension);
    data.big32(Narrow<std::uint32_t>(elements->size()));

    const VarData& first = elements->front();
    const std::size_t record = descriptor.at();
    Record(first, NarrowString(), conversion, descriptor, data);
    const std::size_t words = descriptor.at() - record;
    // A number of the first element's very type word has its record: it is
    // written without the scratch record and the comparison.
    const bool numbers = vardata_type::TagOf(first.GetType()) == static_cast<std::uint16_t>(VarDataType::Numeric);
    const NumberCode* number = numbers ? &NumberCodeOf(first.GetType()) : nullptr;
    std::vector<unsigned short> scratch(descriptor.counting() ? 0 : words);
    for (auto element = elements->begin() + 1; element != elements->end(); ++element) {
        if (number && element->GetType() == first.GetType()) {
            const auto run = std::find_if(element, elements->end(),
                                          [&](const VarData& next) { return next.GetType() != first.GetType(); });
            WriteNumbers(*number, &*element, &*element + (run - element), data);
            element = run - 1;
            continue;
        }
        Descriptor other = descriptor.counting() ? Descriptor::Counting() : Descriptor::Scratch(scratch);
        Record(*element, NarrowString(), conversion, other, data);
        // As many bytes as the first record has words: half of it. Kept so.
        if (!descriptor.counting() && std::memcmp(scratch.data(), descriptor.where(record), words) != 0) Unable(602);
    }
}

void Writer::Variant(const VarData& value, const VarData* attributes, Data& data) {
    const std::size_t start = data.skip(4);
    if (data.counting()) {
        Descriptor descriptor = Descriptor::Counting();
        Record(value, NarrowString(), vek::VariantsToDictionaries, descriptor, data);
        data.skip(2 * descriptor.at());
    } else {
        unsigned int words = 0, bytes = 0;
        vek::VarDataToGXVariantLength(value, NarrowString(), vek::VariantsToDictionaries, words, bytes);
        data.need(2 * std::size_t{words} + bytes);
        const std::size_t descriptorAt = data.skip(2 * std::size_t{words});
        std::vector<unsigned short> record(words);
        Descriptor descriptor(record.data(), record.data() + record.size());
        Record(value, NarrowString(), vek::VariantsToDictionaries, descriptor, data);
        for (std::size_t i = 0; i < words; ++i) StoreBig16(data.where(descriptorAt + 2 * i), record[i]);
    }

    std::vector<std::pair<NarrowString, const VarData*>> named;
    if (attributes) {
        for (const auto& [key, item] : EntriesOf(*attributes)) named.emplace_back(KeyText(key, 235), &item);
        std::sort(named.begin(), named.end(),
                  [](const auto& a, const auto& b) { return a.first.exactCompare(b.first) < 0; });
    }
    data.big32(Narrow<std::uint32_t>(named.size()));
    for (const auto& [name, item] : named) {
        data.need(std::size_t{4} + name.length());
        data.big32(name.length());
        data.bytes(name.c_str(), name.length());
        if (item->GetType() == vardata_type::Word(VarDataType::Dictionary)) Variant(VarData(), item, data);
        else Variant(*item, nullptr, data);
    }
    if (!data.counting()) StoreBig32(data.where(start), Narrow<std::uint32_t>(data.at() - start));
}

void Writer::Name(const NarrowString& name, Descriptor& descriptor) {
    const std::size_t length = name.length();
    if (length > kMaxNameLength) Unable(88);
    const std::size_t words = NameWords(length);
    const std::size_t at = descriptor.skip(words);
    const auto byte = [&](std::size_t i) -> std::uint16_t {
        return i < length ? static_cast<unsigned char>(name[static_cast<unsigned int>(i)]) : 0;
    };
    descriptor.set(at, static_cast<std::uint16_t>(length << 8 | byte(0)));
    for (std::size_t w = 1; w < words; ++w) descriptor.set(at + w, static_cast<std::uint16_t>(byte(2 * w - 1) << 8 | byte(2 * w)));
}

}  // namespace

void vek::VarDataToGXVariantLength(const VarData& value, const NarrowString& name, DictionaryConversion conversion,
                                   unsigned int& descriptorLength, unsigned int& dataLength) {
    Descriptor descriptor = Descriptor::Counting();
    Data data = Data(Stream<unsigned char>::Counting());
    Writer().Record(value, name, conversion, descriptor, data);
    descriptorLength = Narrow<unsigned int>(descriptor.at());
    dataLength = Narrow<unsigned int>(data.at());
}

void vek::VarDataToGXVariant(const VarData& value, const NarrowString& name, DictionaryConversion conversion,
                             unsigned short* descriptorBegin, unsigned short* descriptorEnd, unsigned char* dataBegin,
                             unsigned char* dataEnd) {
    Descriptor descriptor(descriptorBegin, descriptorEnd);
    Data data(dataBegin, dataEnd);
    Writer().Record(value, name, conversion, descriptor, data);
}
