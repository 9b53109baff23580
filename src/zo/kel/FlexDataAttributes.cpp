// The attribute prefix elements of a FlexData (layout in FlexData.h): named
// values kept between the size word and the type element, so that a value
// keeps them whatever its type becomes.
#include <cstring>

#include "zo/kel/ByteForm.h"
#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/fd.h"

namespace zo::kel {

namespace {

constexpr std::uint16_t kAttributeWord = fd::kLengthPrefixedFlag;
constexpr unsigned int kNameOffset = 10;

struct Attribute {
    const unsigned char* name;
    unsigned int nameLength;
    const unsigned char* value;  // the value's byte form, up to end
    const unsigned char* end;
};

Attribute ReadAttribute(const unsigned char* element, const unsigned char* elementEnd) {
    const auto nameLength = fd::GetVal<std::uint32_t>(element + 6, elementEnd);
    const std::size_t paddedName = std::size_t{nameLength} + (nameLength & 1u);
    if (!fd::HasRoom(element + kNameOffset, elementEnd, paddedName)) fd::internal::ThrowShortPacket();
    return {element + kNameOffset, nameLength, element + kNameOffset + paddedName, elementEnd};
}

// Calls visit(element, elementEnd) for every attribute before `type`, in
// order, until it returns true; returns the element it stopped at or null.
template <typename Visit>
const unsigned char* FindAttribute(const unsigned char* packet, const unsigned char* type, Visit visit) {
    if (!packet) return nullptr;
    for (const unsigned char* element = packet + 4; element < type;) {
        const unsigned char* next = fd::GetNextElt(element, type);
        if (fd::GetVal<std::uint16_t>(element, type) == kAttributeWord && visit(element, next)) return element;
        element = next;
    }
    return nullptr;
}

bool IsNamed(const Attribute& attribute, const NarrowString& name) {
    return attribute.nameLength == name.length() && std::memcmp(attribute.name, name.c_str(), name.length()) == 0;
}

}  // namespace

const unsigned char* FlexData::findAttribute(const NarrowString& name) const {
    return FindAttribute(packet_, type_, [&](const unsigned char* element, const unsigned char* next) {
        return IsNamed(ReadAttribute(element, next), name);
    });
}

bool FlexData::hasAttribute(const NarrowString& name) const { return findAttribute(name) != nullptr; }

bool FlexData::hasAttributes() const {
    return FindAttribute(packet_, type_, [](const unsigned char*, const unsigned char*) { return true; }) != nullptr;
}

Vector<NarrowString> FlexData::getAttributeNames() const {
    Vector<NarrowString> names;
    FindAttribute(packet_, type_, [&](const unsigned char* element, const unsigned char* next) {
        const Attribute attribute = ReadAttribute(element, next);
        names.emplace_back(reinterpret_cast<const char*>(attribute.name), attribute.nameLength);
        return false;
    });
    return names;
}

FlexData FlexData::getAttribute(const NarrowString& name) const {
    const unsigned char* element = findAttribute(name);
    if (!element) ZO_THROW(exception::NotFound);
    const Attribute attribute = ReadAttribute(element, fd::GetNextElt(element, type_));
    FlexData value;
    value.copyFrom(attribute.value, attribute.end);
    return value;
}

void FlexData::setAttribute(const NarrowString& name, const FlexData& value) {
    if (&value == this) return setAttribute(name, FlexData(value));
    if (!packet_) setVoid();
    const unsigned int nameLength = name.length();
    const unsigned int size =
        (SafeInteger<unsigned int>(kNameOffset) + nameLength + (nameLength & 1u) + value.serializationSize()).get();
    const unsigned char* existing = findAttribute(name);
    const auto offset = static_cast<unsigned int>((existing ? existing : type_) - packet_);
    const unsigned int removed = existing ? fd::GetMDEltSize(existing, type_) : 0;
    const auto typeOffset = static_cast<unsigned int>(type_ - packet_);
    const auto dataOffset = static_cast<unsigned int>(data_ - packet_);

    unsigned char* at = resizeRange(offset, removed, size);
    const unsigned char* elementEnd = at + size;
    at += fd::SetVal(at, kAttributeWord, elementEnd);
    at += fd::SetVal(at, static_cast<std::uint32_t>(size - 2), elementEnd);
    at += fd::SetVal(at, static_cast<std::uint32_t>(nameLength), elementEnd);
    if (nameLength != 0) std::memcpy(at, name.c_str(), nameLength);
    at += nameLength;
    if (nameLength & 1u) *at++ = 0;
    value.serialize(at, elementEnd);
    bindTo(typeOffset + size - removed, dataOffset + size - removed);
}

bool FlexData::deleteAttribute(const NarrowString& name) {
    const unsigned char* existing = findAttribute(name);
    if (!existing) return false;
    const unsigned int removed = fd::GetMDEltSize(existing, type_);
    const auto typeOffset = static_cast<unsigned int>(type_ - packet_);
    const auto dataOffset = static_cast<unsigned int>(data_ - packet_);
    resizeRange(static_cast<unsigned int>(existing - packet_), removed, 0);
    bindTo(typeOffset - removed, dataOffset - removed);
    return true;
}

}  // namespace zo::kel
