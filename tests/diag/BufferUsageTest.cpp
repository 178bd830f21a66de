#include "diag/BufferUsage.h"

#include "tests/storage/SystemCalls.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

TEST(BufferUsage, CountsWithAndWithoutTheSection) {
    uint32_t error = 0;
    for (const bool section : {false, true}) {
        if (section) {
            FailNextCall("InitializeCriticalSectionAndSpinCount", ERROR_NOT_ENOUGH_MEMORY);
            EXPECT_FALSE(CreateBufferUsageSection(&error));
            EXPECT_EQ(error, static_cast<uint32_t>(ERROR_NOT_ENOUGH_MEMORY));
            ASSERT_TRUE(CreateBufferUsageSection(&error)) << "it may be tried again";
            ASSERT_TRUE(CreateBufferUsageSection(&error));
        }
        void *block = CountedAlloc(1000);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(BufferBytesInUse(), 1000);
        block = CountedRealloc(block, 1000, 300);
        EXPECT_EQ(BufferBytesInUse(), 300);
        EXPECT_EQ(CountedRealloc(block, 300, SIZE_MAX / 2), nullptr);
        EXPECT_EQ(CountedAlloc(SIZE_MAX / 2), nullptr);
        EXPECT_EQ(BufferBytesInUse(), 300);
        block = CountedRealloc(block, 300, 0);
        EXPECT_NE(block, nullptr);
        CountedFree(nullptr, 77);
        void *zeros = CountedZeroAlloc(1000);
        EXPECT_EQ(_msize(zeros), 1000u);
        CountedFree(zeros, 1000);
        CountedFree(block, 0);
        EXPECT_EQ(BufferBytesInUse(), 0);
    }
    for (int i = 0; i < 2; ++i) { // the second time without a section
        PassThroughBufferUsageSection();
        DeleteBufferUsageSection();
    }
}

TEST(BufferUsage, ThreadsLoseNoByte) {
    uint32_t error = 0;
    ASSERT_TRUE(CreateBufferUsageSection(&error));
    std::vector<std::thread> threads;
    for (size_t t = 1; t <= 8; ++t)
        threads.emplace_back([t] {
            for (size_t i = 0; i < 5000; ++i)
                CountedFree(CountedAlloc(t), t);
            CountedFree(CountedAlloc(t), t - 1);
        });
    for (std::thread &thread : threads)
        thread.join();
    DeleteBufferUsageSection();
    EXPECT_EQ(BufferBytesInUse(), 8);
    CountedFree(CountedAlloc(0), 8);
}

} // namespace
