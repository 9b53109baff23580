// Small blocks that a thread freed, kept for its next allocation of the same
// size class. Payload objects, dictionary nodes and iterators are made and
// dropped in bursts (a record read, used and released); serving them from a
// per-thread list spares the general allocator most of that traffic.
//
// Every cached block comes from ::operator new at its class size, so a block
// may be freed on any thread: it simply joins that thread's list. Each list
// keeps a bounded number of blocks and gives the rest back at once; a
// thread's lists are emptied when it ends.
#pragma once

#include <cstddef>
#include <memory>

namespace zo::kel::internal {

inline constexpr std::size_t kLargestSmallBlock = 128;

// Blocks above kLargestSmallBlock bytes go straight to ::operator new and
// ::operator delete. FreeSmallBlock takes the size the block was asked with.
void* AllocateSmallBlock(std::size_t size);
void FreeSmallBlock(void* block, std::size_t size) noexcept;

// A standard allocator over the cache for node containers; arrays bypass it.
template <class T>
class SmallBlockAllocator {
public:
    using value_type = T;

    SmallBlockAllocator() noexcept = default;
    template <class U>
    SmallBlockAllocator(const SmallBlockAllocator<U>&) noexcept {}

    T* allocate(std::size_t count) {
        if (count != 1) return std::allocator<T>().allocate(count);
        return static_cast<T*>(AllocateSmallBlock(sizeof(T)));
    }
    void deallocate(T* block, std::size_t count) noexcept {
        if (count != 1) return std::allocator<T>().deallocate(block, count);
        FreeSmallBlock(block, sizeof(T));
    }

    friend bool operator==(const SmallBlockAllocator&, const SmallBlockAllocator&) noexcept { return true; }
};

// A base whose class-level new and delete use the cache; the sized delete
// of a virtual destructor hands back the most-derived size.
struct SmallBlockObject {
    static void* operator new(std::size_t size) { return AllocateSmallBlock(size); }
    static void operator delete(void* block, std::size_t size) noexcept { FreeSmallBlock(block, size); }
};

}  // namespace zo::kel::internal
