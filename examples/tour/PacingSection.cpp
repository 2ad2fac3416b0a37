// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/VorlanFoundation.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;

namespace {

constexpr std::string_view typed = "vorlan";

bool showTimer() {
    const auto ticks = std::make_shared<int>(0);
    const auto start = DispatchTime::now();
    InfiniteTimer timer({.deadline = 0, .pollInterval = 0.02});
    timer.start([ticks] { inForeground([ticks] { ++*ticks; }); });
    const bool isComplete = tour::serveMainQueueUntil([&] { return *ticks == 5; });
    timer.stop();
    const auto milliseconds = (DispatchTime::now() - start).nanoseconds() / 1'000'000;
    tour::line("InfiniteTimer", "the first tick at once, then every 20 ms: the fifth after " +
                                    std::to_string(milliseconds) + " ms");
    return isComplete;
}

bool showDebounce() {
    const auto found = std::make_shared<std::vector<std::string>>();
    const auto search = debounce<std::string>(
        30, Queue::main(), [found](std::string text) { found->push_back(std::move(text)); });
    for (std::size_t i = 1; i <= typed.size(); ++i) search(std::string(typed.substr(0, i)));
    const bool isComplete = tour::serveMainQueueUntil([&] { return !found->empty(); });
    tour::line("debounce", std::to_string(typed.size()) + " letters typed, " + std::to_string(found->size()) +
                               " search, for '" + (found->empty() ? "" : found->back()) + "'");
    return isComplete && found->back() == typed && found->size() == 1;
}

bool showThrottler() {
    const auto saved = std::make_shared<int>(0);
    Throttler save(500, Queue::main());
    for (int version = 1; version <= 10; ++version) save.throttle([saved, version] { *saved = version; });
    const bool isComplete = tour::serveMainQueueUntil([&] { return *saved != 0; });
    tour::line("Throttler", "10 versions to save, saved the last: number " + std::to_string(*saved));
    return isComplete && *saved == 10;
}

bool showSampler() {
    const auto drawn = std::make_shared<std::string>();
    Sampler preview(20ms, Queue::main());
    for (const char frame : typed) preview.sample([drawn, frame] { *drawn += frame; });
    const bool isComplete = tour::serveMainQueueUntil([&] { return drawn->size() == 2; });
    tour::line("Sampler", std::to_string(typed.size()) +
                              " frames at once, drawn the first and the latest: '" + *drawn + "'");
    return isComplete && drawn->front() == typed.front() && drawn->back() == typed.back();
}

bool showBatching() {
    const auto sent = std::make_shared<std::vector<std::size_t>>();
    BatchItemsTrottler<int> upload(20ms, Queue::main(),
                                   [sent](std::vector<int> events) { sent->push_back(events.size()); });
    for (int event = 0; event < 100; ++event) upload(event);
    const bool isComplete = tour::serveMainQueueUntil([&] { return !sent->empty(); });
    tour::line("BatchItemsTrottler", "100 events, uploads: " + std::to_string(sent->size()) + ", of " +
                                         std::to_string(sent->empty() ? 0 : sent->front()));
    return isComplete && sent->front() == 100;
}

} // namespace

bool tour::showPacing() {
    title("Timers and rate limits");
    bool isComplete = true;
    for (const auto show : {showTimer, showDebounce, showThrottler, showSampler, showBatching})
        isComplete &= show();
    return isComplete;
}
