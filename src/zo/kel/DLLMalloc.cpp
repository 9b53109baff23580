#include "zo/kel/DLLMalloc.h"

#include <cstdlib>
#include <new>

namespace zo::kel {

void* DLLMallocNoThrow(std::size_t size) noexcept { return std::malloc(size); }

void* DLLMalloc(std::size_t size) {
    void* block = std::malloc(size);
    if (!block && size != 0) throw std::bad_alloc();
    return block;
}

void* DLLReallocNoThrow(void* block, std::size_t size) noexcept {
    if (size == 0 && block) {
        std::free(block);
        return nullptr;
    }
    return std::realloc(block, size);
}

void* DLLRealloc(void* block, std::size_t size) {
    void* resized = DLLReallocNoThrow(block, size);
    if (!resized && size != 0) throw std::bad_alloc();
    return resized;
}

void DLLFree(void* block) noexcept { std::free(block); }

}  // namespace zo::kel
