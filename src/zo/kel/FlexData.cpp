#include "zo/kel/FlexData.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstring>
#include <functional>
#include <limits>
#include <type_traits>
#include <utility>

#include "zo/kel/AutoBuffer.h"
#include "zo/kel/ByteForm.h"
#include "zo/kel/DLLMalloc.h"
#include "zo/kel/Exception.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/TruncateToInt64.h"
#include "zo/kel/fd.h"
#include "zo/kel/osdep/SerializeUtf16.h"

namespace zo::kel {

namespace {

using Size = SafeInteger<unsigned int>;
using zo::kel::internal::TruncateToInt64;

// The packet size word can never reach these: room for a pad byte stays.
constexpr unsigned int kPacketSizeLimit = 0xFFFFFFFCu;

unsigned int RoundUpEven(unsigned int size) { return (Size(size) + (size & 1u)).get(); }

// The numeric kinds the number getters accept, with how their bits read.
struct NumericKind {
    fd::FlexType type;
    bool isSigned;
    bool isFloat;
};
constexpr NumericKind kNumericKinds[] = {
    {fd::kInt8, true, false},    {fd::kUInt8, false, false},  {fd::kInt16, true, false},
    {fd::kUInt16, false, false}, {fd::kInt32, true, false},   {fd::kUInt32, false, false},
    {fd::kInt64, true, false},   {fd::kUInt64, false, false}, {fd::kFloat32, true, true},
    {fd::kFloat64, true, true},
};
// The kinds getBool reads: non-zero bytes are true.
constexpr fd::FlexType kBooleanKinds[] = {fd::kBoolean, fd::kBoolean16, fd::kInt32};

// One stored number: integers as their sign- or zero-extended 64 bits.
struct Number {
    NumericKind kind;
    std::uint64_t bits = 0;
    double floating = 0.0;
};

// The processor's out-of-range result, from defined C++: INT32_MIN for NaN
// and for values outside the signed 32-bit range.
constexpr std::int32_t TruncateToInt32(double value) noexcept {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

template <typename T>
T IntegerFromFloat(double value) {
    constexpr double kTwoTo63 = 9223372036854775808.0;
    if constexpr (sizeof(T) < 4 || (sizeof(T) == 4 && std::is_signed_v<T>)) {
        return static_cast<T>(TruncateToInt32(value));
    } else if constexpr (sizeof(T) == 4 || std::is_signed_v<T>) {
        return static_cast<T>(TruncateToInt64(value));
    } else if (value >= kTwoTo63) {
        return static_cast<T>(TruncateToInt64(value - kTwoTo63)) | (T{1} << 63);
    } else {
        return static_cast<T>(TruncateToInt64(value));
    }
}

[[noreturn]] void ThrowNotOfKind(unsigned int line) { throw exception::InvalidArgument(line, ZO_SOURCE_FILE); }

[[noreturn]] void ThrowNotFixedPoint(unsigned int line) {
    throw exception::InvalidArgument2("Not a fixed-point FlexData", line, ZO_SOURCE_FILE);
}

}  // namespace

void FlexData::throwWrongKind(unsigned int line) { ThrowNotOfKind(line); }

// ---- Construction and storage

FlexData::FlexData(const FlexData& other) { copyFrom(other.packet_, other.end()); }

FlexData& FlexData::operator=(const FlexData& other) {
    if (this != &other) copyFrom(other.packet_, other.end());
    return *this;
}

FlexData& FlexData::operator=(FlexData&& other) noexcept {
    FlexData taken(std::move(other));
    swap(taken);
    return *this;
}

FlexData::~FlexData() { DLLFree(packet_); }

void FlexData::swap(FlexData& other) noexcept {
    std::swap(packet_, other.packet_);
    std::swap(capacityEnd_, other.capacityEnd_);
    std::swap(data_, other.data_);
    std::swap(type_, other.type_);
    std::swap(dataSize_, other.dataSize_);
}

void FlexData::clear() noexcept {
    DLLFree(packet_);
    packet_ = capacityEnd_ = data_ = type_ = nullptr;
    dataSize_ = 0;
}

bool FlexData::holdsBytes(const void* p) const noexcept {
    const auto* byte = static_cast<const unsigned char*>(p);
    return packet_ && !std::less<const unsigned char*>()(byte, packet_) &&
           std::less<const unsigned char*>()(byte, capacityEnd_);
}

// Grows the block to at least size bytes, keeping its contents.
void FlexData::reserve(unsigned int size) {
    if (packet_ && size <= static_cast<std::size_t>(capacityEnd_ - packet_)) return;
    const auto typeOffset = type_ - packet_, dataOffset = data_ - packet_;
    auto* block = static_cast<unsigned char*>(DLLRealloc(packet_, size));
    if (packet_) {
        type_ = block + typeOffset;
        data_ = block + dataOffset;
    }
    packet_ = block;
    capacityEnd_ = block + size;
}

unsigned char* FlexData::resizeRange(unsigned int offset, unsigned int removed, unsigned int inserted) {
    const unsigned int size = getPacketSize();
    const unsigned int newSize = fd::AdjustSize(size, std::int64_t{inserted} - removed);
    if (newSize >= kPacketSizeLimit) ZO_THROW(exception::OutOfRange);
    reserve(newSize);
    std::memmove(packet_ + offset + inserted, packet_ + offset + removed, size - offset - removed);
    byteform::StoreCount(packet_, newSize);
    return packet_ + offset;
}

void FlexData::bindTo(unsigned int typeOffset, unsigned int dataOffset) noexcept {
    type_ = packet_ + typeOffset;
    data_ = packet_ + dataOffset;
    dataSize_ = getPacketSize() - dataOffset;
}

// ---- The packet

void FlexData::copyFrom(const unsigned char* begin, const unsigned char* end) {
    if (!begin) return clear();
    if (!end || end < begin || end - begin < 4) ZO_THROW(exception::DeserializationError);
    const unsigned int size = byteform::LoadCount(begin);
    if (size > static_cast<std::size_t>(end - begin)) ZO_THROW(exception::DeserializationError);
    if (size == 0) return;
    if (holdsBytes(begin)) {
        FlexData copy;
        copy.copyFrom(begin, end);
        return swap(copy);
    }
    const unsigned char* type = fd::GetTypeFromPacket(begin, begin + size);
    const unsigned char* data = fd::GetDataFromType(begin, type, begin + size);
    const unsigned int evenSize = RoundUpEven(size);
    reserve(evenSize);
    std::memcpy(packet_, begin, size);
    if (evenSize != size) {
        packet_[size] = 0;
        byteform::StoreCount(packet_, evenSize);
    }
    bindTo(static_cast<unsigned int>(type - begin), static_cast<unsigned int>(data - begin));
}

void FlexData::copyFromParts(const BufferWrapper& metadata, const BufferWrapper& data) {
    const unsigned char* mdEnd = metadata.Data() + metadata.Len();
    const auto typeOffset = static_cast<unsigned int>(fd::GetTypeEndingAt(metadata.Data(), mdEnd) - metadata.Data());
    FlexData built;
    built.setTypeAndDataSize(metadata.Len(), data.Len(), false);
    std::memcpy(built.packet_ + 4, metadata.Data(), metadata.Len());
    if (data.Len() != 0) std::memcpy(built.data_, data.Data(), data.Len());
    built.bindTo(4 + typeOffset, 4 + metadata.Len());
    swap(built);
}

void FlexData::setTypeAndDataSize(unsigned int metadataSize, unsigned int dataSize, bool keepPrefix) {
    reshape(metadataSize, dataSize, keepPrefix, true);
}

// zeroData false leaves the data bytes as they come (all but a pad byte):
// for callers that write every one of them, as bulk array setters do.
void FlexData::reshape(unsigned int metadataSize, unsigned int dataSize, bool keepPrefix, bool zeroData) {
    if (dataSize == 0xFFFFFFFFu) ZO_THROW(exception::OutOfRange);
    const unsigned int evenData = RoundUpEven(dataSize);
    const unsigned int tail = (Size(metadataSize) + evenData).get();
    const unsigned int zeroed = zeroData ? tail : metadataSize;
    if (packet_ && keepPrefix) {
        const auto typeOffset = static_cast<unsigned int>(type_ - packet_);
        std::memset(resizeRange(typeOffset, getPacketSize() - typeOffset, tail), 0, zeroed);
        bindTo(typeOffset, typeOffset + metadataSize);
    } else {
        const unsigned int size = (Size(4u) + tail).get();
        if (size >= kPacketSizeLimit) ZO_THROW(exception::OutOfRange);
        reserve(size);
        byteform::StoreCount(packet_, size);
        std::memset(packet_ + 4, 0, zeroed);
        bindTo(4, 4 + metadataSize);
    }
    if (evenData != dataSize) data_[dataSize] = 0;
}

void FlexData::setType(fd::FlexType type, unsigned int dataSize) {
    setTypeAndDataSize(2, dataSize, true);
    fd::SetVal(type_, static_cast<std::uint16_t>(type), data_);
}

void FlexData::setVoid() { setType(fd::kVoid, 0); }
void FlexData::setEmpty() { setType(fd::kEmpty, 4); }

std::uint16_t FlexData::typeWord() const noexcept {
    if (!packet_) return 0;
    std::uint16_t word;
    std::memcpy(&word, type_, 2);
    return word;
}

fd::FlexType FlexData::getType() const noexcept { return static_cast<fd::FlexType>(typeWord() & fd::kCodeMask); }

unsigned int FlexData::getPacketSize() const noexcept { return packet_ ? byteform::LoadCount(packet_) : 0; }

BufferWrapper FlexData::getMetaDataBuffer() const noexcept {
    return packet_ ? BufferWrapper(packet_ + 4, static_cast<unsigned int>(data_ - packet_ - 4)) : BufferWrapper();
}

BufferWrapper FlexData::getDataBuffer() const noexcept { return BufferWrapper(data_, dataSize_); }

// ---- Byte form and order

unsigned int FlexData::serializationSize() const noexcept { return packet_ ? getPacketSize() : 4; }

void FlexData::serialize(unsigned char*& cursor, const unsigned char* end) const {
    const unsigned int size = serializationSize();
    if (byteform::Room(cursor, end) < size) byteform::ThrowBufferOverflow();
    if (packet_) {
        std::memcpy(cursor, packet_, size);
    } else {
        byteform::StoreCount(cursor, 0);
    }
    cursor += size;
}

void FlexData::deserialize(const unsigned char*& cursor, const unsigned char* end) {
    try {
        copyFrom(cursor, end);
    } catch (...) {
        clear();
        throw;
    }
    cursor += std::min<std::size_t>(serializationSize(), byteform::Room(cursor, end));
}

int FlexData::compare(const FlexData& other) const noexcept {
    const unsigned int a = getPacketSize(), b = other.getPacketSize();
    const unsigned int common = std::min(a, b);
    const auto [mine, theirs] = std::mismatch(packet_, packet_ + common, other.packet_);
    if (mine != packet_ + common) return int{*mine} - int{*theirs};
    return static_cast<int>(a - b);
}

// ---- Nested packet

void FlexData::setFlexData(const FlexData& inner) {
    if (inner.isEmpty() || &inner == this) {
        FlexData stored;
        if (inner.isEmpty()) stored.setEmpty(); else stored = inner;
        return setFlexData(stored);
    }
    const unsigned int size = inner.getPacketSize();
    setTypeAndDataSize(2, size, true);
    fd::SetVal(type_, static_cast<std::uint16_t>(fd::kFlexData), data_);
    std::memcpy(data_, inner.packet_, size);
}

FlexData FlexData::getFlexData() const {
    const auto type = getType();
    if (type != fd::kFlexData && type != fd::kFlexData2) ThrowNotOfKind(__LINE__);
    FlexData inner;
    inner.copyFrom(data_, end());
    return inner;
}

// ---- Scalars

template <typename T>
void FlexData::setScalar(fd::FlexType type, T value) {
    if (!packet_ || typeWord() != type || dataSize_ < sizeof(T)) {
        setTypeAndDataSize(2, sizeof(T), true);
        fd::SetVal(type_, static_cast<std::uint16_t>(type), data_);
    }
    std::memcpy(data_, &value, sizeof(T));
}

void FlexData::setBool(bool value) { setScalar<std::uint8_t>(fd::kBoolean, value ? 0xFF : 0x00); }
void FlexData::setBool(int value) { setBool(value != 0); }
void FlexData::setI8(signed char value) { setScalar(fd::kInt8, value); }
void FlexData::setUI8(unsigned char value) { setScalar(fd::kUInt8, value); }
void FlexData::setI16(short value) { setScalar(fd::kInt16, value); }
void FlexData::setUI16(unsigned short value) { setScalar(fd::kUInt16, value); }
void FlexData::setI32(int value) { setScalar(fd::kInt32, value); }
void FlexData::setUI32(unsigned int value) { setScalar(fd::kUInt32, value); }
void FlexData::setI64(long value) { setScalar(fd::kInt64, value); }
void FlexData::setUI64(unsigned long value) { setScalar(fd::kUInt64, value); }
void FlexData::setF32(float value) { setScalar(fd::kFloat32, value); }
void FlexData::setF64(double value) { setScalar(fd::kFloat64, value); }

void FlexData::setTime(const AbsTime& time) {
    if (!packet_ || typeWord() != fd::kTime || dataSize_ < 16) {
        setTypeAndDataSize(2, 16, true);
        fd::SetVal(type_, static_cast<std::uint16_t>(fd::kTime), data_);
    }
    fd::SetTime(data_, time, end());
}

namespace {

Number ReadNumber(fd::FlexType type, const unsigned char* data, const unsigned char* end, unsigned int line) {
    const auto* kind = std::find_if(std::begin(kNumericKinds), std::end(kNumericKinds),
                                    [type](const NumericKind& row) { return row.type == type; });
    if (kind == std::end(kNumericKinds)) ThrowNotOfKind(line);
    const unsigned int size = fd::GetDataSize(type);
    Number number{*kind};
    fd::MemCpy(reinterpret_cast<unsigned char*>(&number.bits), reinterpret_cast<unsigned char*>(&number.bits + 1),
               data, end, size);
    if (kind->isFloat) {
        number.floating = size == 4 ? double{std::bit_cast<float>(static_cast<std::uint32_t>(number.bits))}
                                    : std::bit_cast<double>(number.bits);
    } else if (kind->isSigned && size < 8) {
        const unsigned int shift = 64 - 8 * size;
        number.bits = static_cast<std::uint64_t>(static_cast<std::int64_t>(number.bits << shift) >> shift);
    }
    return number;
}

}  // namespace

template <typename T>
T FlexData::getInteger() const {
    const Number number = ReadNumber(getType(), data_, end(), __LINE__);
    return number.kind.isFloat ? IntegerFromFloat<T>(number.floating) : static_cast<T>(number.bits);
}

template <typename T>
T FlexData::getFloating() const {
    const Number number = ReadNumber(getType(), data_, end(), __LINE__);
    if (number.kind.isFloat) return static_cast<T>(number.floating);
    return number.kind.isSigned ? static_cast<T>(static_cast<std::int64_t>(number.bits)) : static_cast<T>(number.bits);
}

signed char FlexData::getI8() const { return getInteger<signed char>(); }
unsigned char FlexData::getUI8() const { return getInteger<unsigned char>(); }
short FlexData::getI16() const { return getInteger<short>(); }
unsigned short FlexData::getUI16() const { return getInteger<unsigned short>(); }
int FlexData::getI32() const { return getInteger<int>(); }
unsigned int FlexData::getUI32() const { return getInteger<unsigned int>(); }
long FlexData::getI64() const { return getInteger<long>(); }
unsigned long FlexData::getUI64() const { return getInteger<unsigned long>(); }
float FlexData::getF32() const { return getFloating<float>(); }
double FlexData::getF64() const { return getFloating<double>(); }

bool FlexData::canCoerceToBool() const noexcept {
    return packet_ && std::ranges::find(kBooleanKinds, getType()) != std::end(kBooleanKinds);
}

bool FlexData::getBool() const {
    if (!canCoerceToBool()) ThrowNotOfKind(__LINE__);
    std::uint32_t bits = 0;
    fd::MemCpy(reinterpret_cast<unsigned char*>(&bits), reinterpret_cast<unsigned char*>(&bits + 1), data_, end(),
               fd::GetDataSize(getType()));
    return bits != 0;
}

AbsTime FlexData::getTime() const {
    if (getType() != fd::kTime) ThrowNotOfKind(__LINE__);
    return fd::GetTime(data_, end());
}

// ---- Strings

void FlexData::setAString(const char* text, unsigned int length) {
    if (holdsBytes(text)) return setAString(NarrowString(text, length));
    const unsigned int size = fd::StringSerializationSize(length);
    setTypeAndDataSize(2, size, true);
    fd::SetVal(type_, static_cast<std::uint16_t>(fd::kAnsiString), data_);
    fd::CopyStringToPacket(data_, end(), text, length);
}

void FlexData::setAString(const NarrowString& text) { setAString(text.c_str(), text.length()); }

void FlexData::setUTF16(const WideString& text) {
    const unsigned int size = fd::StringSerializationSize(text);
    setTypeAndDataSize(2, size, true);
    fd::SetVal(type_, static_cast<std::uint16_t>(fd::kUtf16String), data_);
    fd::CopyStringToPacket(data_, end(), text);
}

// The u32 count at the data and the count units after it, checked against the packet.
const unsigned char* FlexData::countedBytes(unsigned int& count) const {
    if (!fd::HasRoom(data_, end(), fd::GetDataSize(type_, data_, end()))) fd::internal::ThrowShortPacket();
    count = fd::GetVal<std::uint32_t>(data_, end());
    return data_ + 4;
}

const char* FlexData::getAString(unsigned int& length) const {
    const auto type = getType();
    if (type != fd::kAnsiString && type != fd::kAnsiString2) ThrowNotOfKind(__LINE__);
    return reinterpret_cast<const char*>(countedBytes(length));
}

NarrowString FlexData::getAString() const {
    if (getType() == fd::kUtf16String) return NarrowString(getUnicode());
    unsigned int length;
    const char* text = getAString(length);
    return NarrowString(text, length);
}

WideString FlexData::getUnicode() const {
    if (getType() != fd::kUtf16String) return WideString(getAString());
    unsigned int units;
    const unsigned char* text = countedBytes(units);
    return osdep::SerializeUtf16::DeserializeFromUtf16(text, text + 2 * std::size_t{units});
}

// ---- Fixed point: 10 bytes of metadata (type word, signed byte, overflow-
// status byte, u16 word length, i32 integer word length); data: the value
// bytes, the status byte when there is one, padded to even.

unsigned int FlexData::getFixedPointDatasizeInBytes(unsigned short wordLength) noexcept {
    return fd::FixedPointValueBytes(wordLength);
}

unsigned int FlexData::getFixedPointDatasizeInBytes() const {
    if (!fd::IsFixedPointCode(getType())) ThrowNotFixedPoint(__LINE__);
    return fd::FixedPointValueBytes(fd::GetVal<std::uint16_t>(type_ + 4, data_));
}

void FlexData::setFixedPoint(bool isSigned, bool hasOverflowStatus, unsigned short wordLength, int integerWordLength,
                             const BufferWrapper& value, bool overflowed) {
    const unsigned int n = fd::FixedPointValueBytes(wordLength);
    if (value.Len() < n) ZO_THROW(exception::BufferUnderflow);
    if (holdsBytes(value.Data())) {
        const AutoBuffer copy(value.Data(), n);
        return setFixedPoint(isSigned, hasOverflowStatus, wordLength, integerWordLength, BufferWrapper(copy),
                             overflowed);
    }
    setTypeAndDataSize(10, (n + (hasOverflowStatus ? 1 : 0) + 1) & ~1u, true);
    const unsigned char flags[2] = {static_cast<unsigned char>(isSigned ? 0xFF : 0x00),
                                    static_cast<unsigned char>(hasOverflowStatus ? 0xFF : 0x00)};
    unsigned char* at = type_;
    at += fd::SetVal(at, static_cast<std::uint16_t>(fd::kFixedPoint), data_);
    fd::MemCpy(at, data_, flags, flags + 2, 2);
    at += 2;
    at += fd::SetVal(at, wordLength, data_);
    fd::SetVal(at, integerWordLength, data_);
    fd::MemCpy(data_, end(), value.Data(), value.Data() + n, n);
    if (hasOverflowStatus) fd::SetVal(data_ + n, static_cast<std::uint8_t>(overflowed ? 0xFF : 0x00), end());
}

void FlexData::setFixedPoint(bool isSigned, bool hasOverflowStatus, unsigned short wordLength, int integerWordLength,
                             unsigned long value, bool overflowed) {
    if (wordLength > 64) {
        ZO_THROW(exception::InvalidArgument2,
                 "Can't specify word length of > 64 bits with a function that takes a 64-bit type for the type");
    }
    setFixedPoint(isSigned, hasOverflowStatus, wordLength, integerWordLength,
                  BufferWrapper(reinterpret_cast<const unsigned char*>(&value), fd::FixedPointValueBytes(wordLength)),
                  overflowed);
}

void FlexData::getFixedPoint(bool& isSigned, bool& hasOverflowStatus, unsigned short& wordLength,
                             int& integerWordLength, unsigned char* out, unsigned long outSize,
                             bool* overflowed) const {
    if (!fd::IsFixedPointCode(getType())) ThrowNotFixedPoint(__LINE__);
    const bool signedFlag = fd::GetVal<std::uint8_t>(type_ + 2, data_) != 0;
    const bool statusFlag = fd::GetVal<std::uint8_t>(type_ + 3, data_) != 0;
    const auto length = fd::GetVal<std::uint16_t>(type_ + 4, data_);
    const auto integerLength = fd::GetVal<std::int32_t>(type_ + 6, data_);
    const unsigned int n = fd::FixedPointValueBytes(length);
    if (!fd::HasRoom(data_, end(), n + (statusFlag ? 1u : 0u))) fd::internal::ThrowShortPacket();
    if (outSize < n) ZO_THROW(exception::BufferOverflow);
    std::memcpy(out, data_, n);
    if (statusFlag && overflowed) *overflowed = data_[n] != 0;
    isSigned = signedFlag;
    hasOverflowStatus = statusFlag;
    wordLength = length;
    integerWordLength = integerLength;
}

void FlexData::getFixedPoint(bool& isSigned, bool& hasOverflowStatus, unsigned short& wordLength,
                             int& integerWordLength, unsigned long& value, bool* overflowed) const {
    if (getFixedPointDatasizeInBytes() >= 9) ZO_THROW(exception::OutOfRange2, "Fixed-point number has word-length > 64");
    unsigned char bytes[8] = {};
    getFixedPoint(isSigned, hasOverflowStatus, wordLength, integerWordLength, bytes, sizeof bytes, overflowed);
    std::uint64_t bits;
    std::memcpy(&bits, bytes, 8);
    const unsigned int shift = 64 - wordLength;
    if (shift >= 64) {
        value = 0;
    } else if (isSigned) {
        value = static_cast<unsigned long>(static_cast<std::int64_t>(bits << shift) >> shift);
    } else {
        value = shift == 0 ? bits : bits & ((std::uint64_t{1} << (64 - shift)) - 1);
    }
}

}  // namespace zo::kel
