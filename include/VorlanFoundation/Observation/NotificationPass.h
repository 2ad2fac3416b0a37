// SPDX-License-Identifier: Apache-2.0
#pragma once

// Keeps track of who is being notified, so that an observer can be taken out of notifications that are under
// way.
//
// A pass announces each observer before it calls it; that costs two plain memory accesses. All work is on the
// side that takes an observer out: it tells every pass to skip the observer, runs a heavy fence, and waits
// only where a pass is announcing that very observer.

#include <VorlanFoundation/Platform/AsymmetricFence.h>
#include <VorlanFoundation/Platform/Export.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace vorlan::detail {

/// The passes of one observable object.
///
/// Threads: safe from any thread, but for destruction.
class VORLAN_EXPORT NotificationPasses {
public:
    /// What a pass tells, and is told.
    struct Slot {
        std::atomic<bool> isTaken = false;
        std::atomic<bool> hasSkips = false; ///< Some observer is to be skipped, and somebody may be waiting.
        std::atomic<const void*> current = nullptr;
        std::atomic<std::thread::id> thread{};
        std::vector<const void*> skips; ///< Guarded by the mutex, as is the next.
        std::uint64_t generation = 0;   ///< Counts the passes that had skips.
    };

    NotificationPasses();
    NotificationPasses(const NotificationPasses&) = delete;
    NotificationPasses& operator=(const NotificationPasses&) = delete;
    ~NotificationPasses();

    /// Takes an observer out of all passes under way; it must have been removed from the observers before.
    ///
    /// Returns when no pass is calling it any more; at once when the calling thread is itself in a call to
    /// it.
    void skipAndWait(const void* observer);

private:
    friend class NotificationPass;

    // Nearly all objects are notified by one thread at a time; the second slot and later ones are rarely
    // needed.
    Slot& take() {
        if (!first_.isTaken.exchange(true, std::memory_order_acquire)) return first_;
        return takeAnother();
    }

    Slot& takeAnother();
    void reset(Slot& slot);
    bool mayCall(Slot& slot, const void* observer);
    bool isCalling(const void* observer);
    template <class Body>
    void forEachTakenSlot(Body&& body);

    Slot first_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::list<Slot> others_; ///< Guarded by the mutex; slots are reused and stay in place.
};

/// One walk over the observers of an object.
///
/// Threads: one thread at a time: that which made it.
class NotificationPass {
public:
    /// Begins the pass. Must happen before the observers are collected.
    explicit NotificationPass(NotificationPasses& passes) : passes_(passes), slot_(passes.take()) {
        slot_.thread.store(std::this_thread::get_id(), std::memory_order_relaxed);
        if (slot_.hasSkips.load(std::memory_order_acquire)) passes_.reset(slot_);
    }
    NotificationPass(const NotificationPass&) = delete;
    NotificationPass& operator=(const NotificationPass&) = delete;

    /// Ends the pass, also when a callback threw.
    ~NotificationPass() {
        slot_.current.store(nullptr, std::memory_order_release);
        lightFence();
        if (slot_.hasSkips.load(std::memory_order_acquire)) passes_.reset(slot_);
        slot_.isTaken.store(false, std::memory_order_release);
    }

    /// Announces the next observer (which also tells that the one before is done with) and says whether to
    /// call it.
    bool announce(const void* observer) {
        slot_.current.store(observer, std::memory_order_release);
        lightFence();
        return !slot_.hasSkips.load(std::memory_order_acquire) || passes_.mayCall(slot_, observer);
    }

private:
    NotificationPasses& passes_;
    NotificationPasses::Slot& slot_;
};

} // namespace vorlan::detail
