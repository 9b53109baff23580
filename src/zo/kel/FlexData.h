// zo::kel::FlexData: a value that owns one self-describing packet (u32 size,
// metadata, data; walkers in zo/kel/fd.h) in a block of the library
// allocator. Copies are deep; nothing is shared. After every public
// operation the value is either empty (no packet, every field zero) or
// holds a packet of even size whose type and data pointers are those the
// walkers find. Wrong kinds throw InvalidArgument (source "zo/kel/FlexData"),
// malformed packets SyntaxError, bytes that hold no packet
// DeserializationError, 32-bit overflow OutOfRange. Not thread-safe to mutate.
//
//   zo::kel::FlexData reading(4.25);
//   reading.setAttribute("Units", zo::kel::FlexData(zo::kel::NarrowString("bar")));
//   reading.setF64(4.5);                         // in place, the attribute stays
//
// Attributes are prefix elements before the type element, in the order set:
//   offset 0   u16  0x4000
//          2   u32  L, counting itself and the rest of the element (L + 2 bytes in all)
//          6   u32  n, the name's byte count
//         10   n    the name (narrow text, no terminator), then a zero byte when n is odd
//   10+n(+1)   ..   the value's byte form as serialize() writes it (its packet,
//                   or a u32 zero for an empty value), to the element's end
// Names match byte for byte. Other prefix elements are kept and skipped.
//
// A waveform is a cluster of five; its 42 bytes of metadata on a
// little-endian host (SS SS the sample type: one of the ten numeric kinds):
//   01 08 05 00                                cluster of 5
//   06 00 00 00 04 05                          start: time
//   06 00 00 00 02 04                          interval in seconds: 64-bit float
//   0E 00 00 00 00 08 01 00 06 00 00 00 SS SS  samples: one-dimensional array
//   06 00 00 00 00 03                          status: signed 32-bit integer, 0 = good
//   06 00 00 00 02 09                          extra: nested packet
// and its data: 16 bytes of time, 8 of interval, u32 sample count n and the
// n packed samples (then a zero byte when that is odd), 4 of status, and the
// extra value's packet (an empty one is stored as the empty marker 0x0305).
// An array of waveforms (setWaves) is an array of one dimension whose
// element descriptor is 46 (0x2E) then those 42 bytes; all its waveforms
// share one sample type, 64-bit float for an empty list.
#pragma once

#include <cstdint>

#include "qkdynam_platform.h"
#include "zo/kel/AbsTime.h"
#include "zo/kel/BufferWrapper.h"
#include "zo/kel/FlexType.h"
#include "zo/kel/StringBase.h"
#include "zo/kel/Vector.h"

namespace zo::kel {

struct Waveform;

class QKDYNAM_API FlexData {
public:
    static constexpr unsigned int kMinimumSerializationSize = 4;

    // ---- Construction: empty, or through the matching setter.
    FlexData() noexcept = default;
    explicit FlexData(bool value) { setBool(value); }
    explicit FlexData(signed char value) { setI8(value); }
    explicit FlexData(unsigned char value) { setUI8(value); }
    explicit FlexData(short value) { setI16(value); }
    explicit FlexData(unsigned short value) { setUI16(value); }
    explicit FlexData(int value) { setI32(value); }
    explicit FlexData(unsigned int value) { setUI32(value); }
    explicit FlexData(long value) { setI64(value); }
    explicit FlexData(unsigned long value) { setUI64(value); }
    explicit FlexData(float value) { setF32(value); }
    explicit FlexData(double value) { setF64(value); }
    explicit FlexData(const NarrowString& text) { setAString(text); }
    explicit FlexData(const WideString& text) { setUTF16(text); }
    FlexData(const char* text, unsigned int length) { setAString(text, length); }
    explicit FlexData(const AbsTime& time) { setTime(time); }
    FlexData(const FlexData& other);
    FlexData(FlexData&& other) noexcept { swap(other); }
    FlexData& operator=(const FlexData& other);
    FlexData& operator=(FlexData&& other) noexcept;
    ~FlexData();
    void swap(FlexData& other) noexcept;
    // Frees the packet: the value becomes empty.
    void clear() noexcept;

    // ---- The packet.
    // A copy of the packet at begin (null: clear). Fewer than 4 bytes or a
    // size word past end: DeserializationError; a size word of 0 leaves the
    // value as it was; an odd size gains a zero byte. Nothing changes on failure.
    void copyFrom(const unsigned char* begin, const unsigned char* end);
    // A packet of the given metadata (prefix elements allowed, exactly one
    // type element, ending it) and data (padded to even).
    void copyFromParts(const BufferWrapper& metadata, const BufferWrapper& data);
    // Room for a new type element of metadataSize bytes and dataSize data
    // bytes (rounded up to even, zeroed); the caller writes the type element.
    // keepPrefix keeps the prefix elements of a value that has a packet.
    void setTypeAndDataSize(unsigned int metadataSize, unsigned int dataSize, bool keepPrefix);
    void setVoid();
    void setEmpty();
    void setType(fd::FlexType type, unsigned int dataSize);

    bool isEmpty() const noexcept { return packet_ == nullptr; }
    // The code of the type element; 0 for an empty value.
    fd::FlexType getType() const noexcept;
    unsigned int getPacketSize() const noexcept;
    const unsigned char* begin() const noexcept { return packet_; }
    const unsigned char* end() const noexcept { return packet_ ? packet_ + getPacketSize() : nullptr; }
    BufferWrapper getMetaDataBuffer() const noexcept;
    BufferWrapper getDataBuffer() const noexcept;

    // ---- Byte form: the packet, or a u32 zero for an empty value.
    // serialize writes nothing when short (BufferOverflow). deserialize moves
    // the cursor by the size of the packet now held (4 when empty), never
    // past end, and clears the value when it fails.
    unsigned int serializationSize() const noexcept;
    void serialize(unsigned char*& cursor, const unsigned char* end) const;
    void deserialize(const unsigned char*& cursor, const unsigned char* end);

    // Byte order over the packets, size words first: the first differing
    // byte's difference, else the difference of the sizes.
    int compare(const FlexData& other) const noexcept;
    friend bool operator==(const FlexData& a, const FlexData& b) noexcept { return a.compare(b) == 0; }
    friend bool operator<(const FlexData& a, const FlexData& b) noexcept { return a.compare(b) < 0; }

    // ---- Nested packet (0x0902). An empty inner value is stored as setEmpty() makes it.
    void setFlexData(const FlexData& inner);
    FlexData getFlexData() const;

    // ---- Scalars. A value of the same type is overwritten in place (no
    // allocation); otherwise the type changes and prefix elements stay.
    void setBool(bool value);
    void setBool(int value);  // non-zero is true; both store 0xFF or 0x00
    void setI8(signed char value);
    void setUI8(unsigned char value);
    void setI16(short value);
    void setUI16(unsigned short value);
    void setI32(int value);
    void setUI32(unsigned int value);
    void setI64(long value);
    void setUI64(unsigned long value);
    void setF32(float value);
    void setF64(double value);
    void setTime(const AbsTime& time);

    // Getters. Integer getters take the ten numeric kinds, wrapping integers
    // to their width and truncating floats (out of range: the lowest signed
    // value of the 32- or 64-bit step); float getters round to nearest.
    // getBool takes the two Booleans and I32. Other kinds, or an empty value:
    // InvalidArgument.
    bool getBool() const;
    bool canCoerceToBool() const noexcept;
    signed char getI8() const;
    unsigned char getUI8() const;
    short getI16() const;
    unsigned short getUI16() const;
    int getI32() const;
    unsigned int getUI32() const;
    long getI64() const;
    unsigned long getUI64() const;
    float getF32() const;
    double getF64() const;
    AbsTime getTime() const;

    // ---- Strings. Narrow (0x0900): u32 count, bytes, pad to even. UTF-16
    // (0x0A00): u32 count of UTF-16 units, then UTF-16. getAString() takes
    // both (and 0x0901), the counted form narrow text only; getUnicode() both.
    void setAString(const char* text, unsigned int length);
    void setAString(const NarrowString& text);
    void setUTF16(const WideString& text);
    NarrowString getAString() const;
    const char* getAString(unsigned int& length) const;  // points into the packet
    WideString getUnicode() const;

    // ---- Fixed point (0x0802): raw bits and their description only.
    static unsigned int getFixedPointDatasizeInBytes(unsigned short wordLength) noexcept;
    unsigned int getFixedPointDatasizeInBytes() const;
    void setFixedPoint(bool isSigned, bool hasOverflowStatus, unsigned short wordLength, int integerWordLength,
                       const BufferWrapper& value, bool overflowed);
    void setFixedPoint(bool isSigned, bool hasOverflowStatus, unsigned short wordLength, int integerWordLength,
                       unsigned long value, bool overflowed);
    void getFixedPoint(bool& isSigned, bool& hasOverflowStatus, unsigned short& wordLength, int& integerWordLength,
                       unsigned char* out, unsigned long outSize, bool* overflowed) const;
    void getFixedPoint(bool& isSigned, bool& hasOverflowStatus, unsigned short& wordLength, int& integerWordLength,
                       unsigned long& value, bool* overflowed) const;

    // ---- Attributes (layout above). setAttribute replaces a same-named
    // attribute where it stands, else appends one; an empty value first
    // becomes void to carry it. getAttribute of a missing name: NotFound.
    void setAttribute(const NarrowString& name, const FlexData& value);
    FlexData getAttribute(const NarrowString& name) const;
    bool deleteAttribute(const NarrowString& name);  // false when absent
    bool hasAttribute(const NarrowString& name) const;
    bool hasAttributes() const;
    Vector<NarrowString> getAttributeNames() const;

    // ---- Arrays (0x0800) and clusters (0x0801). Array metadata: 0x0800, a
    // u16 dimension count, one element descriptor; data: a u32 per dimension,
    // then the elements, fixed-size ones packed, others each padded to even.
    // The setters keep prefix elements; an empty dimension list builds one
    // dimension of size 0, and the dimension sizes must multiply to the number
    // of elements given (InvalidArgument). Wrong kinds throw InvalidArgument;
    // malformed packets SyntaxError; counts past 32 bits OutOfRange.
    //
    //   zo::kel::Vector<unsigned int> dims{2, 3};
    //   const double values[6] = {1, 2, 3, 4, 5, 6};
    //   zo::kel::FlexData table(zo::kel::fd::kFloat64, dims, values, values + 6);
    //   float narrow[6];
    //   table.getScalarArray(zo::kel::fd::kFloat32, narrow, narrow + 6);

    // A cluster: 1 dimension; an array: its dimension count.
    unsigned int getDims() const;
    // An array: the size of dimension i (0 past the last); a cluster: its
    // element count for i = 0, else 0.
    unsigned int getDimSize(unsigned int i) const;
    // The product of the dimension sizes, cut to 32 bits; 0 for no
    // dimensions. Unchecked against the packet: never size memory by it.
    unsigned int getNumElts() const;
    fd::FlexType getArrayElementType() const;

    // Scalar arrays of the ten numeric kinds and the one-byte Boolean, from
    // and to host arrays of `type`; an outside array in the other byte order
    // is swapped on the way in or out. getScalarArray converts the elements
    // to `type` (see TransformArray); numbers and Booleans do not mix
    // (InvalidArgument). An output range too short raises BufferOverflow and
    // writes nothing.
    FlexData(fd::FlexType type, const Vector<unsigned int>& dims, const void* begin, const void* end,
             fd::TAEndian sourceEndian = fd::kHostEndian) {
        setScalarArray(type, dims, begin, end, sourceEndian);
    }
    void setScalarArray(fd::FlexType type, const Vector<unsigned int>& dims, const void* begin, const void* end,
                        fd::TAEndian sourceEndian = fd::kHostEndian);
    void getScalarArray(fd::FlexType type, void* out, const void* outEnd,
                        fd::TAEndian targetEndian = fd::kHostEndian) const;

    // Arrays of any values: all elements share one element descriptor, so
    // they must have the same metadata (attributes included); none may be
    // empty. No elements give an array of void.
    FlexData(const Vector<unsigned int>& dims, const Vector<FlexData>& elements) { setArray(dims, elements); }
    void setArray(const Vector<unsigned int>& dims, const Vector<FlexData>& elements);
    // InvalidArgument2 "Not an array FlexData" for any other value.
    void getArrayElements(Vector<FlexData>& elements) const;

    // Arrays of UTF-16 strings (0x0A00), narrow strings (0x0900) and times.
    // The string getters take either string kind, as getAString and getUnicode do.
    FlexData(const Vector<unsigned int>& dims, const Vector<WideString>& strings) { setStringArray(dims, strings); }
    FlexData(const Vector<unsigned int>& dims, const Vector<NarrowString>& strings) {
        setAStringArray(dims, strings);
    }
    FlexData(const Vector<unsigned int>& dims, const Vector<AbsTime>& times) { setTimeArray(dims, times); }
    void setStringArray(const Vector<unsigned int>& dims, const Vector<WideString>& strings);
    void setAStringArray(const Vector<unsigned int>& dims, const Vector<NarrowString>& strings);
    void getStringArray(Vector<WideString>& strings) const;
    void getAStringArray(Vector<NarrowString>& strings) const;
    void setTimeArray(const Vector<unsigned int>& dims, const Vector<AbsTime>& times);
    void getTimeArray(Vector<AbsTime>& times) const;

    // A cluster of 1 to 65,535 values (InvalidArgument otherwise; empty
    // values are refused), each keeping its own metadata.
    explicit FlexData(const Vector<FlexData>& elements) { setClusterElements(elements); }
    void setClusterElements(const Vector<FlexData>& elements);
    // A one-dimensional array of clusters whose fields have the given
    // fixed-size types; column i holds field i of every row, packed in host
    // order, and all columns hold the same number of rows.
    FlexData(const Vector<fd::FlexType>& types, const Vector<BufferWrapper>& columns) {
        setFixedSizeClusterArrayElements(types, columns);
    }
    void setFixedSizeClusterArrayElements(const Vector<fd::FlexType>& types, const Vector<BufferWrapper>& columns);
    // Element i (InvalidArgument past the last) and all elements, each a value of its own.
    void getClusterElement(unsigned int i, FlexData& out) const;
    void getClusterElements(Vector<FlexData>& elements) const;

    // count elements of one numeric kind and byte order into another; rules
    // in FlexDataTransformArray.cpp. Kinds other than the ten numeric ones:
    // InvalidArgument. The ranges must hold count elements each.
    static void TransformArray(unsigned int count, fd::FlexType srcType, fd::TAEndian srcEndian, const void* src,
                               fd::FlexType dstType, fd::TAEndian dstEndian, void* dst);
    // One-byte Booleans: every non-zero byte is true and written as trueByte
    // (0xFF into a packet, 1 into host bools).
    static void CopyBooleanArray(unsigned int count, const void* src, void* dst, unsigned char trueByte) noexcept;
    static bool IsNumericKind(fd::FlexType type) noexcept;

    // ---- Waveforms (layout above). The setters keep prefix elements and
    // refuse (InvalidArgument) a sample type that is not numeric or sample
    // bytes that are not whole samples; the getters refuse other values.
    void setWaveform(const Waveform& waveform);
    void getWaveform(Waveform& waveform) const;
    void setWaves(const Vector<Waveform>& waves);
    void getWaves(Vector<Waveform>& waves) const;

private:
    // InvalidArgument for a value of the wrong kind, at the given line of this class's source.
    [[noreturn]] static void throwWrongKind(unsigned int line);
    void reshape(unsigned int metadataSize, unsigned int dataSize, bool keepPrefix, bool zeroData);
    // A new array packet (prefix elements kept): 0x0800, the dimensions and
    // one element descriptor holding elementMD; elementBytes of element data
    // after the dimension words, for the caller to fill (zeroed unless the
    // caller writes every byte). Returns where they begin.
    unsigned char* buildArray(const Vector<unsigned int>& dims, unsigned int count, const BufferWrapper& elementMD,
                              unsigned int elementBytes, bool zeroElements = true);
    // start(count, element code) once, then visit(element) for every element of an array
    // (InvalidArgument2 "Not an array FlexData" for any other value).
    template <typename Start, typename Visit>
    void forEachArrayElement(Start start, Visit visit) const;
    template <typename Text>
    void copyFromStringVector(fd::FlexType type, const Vector<unsigned int>& dims, const Vector<Text>& strings);
    template <typename Text>
    void copyToStringVector(Vector<Text>& strings) const;
    template <typename T>
    void setScalar(fd::FlexType type, T value);
    template <typename T>
    T getInteger() const;
    template <typename T>
    T getFloating() const;
    std::uint16_t typeWord() const noexcept;
    const unsigned char* countedBytes(unsigned int& count) const;
    bool holdsBytes(const void* p) const noexcept;
    void reserve(unsigned int size);
    // Replaces `removed` bytes at offset with `inserted` uninitialised bytes,
    // moving the rest; updates the size word, not the pointers. Returns the gap.
    unsigned char* resizeRange(unsigned int offset, unsigned int removed, unsigned int inserted);
    void bindTo(unsigned int typeOffset, unsigned int dataOffset) noexcept;
    const unsigned char* findAttribute(const NarrowString& name) const;

    unsigned char* packet_ = nullptr;
    unsigned char* capacityEnd_ = nullptr;
    unsigned char* data_ = nullptr;
    unsigned char* type_ = nullptr;
    unsigned int dataSize_ = 0;
};

inline void swap(FlexData& a, FlexData& b) noexcept { a.swap(b); }

}  // namespace zo::kel
