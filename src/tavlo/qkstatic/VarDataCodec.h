// The VarData byte form, tag by tag. Every tag the form knows has one row in
// a table (VarDataRecordBodies.cpp): whether it is written, whether it is
// read, its fixed body size if it has one, its body writer (run by both the
// size pass and the write pass) and its body reader. Adding a tag is adding
// a body writer, a body reader and a row.
#pragma once

#include <cstdint>

#include "tavlo/qkstatic/PayloadRef.h"
#include "tavlo/qkstatic/VarDataByteSinks.h"
#include "tavlo/qkstatic/vardata.h"

namespace internal {

// One row of the table. A fixed size of kVariableBody means the body writer
// decides; a row without a writer is read-only, one without a reader write-only.
struct RecordCodec {
    static constexpr unsigned int kVariableBody = 0xFFFFFFFFu;

    std::uint16_t tag;
    unsigned int compactBodySize;
    unsigned int fullBodySize;
    void (*count)(const VarData& value, ByteCounter& out, bool compact);
    void (*write)(const VarData& value, ByteWriter& out, bool compact);
    VarData (*read)(std::uint32_t type, ByteReader& in, bool compact, unsigned int depth);

    bool writable() const noexcept { return write != nullptr; }
    bool readable() const noexcept { return read != nullptr; }
    unsigned int fixedBodySize(bool compact) const noexcept { return compact ? compactBodySize : fullBodySize; }
};

// The byte form's access to the words of a value (a friend of VarData).
class VarDataCodec {
public:
    // The row of a tag, or null when the byte form does not know it.
    static const RecordCodec* Find(std::uint16_t tag) noexcept;
    // The row a value is written by: its own, or Empty's for a value the
    // form cannot write (which then reads back as Empty).
    static const RecordCodec& WriterOf(const VarData& value) noexcept;

    static ByteCounter::Size RecordSize(const VarData& value, bool compact);
    static void WriteRecord(const VarData& value, ByteWriter& out, bool compact);
    static VarData ReadRecord(ByteReader& in, bool compact, unsigned int depth);

    static std::uint64_t Payload(const VarData& value) noexcept { return value.payload_; }
    static IVarDataGuts* Guts(const VarData& value) noexcept { return value.holdsGuts() ? value.guts() : nullptr; }
    static PayloadRef<IVarDataSequence> Sequence(const VarData& value) { return value.querySequence(); }
    static VarData Inline(std::uint32_t type, std::uint64_t payload) noexcept {
        VarData value;
        value.type_ = type;
        value.payload_ = payload;
        return value;
    }
    // Takes over the caller's reference to `guts` (may be null).
    static VarData Adopt(std::uint32_t type, IVarDataGuts* guts) noexcept {
        VarData value;
        value.adoptGuts(type, guts);
        return value;
    }
};

}  // namespace internal
