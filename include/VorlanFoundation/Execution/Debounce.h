// SPDX-License-Identifier: Apache-2.0
#pragma once

// Acts once calls have ceased for a while.
//
//     auto search = debounce<std::string>(300, Queue::main(), [](const std::string& text) { find(text); });
//     search("v");
//     search("vorl");                         // 300 ms later: find("vorl")

#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/Handle.h>
#include <VorlanFoundation/Platform/Postponed.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

namespace vorlan {

namespace detail {

/// What the copies of a debounced function share with the check that is pending.
template <class Value>
class DebouncedCalls final : public Postponed<Value> {
public:
    DebouncedCalls(DispatchTimeInterval delay, Queue queue, std::function<void(Value)> action)
        : Postponed<Value>(std::move(queue), Lifetime::untilChecked),
          delay_(delay),
          action_(std::move(action)) {}

    void call(Value value) {
        // Without a span in which another call could come, every call acts.
        if (delay_.nanoseconds() <= 0) return actSoon(std::move(value));
        this->put(this->queue().now() + delay_, std::move(value));
    }

private:
    void run(Value value) override { action_(std::move(value)); }

    void actSoon(Value value) {
        auto self = std::static_pointer_cast<DebouncedCalls>(this->shared_from_this());
        this->queue().async([self = std::move(self), value = std::move(value)]() mutable {
            self->action_(std::move(value));
        });
    }

    const DispatchTimeInterval delay_;
    const std::function<void(Value)> action_;
};

} // namespace detail

/// A function of one `T` whose action follows once calls have ceased; made by `debounce`. Copies are the same
/// function. `Debounced<void>` takes nothing.
///
/// Threads:     safe from any thread.
/// Owns:        the action, and the argument of the last call until the action was called with it or a later
///              call replaced it; both also after the function is gone, for as long as a call is pending.
/// Re-entrancy: the action may call the function.
/// Time:        the queue's clock; the action is called the delay after the last call, never earlier.
/// Errors:      an exception of the action leaves a block of the queue, and so stops the process.
template <class T>
class Debounced {
public:
    static_assert(std::is_object_v<T>, "arguments are kept, so they are values");

    /// What `debounce` does.
    explicit Debounced(std::shared_ptr<detail::DebouncedCalls<T>> calls) : calls_(std::move(calls)) {}

    /// Puts the action off until no call has come for the delay. Returns at once.
    void operator()(T value) const { calls_->call(std::move(value)); }

private:
    detail::Handle<detail::DebouncedCalls<T>> calls_;
};

template <>
class Debounced<void> {
public:
    using Nothing = std::monostate;

    /// What `debounce` does.
    explicit Debounced(std::shared_ptr<detail::DebouncedCalls<Nothing>> calls) : calls_(std::move(calls)) {}

    /// Puts the action off until no call has come for the delay. Returns at once.
    void operator()() const { calls_->call(Nothing()); }

private:
    detail::Handle<detail::DebouncedCalls<Nothing>> calls_;
};

/// Makes a function that calls `action` with the last argument, once no call has come for a while.
///
/// @param by     The while, in milliseconds; zero or less means that every call is followed by the action.
/// @param queue  Where the action is called.
/// @param action Kept by the function.
template <class T>
Debounced<T> debounce(std::int64_t by, Queue queue, std::function<void(T)> action) {
    return Debounced<T>(std::make_shared<detail::DebouncedCalls<T>>(std::chrono::milliseconds(by),
                                                                    std::move(queue), std::move(action)));
}

/// The same, for an action that takes nothing.
inline Debounced<void> debounce(std::int64_t by, Queue queue, std::function<void()> action) {
    using Nothing = Debounced<void>::Nothing;
    return Debounced<void>(std::make_shared<detail::DebouncedCalls<Nothing>>(
        std::chrono::milliseconds(by), std::move(queue),
        [action = std::move(action)](Nothing) { action(); }));
}

} // namespace vorlan
