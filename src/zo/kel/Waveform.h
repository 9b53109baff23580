// A waveform as FlexData holds one (layout in FlexData.h): evenly spaced
// samples of one numeric kind from a start time, with a status word and a
// nested value of the caller's choosing. A plain value that owns its parts.
#pragma once

#include <cstdint>

#include "zo/kel/AbsTime.h"
#include "zo/kel/AutoBuffer.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/FlexType.h"

namespace zo::kel {

struct Waveform {
    AbsTime start;
    double interval = 0.0;  // seconds between samples
    fd::FlexType sampleType = fd::kFloat64;
    AutoBuffer samples;       // host-order samples of sampleType, packed
    std::int32_t status = 0;  // 0 when the samples are good; else the source's code
    FlexData extra;           // stored as the empty marker 0x0305 when empty
};

}  // namespace zo::kel
