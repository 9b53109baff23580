// The byte form of VarData: one exact size pass, then one write pass into
// room reserved once, nested records written in place; and the reader that
// checks every field against the end before touching it.
#include <algorithm>
#include <cstring>
#include <vector>

#include "tavlo/qkdynamic/RecentTexts.h"
#include "tavlo/qkdynamic/UnicodeGuts.h"
#include "tavlo/qkdynamic/VarDataDictionary.h"
#include "tavlo/qkdynamic/VectorGuts.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/ByteForm.h"
#include "zo/kel/Exception.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/osdep/Assertion.h"

using vardata_type::Word;
using zo::kel::SafeInteger;
using Size = SafeInteger<unsigned int>;

namespace {

constexpr std::uint32_t kSkippedBlockTag = 0x100E;  // accepted on reading only
constexpr unsigned int kFullMarkerBody = 8;

// Where an oversized value has always been reported.
constexpr const char* kSizeReportFile = "tavlo/qkstatic/vardata";
constexpr unsigned int kValueSizeReportLine = 1625;
constexpr unsigned int kSizeImplReportLine = 1642;

bool IsReadableInlineTag(std::uint16_t tag) {
    switch (static_cast<VarDataType>(tag)) {
        case VarDataType::Undefined:
        case VarDataType::Empty:
        case VarDataType::Logical:
        case VarDataType::Numeric:
        case VarDataType::Time:
        case VarDataType::Break:
        case VarDataType::Pulse:
        case VarDataType::VoidPointer:
        case VarDataType::ID64: return true;
        default: return false;
    }
}

class ByteWriter {
public:
    ByteWriter(unsigned char*& cursor, const unsigned char* end) : cursor_(cursor), end_(end) {}

    void need(std::size_t count) const {
        if (zo::kel::byteform::Room(cursor_, end_) < count) ZO_THROW(zo::kel::exception::BufferOverflow);
    }
    template <class Integer>
    void put(Integer value) {
        bytes(&value, sizeof value);
    }
    void bytes(const void* data, std::size_t count) {
        need(count);
        if (count) std::memcpy(cursor_, data, count);
        cursor_ += count;
    }

private:
    unsigned char*& cursor_;
    const unsigned char* end_;
};

class ByteReader {
public:
    ByteReader(const unsigned char*& cursor, const unsigned char* end) : cursor_(cursor), end_(end) {}

    void need(std::size_t count) const {
        if (zo::kel::byteform::Room(cursor_, end_) < count) ZO_THROW(zo::kel::exception::DeserializationError);
    }
    template <class Integer>
    Integer get() {
        Integer value;
        std::memcpy(&value, take(sizeof value), sizeof value);
        return value;
    }
    const unsigned char* take(std::size_t count) {
        need(count);
        const unsigned char* at = cursor_;
        cursor_ += count;
        return at;
    }

private:
    const unsigned char*& cursor_;
    const unsigned char* end_;
};

unsigned int ReportOversized(unsigned int line) {
    zo::kel::osdep::OutputReleaseAssertion("false", "VarData size exceeds 2^32-1 bytes. The value cannot be serialized.",
                                           kSizeReportFile, line);
    return 0;
}

}  // namespace

// Walks a value's payload for the size and write passes and builds values
// for the reader; a friend of VarData.
class VarDataCodec {
public:
    static Size BodySize(const VarData& value, bool compact);
    static Size RecordSize(const VarData& value, bool compact) { return BodySize(value, compact) + 4u; }
    static void WriteRecord(const VarData& value, ByteWriter& out, bool compact);
    static VarData ReadRecord(ByteReader& in, bool compact, unsigned int depth);

private:
    // Visits a sequence's elements through one interface query.
    template <class Visit>
    static void ForEachElement(const VarData& value, Visit visit) {
        IVarDataSequence* sequence = value.querySequence();
        if (!sequence) return;
        try {
            const unsigned int count = sequence->GetLength();
            for (unsigned int i = 0; i < count; ++i) visit(sequence->GetElement(i));
        } catch (...) {
            sequence->Release();
            throw;
        }
        sequence->Release();
    }
    // Visits a dictionary's entries in key order: our own map directly, any
    // other implementation through its iterators.
    template <class Visit>
    static void ForEachEntry(const VarData& value, Visit visit) {
        if (!value.holdsGuts()) return;
        if (const auto* own = dynamic_cast<const VarDataDictionary*>(value.getIDict())) {
            for (const auto& [key, item] : own->entries()) visit(key, item);
            return;
        }
        for (auto it = value.begin(), end = value.end(); it != end; ++it) visit(it.key(), it.value());
    }
    static bool IsWritable(const VarData& value);
    static void WriteBody(const VarData& value, ByteWriter& out, bool compact);
    static VarData ReadPayloadRecord(std::uint32_t type, ByteReader& in, bool compact, unsigned int depth);
    static VarData ReadSequence(ByteReader& in, bool compact, unsigned int depth);
    static VarData ReadDictionary(ByteReader& in, bool compact, unsigned int depth);
    static VarData ReadCell(ByteReader& in, bool compact, unsigned int depth);
    static VarData ReadUnicode(ByteReader& in);
    static VarData ReadTime(std::uint32_t type, ByteReader& in);
};

// --- Sizes -------------------------------------------------------------------------

bool VarDataCodec::IsWritable(const VarData& value) {
    if (!value.hasPayloadFlag()) return IsReadableInlineTag(vardata_type::TagOf(value.type_));
    switch (value.tag()) {
        case VarDataType::Ansi:
        case VarDataType::Unicode:
        case VarDataType::Raw:
        case VarDataType::Cell:
        case VarDataType::Dictionary:
        case VarDataType::Sequence:
        case VarDataType::AbsTimeValue:
        case VarDataType::RelTimeValue: return true;
        default: return false;
    }
}

Size VarDataCodec::BodySize(const VarData& value, bool compact) {
    if (!IsWritable(value)) return compact ? 0u : kFullMarkerBody;  // written as Empty
    switch (value.tag()) {
        case VarDataType::Undefined:
        case VarDataType::Empty:
        case VarDataType::Break:
        case VarDataType::Pulse: return compact ? 0u : kFullMarkerBody;
        case VarDataType::Logical: return 1u;
        case VarDataType::VoidPointer: return compact ? 4u : 8u;
        case VarDataType::Numeric:
        case VarDataType::Time:
        case VarDataType::ID64: return 8u;
        case VarDataType::Ansi:
        case VarDataType::Raw: return Size(4u) + value.GetLength();
        case VarDataType::Unicode: return Size(4u) + Size(2u) * value.GetLength();
        case VarDataType::AbsTimeValue:
        case VarDataType::RelTimeValue: return 16u;
        case VarDataType::Cell: {
            VarData content;
            unsigned short row = 0, column = 0;
            value.GetCell(row, column, content);
            return Size(4u) + RecordSize(content, compact);
        }
        case VarDataType::Sequence: {
            Size size = 4u;
            ForEachElement(value, [&](const VarData& element) { size += RecordSize(element, compact); });
            return size;
        }
        case VarDataType::Dictionary: {
            Size size = 4u;
            ForEachEntry(value, [&](const VarData& key, const VarData& item) {
                size += RecordSize(key, compact) + RecordSize(item, compact);
            });
            return size;
        }
        default: return compact ? 0u : kFullMarkerBody;
    }
}

unsigned int VarData::valueSerializationSize() const {
    try {
        return VarDataCodec::RecordSize(*this, true).get();
    } catch (const zo::kel::exception::OutOfRange&) {
        return ReportOversized(kValueSizeReportLine);
    }
}

unsigned int VarData::serializationSizeImpl(bool compact) const {
    try {
        return (VarDataCodec::BodySize(*this, compact) + 8u).get();
    } catch (const zo::kel::exception::OutOfRange&) {
        return ReportOversized(kSizeImplReportLine);
    }
}

// --- Writing -------------------------------------------------------------------------

void VarDataCodec::WriteRecord(const VarData& value, ByteWriter& out, bool compact) {
    out.need(4);
    if (!IsWritable(value)) {
        out.put(Word(VarDataType::Empty));
        if (!compact) out.put(value.payload_);
        return;
    }
    out.put(value.type_);
    WriteBody(value, out, compact);
}

void VarDataCodec::WriteBody(const VarData& value, ByteWriter& out, bool compact) {
    switch (value.tag()) {
        case VarDataType::Undefined:
        case VarDataType::Empty:
        case VarDataType::Break:
        case VarDataType::Pulse:
            if (!compact) out.put(value.payload_);
            return;
        case VarDataType::Logical: out.put(static_cast<std::uint8_t>(value.payload_ & 0xFF)); return;
        case VarDataType::VoidPointer:
            if (compact) out.put(static_cast<std::uint32_t>(value.payload_));
            else out.put(value.payload_);
            return;
        case VarDataType::Numeric:
        case VarDataType::Time:
        case VarDataType::ID64: out.put(value.payload_); return;
        case VarDataType::Ansi: {
            // The tag promises the text interface, as it does for GetLength.
            const IVarDataAnsi* text = value.holdsGuts() ? value.getIAnsi() : nullptr;
            const unsigned int length = text ? text->GetLength() : 0;
            out.put(length);
            out.bytes(text ? text->GetData() : "", length);
            return;
        }
        case VarDataType::Raw: {
            const unsigned char* data = nullptr;
            unsigned int length = 0;
            value.GetRaw(data, length);
            out.put(length);
            out.bytes(data, length);
            return;
        }
        case VarDataType::Unicode: {
            const IVarDataUnicode* unicode = value.holdsGuts() ? value.getIUnicode() : nullptr;
            const wchar_t* text = unicode ? unicode->GetData() : L"";
            const unsigned int length = unicode ? unicode->GetLength() : 0;
            out.put(length);
            out.need(std::size_t{2} * length);
            for (unsigned int i = 0; i < length; ++i) out.put(static_cast<std::uint16_t>(text[i]));
            return;
        }
        case VarDataType::AbsTimeValue:
        case VarDataType::RelTimeValue: {
            const tSSTimeValue time = value.getISSTimeValue()
                                          ? value.getISSTimeValue()->getTimeValue()
                                          : tSSTimeValue{0, 0};
            out.put(time.fraction);
            out.put(time.seconds);
            return;
        }
        case VarDataType::Cell: {
            VarData content;
            unsigned short row = 0, column = 0;
            value.GetCell(row, column, content);
            out.put(row);
            out.put(column);
            WriteRecord(content, out, compact);
            return;
        }
        case VarDataType::Sequence: {
            out.put(value.GetLength());
            ForEachElement(value, [&](const VarData& element) { WriteRecord(element, out, compact); });
            return;
        }
        case VarDataType::Dictionary: {
            out.put(value.holdsGuts() ? value.getIDict()->size() : 0u);
            ForEachEntry(value, [&](const VarData& key, const VarData& item) {
                WriteRecord(key, out, compact);
                WriteRecord(item, out, compact);
            });
            return;
        }
        default: return;
    }
}

void VarData::serializeImpl(unsigned char*& cursor, const unsigned char* end, unsigned int size, bool compact) const {
    ByteWriter out(cursor, end);
    out.need(std::max(size, 4u));
    VarDataCodec::WriteRecord(*this, out, compact);
}

void VarData::serializeWithSizeImpl(unsigned char*& cursor, const unsigned char* end, unsigned int size,
                                    bool compact) const {
    ByteWriter out(cursor, end);
    out.need(std::max(size, 4u));
    out.put(size - 4u);
    VarDataCodec::WriteRecord(*this, out, compact);
}

namespace {

// Grows `buffer` once by `size` and lets `write` fill the new room; on any
// failure the room is given back.
template <class Write>
void WriteInto(zo::kel::AutoBuffer& buffer, unsigned int size, Write write) {
    const unsigned int start = buffer.Len();
    buffer.Skip(size);
    try {
        unsigned char* cursor = buffer.WritableData() + start;
        write(cursor, cursor + size);
    } catch (...) {
        buffer.UnAppend(size);
        throw;
    }
}

}  // namespace

void VarData::SerializeWithoutSize(zo::kel::AutoBuffer& buffer, bool compact) const {
    const unsigned int withPrefix = serializationSizeImpl(compact);
    const unsigned int size = withPrefix >= 5 ? withPrefix - 4 : withPrefix;
    WriteInto(buffer, size, [&](unsigned char*& cursor, const unsigned char* end) {
        serializeImpl(cursor, end, size, compact);
    });
}

void VarData::SerializeWithSize(zo::kel::AutoBuffer& buffer) const {
    const unsigned int size = serializationSizeImpl(true);
    WriteInto(buffer, size, [&](unsigned char*& cursor, const unsigned char* end) {
        serializeWithSizeImpl(cursor, end, size, true);
    });
}

// --- Reading -------------------------------------------------------------------------

VarData VarDataCodec::ReadRecord(ByteReader& in, bool compact, unsigned int depth) {
    if (depth > VarData::kMaxNestingDepth) ZO_THROW(zo::kel::exception::DeserializationError);
    const auto type = in.get<std::uint32_t>();
    const std::uint16_t tag = vardata_type::TagOf(type);
    if (type & VarData::PayloadFlag) return ReadPayloadRecord(type, in, compact, depth);
    if (!IsReadableInlineTag(tag)) ZO_THROW(zo::kel::exception::DeserializationError);
    VarData value;
    value.type_ = type;
    switch (static_cast<VarDataType>(tag)) {
        case VarDataType::Logical: value.payload_ = in.get<std::uint8_t>(); break;
        case VarDataType::VoidPointer:
            value.payload_ = compact ? in.get<std::uint32_t>() : in.get<std::uint64_t>();
            break;
        case VarDataType::Numeric:
        case VarDataType::Time:
        case VarDataType::ID64: value.payload_ = in.get<std::uint64_t>(); break;
        default:  // the markers
            if (!compact) value.payload_ = in.get<std::uint64_t>();
            break;
    }
    return value;
}

VarData VarDataCodec::ReadPayloadRecord(std::uint32_t type, ByteReader& in, bool compact, unsigned int depth) {
    switch (static_cast<VarDataType>(vardata_type::TagOf(type))) {
        case VarDataType::Ansi: {
            const auto length = in.get<std::uint32_t>();
            const auto* text = reinterpret_cast<const char*>(in.take(length));
            VarData value;
            value.adoptGuts(Word(VarDataType::Ansi), length ? ReadAnsiGuts(text, length) : nullptr);
            return value;
        }
        case VarDataType::Raw: {
            const auto length = in.get<std::uint32_t>();
            return VarData(in.take(length), length);
        }
        case VarDataType::Unicode: return ReadUnicode(in);
        case VarDataType::Cell: return ReadCell(in, compact, depth);
        case VarDataType::Dictionary: return ReadDictionary(in, compact, depth);
        case VarDataType::Sequence: return ReadSequence(in, compact, depth);
        case VarDataType::AbsTimeValue:
        case VarDataType::RelTimeValue: return ReadTime(vardata_type::TagOf(type), in);
        default:
            if (vardata_type::TagOf(type) != kSkippedBlockTag) ZO_THROW(zo::kel::exception::DeserializationError);
            break;
    }
    // A block of a·b·c bytes that this layer does not keep; a product past
    // 32 bits cannot be in the input.
    std::uint64_t count = in.get<std::uint32_t>();
    for (int factor = 0; factor < 2; ++factor) {
        count *= in.get<std::uint32_t>();
        if (count > 0xFFFFFFFFu) ZO_THROW(zo::kel::exception::DeserializationError);
    }
    in.take(count);
    return VarData();
}

VarData VarDataCodec::ReadUnicode(ByteReader& in) {
    const auto length = in.get<std::uint32_t>();
    const unsigned char* units = in.take(std::size_t{2} * length);
    if (length == 0) return VarData::unicode(nullptr, 0);
    // Widened straight into the payload's own text.
    zo::kel::WideString text(length, L'\0');
    for (std::uint32_t i = 0; i < length; ++i) {
        std::uint16_t unit;
        std::memcpy(&unit, units + 2 * static_cast<std::size_t>(i), sizeof unit);
        text[i] = static_cast<wchar_t>(unit);
    }
    VarData value;
    value.adoptGuts(Word(VarDataType::Unicode), new UnicodeGuts(std::move(text)));
    return value;
}

VarData VarDataCodec::ReadTime(std::uint32_t tag, ByteReader& in) {
    tSSTimeValue time;
    time.fraction = in.get<std::uint64_t>();
    time.seconds = in.get<std::int64_t>();
    VarData value;
    value.setISSTimeValue(tag, time);
    return value;
}

VarData VarDataCodec::ReadCell(ByteReader& in, bool compact, unsigned int depth) {
    const auto row = in.get<std::uint16_t>();
    const auto column = in.get<std::uint16_t>();
    return VarData(row, column, ReadRecord(in, compact, depth + 1));
}

VarData VarDataCodec::ReadSequence(ByteReader& in, bool compact, unsigned int depth) {
    const auto count = in.get<std::uint32_t>();
    // Every record takes at least its type word: a count the bytes cannot
    // hold is refused before anything is reserved for it.
    in.need(std::size_t{4} * count);
    std::vector<VarData> elements;
    elements.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) elements.push_back(ReadRecord(in, compact, depth + 1));
    // Storing element by element never grows a sequence for a trailing Empty.
    while (!elements.empty() && elements.back().GetType() == Word(VarDataType::Empty)) elements.pop_back();
    VarData value;
    value.adoptGuts(Word(VarDataType::Sequence), new VectorGuts(std::move(elements)));
    return value;
}

VarData VarDataCodec::ReadDictionary(ByteReader& in, bool compact, unsigned int depth) {
    const auto count = in.get<std::uint32_t>();
    in.need(std::size_t{8} * count);
    VarDataDictionary::Map entries;
    for (std::uint32_t i = 0; i < count; ++i) {
        VarData key = ReadRecord(in, compact, depth + 1);
        VarData item = ReadRecord(in, compact, depth + 1);
        // Written in key order, so the end is the place to try first; a
        // repeated key lands on its entry and the last value wins.
        entries.emplace_hint(entries.end(), std::move(key), VarData())->second = std::move(item);
    }
    VarData value;
    value.adoptGuts(Word(VarDataType::Dictionary), new VarDataDictionary(std::move(entries)));
    return value;
}

void VarData::deserializeImpl(const unsigned char*& cursor, const unsigned char* end, bool compact) {
    const unsigned char* position = cursor;
    ByteReader in(position, end);
    VarData value = VarDataCodec::ReadRecord(in, compact, 0);
    swap(value);
    cursor = position;
}

void VarData::deserializeWithSizeImpl(const unsigned char*& cursor, const unsigned char* end, bool compact) {
    const unsigned char* position = cursor;
    ByteReader prefix(position, end);
    const auto length = prefix.get<std::uint32_t>();
    prefix.need(length);
    const unsigned char* record = position;
    deserializeImpl(record, position + length, compact);
    cursor = position + length;
}

VarData VarData::DeserializeWithoutSize(const unsigned char* data, unsigned int length, unsigned int& used,
                                        bool compact) {
    VarData value;
    const unsigned char* cursor = data;
    try {
        value.deserializeImpl(cursor, data + length, compact);
    } catch (const zo::kel::exception::DeserializationError&) {
        used = 0;
        throw DeserializationErrorException();
    }
    used = static_cast<unsigned int>(cursor - data);
    return value;
}

VarData VarData::DeserializeWithSize(const unsigned char*& cursor, unsigned int available) {
    VarData value;
    const unsigned char* end = cursor + available;
    try {
        value.deserializeWithSizeImpl(cursor, end, true);
    } catch (const zo::kel::exception::DeserializationError&) {
        // Skip the unreadable record by its prefix, when there is one.
        if (available >= zo::kel::byteform::kCountSize) {
            const std::size_t length = zo::kel::byteform::LoadCount(cursor);
            cursor += std::min<std::size_t>(length + zo::kel::byteform::kCountSize, available);
        }
        value.Clear();
    }
    return value;
}
