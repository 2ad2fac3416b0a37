// SPDX-License-Identifier: Apache-2.0

// A program with a race: two serial queues write one number. ThreadSanitizer has to find it although it is told of
// the order that each queue keeps.

#include <VorlanFoundation/Platform/Queue.h>

#include <atomic>

using namespace vorlan;

namespace {

// Both blocks are under way before either writes. Relaxed, so that meeting makes no order between them.
struct Race {
    void run() {
        arrived.fetch_add(1, std::memory_order_relaxed);
        while (arrived.load(std::memory_order_relaxed) < 2) {}
        ++number;
    }

    std::atomic<int> arrived = 0;
    int number = 0;
};

} // namespace

int main() {
    const Queue first("first");
    const Queue second("second");
    // The tool remembers the last few accesses only, and so misses a single race now and then.
    for (int round = 0; round < 100; ++round) {
        Race race;
        first.async([&] { race.run(); });
        second.async([&] { race.run(); });
        first.sync([] {});
        second.sync([] {});
    }
    return 0;
}
