// Arbitrary bytes as a FlexData packet, put through everything that reads
// arrays and clusters (shape queries, element, string, time and scalar
// readers), the payload bridge in both directions, and the VarData byte
// form. What reads must rebuild: the elements of an array or cluster make
// the same elements again, and a FlexData value survives its record.
#include <cstddef>
#include <cstdint>

#include "FuzzCheck.h"
#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/PayloadRef.h"
#include "tavlo/qkstatic/vardata.h"
#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/fd.h"

using fuzzcheck::Require;
using zo::kel::FlexData;
using zo::kel::Vector;
namespace fd = zo::kel::fd;

namespace {

constexpr int kMaxVisitDepth = 3;
constexpr unsigned int kMaxVisitedElements = 8;

template <typename Read>
void Try(Read read) {
    try {
        read();
    } catch (const zo::kel::exception::Exception&) {
    } catch (const TypeErrorException&) {
    }
}

void Visit(const FlexData& value, int depth);

void CheckSame(const Vector<FlexData>& a, const Vector<FlexData>& b) {
    Require(a.size() == b.size());
    for (unsigned int i = 0; i < a.size(); ++i) Require(a[i] == b[i]);
}

void VisitElements(const Vector<FlexData>& elements, int depth) {
    for (unsigned int i = 0; i < elements.size() && i < kMaxVisitedElements; ++i) Visit(elements[i], depth + 1);
}

void ReadArray(const FlexData& value, int depth) {
    Vector<FlexData> elements;
    try {
        value.getArrayElements(elements);
    } catch (const zo::kel::exception::Exception&) {
        return;
    }
    FlexData rebuilt;
    rebuilt.setArray(Vector<unsigned int>{elements.size()}, elements);
    Vector<FlexData> again;
    rebuilt.getArrayElements(again);
    CheckSame(elements, again);
    VisitElements(elements, depth);
}

void ReadCluster(const FlexData& value, int depth) {
    Vector<FlexData> elements;
    try {
        value.getClusterElements(elements);
    } catch (const zo::kel::exception::Exception&) {
        return;
    }
    if (elements.empty()) return;
    FlexData rebuilt(elements);
    Vector<FlexData> again;
    rebuilt.getClusterElements(again);
    CheckSame(elements, again);
    FlexData last;
    rebuilt.getClusterElement(elements.size() - 1, last);
    Require(last == elements.back());
    VisitElements(elements, depth);
}

void ReadScalars(const FlexData& value) {
    // A fixed output: the element count of a packet never sizes memory.
    alignas(8) unsigned char out[512];
    for (const fd::FlexType type : {fd::kFloat64, fd::kInt8, fd::kUInt32, fd::kBoolean}) {
        for (const fd::TAEndian order : {fd::kLittleEndian, fd::kBigEndian}) {
            Try([&] { value.getScalarArray(type, out, out + sizeof out, order); });
        }
    }
    Try([&] {
        Vector<zo::kel::WideString> strings;
        value.getStringArray(strings);
    });
    Try([&] {
        Vector<zo::kel::NarrowString> strings;
        value.getAStringArray(strings);
    });
    Try([&] {
        Vector<zo::kel::AbsTime> times;
        value.getTimeArray(times);
    });
}

void Shape(const FlexData& value) {
    Try([&] {
        const unsigned int dims = value.getDims();
        for (unsigned int i = 0; i < dims && i < 4; ++i) (void)value.getDimSize(i);
        (void)value.getDimSize(dims);
    });
    Try([&] { (void)value.getNumElts(); });
    Try([&] { (void)value.getArrayElementType(); });
}

// The payload both ways, and the value's record in the byte form.
void Bridge(const FlexData& value) {
    const VarData held(value);
    (void)static_cast<bool>(held);
    (void)static_cast<double>(held);
    Try([&] {
        VarData native(held);
        if (native.convertSelfToNativeType()) {
            const auto back = internal::PayloadRef<IVarDataGuts>::Adopt(NewVarDataFlexDataFromVarData(native));
            Require(static_cast<bool>(back));
        }
    });
    for (const bool wide : {false, true}) {
        Try([&] {
            const VarData dictionary = held.convertToNativeTypeOrDictionary(wide);
            VarData again(dictionary);
            again.Convert_(VarDataType::FlexDataTag);
        });
    }
    zo::kel::AutoBuffer wire;
    held.SerializeWithSize(wire);
    const unsigned char* cursor = wire.Data();
    const VarData read = VarData::DeserializeWithSize(cursor, wire.Len());
    Require(cursor == wire.Data() + wire.Len());
    Require(read.Compare(held) == 0);
}

void Visit(const FlexData& value, int depth) {
    if (value.isEmpty() || depth > kMaxVisitDepth) return;
    Shape(value);
    ReadScalars(value);
    ReadArray(value, depth);
    ReadCluster(value, depth);
    Bridge(value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzzcheck::ExactInput input(data, size);
    FlexData value;
    const unsigned char* cursor = input.begin();
    try {
        value.deserialize(cursor, input.end());
    } catch (const zo::kel::exception::Exception&) {
        return 0;
    }
    Visit(value, 0);
    return 0;
}
