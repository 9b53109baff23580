#include "zo/kel/DLLMalloc.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace zo::kel {
namespace {

std::atomic<bool> throwOnFailure{true};

[[noreturn]] void ReportAllocationFailure() {
    if (throwOnFailure.load(std::memory_order_relaxed)) throw std::bad_alloc();
    std::fputs("DLLMalloc: out of memory\n", stderr);
    std::abort();
}

}  // namespace

bool MakeDLLMallocThrow(bool throwOnFailureWanted) noexcept {
    return throwOnFailure.exchange(throwOnFailureWanted, std::memory_order_relaxed);
}

void* DLLMallocNoThrow(std::size_t size) noexcept { return std::malloc(size); }

void* DLLMalloc(std::size_t size) {
    void* block = std::malloc(size);
    if (!block && size != 0) ReportAllocationFailure();
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
    if (!resized && size != 0) ReportAllocationFailure();
    return resized;
}

void DLLFree(void* block) noexcept { std::free(block); }

}  // namespace zo::kel
