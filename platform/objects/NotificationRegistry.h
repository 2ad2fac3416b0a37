// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a notification center knows: who wants to hear of what, and who is being called.

#include <VorlanFoundation/Platform/NotificationCenter.h>

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vorlan::detail {

/// Which notifications a registration is for: a filter that does not keep its object alive.
///
/// Threads: safe from any thread (it never changes).
class NotificationCondition {
public:
    using Filter = NotificationCenter::Filter;

    /// Stops the process when the filter's object does not live in a `std::shared_ptr`.
    explicit NotificationCondition(Filter filter);

    /// Whether the registration hears of that notification.
    bool isMetBy(const Notification& notification) const noexcept;

    /// Whether the condition was made from an equal filter.
    bool isOf(const Filter& filter) const noexcept;

    /// Whether no notification can meet the condition any more, as its object is gone.
    bool isOver() const noexcept { return identity_ != nullptr && object_.expired(); }

private:
    bool isAbout(const std::shared_ptr<const Object>& object) const noexcept;

    std::optional<NotificationName> name_;
    // By its identity alone, a new object at the address of a dead one would be taken for that; by its owner alone,
    // a part of an object would be taken for the whole.
    const void* identity_;
    std::weak_ptr<const Object> object_;
};

/// One registration.
struct NotificationRegistration {
    using Function = std::function<void(void* observer, const Notification&)>;

    const NotificationCondition condition;
    const std::optional<std::weak_ptr<void>> observer; ///< Absent for a handler.
    const std::weak_ptr<NotificationRegistry> registry;

    // All that follows is guarded by the registry's lock.
    Function function; ///< Called without the lock, and not changed while a call runs.
    bool isEnded = false;
};

/// The registrations of a notification center, and the calls that it is making.
///
/// Nothing foreign runs while the lock is held: neither the functions nor the destructors of what they own. That is
/// also why the last reference to a registration is dropped after unlocking: with its weak references may go the
/// deleters of a host's objects.
///
/// Threads: safe from any thread.
/// Owns:    the registrations, until they end.
class NotificationRegistry {
public:
    using Registration = std::shared_ptr<NotificationRegistration>;

    /// Adds a registration, after all that are there.
    void add(const Registration& registration);

    /// Calls all whose condition the notification meets.
    void post(const Notification& notification);

    /// Ends the registration of a handler: no further call begins. A second time does nothing.
    void end(const Registration& registration);

    /// Ends the registrations of an observer; only those made with an equal filter, where one is given.
    void endAllOf(const std::shared_ptr<const void>& observer,
                  const NotificationCenter::Filter* filter = nullptr);

    /// Returns when no call of that registration runs, which must have ended; at once from inside one.
    void waitForCallsOf(const NotificationRegistration& registration);

    /// Returns when no call runs for ended registrations of that observer; at once from inside one.
    void waitForCallsOf(const std::shared_ptr<const void>& observer);

private:
    // Posts walk over the list without the lock: while it has readers it is not changed, but replaced by a changed
    // copy.
    struct List {
        std::vector<Registration> registrations; ///< In the order in which they were added.
        std::size_t readers = 0;
    };
    struct Call {
        std::thread::id thread;
        const NotificationRegistration* registration;
    };
    class Reading;
    class Calling;

    // These want the lock held.
    void endDeadOnes();
    void markAsEnded(NotificationRegistration& registration);
    [[nodiscard]] std::shared_ptr<List> replaceList();
    std::ptrdiff_t callsOf(const NotificationRegistration& registration) const;

    // These take it.
    bool begin(const NotificationRegistration& registration);
    void finish(NotificationRegistration& registration);
    template <class IsMeant>
    void waitForCalls(IsMeant&& isMeant);

    std::mutex mutex_; ///< Guards all that follows.
    std::condition_variable finished_;
    std::shared_ptr<List> list_ = std::make_shared<List>();
    std::size_t endedOnes_ = 0; ///< Of those in the list.
    // Those of handlers excepted.
    std::multimap<std::weak_ptr<void>, Registration, std::owner_less<>> byObserver_;
    std::size_t sizeToLookForDeadOnesAt_ = 32;
    std::vector<Call> calls_;
};

} // namespace vorlan::detail
