// The VarData members of the byte form: sizes, the two framings on the write
// side, and the reader entry points with their failure contracts. The bodies
// themselves are in VarDataRecordBodies.cpp.
#include <algorithm>

#include "tavlo/qkstatic/VarDataCodec.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/ByteForm.h"
#include "zo/kel/Exception.h"
#include "zo/kel/osdep/Assertion.h"

using internal::ByteReader;
using internal::ByteWriter;
using internal::VarDataCodec;

namespace {

// Where an oversized value has always been reported.
constexpr const char* kSizeReportFile = "tavlo/qkstatic/vardata";
constexpr unsigned int kValueSizeReportLine = 1625;
constexpr unsigned int kSizeImplReportLine = 1642;

unsigned int ReportOversized(unsigned int line) {
    zo::kel::osdep::OutputReleaseAssertion("false", "VarData size exceeds 2^32-1 bytes. The value cannot be serialized.",
                                           kSizeReportFile, line);
    return 0;
}

}  // namespace

unsigned int VarData::valueSerializationSize() const {
    try {
        return VarDataCodec::RecordSize(*this, true).get();
    } catch (const zo::kel::exception::OutOfRange&) {
        return ReportOversized(kValueSizeReportLine);
    }
}

unsigned int VarData::serializationSizeImpl(bool compact) const {
    try {
        return (VarDataCodec::RecordSize(*this, compact) + 4u).get();
    } catch (const zo::kel::exception::OutOfRange&) {
        return ReportOversized(kSizeImplReportLine);
    }
}

// --- Writing -------------------------------------------------------------------------

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
