// AutoBuffer::circularDeserialize over arbitrary rings: the first two bytes
// give the start offset (which may fall outside the ring), the rest is the
// ring. A rejected record leaves the buffer and cursor as they were; an
// accepted one, written back from the same offset into a ring of the same
// size, gives the same record bytes and the same end cursor.
#include <cstdint>
#include <vector>

#include "FuzzCheck.h"
#include "zo/kel/AutoBuffer.h"

using fuzzcheck::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const fuzzcheck::ExactInput ring(data + 2, size - 2);
    const std::size_t offset = (data[0] | std::size_t{data[1]} << 8) % (ring.size() + 1);
    const unsigned char* const ringStart = ring.begin();
    const unsigned char* const ringEnd = ring.end();

    const unsigned char previous[] = {'o', 'l', 'd'};
    zo::kel::AutoBuffer buffer(previous, sizeof previous);
    const unsigned char* cursor = ringStart + offset;
    try {
        buffer.circularDeserialize(cursor, ringStart, ringEnd);
    } catch (const zo::kel::exception::DeserializationError&) {
        Require(cursor == ringStart + offset && buffer.Len() == 3);
        return 0;
    }

    std::vector<unsigned char> rewritten(ring.size());
    unsigned char* write = rewritten.data() + offset;
    buffer.circularSerialize(write, rewritten.data(), rewritten.data() + rewritten.size());
    Require(write - rewritten.data() == cursor - ringStart);
    std::size_t at = offset;
    for (std::size_t i = 0; i < 4 + std::size_t{buffer.Len()}; ++i) {
        Require(rewritten[at] == ring[at]);
        if (++at == ring.size()) at = 0;
    }

    zo::kel::AutoBuffer again;
    const unsigned char* reread = rewritten.data() + offset;
    again.circularDeserialize(reread, rewritten.data(), rewritten.data() + rewritten.size());
    Require(again == buffer && reread == write);
    return 0;
}
