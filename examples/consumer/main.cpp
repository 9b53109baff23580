// Proves that the public headers, the exported symbols and the exception
// type information all reach a program built outside the tree.
#include <qkdynam.h>

#include <cstdio>

int main() {
    try {
        zo::kel::SafeInteger<unsigned int> length = 0u;
        length -= 1u;
    } catch (const zo::kel::exception::OutOfRange& failure) {
        std::printf("consumer: %s at %s\n", failure.what(), failure.getFile());
        return 0;
    }
    std::puts("consumer: no exception");
    return 1;
}
