#include "zo/kel/SmallBlockCache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <thread>
#include <vector>

namespace {

using zo::kel::internal::AllocateSmallBlock;
using zo::kel::internal::FreeSmallBlock;
using zo::kel::internal::SmallBlockAllocator;

struct Live {
    unsigned char* block;
    std::size_t size;
    unsigned char fill;
};

// Blocks handed out while others are live never overlap, keep what was
// written into them, and survive being recycled many times over.
TEST(SmallBlockCache, LiveBlocksAreDisjointAndKeepTheirBytes) {
    std::vector<Live> live;
    for (int round = 0; round < 50; ++round) {
        for (std::size_t size = 1; size <= zo::kel::internal::kLargestSmallBlock + 40; size += 7) {
            auto* block = static_cast<unsigned char*>(AllocateSmallBlock(size));
            const auto fill = static_cast<unsigned char>(round * 31 + size);
            std::memset(block, fill, size);
            live.push_back({block, size, fill});
        }
        // Free every other block, so the lists get both reuse and fresh blocks.
        std::vector<Live> kept;
        for (std::size_t i = 0; i < live.size(); ++i) {
            const Live& entry = live[i];
            for (std::size_t at = 0; at < entry.size; ++at) ASSERT_EQ(entry.block[at], entry.fill);
            if (i % 2) FreeSmallBlock(entry.block, entry.size);
            else kept.push_back(entry);
        }
        live = std::move(kept);
    }
    for (const Live& entry : live) FreeSmallBlock(entry.block, entry.size);
    FreeSmallBlock(nullptr, 16);  // ignored
}

TEST(SmallBlockCache, BlocksMayBeFreedOnAnotherThread) {
    std::vector<void*> blocks;
    for (int i = 0; i < 500; ++i) blocks.push_back(AllocateSmallBlock(48));
    std::thread([&] {
        for (void* block : blocks) FreeSmallBlock(block, 48);
        // This thread's lists now hold some of them and serve its next block of
        // the class (40 and 48 share one); they are given back when it ends.
        void* reused = AllocateSmallBlock(40);
        std::memset(reused, 0xAB, 40);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // a sanitized build keeps nothing
        EXPECT_NE(std::find(blocks.begin(), blocks.end(), reused), blocks.end());
#endif
        FreeSmallBlock(reused, 40);
    }).join();
}

TEST(SmallBlockCache, AllocatorServesNodeContainersAndArrays) {
    std::map<int, std::uint64_t, std::less<int>, SmallBlockAllocator<std::pair<const int, std::uint64_t>>>
        map;
    for (int i = 0; i < 1000; ++i) map[i * 7 % 1000] = static_cast<std::uint64_t>(i);
    for (int i = 0; i < 1000; i += 2) map.erase(i);
    EXPECT_EQ(map.size(), 500u);
    for (const auto& [key, value] : map) EXPECT_EQ(static_cast<int>(value * 7 % 1000), key);

    std::vector<double, SmallBlockAllocator<double>> array(300, 2.5);
    array.push_back(1.0);
    EXPECT_EQ(array.size(), 301u);
    EXPECT_EQ(array[299], 2.5);
}

}  // namespace
