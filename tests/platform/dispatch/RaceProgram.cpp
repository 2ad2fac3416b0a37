// SPDX-License-Identifier: Apache-2.0

// A program with a race: two serial queues write one number. ThreadSanitizer has to find it although it is told of
// the order that each queue keeps.

#include <VorlanFoundation/Platform/Queue.h>

#include <atomic>

using namespace vorlan;

int main() {
    const Queue first("first");
    const Queue second("second");
    int number = 0;
    std::atomic<int> arrived = 0;
    // Both blocks are under way before either writes. Relaxed, so that meeting makes no order between them.
    const auto race = [&] {
        arrived.fetch_add(1, std::memory_order_relaxed);
        while (arrived.load(std::memory_order_relaxed) < 2) {}
        ++number;
    };
    first.async(race);
    second.async(race);
    first.sync([] {});
    second.sync([] {});
    return number > 2 ? 1 : 0;
}
