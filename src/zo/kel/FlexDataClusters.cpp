// Clusters in a FlexData (layout in FlexData.h): ordered records of 1 to
// 65,535 values, each element keeping its own metadata, and the array of
// clusters built from columns of fixed-size fields.
#include <cstring>

#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/fd.h"

namespace zo::kel {

namespace {

using Size = SafeInteger<unsigned int>;

constexpr unsigned int kMaxClusterElements = 0xFFFF;
constexpr unsigned int kFieldDescriptorSize = 6;  // u32 length, u16 type word

unsigned int RoundUpEven(unsigned int size) { return (Size(size) + (size & 1u)).get(); }

}  // namespace

void FlexData::setClusterElements(const Vector<FlexData>& elements) {
    if (static_cast<std::uint32_t>(elements.size()) - 1u > kMaxClusterElements - 1u) ZO_THROW(exception::InvalidArgument);
    Size mdSize = 4u, dataSize = 0u;
    for (const FlexData& element : elements) {
        if (&element == this) {
            FlexData built(*this);
            built.setClusterElements(elements);
            return swap(built);
        }
        if (element.isEmpty()) ZO_THROW(exception::InvalidArgument);
        mdSize += Size(4u) + element.getMetaDataBuffer().Len();
        const unsigned int size = fd::GetDataSize(element.type_, element.data_, element.end());
        if (!fd::HasRoom(element.data_, element.end(), size)) fd::internal::ThrowShortPacket();
        dataSize += RoundUpEven(size);
    }
    setTypeAndDataSize(mdSize.get(), dataSize.get(), true);
    unsigned char* md = type_;
    md += fd::SetVal(md, static_cast<std::uint16_t>(fd::kCluster), data_);
    md += fd::SetVal(md, static_cast<std::uint16_t>(elements.size()), data_);
    unsigned char* data = data_;
    for (const FlexData& element : elements) {
        const BufferWrapper own = element.getMetaDataBuffer();
        md += fd::SetVal(md, own.Len() + 4u, data_);
        fd::MemCpy(md, data_, own.Data(), own.Data() + own.Len(), own.Len());
        md += own.Len();
        const unsigned int size = fd::GetDataSize(element.type_, element.data_, element.end());
        fd::MemCpy(data, end(), element.data_, element.end(), size);
        data += RoundUpEven(size);
    }
}

void FlexData::setFixedSizeClusterArrayElements(const Vector<fd::FlexType>& types,
                                                const Vector<BufferWrapper>& columns) {
    if (types.size() > kMaxClusterElements) {
        ZO_THROW(exception::InvalidArgument2, "Cluster has too many elements.  Max elements is 2^16.");
    }
    for (const fd::FlexType type : types) {
        // A field must hold bytes: a type of no data could not tell the rows apart.
        if (!fd::IsFixedSizeCode(type) || fd::GetDataSize(type) == 0) {
            ZO_THROW(exception::InvalidArgument2, "Invalid cluster element type.  Each type must be fixed size.");
        }
    }
    if (types.empty() || columns.size() != types.size()) ZO_THROW(exception::InvalidArgument);
    for (const BufferWrapper& column : columns) {
        if (holdsBytes(column.Data())) {
            FlexData built(*this);
            built.setFixedSizeClusterArrayElements(types, columns);
            return swap(built);
        }
    }
    const unsigned int rows = columns[0].Len() / fd::GetDataSize(types[0]);
    Size rowBytes = 0u;
    for (unsigned int i = 0; i < types.size(); ++i) {
        const unsigned int size = fd::GetDataSize(types[i]);
        if (columns[i].Len() != (Size(rows) * size).get()) ZO_THROW(exception::InvalidArgument);
        rowBytes += RoundUpEven(size);
    }
    // The element descriptor: a cluster of one 6-byte descriptor per field.
    Vector<unsigned char> clusterMD((Size(4u) + Size(kFieldDescriptorSize) * types.size()).get());
    unsigned char* md = clusterMD.data();
    const unsigned char* mdEnd = md + clusterMD.size();
    md += fd::SetVal(md, static_cast<std::uint16_t>(fd::kCluster), mdEnd);
    md += fd::SetVal(md, static_cast<std::uint16_t>(types.size()), mdEnd);
    for (const fd::FlexType type : types) {
        md += fd::SetVal(md, kFieldDescriptorSize, mdEnd);
        md += fd::SetVal(md, static_cast<std::uint16_t>(type), mdEnd);
    }
    unsigned char* at = buildArray(Vector<unsigned int>{rows}, rows, BufferWrapper(clusterMD.data(), clusterMD.size()),
                                   (rowBytes * rows).get());
    for (unsigned int row = 0; row < rows; ++row) {
        for (unsigned int i = 0; i < types.size(); ++i) {
            const unsigned int size = fd::GetDataSize(types[i]);
            std::memcpy(at, columns[i].Data() + std::size_t{row} * size, size);
            at += RoundUpEven(size);
        }
    }
}

void FlexData::getClusterElement(unsigned int i, FlexData& out) const {
    if (getType() != fd::kCluster) throwWrongKind(__LINE__);
    if (i >= fd::GetNumClustElts(type_, data_)) ZO_THROW(exception::InvalidArgument);
    fd::CheckNestedDescriptors(type_, data_);  // elements are cut out: each must read the same alone
    const unsigned char* descriptor = type_ + 4;
    const unsigned char* data = data_;
    FlexData element;
    for (unsigned int k = 0; k <= i; ++k) fd::CopyAndAdvanceClusterElement(descriptor, data, end(), element);
    out.swap(element);
}

void FlexData::getClusterElements(Vector<FlexData>& elements) const {
    if (getType() != fd::kCluster) throwWrongKind(__LINE__);
    const unsigned int count = fd::GetNumClustElts(type_, data_);
    fd::CheckNestedDescriptors(type_, data_);
    // Each element has a descriptor of at least its length word in the metadata.
    if (!fd::HasRoom(type_ + 4, data_, 4 * std::size_t{count})) fd::internal::ThrowShortPacket();
    Vector<FlexData> read;
    read.reserve(count);
    const unsigned char* descriptor = type_ + 4;
    const unsigned char* data = data_;
    for (unsigned int k = 0; k < count; ++k) fd::CopyAndAdvanceClusterElement(descriptor, data, end(), read.emplace_back());
    elements.swap(read);
}

}  // namespace zo::kel
