// A FlexData's packet as bytes and back, for the tests of its byte layouts.
#pragma once

#include "zo/kel/FlexData.h"
#include "zo/kel/KelTestSupport.h"

namespace kel_test {

inline Bytes Packet(const zo::kel::FlexData& value) { return Bytes(value.begin(), value.end()); }

inline zo::kel::FlexData FromBytes(const Bytes& bytes) {
    zo::kel::FlexData value;
    value.copyFrom(bytes.data(), bytes.data() + bytes.size());
    return value;
}

}  // namespace kel_test
