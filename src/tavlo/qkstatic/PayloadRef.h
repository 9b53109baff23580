// PayloadRef<I>: the one owner of a reference to a payload interface I. It
// queries on construction, releases on destruction and moves but never
// copies, so no early return or exception can leak or drop a reference.
// Code that asks a payload object for an interface, or keeps an object
// beyond the VarData that holds it, does it through this type.
#pragma once

#include <type_traits>
#include <utility>

#include "tavlo/qkstatic/VarDataGuts.h"

namespace internal {

// The identifier QueryInterface is asked with for each interface; an
// interface without one does not compile.
template <class Interface>
struct PayloadInterfaceId;
#define QKDYNAM_PAYLOAD_INTERFACE_ID(Interface) \
    template <>                                \
    struct PayloadInterfaceId<Interface> {     \
        static constexpr const _GUID& value = IID_##Interface; \
    }
QKDYNAM_PAYLOAD_INTERFACE_ID(IUnknown);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataGuts);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataSequence);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataAnsi);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataUnicode);
QKDYNAM_PAYLOAD_INTERFACE_ID(IAnsiGuts);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataRaw);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataCell);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataSSTimeValue);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataDictionary);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataGXVariant);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataFlexData);
QKDYNAM_PAYLOAD_INTERFACE_ID(IVarDataFlexData2);
#undef QKDYNAM_PAYLOAD_INTERFACE_ID

template <class Interface>
class PayloadRef {
public:
    PayloadRef() noexcept = default;

    // Asks `object` (may be null) for Interface; empty when it does not answer.
    explicit PayloadRef(IUnknown* object) noexcept {
        if (object && object->QueryInterface(PayloadInterfaceId<Interface>::value,
                                             reinterpret_cast<void**>(&held_)) != kStatusOk) {
            held_ = nullptr;
        }
    }

    // Takes over a reference the caller already owns (a factory's result).
    static PayloadRef Adopt(Interface* object) noexcept {
        PayloadRef ref;
        ref.held_ = object;
        return ref;
    }

    // One more reference to an object the caller holds.
    static PayloadRef Share(Interface* object) noexcept {
        if (object) object->AddRef();
        return Adopt(object);
    }

    PayloadRef(PayloadRef&& other) noexcept : held_(std::exchange(other.held_, nullptr)) {}
    // A reference to an implementation is a reference to each interface it has.
    template <class Derived>
        requires std::is_convertible_v<Derived*, Interface*>
    PayloadRef(PayloadRef<Derived>&& other) noexcept : held_(other.release()) {}
    PayloadRef& operator=(PayloadRef&& other) noexcept {
        PayloadRef taken(std::move(other));
        std::swap(held_, taken.held_);
        return *this;
    }
    PayloadRef(const PayloadRef&) = delete;
    PayloadRef& operator=(const PayloadRef&) = delete;
    ~PayloadRef() {
        if (held_) held_->Release();
    }

    Interface* get() const noexcept { return held_; }
    Interface* operator->() const noexcept { return held_; }
    explicit operator bool() const noexcept { return held_ != nullptr; }

    // Hands the reference to a new owner (a VarData adopting it).
    [[nodiscard]] Interface* release() noexcept { return std::exchange(held_, nullptr); }

private:
    Interface* held_ = nullptr;
};

// The number of references `object` holds, read the only way the interface
// allows: one more and one less.
inline std::int32_t ReferenceCount(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

}  // namespace internal
