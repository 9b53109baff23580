// The component-object base of every payload: 128-bit interface identifiers,
// status codes and IUnknown. QueryInterface answers 0 with one new reference,
// or kNoInterface with a null out pointer; Release destroys at zero.
// Interfaces have no virtual destructor of their own: objects are destroyed
// only by their own Release.
#pragma once

#include <cstdint>

#include "qkdynam_platform.h"

struct _GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};

constexpr bool operator==(const _GUID& a, const _GUID& b) noexcept {
    if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
    for (int i = 0; i < 8; ++i) {
        if (a.Data4[i] != b.Data4[i]) return false;
    }
    return true;
}

// Component-style status codes.
inline constexpr std::int32_t kStatusOk = 0;
inline constexpr std::int32_t kNoInterface = static_cast<std::int32_t>(0x80004002u);
inline constexpr std::int32_t kInvalidArgument = static_cast<std::int32_t>(0x80070057u);

inline constexpr _GUID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

class IUnknown {
public:
    virtual std::int32_t QueryInterface(const _GUID& iid, void** object) = 0;
    virtual std::int32_t AddRef() = 0;
    virtual std::int32_t Release() = 0;

protected:
    ~IUnknown() = default;
};
