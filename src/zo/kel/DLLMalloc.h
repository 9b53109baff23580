// The library allocator. Every block a library object owns (string, vector
// and buffer storage) is allocated and freed here, inside the library, so a
// block never crosses between two allocators. DLLMalloc and DLLRealloc never
// return null for a non-zero request: they throw std::bad_alloc, or, once
// MakeDLLMallocThrow(false) was called, end the process.
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

// Selects what a failed DLLMalloc/DLLRealloc does: throw std::bad_alloc (true,
// the default) or print "DLLMalloc: out of memory" to standard error and
// abort (false), for hosts that cannot unwind through their own frames. The
// throwing pair never returns null either way, so callers stay safe; the
// NoThrow pair is unaffected. Returns the previous setting.
QKDYNAM_API bool MakeDLLMallocThrow(bool throwOnFailure) noexcept;

}  // namespace zo::kel
