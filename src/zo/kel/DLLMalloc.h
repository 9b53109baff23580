// The library allocator. Every block a library object owns (string, vector
// and buffer storage) is allocated and freed here, inside the library, so a
// block never crosses between two allocators.
#pragma once

#include <cstddef>

#include "qkdynam_platform.h"

namespace zo::kel {

QKDYNAM_API void* DLLMalloc(std::size_t size);          // throws std::bad_alloc
QKDYNAM_API void* DLLMallocNoThrow(std::size_t size) noexcept;
// size 0 with a block frees it and returns null; otherwise realloc, throwing
// std::bad_alloc when a non-zero request fails (the block is then unchanged).
QKDYNAM_API void* DLLRealloc(void* block, std::size_t size);
QKDYNAM_API void* DLLReallocNoThrow(void* block, std::size_t size) noexcept;
QKDYNAM_API void DLLFree(void* block) noexcept;

}  // namespace zo::kel
