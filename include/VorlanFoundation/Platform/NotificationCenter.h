// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tells whoever wants to know that something happened, by name.
//
//     const NotificationName saved("com.example.saved");
//     auto observation = NotificationCenter::default_().addObserver({.name = saved}, [](const Notification& n) { ... });
//     NotificationCenter::default_().addObserver(window, &Window::didSave, {.name = saved, .object = document});
//     NotificationCenter::default_().post({.name = saved, .object = document});

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Object.h>
#include <VorlanFoundation/Platform/Value.h>

#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace vorlan {

/// The name of a kind of notification, best in reverse-DNS form.
///
/// Threads: safe from any thread (a plain value).
class NotificationName {
public:
    explicit NotificationName(std::string rawValue) : rawValue_(std::move(rawValue)) {}

    /// The text of the name.
    const std::string& rawValue() const noexcept { return rawValue_; }

    friend bool operator==(const NotificationName&, const NotificationName&) = default;

private:
    std::string rawValue_;
};

/// One thing that happened.
struct Notification {
    NotificationName name;
    /// Whose doing it was; null for nobody's.
    std::shared_ptr<Object> object{};
    /// What the poster adds; empty for nothing.
    Value::Dictionary userInfo{};
};

/// Which notifications a registration with a notification center is for.
struct NotificationFilter {
    /// Those of this name; absent for all names.
    std::optional<NotificationName> name{};
    /// Those of this object; null for those of all objects and of none. Once the object is gone the registration
    /// hears of nothing, and no other object is taken for it.
    std::shared_ptr<const Object> object{};
};

namespace detail {
struct NotificationRegistration;
class NotificationRegistry;
} // namespace detail

/// A registration with a notification center; ends when it is dropped.
///
/// Threads:     one thread at a time; its handler may be under way on others.
/// Owns:        the handler, until the registration ends and the calls under way are over. Not the center.
/// Re-entrancy: may be ended from within its own handler, and while the handler is destroyed.
class VORLAN_EXPORT NotificationObservation {
public:
    /// No registration.
    NotificationObservation() noexcept;
    NotificationObservation(NotificationObservation&&) noexcept;
    NotificationObservation& operator=(NotificationObservation&&) noexcept;
    /// Ends the registration, as `invalidate()` does.
    ~NotificationObservation();

    /// Ends the registration: no further call begins, though one may be running on another thread. A second time
    /// does nothing.
    void invalidate();

    /// Ends the registration and returns only when no call of the handler is running or will run, and the handler is
    /// destroyed. After `invalidate()` it still waits.
    ///
    /// From inside the handler itself it does not wait, for no thread: that call is the last one on its own. Two threads
    /// deadlock when one waits here while the call that it waits for waits for the first.
    void invalidateAndWait();

private:
    friend class NotificationCenter;

    explicit NotificationObservation(std::shared_ptr<detail::NotificationRegistration> registration) noexcept;

    std::shared_ptr<detail::NotificationRegistration> registration_;
};

/// Passes notifications on to those who asked for them; copies are handles of the same center.
///
/// Threads:     safe from any thread. Observers are called on the thread that posts, one after the other, before
///              `post` returns.
/// Owns:        handlers, until their registrations end; observing objects, and the objects that registrations are
///              limited to, weakly. The default center lives as long as the process.
/// Re-entrancy: a handler may post, add and remove. What is added during a post hears of the next; what is removed
///              is not called any more.
/// Time:        observers are called in the order in which they were added.
/// Errors:      an exception of a handler leaves `post`; later observers are then not told. A null handler stops the
///              process, as does an observer or a filter's object that does not live in a `std::shared_ptr`.
class VORLAN_EXPORT NotificationCenter {
public:
    using Handler = std::function<void(const Notification&)>;

    /// Which notifications a registration is for.
    using Filter = NotificationFilter;

    /// A center of its own.
    NotificationCenter();

    /// The process's center.
    static const NotificationCenter& default_();

    /// Has `handler` called with each notification that the filter lets through, until the result is dropped.
    [[nodiscard]] NotificationObservation addObserver(Filter filter, Handler handler) const;

    /// Has a member function of `observer`, its own or of a base, called with each notification that the filter lets
    /// through, until it is removed or gone. It is held only while it is being called.
    ///
    /// What is registered twice is called twice.
    template <class Observer, std::derived_from<Observer> Derived>
    void addObserver(const std::shared_ptr<Derived>& observer,
                     void (Observer::*selector)(const Notification&), Filter filter = {}) const;

    /// Ends all registrations of `observer`; the calls that run go on.
    ///
    /// Whose registrations are meant is told by who owns the pointers: all pointers that share in one ownership are
    /// one observer, whichever base or part of it they point to.
    void removeObserver(const std::shared_ptr<const void>& observer) const;

    /// Ends those registrations of `observer` that were made with an equal filter.
    void removeObserver(const std::shared_ptr<const void>& observer, const Filter& filter) const;

    /// Ends all registrations of `observer` and returns only when no call of it, by this center, is running or will run;
    /// as `NotificationObservation::invalidateAndWait()`.
    ///
    /// From inside a call of the observer it does not wait.
    void removeObserverAndWait(const std::shared_ptr<const void>& observer) const;

    /// Calls all whom it concerns, on this thread, before it returns.
    void post(const Notification& notification) const;

    /// Whether two handles are of one center.
    friend bool operator==(const NotificationCenter&, const NotificationCenter&) = default;

private:
    using Selector = std::function<void(void* observer, const Notification&)>;

    void add(std::shared_ptr<void> observer, Selector selector, Filter filter) const;

    std::shared_ptr<detail::NotificationRegistry> registry_;
};

template <class Observer, std::derived_from<Observer> Derived>
void NotificationCenter::addObserver(const std::shared_ptr<Derived>& observer,
                                     void (Observer::*selector)(const Notification&), Filter filter) const {
    auto call = [selector](void* target, const Notification& notification) {
        (static_cast<Derived*>(target)->*selector)(notification);
    };
    add(observer, std::move(call), std::move(filter));
}

} // namespace vorlan
