// SPDX-License-Identifier: Apache-2.0

// What submitting costs in memory. A program of its own, as it counts every allocation of the process.

#include <VorlanFoundation/Platform/Queue.h>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <latch>
#include <new>

using namespace vorlan;
using namespace std::chrono_literals;

namespace {

thread_local std::size_t allocations = 0;

} // namespace

// Not inlined: where only one side of a pair is, g++ takes it for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

template <class Submit>
std::size_t countDuring(Submit&& submit) {
    const auto before = allocations;
    submit();
    return allocations - before;
}

} // namespace

TEST(QueueAllocations, SubmittedCallableTravelsInOneAllocationHoweverLargeItIs) {
    const Queue serial("serial");
    const Queue concurrent("concurrent", Queue::concurrent);
    const Queue& global = Queue::global(); // made on first use
    const std::array<char, 500> large{};
    std::latch done(5);
    EXPECT_EQ(countDuring([&] { serial.async([&done] { done.count_down(); }); }), 1U);
    EXPECT_EQ(countDuring([&] { serial.async([&done, large] { done.count_down(large[0] + 1); }); }), 1U);
    EXPECT_EQ(
        countDuring([&] { concurrent.barrierAsync([&done, large] { done.count_down(large[0] + 1); }); }), 1U);
    EXPECT_EQ(countDuring([&] { global.async([&done] { done.count_down(); }); }), 1U);
    EXPECT_EQ(countDuring([&] { serial.asyncAfter(1ms, [&done] { done.count_down(); }); }), 1U);
    done.wait();
}

TEST(QueueAllocations, SynchronousWorkAllocatesNothing) {
    const Queue serial("serial");
    const Queue concurrent("concurrent", Queue::concurrent);
    const std::array<char, 500> large{};
    EXPECT_EQ(countDuring([&] { serial.sync([large] { return large[1]; }); }), 0U);
    EXPECT_EQ(countDuring([&] { concurrent.sync([] {}); }), 0U);
    EXPECT_EQ(countDuring([&] { concurrent.barrierSync([] {}); }), 0U);
}
