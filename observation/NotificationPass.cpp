// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation/NotificationPass.h>

#include <algorithm>
#include <utility>

namespace vorlan::detail {

NotificationPasses::NotificationPasses() = default;
NotificationPasses::~NotificationPasses() = default;

template <class Body>
void NotificationPasses::forEachTakenSlot(Body&& body) {
    const auto visit = [&](Slot& slot) {
        if (slot.isTaken.load(std::memory_order_acquire)) body(slot);
    };
    visit(first_);
    for (auto& slot : others_) visit(slot);
}

NotificationPasses::Slot& NotificationPasses::takeAnother() {
    const std::lock_guard lock(mutex_);
    for (auto& slot : others_)
        if (!slot.isTaken.exchange(true, std::memory_order_acquire)) return slot;
    auto& slot = others_.emplace_back();
    slot.isTaken.store(true, std::memory_order_relaxed);
    return slot;
}

void NotificationPasses::reset(Slot& slot) {
    const std::lock_guard lock(mutex_);
    slot.skips.clear();
    slot.hasSkips.store(false, std::memory_order_relaxed);
    ++slot.generation;
    changed_.notify_all();
}

bool NotificationPasses::mayCall(Slot& slot, const void* observer) {
    const std::lock_guard lock(mutex_);
    const bool isSkipped = std::ranges::find(slot.skips, observer) != slot.skips.end();
    if (isSkipped) slot.current.store(nullptr, std::memory_order_release);
    changed_.notify_all(); // The observer before this one is done with.
    return !isSkipped;
}

bool NotificationPasses::isCalling(const void* observer) {
    bool isCalling = false;
    forEachTakenSlot([&](Slot& slot) {
        isCalling |= slot.current.load(std::memory_order_acquire) == observer &&
                     slot.thread.load(std::memory_order_relaxed) == std::this_thread::get_id();
    });
    return isCalling;
}

void NotificationPasses::skipAndWait(const void* observer) {
    std::unique_lock lock(mutex_);
    std::vector<std::pair<Slot*, std::uint64_t>> told;
    forEachTakenSlot([&](Slot& slot) {
        slot.skips.push_back(observer);
        slot.hasSkips.store(true, std::memory_order_release);
        told.emplace_back(&slot, slot.generation);
    });
    if (told.empty() || isCalling(observer)) return;
    // From here on a pass that has not announced the observer sees the skip, and one that has is seen to
    // have.
    heavyFence();
    changed_.wait(lock, [&] {
        return std::ranges::none_of(told, [&](const auto& pass) {
            const auto& [slot, generation] = pass;
            return slot->generation == generation &&
                   slot->current.load(std::memory_order_acquire) == observer;
        });
    });
}

} // namespace vorlan::detail
