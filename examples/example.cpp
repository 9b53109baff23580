// A first look at the library: checked arithmetic and the exception family.
#include <cstdio>

#include "qkdynam.h"

int main() {
    using zo::kel::SafeInteger;

    SafeInteger<unsigned int> length = 4000000000u;
    std::printf("length + 1 = %u\n", (length + 1u).get());
    try {
        length = length + 1000000000u;
    } catch (const zo::kel::exception::Exception& failure) {
        std::printf("length + 1000000000 -> %s (code 0x%08X, thrown at %s:%u)\n", failure.what(),
                    static_cast<unsigned int>(failure.getErrorCode()), failure.getFile(), failure.getLine());
    }

    const zo::kel::osdep::PosixError missing(2);
    std::printf("PosixError(2): \"%s\", code %d, errno %u\n", missing.what(), missing.getErrorCode(),
                missing.whatcode());
    return 0;
}
