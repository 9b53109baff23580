#include "zo/kel/DLLMalloc.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>

namespace {

using zo::kel::DLLFree;
using zo::kel::DLLMalloc;
using zo::kel::DLLMallocNoThrow;
using zo::kel::DLLRealloc;
using zo::kel::MakeDLLMallocThrow;

TEST(DLLMalloc, ReallocToZeroFreesAndTheSwitchReportsItsPreviousSetting) {
    void* block = DLLRealloc(nullptr, 16);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(DLLRealloc(block, 0), nullptr);
    DLLFree(nullptr);

    EXPECT_TRUE(MakeDLLMallocThrow(false));
    EXPECT_FALSE(MakeDLLMallocThrow(true));
    EXPECT_TRUE(MakeDLLMallocThrow(true));
}

// Sanitizer allocators report an impossible request themselves instead of
// returning null, so the failure paths are checked in plain builds only.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
constexpr std::size_t kImpossible = SIZE_MAX / 2;

TEST(DLLMalloc, FailureThrowsOrAbortsButNeverReturnsNull) {
    EXPECT_THROW(DLLMalloc(kImpossible), std::bad_alloc);
    void* block = DLLMalloc(8);
    EXPECT_THROW(DLLRealloc(block, kImpossible), std::bad_alloc);
    DLLFree(block);  // still valid after the failed realloc
    EXPECT_EQ(DLLMallocNoThrow(kImpossible), nullptr);

    EXPECT_DEATH(
        {
            MakeDLLMallocThrow(false);
            DLLMalloc(kImpossible);
        },
        "DLLMalloc: out of memory");
    // The no-throw pair is not affected by the switch.
    MakeDLLMallocThrow(false);
    EXPECT_EQ(DLLMallocNoThrow(kImpossible), nullptr);
    MakeDLLMallocThrow(true);
}
#endif

}  // namespace
