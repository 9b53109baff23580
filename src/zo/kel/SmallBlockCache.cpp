#include "zo/kel/SmallBlockCache.h"

#include <new>

namespace zo::kel::internal {

namespace {

constexpr std::size_t kGranule = 16;
constexpr std::size_t kClassCount = kLargestSmallBlock / kGranule;

// Under a sanitizer nothing is kept, so that a use after free is still caught.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QKDYNAM_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QKDYNAM_SANITIZED 1
#endif
#endif
#ifdef QKDYNAM_SANITIZED
constexpr unsigned int kKeptPerClass = 0;
#else
constexpr unsigned int kKeptPerClass = 64;
#endif

struct FreeBlock {
    FreeBlock* next;
};

struct FreeList {
    FreeBlock* head;
    unsigned int count;
};

// Constant-initialised and trivially destructible, so reaching it costs no
// guard; the drainer below empties it when the thread ends. (Initial-exec
// TLS would save a resolver call, but it puts all of the library's
// thread-local data in the static block, and a late dlopen then fails.)
struct ThreadLists {
    FreeList lists[kClassCount];
    bool drainerArmed;
    bool closed;  // the thread is ending: keep nothing more
};
thread_local ThreadLists tLists{};

struct Drainer {
    ~Drainer() {
        tLists.closed = true;
        for (FreeList& list : tLists.lists) {
            while (FreeBlock* block = list.head) {
                list.head = block->next;
                ::operator delete(block);
            }
            list.count = 0;
        }
    }
};

void ArmDrainer() {
    thread_local Drainer drainer;
    tLists.drainerArmed = true;
}

std::size_t ClassOf(std::size_t size) { return (size - 1) / kGranule; }
std::size_t ClassSize(std::size_t cls) { return (cls + 1) * kGranule; }
bool IsSmall(std::size_t size) { return size != 0 && size <= kLargestSmallBlock; }

}  // namespace

void* AllocateSmallBlock(std::size_t size) {
    if (!IsSmall(size)) return ::operator new(size);
    FreeList& list = tLists.lists[ClassOf(size)];
    if (FreeBlock* block = list.head) {
        list.head = block->next;
        --list.count;
        return block;
    }
    return ::operator new(ClassSize(ClassOf(size)));
}

void FreeSmallBlock(void* block, std::size_t size) noexcept {
    if (!block) return;
    if (!IsSmall(size) || kKeptPerClass == 0 || tLists.closed) return ::operator delete(block);
    FreeList& list = tLists.lists[ClassOf(size)];
    if (list.count >= kKeptPerClass) return ::operator delete(block);
    if (!tLists.drainerArmed) ArmDrainer();
    auto* kept = static_cast<FreeBlock*>(block);
    kept->next = list.head;
    list.head = kept;
    ++list.count;
}

}  // namespace zo::kel::internal
