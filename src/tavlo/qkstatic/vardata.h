// VarData: the 16-byte variant every module moves around. A 32-bit type word
// (see VarDataType.h) and an 8-byte payload: small values inline, everything
// else as one owned reference to a payload object. Copies share payload
// objects; sequences and dictionaries are copied before a write when shared.
// One value belongs to one thread at a time; shared payloads may be copied
// and released from any thread.
//
//   VarData v;                  // Empty
//   v = 2.5;                    // Numeric
//   VarData list = VarData::sequence();
//   list.SetElement(3, v);      // grows to 4, elements 0-2 Empty
//   double d = list.GetElement(3);
#pragma once

#include <cstdint>

#include "qkdynam_platform.h"
#include "tavlo/qkstatic/VarDataExceptions.h"
#include "tavlo/qkstatic/VarDataGuts.h"
#include "tavlo/qkstatic/VarDataType.h"
#include "zo/kel/AbsTime.h"
#include "zo/kel/AutoBuffer.h"
#include "zo/kel/RelTime.h"
#include "zo/kel/StringBase.h"

namespace internal {
template <class Interface>
class PayloadRef;
class VarDataCodec;
}  // namespace internal

class QKDYNAM_API VarData {
public:
    static constexpr std::uint32_t PayloadFlag = vardata_type::PayloadFlag;
    static constexpr std::uint32_t SequenceFlag = vardata_type::SequenceFlag;
    static constexpr std::uint16_t BitArraySubtype = vardata_type::BitArraySubtype;

    // --- Construction. A null or empty source gives a null payload object.
    VarData() noexcept : type_(vardata_type::Word(VarDataType::Empty)), payload_(0) {}
    VarData(const VarData& other) noexcept : type_(other.type_), payload_(other.payload_) {
        if (holdsGuts()) guts()->AddRef();
    }
    VarData(VarData&& other) noexcept : type_(other.type_), payload_(other.payload_) {
        other.type_ = vardata_type::Word(VarDataType::Empty);
        other.payload_ = 0;
    }
    ~VarData() { releaseGuts(); }
    VarData(const char* text);                                                   // Ansi
    VarData(const zo::kel::NarrowString& text);                                  // Ansi
    VarData(const wchar_t* text);                                                // Unicode
    VarData(const zo::kel::WideString& text);                                    // Unicode
    VarData(const unsigned char* data, unsigned int length);                     // Raw
    VarData(unsigned short row, unsigned short column, const VarData& value);    // Cell
    VarData(const zo::kel::AbsTime& time);                                       // AbsTimeValue
    VarData(const zo::kel::RelTime& time);                                       // RelTimeValue
    VarData(const zo::kel::FlexData& value);                                     // FlexDataTag

    static VarData pulse();
    static VarData brake();
    static VarData bitArray(unsigned int bits);
    static VarData num(double value, unsigned short subtype = 0);
    static VarData ansi(const char* text, unsigned int length);        // counted text
    static VarData unicode(const wchar_t* text, unsigned int length);  // counted text
    static VarData dict();      // a new empty Dictionary
    static VarData sequence();  // a new empty Sequence
    // A host-language value (GXVariant): copies of the type descriptor (16-bit
    // words) and of the flattened data. The range form counts the descriptor
    // in words; lengths over 32 bits throw OutOfRange.
    static VarData gxvar(const unsigned short* typeDescriptor, unsigned int typeCount, const unsigned char* data,
                         unsigned int dataLength);
    static VarData gxvar(const unsigned short* typeBegin, const unsigned short* typeEnd, const unsigned char* dataBegin,
                         const unsigned char* dataEnd);

    // --- Setters; each releases the old payload object.
    VarData& operator=(const VarData& other);
    VarData& operator=(VarData&& other) noexcept;
    VarData& operator=(bool value);
    VarData& operator=(int value);
    VarData& operator=(double value);  // clears any subtype
    VarData& operator=(long value);    // a time count (Time), not a number
    VarData& operator=(const char* text);
    VarData& operator=(const wchar_t* text);
    void assign(const VarData& other) { *this = other; }
    void Pulse();
    void Break();
    void Clear();
    void SetRaw(const unsigned char* data, unsigned int length);  // may come from this value's own bytes
    void setID64(unsigned long id);
    void setBitArray32(unsigned int bits);
    void setVoidPointer(void* pointer);
    void setAbsTime(const zo::kel::AbsTime& time);
    void setRelTime(const zo::kel::RelTime& time);
    void setISSTimeValue(unsigned int typeWord, const tSSTimeValue& value);
    void swap(VarData& other) noexcept;

    // --- Reporting readers: false (out argument untouched) unless the tag matches.
    bool GetLogical(bool& value) const;
    bool GetNumeric(double& value) const;  // type word exactly Numeric, no subtype
    bool GetTime(long& count) const;
    bool GetFILETIME(unsigned long& count) const;  // the raw count, no conversion
    bool getID64(unsigned long& id) const;
    bool getBitArray32(unsigned int& bits) const;
    bool GetRaw(const unsigned char*& data, unsigned int& length) const;
    bool GetCell(unsigned short& row, unsigned short& column, VarData& value) const;
    bool GetAnsi(const char*& text) const;  // a null payload gives ""
    bool GetUni(const wchar_t*& text) const;
    bool getAbsTime(zo::kel::AbsTime& time) const;
    bool getRelTime(zo::kel::RelTime& time) const;

    // --- Throwing readers: TypeErrorException on a wrong tag.
    zo::kel::NarrowString getAnsiString() const;  // Ansi
    zo::kel::WideString getString() const;        // Unicode
    unsigned int GetRaw() const;                  // Raw: the byte count
    void* getVoidPointer() const;
    // GXVariant: the payload's descriptor and data, valid while the payload lives.
    void getGXVariant(const unsigned short*& typeDescriptor, unsigned int& typeCount, const unsigned char*& data,
                      unsigned int& dataLength) const;
    void throwIfWrongType(unsigned int tag) const;
    const zo::kel::FlexData& getFlexData() const;  // FlexDataTag; the payload's own value

    // Interface getters: the payload pointer as the named interface, without
    // a tag test and without a new reference. Test the tag first.
    IVarDataAnsi* getIAnsi() const noexcept { return static_cast<IVarDataAnsi*>(guts()); }
    IVarDataUnicode* getIUnicode() const noexcept { return static_cast<IVarDataUnicode*>(guts()); }
    IVarDataDictionary* getIDict() const noexcept { return static_cast<IVarDataDictionary*>(guts()); }
    IVarDataSSTimeValue* getISSTimeValue() const noexcept { return static_cast<IVarDataSSTimeValue*>(guts()); }
    IVarDataGXVariant* getIGXVariant() const noexcept { return static_cast<IVarDataGXVariant*>(guts()); }
    IVarDataFlexData* getIFlexData() const noexcept { return static_cast<IVarDataFlexData*>(guts()); }

    // --- Queries.
    std::uint32_t GetType() const noexcept { return type_; }  // tag in the low 16 bits
    unsigned int getBitArray32Fast() const noexcept;          // no tag test
    bool IsPulse() const noexcept { return tag() == VarDataType::Pulse; }
    void Not() noexcept;  // flips a Logical; any other value stays as it is
    unsigned int GetLength() const;

    // --- Sequences. Reading a missing element gives Empty; writing unshares.
    VarData GetElement(unsigned int index) const;
    VarData GetElement(unsigned int row, unsigned int column) const;
    void SetElement(unsigned int index, const VarData& value);  // TypeErrorException unless a Sequence
    void SetElement(unsigned int row, unsigned int column, const VarData& value);

    // --- Copy on write: a shared Sequence or Dictionary becomes a private copy.
    void unshare();
    void copyIfShared();  // the caller guarantees a payload object

    // --- Truth, number and ordering (never throw; unknown tags read false/0).
    explicit operator bool() const;
    operator double() const;
    operator int() const;
    operator unsigned int() const;
    operator unsigned long() const;
    operator char() const;
    // Orders by tag first, then by value; the ordering of dictionary keys.
    std::int32_t Compare(const VarData& other) const;
    friend bool operator<(const VarData& a, const VarData& b) { return a.Compare(b) < 0; }

    // --- Native type. A GXVariant becomes the ordinary value its host value
    // converts to (vek::GXVariantToVarData with clusters as dictionaries and
    // narrow strings); a FlexDataTag value the plain value its packet stands
    // for (the payload's convertToNativeTypeNoThrow). True when it converted;
    // a value without a native form (or unreadable), and every other tag,
    // stay as they are and give false.
    bool convertSelfToNativeType();
    // The same on a copy, which is returned; the OrDictionary form makes
    // strings and dictionary keys Unicode when `wideStrings` is true, and
    // turns a packet's attributes into (nested) dictionary entries.
    VarData convertToNativeType() const;
    VarData convertToNativeTypeOrDictionary(bool wideStrings) const;

    // --- Conversion in place to the nearest value of another tag; a target
    // with no conversion leaves the value unchanged. A GXVariant or FlexDataTag
    // source is first made native (above), which ends it when that gives the
    // tag asked for; any value converts to FlexDataTag (a dictionary carries
    // its entries as attributes).
    void Convert_(unsigned short tag);
    void Convert_(VarDataType tag) { Convert_(static_cast<unsigned short>(tag)); }
    // The value as wide text; TypeErrorException when it has no text form.
    zo::kel::WideString coerceToString() const;

    // --- Bit arrays: both operands read as 32-bit patterns; results are bit arrays.
    unsigned int getBitArrayUint32WithCoercion() const;
    friend QKDYNAM_API VarData operator|(const VarData& a, const VarData& b);
    friend QKDYNAM_API VarData operator&(const VarData& a, const VarData& b);
    friend QKDYNAM_API VarData operator^(const VarData& a, const VarData& b);
    VarData operator~() const;
    VarData& operator|=(const VarData& other);
    VarData& operator&=(const VarData& other);
    VarData& operator^=(const VarData& other);

    // --- Dictionaries: TypeErrorException unless the tag is exactly Dictionary.
    class const_iterator;
    void setValue(const VarData& key, const VarData& value);
    VarData& operator[](const VarData& key);              // inserts Empty for a new key
    const VarData& operator[](const VarData& key) const;  // KeyErrorException when absent
    const VarData& getValue(const VarData& key) const;    // KeyErrorException when absent
    void erase(const VarData& key);
    // Erases in the shared map itself: every value sharing it sees the removal.
    void eraseWithoutCopyOnWrite(const VarData& key);
    bool hasKey(const VarData& key) const;
    const_iterator find(const VarData& key) const;
    const_iterator begin() const;
    const_iterator end() const;

    // --- Byte form: a little-endian record of the type word and a body by tag,
    // compact or full; "with size" puts the record's length before it. Writers
    // throw BufferOverflow when the room runs out. Readers reject malformed
    // bytes and replace a value only once a whole record has been read.
    // Records nest at most kMaxNestingDepth levels deep.
    static constexpr unsigned int kMaxNestingDepth = 512;
    unsigned int valueSerializationSize() const;             // compact record; 0 past 32 bits
    unsigned int serializationSizeImpl(bool compact) const;  // record + length prefix; 0 past 32 bits
    void SerializeWithoutSize(zo::kel::AutoBuffer& buffer, bool compact) const;
    void SerializeWithSize(zo::kel::AutoBuffer& buffer) const;  // always compact
    void serializeImpl(unsigned char*& cursor, const unsigned char* end, unsigned int size, bool compact) const;
    void serializeWithSizeImpl(unsigned char*& cursor, const unsigned char* end, unsigned int size,
                               bool compact) const;
    // DeserializationErrorException (and `used` 0) when the bytes are no record.
    static VarData DeserializeWithoutSize(const unsigned char* data, unsigned int length, unsigned int& used,
                                          bool compact);
    // An unreadable record is skipped by its length prefix and reads as Empty.
    static VarData DeserializeWithSize(const unsigned char*& cursor, unsigned int available);
    // DeserializationError on malformed bytes.
    void deserializeImpl(const unsigned char*& cursor, const unsigned char* end, bool compact);
    void deserializeWithSizeImpl(const unsigned char*& cursor, const unsigned char* end, bool compact);
    // A FlexData payload body (the packet, or a u32 zero) as a FlexDataTag
    // value. On failure (DeserializationError, SyntaxError) the value and the
    // cursor stay as they were.
    void deserializeFlexData(const unsigned char*& cursor, const unsigned char* end);

private:
    friend class internal::VarDataCodec;
    VarDataType tag() const noexcept { return static_cast<VarDataType>(type_ & vardata_type::kTagMask); }
    bool hasPayloadFlag() const noexcept { return (type_ & PayloadFlag) != 0; }
    IVarDataGuts* guts() const noexcept { return reinterpret_cast<IVarDataGuts*>(payload_); }
    bool holdsGuts() const noexcept { return hasPayloadFlag() && payload_ != 0; }
    double number() const noexcept;
    bool logicalByte() const noexcept { return (payload_ & 0xFF) != 0; }

    void setInline(std::uint32_t typeWord, std::uint64_t payload) noexcept;
    void adoptGuts(std::uint32_t typeWord, IVarDataGuts* guts) noexcept;  // takes the caller's reference
    void releaseGuts() noexcept {
        if (holdsGuts()) guts()->Release();
    }
    IVarDataDictionary* dictionaryOrThrow() const;
    internal::PayloadRef<IVarDataSequence> querySequence() const;  // empty unless a Sequence answering it

    std::uint32_t type_;
    std::uint64_t payload_;
};

static_assert(sizeof(VarData) == 16, "VarData is the 16-byte wire and ABI unit");

// Walks a dictionary in key order; owns one payload iterator.
class QKDYNAM_API VarData::const_iterator {
public:
    const_iterator() noexcept = default;
    explicit const_iterator(IVarDataIterator* position) noexcept : position_(position) {}
    const_iterator(const const_iterator& other);
    const_iterator(const_iterator&& other) noexcept;
    const_iterator& operator=(const const_iterator& other);
    const_iterator& operator=(const_iterator&& other) noexcept;
    ~const_iterator();

    const VarData& key() const { return position_->key(); }
    const VarData& value() const { return position_->value(); }
    const VarData& operator*() const { return position_->value(); }
    const VarData* operator->() const { return &position_->value(); }
    const_iterator& operator++();
    const_iterator operator++(int);
    const_iterator& operator--();
    const_iterator operator--(int);
    bool operator==(const const_iterator& other) const;
    bool operator!=(const const_iterator& other) const { return !(*this == other); }

private:
    IVarDataIterator* position_ = nullptr;
};
