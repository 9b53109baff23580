// The body of each tag in the byte form and the table that ties tags to
// them. Each body struct has one Write template, run over a ByteCounter for
// the size pass and over a ByteWriter for the write pass, and one Read.
// Payload tags are read under their bare tag word; inline tags keep the
// whole word, subtype included.
#include <array>
#include <cstring>
#include <vector>

#include "tavlo/qkdynamic/AnsiGuts.h"
#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkdynamic/RecentTexts.h"
#include "tavlo/qkdynamic/UnicodeGuts.h"
#include "tavlo/qkdynamic/VarDataDictionary.h"
#include "tavlo/qkdynamic/VectorGuts.h"
#include "tavlo/qkstatic/VarDataCodec.h"

using internal::ByteCounter;
using internal::ByteReader;
using internal::ByteWriter;
using internal::PayloadRef;
using internal::RecordCodec;
using internal::VarDataCodec;
using vardata_type::Word;
using zo::kel::exception::DeserializationError;

namespace {

constexpr unsigned int kVariable = RecordCodec::kVariableBody;
constexpr std::uint16_t kSkippedBlockTag = 0x100E;

// A record inside a body: counted whole in the size pass, written in place
// in the write pass.
void Nested(const VarData& value, ByteCounter& out, bool compact) {
    out.add(VarDataCodec::RecordSize(value, compact));
}
void Nested(const VarData& value, ByteWriter& out, bool compact) { VarDataCodec::WriteRecord(value, out, compact); }

VarData ReadNested(ByteReader& in, bool compact, unsigned int depth) {
    return VarDataCodec::ReadRecord(in, compact, depth + 1);
}

// Undefined, Empty, Break, Pulse: nothing, or the payload word in full form.
struct MarkerBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool compact) {
        if (!compact) out.put(VarDataCodec::Payload(value));
    }
    static VarData Read(std::uint32_t type, ByteReader& in, bool compact, unsigned int) {
        return VarDataCodec::Inline(type, compact ? 0 : in.get<std::uint64_t>());
    }
};

struct LogicalBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool) {
        out.put(static_cast<std::uint8_t>(VarDataCodec::Payload(value) & 0xFF));
    }
    static VarData Read(std::uint32_t type, ByteReader& in, bool, unsigned int) {
        return VarDataCodec::Inline(type, in.get<std::uint8_t>());
    }
};

// Numeric, Time, ID64: the eight payload bytes.
struct WordBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool) {
        out.put(VarDataCodec::Payload(value));
    }
    static VarData Read(std::uint32_t type, ByteReader& in, bool, unsigned int) {
        return VarDataCodec::Inline(type, in.get<std::uint64_t>());
    }
};

// The compact form keeps the low 32 bits of the pointer.
struct PointerBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool compact) {
        if (compact) out.put(static_cast<std::uint32_t>(VarDataCodec::Payload(value)));
        else out.put(VarDataCodec::Payload(value));
    }
    static VarData Read(std::uint32_t type, ByteReader& in, bool compact, unsigned int) {
        return VarDataCodec::Inline(type, compact ? in.get<std::uint32_t>() : in.get<std::uint64_t>());
    }
};

struct AnsiBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool) {
        // Every Ansi payload is an AnsiGuts, made by the factories.
        const IVarDataGuts* guts = VarDataCodec::Guts(value);
        if (!guts) return out.counted("", 0);
        const zo::kel::NarrowString& text = AnsiGuts::TextOf(guts);
        out.counted(text.c_str(), text.length());
    }
    static VarData Read(std::uint32_t, ByteReader& in, bool, unsigned int) {
        const auto length = in.get<std::uint32_t>();
        const auto* text = reinterpret_cast<const char*>(in.take(length));
        return VarDataCodec::Adopt(Word(VarDataType::Ansi), length ? ReadAnsiGuts(text, length).release() : nullptr);
    }
};

// UTF-16 units without surrogate pairing: each character cut to 16 bits.
struct UnicodeBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool) {
        const auto* text = static_cast<const IVarDataUnicode*>(VarDataCodec::Guts(value));
        const unsigned int length = text ? text->GetLength() : 0;
        out.put(length);
        out.units16(text ? text->GetData() : L"", length);
    }
    static VarData Read(std::uint32_t, ByteReader& in, bool, unsigned int) {
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
        return VarDataCodec::Adopt(Word(VarDataType::Unicode), new UnicodeGuts(std::move(text)));
    }
};

struct RawBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool) {
        const unsigned char* data = nullptr;
        unsigned int length = 0;
        value.GetRaw(data, length);
        out.counted(data, length);
    }
    static VarData Read(std::uint32_t, ByteReader& in, bool, unsigned int) {
        const auto length = in.get<std::uint32_t>();
        return VarData(in.take(length), length);
    }
};

struct CellBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool compact) {
        VarData content;
        unsigned short row = 0, column = 0;
        value.GetCell(row, column, content);
        out.put(row);
        out.put(column);
        Nested(content, out, compact);
    }
    static VarData Read(std::uint32_t, ByteReader& in, bool compact, unsigned int depth) {
        const auto row = in.get<std::uint16_t>();
        const auto column = in.get<std::uint16_t>();
        return VarData(row, column, ReadNested(in, compact, depth));
    }
};

struct SequenceBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool compact) {
        const PayloadRef<IVarDataSequence> sequence = VarDataCodec::Sequence(value);
        const unsigned int count = sequence ? sequence->GetLength() : 0;
        out.put(count);
        for (unsigned int i = 0; i < count; ++i) Nested(sequence->GetElement(i), out, compact);
    }
    static VarData Read(std::uint32_t, ByteReader& in, bool compact, unsigned int depth) {
        const auto count = in.get<std::uint32_t>();
        // Every record takes at least its type word: a count the bytes cannot
        // hold is refused before anything is reserved for it.
        in.need(std::size_t{4} * count);
        std::vector<VarData> elements;
        elements.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i) elements.push_back(ReadNested(in, compact, depth));
        // Storing element by element never grows a sequence for a trailing Empty.
        while (!elements.empty() && elements.back().GetType() == Word(VarDataType::Empty)) elements.pop_back();
        return VarDataCodec::Adopt(Word(VarDataType::Sequence), new VectorGuts(std::move(elements)));
    }
};

struct DictionaryBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool compact) {
        // Every dictionary payload is a VarDataDictionary, made by the
        // factory: its map is walked directly, in key order.
        const IVarDataGuts* guts = VarDataCodec::Guts(value);
        if (!guts) return out.put(0u);
        const auto& entries = static_cast<const VarDataDictionary*>(static_cast<const IVarDataDictionary*>(guts))->entries();
        out.put(static_cast<std::uint32_t>(entries.size()));
        for (const auto& [key, item] : entries) {
            Nested(key, out, compact);
            Nested(item, out, compact);
        }
    }
    static VarData Read(std::uint32_t, ByteReader& in, bool compact, unsigned int depth) {
        const auto count = in.get<std::uint32_t>();
        in.need(std::size_t{8} * count);
        VarDataDictionary::Map entries;
        for (std::uint32_t i = 0; i < count; ++i) {
            VarData key = ReadNested(in, compact, depth);
            VarData item = ReadNested(in, compact, depth);
            // Written in key order, so the end is the place to try first; a
            // repeated key lands on its entry and the last value wins.
            entries.emplace_hint(entries.end(), std::move(key), VarData())->second = std::move(item);
        }
        return VarDataCodec::Adopt(Word(VarDataType::Dictionary), new VarDataDictionary(std::move(entries)));
    }
};

// AbsTimeValue, RelTimeValue: the 16-byte time value, fraction word first.
struct TimeBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool) {
        const auto* time = static_cast<const IVarDataSSTimeValue*>(VarDataCodec::Guts(value));
        const tSSTimeValue words = time ? time->getTimeValue() : tSSTimeValue{0, 0};
        out.put(words.fraction);
        out.put(words.seconds);
    }
    static VarData Read(std::uint32_t type, ByteReader& in, bool, unsigned int) {
        tSSTimeValue time;
        time.fraction = in.get<std::uint64_t>();
        time.seconds = in.get<std::int64_t>();
        VarData value;
        value.setISSTimeValue(vardata_type::TagOf(type), time);
        return value;
    }
};

// Whatever the payload writes: its descriptor vector, then its data vector.
struct GXVariantBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool) {
        const auto* variant = static_cast<const IVarDataGXVariant*>(VarDataCodec::Guts(value));
        if (variant) return out.serialized(*variant);
        // A value without a payload goes out as an empty descriptor and no data.
        out.put(0u);
        out.put(0u);
    }
    static VarData Read(std::uint32_t, ByteReader& in, bool, unsigned int) {
        try {
            return VarDataCodec::Adopt(Word(VarDataType::GXVariant), in.readBy(DeserializeVarDataGXVariant));
        } catch (const zo::kel::exception::Exception&) {
            // Whatever the payload's reader reports, the record is unreadable.
            ZO_THROW(DeserializationError);
        }
    }
};

// Read only: three counts a, b, c, then a·b·c bytes (the product taken in
// 32 bits, so one that wraps skips the wrapped count) that this layer does
// not keep.
struct SkippedBlockBody {
    static VarData Read(std::uint32_t, ByteReader& in, bool, unsigned int) {
        std::uint32_t count = in.get<std::uint32_t>();
        count *= in.get<std::uint32_t>();
        count *= in.get<std::uint32_t>();
        in.take(count);
        return VarData();
    }
};

// FlexDataTag: the payload's packet as it serializes itself. A packet that
// cannot be read (SyntaxError, OutOfRange, DeserializationError) is malformed
// input like any other record: the reader's own failure.
struct FlexDataBody {
    template <class Sink>
    static void Write(const VarData& value, Sink& out, bool) {
        const auto* flex = static_cast<const IVarDataFlexData*>(VarDataCodec::Guts(value));
        if (flex) return out.serialized(*flex);
        out.put(0u);  // a value without a payload goes out as an empty packet
    }
    static VarData Read(std::uint32_t, ByteReader& in, bool, unsigned int) {
        try {
            return VarDataCodec::Adopt(Word(VarDataType::FlexDataTag), in.readBy(DeserializeVarDataFlexData));
        } catch (const zo::kel::exception::Exception&) {
            ZO_THROW(DeserializationError);
        }
    }
};

template <class Body>
constexpr RecordCodec Row(VarDataType tag, unsigned int compactBody, unsigned int fullBody) {
    return {static_cast<std::uint16_t>(tag), compactBody, fullBody, &Body::template Write<ByteCounter>,
            &Body::template Write<ByteWriter>, &Body::Read};
}

constexpr RecordCodec kCodecs[] = {
    Row<MarkerBody>(VarDataType::Undefined, 0, 8),
    Row<MarkerBody>(VarDataType::Empty, 0, 8),
    Row<LogicalBody>(VarDataType::Logical, 1, 1),
    Row<WordBody>(VarDataType::Numeric, 8, 8),
    Row<WordBody>(VarDataType::Time, 8, 8),
    Row<MarkerBody>(VarDataType::Break, 0, 8),
    Row<MarkerBody>(VarDataType::Pulse, 0, 8),
    Row<PointerBody>(VarDataType::VoidPointer, 4, 8),
    Row<WordBody>(VarDataType::ID64, 8, 8),
    Row<AnsiBody>(VarDataType::Ansi, kVariable, kVariable),
    Row<UnicodeBody>(VarDataType::Unicode, kVariable, kVariable),
    Row<RawBody>(VarDataType::Raw, kVariable, kVariable),
    Row<CellBody>(VarDataType::Cell, kVariable, kVariable),
    Row<DictionaryBody>(VarDataType::Dictionary, kVariable, kVariable),
    Row<TimeBody>(VarDataType::AbsTimeValue, 16, 16),
    Row<TimeBody>(VarDataType::RelTimeValue, 16, 16),
    Row<GXVariantBody>(VarDataType::GXVariant, kVariable, kVariable),
    Row<SequenceBody>(VarDataType::Sequence, kVariable, kVariable),
    Row<FlexDataBody>(VarDataType::FlexDataTag, kVariable, kVariable),
    {kSkippedBlockTag, kVariable, kVariable, nullptr, nullptr, &SkippedBlockBody::Read},
};

// Tags are sparse: the low five bits and the payload flag give each known
// tag a slot of its own; the row's own tag is checked on lookup.
constexpr std::size_t SlotOf(std::uint16_t tag) noexcept {
    return (tag & 0x1Fu) | ((tag & VarData::PayloadFlag) ? 0x20u : 0u);
}

constexpr auto kIndex = [] {
    std::array<const RecordCodec*, 64> index{};
    for (const RecordCodec& codec : kCodecs) {
        if (index[SlotOf(codec.tag)] != nullptr) throw "two tags share a slot";
        index[SlotOf(codec.tag)] = &codec;
    }
    return index;
}();

const RecordCodec& kEmptyCodec = *kIndex[SlotOf(static_cast<std::uint16_t>(VarDataType::Empty))];

}  // namespace

const RecordCodec* internal::VarDataCodec::Find(std::uint16_t tag) noexcept {
    const RecordCodec* codec = kIndex[SlotOf(tag)];
    return codec && codec->tag == tag ? codec : nullptr;
}

const RecordCodec& internal::VarDataCodec::WriterOf(const VarData& value) noexcept {
    const RecordCodec* codec = Find(vardata_type::TagOf(value.type_));
    return codec && codec->writable() ? *codec : kEmptyCodec;
}

ByteCounter::Size internal::VarDataCodec::RecordSize(const VarData& value, bool compact) {
    const RecordCodec& codec = WriterOf(value);
    if (const unsigned int fixed = codec.fixedBodySize(compact); fixed != RecordCodec::kVariableBody) return fixed + 4u;
    ByteCounter counter;
    counter.put(value.type_);
    codec.count(value, counter, compact);
    return counter.size();
}

void internal::VarDataCodec::WriteRecord(const VarData& value, ByteWriter& out, bool compact) {
    const RecordCodec& codec = WriterOf(value);
    out.put(codec.tag == vardata_type::TagOf(value.type_) ? value.type_ : Word(VarDataType::Empty));
    codec.write(value, out, compact);
}

VarData internal::VarDataCodec::ReadRecord(ByteReader& in, bool compact, unsigned int depth) {
    if (depth > VarData::kMaxNestingDepth) ZO_THROW(DeserializationError);
    const auto type = in.get<std::uint32_t>();
    const RecordCodec* codec = Find(vardata_type::TagOf(type));
    if (!codec || !codec->readable()) ZO_THROW(DeserializationError);
    return codec->read(type, in, compact, depth);
}
