// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/VorlanFoundation.h>

#include <chrono>
#include <latch>
#include <memory>
#include <string>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;

namespace {

const char* nameOfThread() {
    return Thread::isMainThread() ? "the main thread" : "a background thread";
}

bool showBackgroundAndForeground() {
    const auto isShown = std::make_shared<bool>(false);
    inBackground([isShown] {
        const std::string report = std::string("made on ") + nameOfThread();
        inForeground([isShown, report] {
            tour::line("inBackground", report + ", shown on " + nameOfThread());
            *isShown = true;
        });
    });
    return tour::serveMainQueueUntil([&] { return *isShown; });
}

bool showDelay() {
    const auto isShown = std::make_shared<bool>(false);
    delayOnMainThread(50ms, [isShown, start = DispatchTime::now()] {
        const auto late =
            (DispatchTime::now() - start).nanoseconds() - std::chrono::nanoseconds(50ms).count();
        tour::line("delayOnMainThread",
                   "50 ms, and " + std::to_string(late / 1000) + " us more; never early");
        *isShown = true;
    });
    return tour::serveMainQueueUntil([&] { return *isShown; });
}

struct Account : Object {
    int deposit(int amount) { return balance += amount; }
    int balance = 0;
};

bool showSynchronized() {
    constexpr int depositors = 4;
    constexpr int deposits = 1000;
    auto account = std::make_shared<Account>();
    std::latch done(depositors);
    for (int i = 0; i < depositors; ++i)
        inBackground([&] {
            for (int j = 0; j < deposits; ++j) synchronized(*account, [&] { return account->deposit(1); });
            done.count_down();
        });
    done.wait();
    tour::line("synchronized", std::to_string(depositors) + " blocks at once, " + std::to_string(deposits) +
                                   " deposits each: " + std::to_string(account->balance));
    return account->balance == depositors * deposits;
}

bool showBarrier() {
    std::vector<int> numbers;
    const Queue queue("com.example.tour.numbers", Queue::concurrent, QualityOfService::utility);
    for (int i = 1; i <= 100; ++i) queue.barrierAsync([&numbers, i] { numbers.push_back(i); });
    const auto count = queue.sync([&] { return numbers.size(); });
    tour::line("Queue", "a read waited for " + std::to_string(count) + " writes before it");
    return count == 100;
}

} // namespace

bool tour::showExecution() {
    title("Execution");
    bool isComplete = true;
    for (const auto show : {showBackgroundAndForeground, showDelay, showSynchronized, showBarrier})
        isComplete &= show();
    return isComplete;
}
