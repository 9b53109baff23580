// The payload interfaces behind VarData, with their identifiers. A payload
// object is reached through IVarDataGuts and queried for the interface of
// its kind; the slot order of every interface is part of the binary contract
// with other modules and must not change.
#pragma once

#include <cstdint>

#include "tavlo/qkstatic/ComInterfaces.h"

class VarData;

inline constexpr _GUID IID_IVarDataGuts = {0xCC498480, 0x9CDC, 0x11D1, {0x9A, 0xA3, 0x00, 0x00, 0xC0, 0xFB, 0x83, 0xD0}};
inline constexpr _GUID IID_IVarDataSequence = {0xCC498481, 0x9CDC, 0x11D1, {0x9A, 0xA3, 0x00, 0x00, 0xC0, 0xFB, 0x83, 0xD0}};
inline constexpr _GUID IID_IVarDataAnsi = {0xCC498482, 0x9CDC, 0x11D1, {0x9A, 0xA3, 0x00, 0x00, 0xC0, 0xFB, 0x83, 0xD0}};
inline constexpr _GUID IID_IVarDataUnicode = {0xCC498483, 0x9CDC, 0x11D1, {0x9A, 0xA3, 0x00, 0x00, 0xC0, 0xFB, 0x83, 0xD0}};
inline constexpr _GUID IID_IAnsiGuts = {0xA6B35961, 0x74EB, 0x11D2, {0x8C, 0x76, 0x00, 0x60, 0x08, 0xC1, 0x63, 0x37}};
inline constexpr _GUID IID_IVarDataRaw = {0xDFDA5DA0, 0xD895, 0x11D1, {0x86, 0xBF, 0x00, 0xA0, 0x24, 0x6D, 0xF4, 0x48}};
inline constexpr _GUID IID_IVarDataCell = {0xB30C0A71, 0x6919, 0x11D2, {0x8C, 0x75, 0x00, 0x60, 0x08, 0xC1, 0x63, 0x37}};
inline constexpr _GUID IID_IVarDataSSTimeValue = {0x58CDA8F5, 0x7C01, 0x4637, {0xB4, 0x0E, 0x81, 0x72, 0x24, 0x76, 0x18, 0x40}};
inline constexpr _GUID IID_IVarDataDictionary = {0x8024E857, 0x3B80, 0x4F7B, {0xAA, 0xE1, 0xBD, 0xF9, 0xD6, 0x8D, 0xC9, 0xCA}};
inline constexpr _GUID IID_IVarDataGXVariant = {0xB93ACEB2, 0x26E6, 0x4970, {0xB2, 0x2C, 0x34, 0x94, 0xCA, 0x78, 0x36, 0x12}};
inline constexpr _GUID IID_IVarDataFlexData = {0x64FABE08, 0xCF7D, 0x4032, {0xBD, 0xCE, 0xD8, 0x4B, 0x07, 0x54, 0xAA, 0xCB}};
inline constexpr _GUID IID_IVarDataFlexData2 = {0xC1425DA3, 0x5C33, 0x4968, {0x9A, 0xD8, 0xFB, 0xE6, 0x51, 0x7C, 0xCA, 0xE3}};

class IVarDataGuts : public IUnknown {
public:
    virtual explicit operator bool() const = 0;
    virtual explicit operator double() const = 0;
    // Negative, zero or positive; `other` is a payload of the same tag.
    virtual std::int32_t Compare(const IVarDataGuts* other) const = 0;

protected:
    ~IVarDataGuts() = default;
};

// An ordered vector of values (tag Sequence).
class IVarDataSequence : public IVarDataGuts {
public:
    virtual VarData GetElement(unsigned long index) const = 0;
    virtual void SetElement(unsigned long index, VarData value) = 0;
    virtual unsigned int GetLength() const = 0;  // throws OutOfRange past 32 bits
    virtual IVarDataSequence* Copy() const = 0;  // a new object with one reference

protected:
    ~IVarDataSequence() = default;
};

// Narrow text (tag Ansi): zero-terminated, length in bytes without the terminator.
class IVarDataAnsi : public IVarDataGuts {
public:
    virtual const char* GetData() const = 0;
    virtual unsigned int GetLength() const = 0;

protected:
    ~IVarDataAnsi() = default;
};

// Wide text (tag Unicode): zero-terminated, length in wide characters.
class IVarDataUnicode : public IVarDataGuts {
public:
    virtual const wchar_t* GetData() const = 0;
    virtual unsigned int GetLength() const = 0;

protected:
    ~IVarDataUnicode() = default;
};

// String operations on narrow text; every result is a new object with one
// reference, the source never changes.
class IAnsiGuts : public IUnknown {
public:
    virtual const char* GetData() const = 0;
    virtual unsigned int GetLength() const = 0;
    virtual std::int32_t Compare(const IAnsiGuts* other) const = 0;
    virtual std::int32_t ExactCompare(const IAnsiGuts* other) const = 0;
    virtual std::int32_t Compare(const char* other) const = 0;
    virtual std::int32_t ExactCompare(const char* other) const = 0;
    virtual IAnsiGuts* ToLower() const = 0;
    virtual IAnsiGuts* ToUpper() const = 0;
    virtual IAnsiGuts* Concat(const IAnsiGuts* other) const = 0;
    virtual IAnsiGuts* Concat(const char* other) const = 0;
    virtual IAnsiGuts* Left(unsigned int count) const = 0;
    virtual IAnsiGuts* Right(unsigned int count) const = 0;
    virtual IAnsiGuts* Mid(unsigned int start, unsigned int count) const = 0;
    virtual IAnsiGuts* Proper() const = 0;

protected:
    ~IAnsiGuts() = default;
};

// A block of bytes (tag Raw).
class IVarDataRaw : public IVarDataGuts {
public:
    virtual bool GetData(const unsigned char*& data, unsigned int& length) const = 0;

protected:
    ~IVarDataRaw() = default;
};

// A spreadsheet-style cell: row, column and a value (tag Cell).
class IVarDataCell : public IVarDataGuts {
public:
    virtual void GetCell(unsigned short* row, unsigned short* column, VarData* value) const = 0;

protected:
    ~IVarDataCell() = default;
};

class IVarDataIterator;

// An ordered map from values to values (tag Dictionary), keyed by
// VarData::Compare. Iterators are owned by the caller and freed by Release.
class IVarDataDictionary : public IVarDataGuts {
public:
    virtual void setValue(const VarData& key, const VarData& value) = 0;
    virtual const VarData& getValue(const VarData& key) const = 0;  // KeyErrorException when absent
    virtual VarData& getValueReference(const VarData& key) = 0;     // inserts Empty when absent
    virtual IVarDataIterator* begin(const VarData& owner) const = 0;
    virtual IVarDataIterator* end(const VarData& owner) const = 0;
    virtual IVarDataIterator* find(const VarData& owner, const VarData& key) const = 0;
    virtual void erase(const VarData& key) = 0;
    virtual bool hasKey(const VarData& key) const = 0;
    virtual IVarDataDictionary* copy() const = 0;
    // The text form in a block the caller frees with free(); null without memory.
    virtual wchar_t* getString() const = 0;
    virtual unsigned int size() const = 0;

protected:
    ~IVarDataDictionary() = default;
};

// A position in a dictionary; not reference-counted: one owner, freed by Release.
class IVarDataIterator {
public:
    virtual void Release() = 0;
    virtual ~IVarDataIterator() = default;
    virtual const VarData& value() const = 0;
    virtual const VarData& key() const = 0;
    virtual VarData& getValueReference() = 0;
    virtual void increment() = 0;
    virtual void decrement() = 0;
    virtual bool compare(const IVarDataIterator* other) const = 0;  // same position
    virtual IVarDataIterator* copy() const = 0;
};

// A host-language variant (tag GXVariant): the host's type descriptor in
// 16-bit words and its flattened data, both held as received and never
// interpreted. The pointers from `get` live as long as the object.
class IVarDataGXVariant : public IVarDataGuts {
public:
    virtual void get(const unsigned short*& typeDescriptor, unsigned int& typeCount, const unsigned char*& data,
                     unsigned int& dataLength) const = 0;
    // 8 + 2n + m, saturating at 0xFFFFFFFF.
    virtual unsigned int serializationSize() const = 0;
    // Both halves in the vector byte form; BufferOverflow before any write.
    virtual void serialize(unsigned char*& cursor, const unsigned char* end) const = 0;

protected:
    ~IVarDataGXVariant() = default;
};

// The 16-byte record of an absolute or relative time: the fraction word
// (units of 2^-64 s), then the signed seconds word.
struct tSSTimeValue {
    std::uint64_t fraction;
    std::int64_t seconds;
};
static_assert(sizeof(tSSTimeValue) == 16);

namespace zo::kel {
class AbsTime;
class RelTime;
}  // namespace zo::kel

// An absolute or relative time (tags AbsTimeValue and RelTimeValue); the three
// getters read the same 16 bytes, the tag tells which kind they are.
class IVarDataSSTimeValue : public IVarDataGuts {
public:
    virtual zo::kel::AbsTime getAbsTime() const = 0;
    virtual zo::kel::RelTime getRelTime() const = 0;
    virtual tSSTimeValue getTimeValue() const = 0;

protected:
    ~IVarDataSSTimeValue() = default;
};

// ---- FlexData payload (tag FlexDataTag) ----------------------------------------

namespace zo::kel {
class FlexData;
}  // namespace zo::kel

// A typed measurement packet, immutable once made. serialize writes the
// packet as FlexData::serialize does (a u32 zero for an empty value).
class IVarDataFlexData : public IVarDataGuts {
public:
    virtual const zo::kel::FlexData& get() const = 0;
    virtual unsigned int serializationSize() const = 0;
    virtual void serialize(unsigned char*& cursor, const unsigned char* end) const = 0;

protected:
    ~IVarDataFlexData() = default;
};

// The packet's value as a native VarData: convertToNativeTypeNoThrow sets
// ok false (and gives Empty) for a value with no native form;
// convertToNativeType raises UnableToConvert instead; the dictionary form
// turns attributes into (nested) dictionary entries.
class IVarDataFlexData2 : public IVarDataFlexData {
public:
    virtual VarData convertToNativeType() const = 0;
    virtual VarData convertToNativeTypeOrDictionary(bool wideKeys) const = 0;
    virtual VarData convertToNativeTypeNoThrow(bool& ok) const = 0;

protected:
    ~IVarDataFlexData2() = default;
};
