// The payload of a Raw value: an owned copy of a byte block. True whenever
// the block exists, even when empty; its number is always 0.
#pragma once

#include <memory>

#include "tavlo/qkdynamic/PayloadObject.h"
#include "tavlo/qkstatic/vardata.h"

class RawGuts final
    : public internal::PayloadObject<IVarDataRaw, IID_IUnknown, IID_IVarDataGuts, IID_IVarDataRaw> {
public:
    RawGuts(const unsigned char* data, unsigned int size);

    explicit operator bool() const override { return bytes_ != nullptr; }
    explicit operator double() const override { return 0.0; }
    std::int32_t Compare(const IVarDataGuts* other) const override;
    bool GetData(const unsigned char*& data, unsigned int& length) const override;

private:
    unsigned int size_;
    std::unique_ptr<unsigned char[]> bytes_;
};
