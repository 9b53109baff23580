// A first look at the library: build values, copy them, read them back, and
// send one through the wire form.
#include <cstdio>

#include "qkdynam.h"

namespace {

void Print(const char* label, const VarData& value) {
    std::printf("%-22s %ls\n", label, value.coerceToString().c_str());
}

}  // namespace

int main() {
    VarData reading = VarData::dict();
    reading.setValue("Tag", "Pump7.Pressure");
    reading.setValue("Value", VarData::num(4.25));
    reading.setValue("Alarm", VarData("off"));
    reading.setValue("Since", VarData(zo::kel::osdep::GetCurrentAbsTime()));
    Print("reading:", reading);

    // Copies share their payloads until one of them is written.
    VarData copy = reading;
    copy.setValue("Value", VarData::num(5.5));
    Print("copy after a write:", copy);
    std::printf("%-22s %g\n", "original value:", static_cast<double>(reading.getValue("Value")));

    // The wire form: a length prefix and a self-describing record.
    zo::kel::AutoBuffer wire;
    reading.SerializeWithSize(wire);
    const unsigned char* cursor = wire.Data();
    const VarData received = VarData::DeserializeWithSize(cursor, wire.Len());
    std::printf("%-22s %u bytes, equal: %s\n", "sent:", wire.Len(), received.Compare(reading) == 0 ? "yes" : "no");

    // Checked arithmetic throws instead of wrapping.
    try {
        zo::kel::SafeInteger<unsigned int> length = 4000000000u;
        length += 1000000000u;
    } catch (const zo::kel::exception::Exception& failure) {
        std::printf("%-22s %s (code 0x%08X at %s:%u)\n", "4e9 + 1e9:", failure.what(),
                    static_cast<unsigned int>(failure.getErrorCode()), failure.getFile(), failure.getLine());
    }
    return 0;
}
