// Arrays in a FlexData (layout in FlexData.h): the shape queries, scalar
// arrays through TransformArray, arrays of values, strings and times.
// Readers check every count against the bytes of the packet before they
// reserve anything for it.
#include <cstring>

#include "zo/kel/AutoBuffer.h"
#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/fd.h"

namespace zo::kel {

namespace {

using Size = SafeInteger<unsigned int>;

// The lines the shape queries have always reported.
constexpr unsigned int kDimsLine = 1601;
constexpr unsigned int kDimSizeLine = 1582;
constexpr unsigned int kElementTypeLine = 1610;

// Elements of zero bytes (void, clusters of nothing) are not bounded by the
// bytes of the packet, so a reader makes at most this many of them.
constexpr unsigned int kMaxZeroSizeElements = 1u << 16;

constexpr char kNotAnArray[] = "Not an array FlexData";

unsigned int RoundUpEven(unsigned int size) { return (Size(size) + (size & 1u)).get(); }

// No dimensions at all means one dimension of size 0, so that the metadata
// and the single zero dimension word agree.
const Vector<unsigned int>& Shape(const Vector<unsigned int>& dims) {
    static const Vector<unsigned int> empty{0u};
    return dims.empty() ? empty : dims;
}

struct TypeWordMD {
    unsigned char bytes[2];
    explicit TypeWordMD(std::uint16_t code) { std::memcpy(bytes, &code, 2); }
    BufferWrapper buffer() const { return BufferWrapper(bytes, 2); }
};

std::uint16_t CodeAt(const unsigned char* type, const unsigned char* end) {
    return fd::GetVal<std::uint16_t>(type, end) & fd::kCodeMask;
}

// One element of an array as the readers see it.
struct ArrayElement {
    const unsigned char* md;  // the element descriptor's metadata
    const unsigned char* mdEnd;
    std::uint16_t code;
    const unsigned char* data;
    unsigned int size;
};

}  // namespace

// ---- Shape

unsigned int FlexData::getDims() const {
    switch (getType()) {
        case fd::kCluster: return 1;
        case fd::kArray: return fd::GetArrayDims(type_, data_);
        default: throwWrongKind(kDimsLine);
    }
}

unsigned int FlexData::getDimSize(unsigned int i) const {
    switch (getType()) {
        case fd::kCluster: return i == 0 ? fd::GetNumClustElts(type_, data_) : 0;
        case fd::kArray:
            if (i >= fd::GetArrayDims(type_, data_)) return 0;
            if (!fd::HasRoom(data_, end(), 4 * std::size_t{i} + 4)) fd::internal::ThrowShortPacket();
            return fd::GetVal<std::uint32_t>(data_ + 4 * std::size_t{i}, end());
        default: throwWrongKind(kDimSizeLine);
    }
}

unsigned int FlexData::getNumElts() const {
    const unsigned int dims = getDims();
    if (dims == 0) return 0;
    unsigned int count = 1;
    for (unsigned int i = 0; i < dims; ++i) count *= getDimSize(i);
    return count;
}

fd::FlexType FlexData::getArrayElementType() const {
    if (getType() != fd::kArray) throwWrongKind(kElementTypeLine);
    return static_cast<fd::FlexType>(CodeAt(fd::GetArrayElementType(type_, data_), data_));
}

// ---- Building

unsigned char* FlexData::buildArray(const Vector<unsigned int>& dims, unsigned int count,
                                    const BufferWrapper& elementMD, unsigned int elementBytes, bool zeroElements) {
    const Vector<unsigned int>& shape = Shape(dims);
    std::uint16_t dimCount;
    unsigned int dimBytes, eltCount;
    fd::ProcessArrayDimsVector(shape, dimCount, dimBytes, eltCount);
    if (eltCount != count) ZO_THROW(exception::InvalidArgument);
    const unsigned int descriptorSize = (Size(4u) + elementMD.Len()).get();
    reshape((Size(4u) + descriptorSize).get(), (Size(dimBytes) + elementBytes).get(), true, zeroElements);
    unsigned char* at = type_;
    at += fd::SetVal(at, static_cast<std::uint16_t>(fd::kArray), data_);
    at += fd::SetVal(at, dimCount, data_);
    at += fd::SetVal(at, descriptorSize, data_);
    fd::MemCpy(at, data_, elementMD.Data(), elementMD.Data() + elementMD.Len(), elementMD.Len());
    return data_ + fd::WriteArrayDimsVector(shape, data_, end());
}

void FlexData::setScalarArray(fd::FlexType type, const Vector<unsigned int>& dims, const void* begin,
                              const void* end, fd::TAEndian sourceEndian) {
    if (type != fd::kBoolean && !IsNumericKind(type)) throwWrongKind(__LINE__);
    if (holdsBytes(begin)) {
        FlexData built(*this);
        built.setScalarArray(type, dims, begin, end, sourceEndian);
        return swap(built);
    }
    const auto* first = static_cast<const unsigned char*>(begin);
    const auto* last = static_cast<const unsigned char*>(end);
    const unsigned int size = fd::GetDataSize(type);
    if (first > last || static_cast<std::size_t>(last - first) % size != 0) ZO_THROW(exception::InvalidArgument);
    const std::size_t count = static_cast<std::size_t>(last - first) / size;
    if (count > 0xFFFFFFFFu) ZO_THROW(exception::OutOfRange);
    const auto elements = static_cast<unsigned int>(count);
    unsigned char* at = buildArray(dims, elements, TypeWordMD(type).buffer(), (Size(elements) * size).get(), false);
    if (type == fd::kBoolean) {
        CopyBooleanArray(elements, first, at, 0xFF);
    } else {
        TransformArray(elements, type, sourceEndian, first, type, fd::kHostEndian, at);
    }
}

void FlexData::getScalarArray(fd::FlexType type, void* out, const void* outEnd, fd::TAEndian targetEndian) const {
    if (getType() != fd::kArray) throwWrongKind(__LINE__);
    const fd::FlexType elementType = getArrayElementType();
    const bool booleans = type == fd::kBoolean && elementType == fd::kBoolean;
    if (!booleans && !(IsNumericKind(type) && IsNumericKind(elementType))) throwWrongKind(__LINE__);
    const unsigned int total = fd::GetDataSize(type_, data_, end());
    if (!fd::HasRoom(data_, end(), total)) fd::internal::ThrowShortPacket();
    const unsigned int dimBytes = 4 * fd::GetArrayDims(type_, data_);
    const unsigned int count = (total - dimBytes) / fd::GetDataSize(elementType);
    const auto* first = static_cast<unsigned char*>(out);
    const auto* last = static_cast<const unsigned char*>(outEnd);
    if (!fd::HasRoom(first, last, std::size_t{count} * fd::GetDataSize(type))) ZO_THROW(exception::BufferOverflow);
    if (booleans) {
        CopyBooleanArray(count, data_ + dimBytes, out, 1);
    } else {
        TransformArray(count, elementType, fd::kHostEndian, data_ + dimBytes, type, targetEndian, out);
    }
}

void FlexData::setArray(const Vector<unsigned int>& dims, const Vector<FlexData>& elements) {
    for (const FlexData& element : elements) {
        if (&element == this) {
            FlexData built(*this);
            built.setArray(dims, elements);
            return swap(built);
        }
        if (element.isEmpty()) ZO_THROW(exception::InvalidArgument);
    }
    const TypeWordMD voidMD(fd::kVoid);
    const BufferWrapper md = elements.empty() ? voidMD.buffer() : elements[0].getMetaDataBuffer();
    const bool fixedSize = fd::IsFixedSizeCode(elements.empty() ? fd::kVoid : elements[0].getType());
    // Element sizes as the walkers see them: packed when fixed, else padded to even.
    auto stored = [fixedSize](const FlexData& element, unsigned int& size) {
        size = fd::GetDataSize(element.type_, element.data_, element.end());
        if (!fd::HasRoom(element.data_, element.end(), size)) fd::internal::ThrowShortPacket();
        return fixedSize ? size : RoundUpEven(size);
    };
    Size bytes = 0u;
    for (const FlexData& element : elements) {
        const BufferWrapper own = element.getMetaDataBuffer();
        if (own.Len() != md.Len() || std::memcmp(own.Data(), md.Data(), md.Len()) != 0) {
            ZO_THROW(exception::InvalidArgument);
        }
        unsigned int size;
        bytes += stored(element, size);
    }
    unsigned char* at = buildArray(dims, elements.size(), md, bytes.get());
    for (const FlexData& element : elements) {
        unsigned int size;
        const unsigned int step = stored(element, size);
        fd::MemCpy(at, end(), element.data_, element.end(), size);
        at += step;
    }
}

template <typename Text>
void FlexData::copyFromStringVector(fd::FlexType type, const Vector<unsigned int>& dims,
                                    const Vector<Text>& strings) {
    Size bytes = 0u;
    for (const Text& text : strings) bytes += fd::StringSerializationSize(text);
    unsigned char* at = buildArray(dims, strings.size(), TypeWordMD(type).buffer(), bytes.get());
    for (const Text& text : strings) at += fd::CopyStringToPacket(at, end(), text);
}

void FlexData::setStringArray(const Vector<unsigned int>& dims, const Vector<WideString>& strings) {
    copyFromStringVector(fd::kUtf16String, dims, strings);
}

void FlexData::setAStringArray(const Vector<unsigned int>& dims, const Vector<NarrowString>& strings) {
    copyFromStringVector(fd::kAnsiString, dims, strings);
}

void FlexData::setTimeArray(const Vector<unsigned int>& dims, const Vector<AbsTime>& times) {
    unsigned char* at = buildArray(dims, times.size(), TypeWordMD(fd::kTime).buffer(), (Size(times.size()) * 16u).get());
    for (const AbsTime& time : times) at += fd::SetTime(at, time, end());
}

// ---- Reading

template <typename Start, typename Visit>
void FlexData::forEachArrayElement(Start start, Visit visit) const {
    if (getType() != fd::kArray) ZO_THROW(exception::InvalidArgument2, kNotAnArray);
    const unsigned char* last = end();
    const unsigned char* descriptor = type_ + 4;
    const unsigned char* mdEnd = fd::GetNextFD(descriptor, data_);
    const unsigned char* elementType = fd::GetTypeEndingAt(descriptor + 4, mdEnd);
    // Each element is cut out with this metadata: it must read the same alone.
    fd::CheckNestedDescriptors(elementType, mdEnd);
    const std::uint16_t code = CodeAt(elementType, mdEnd);
    // Walks every element once, bounded, and checks that they lie in the packet.
    const unsigned int total = fd::GetDataSize(type_, data_, last);
    if (!fd::HasRoom(data_, last, total)) fd::internal::ThrowShortPacket();
    const unsigned int dims = fd::GetArrayDims(type_, data_);
    Size count = 1u;
    for (unsigned int i = 0; i < dims; ++i) count *= fd::GetVal<std::uint32_t>(data_ + 4 * std::size_t{i}, last);
    const unsigned char* at = data_ + 4 * std::size_t{dims};
    const bool fixedSize = fd::IsFixedSizeCode(code);
    // Elements that take bytes are bounded by the walk above; a type whose
    // values take none (every value of it is empty) needs a cap of its own.
    const bool zeroSize = fixedSize ? fd::GetDataSize(fd::FlexType(code)) == 0
                                    : count.get() != 0 && fd::GetDataSize(elementType, at, last) == 0;
    if (zeroSize && count.get() > kMaxZeroSizeElements) ZO_THROW(exception::OutOfRange);
    start(count.get(), code);
    for (unsigned int i = 0; i < count.get(); ++i) {
        const unsigned int size = fixedSize ? fd::GetDataSize(fd::FlexType(code)) : fd::GetDataSize(elementType, at, last);
        if (!fd::HasRoom(at, last, size)) fd::internal::ThrowShortPacket();
        visit(ArrayElement{descriptor + 4, mdEnd, code, at, size});
        at += fixedSize ? size : RoundUpEven(size);
    }
}

void FlexData::getArrayElements(Vector<FlexData>& elements) const {
    Vector<FlexData> read;
    forEachArrayElement([&](unsigned int count, std::uint16_t) { read.reserve(count); },
                        [&](const ArrayElement& element) {
                            read.emplace_back().copyFromParts(BufferWrapper(element.md, element.mdEnd),
                                                              BufferWrapper(element.data, element.size));
                        });
    elements.swap(read);
}

// Each element is read by the string getters, so the array getters accept
// exactly what getAString and getUnicode accept.
template <typename Text>
void FlexData::copyToStringVector(Vector<Text>& strings) const {
    Vector<Text> read;
    FlexData element;
    forEachArrayElement([&](unsigned int count, std::uint16_t) { read.reserve(count); },
                        [&](const ArrayElement& item) {
                            element.copyFromParts(BufferWrapper(item.md, item.mdEnd), BufferWrapper(item.data, item.size));
                            if constexpr (sizeof(typename Text::value_type) == 1) {
                                read.push_back(element.getAString());
                            } else {
                                read.push_back(element.getUnicode());
                            }
                        });
    strings.swap(read);
}

void FlexData::getStringArray(Vector<WideString>& strings) const { copyToStringVector(strings); }
void FlexData::getAStringArray(Vector<NarrowString>& strings) const { copyToStringVector(strings); }

void FlexData::getTimeArray(Vector<AbsTime>& times) const {
    Vector<AbsTime> read;
    forEachArrayElement(
        [&](unsigned int count, std::uint16_t code) {
            if (code != fd::kTime) throwWrongKind(__LINE__);
            read.reserve(count);
        },
                        [&](const ArrayElement& element) {
                            read.push_back(fd::GetTime(element.data, element.data + element.size));
                        });
    times.swap(read);
}

}  // namespace zo::kel
