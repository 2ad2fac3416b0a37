// SPDX-License-Identifier: Apache-2.0
#pragma once

// Run work on the main queue or in the background, delay it, serialise it per object, and attach values to
// objects.
//
//     inBackground([] {
//         auto report = buildReport();
//         inForeground([report] { show(report); });
//     });
//     int balance = synchronized(*account, [&] { return account->deposit(5); });

#include <VorlanFoundation/Platform/AddressMonitor.h>
#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Object.h>
#include <VorlanFoundation/Platform/ObjectPointer.h>
#include <VorlanFoundation/Platform/Work.h>

#include <concepts>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace vorlan {

/// Runs work on the main thread: at once, before returning, when called there; else later, in submission
/// order with the other work of the main queue.
///
/// Safe from any thread. Returns before the work runs when called off the main thread. An exception of the
/// work reaches the caller when it runs at once, and stops the process when it runs later.
VORLAN_EXPORT void ensureMainThread(Work execute);

/// The same as `ensureMainThread`.
VORLAN_EXPORT void inForeground(Work work);

/// Runs work later on the global concurrent queue of the default quality of service; always through the
/// queue.
///
/// Safe from any thread; returns at once. An exception that leaves the work stops the process.
VORLAN_EXPORT void inBackground(Work work);

/// Runs work on the main queue after a delay; always later, also for a delay of 0, and never inside the call.
///
/// Safe from any thread; returns at once; what was delayed cannot be called off (submit a `WorkItem` for
/// that).
///
/// @param seconds The delay, cut to whole nanoseconds, on the monotonic clock, which does not advance while
///                the machine sleeps. Negative means that the work runs as soon as the main queue reaches it.
///                A delay that is not finite, or of 2^63 nanoseconds or more (292 years) in either direction,
///                stops the process.
VORLAN_EXPORT void delay(double seconds, Work work);

/// The same with a delay in whole units: `delayOnMainThread(250ms, [] { blink(); })`.
///
/// Work that is delayed by `DispatchTimeInterval::never()` is dropped at once.
VORLAN_EXPORT void delayOnMainThread(DispatchTimeInterval delay, Work work);

namespace detail {

template <class T>
inline constexpr bool isHandle = ObjectPointer<T>;
template <class T>
inline constexpr bool isHandle<std::weak_ptr<T>> = true;

template <class T>
class TypedAssociatedValue final : public AssociatedValue {
public:
    explicit TypedAssociatedValue(T initial) : value(std::move(initial)) {}

    const std::type_info& type() const noexcept override { return typeid(T); }
    std::string description() const override { return describe(value); }

    T value;
};

[[noreturn]] VORLAN_EXPORT void stopForDifferentKind(const void* key, const AssociatedValue& found);

} // namespace detail

/// Runs `block` while holding the lock of an object, and returns what it returned.
///
/// The lock is recursive: calls for the same object nest on one thread. It is given back also when `block`
/// throws; the exception then reaches the caller unchanged. The caller waits while another thread holds the
/// lock.
///
/// @param lock  The object itself, never a pointer to it; it must outlive the call. An `Object` carries its
///              lock and is one object through whichever of its bases it is given; anything else is told by
///              its address.
/// @param block Called once, on the calling thread.
template <class Lock, class Block>
std::invoke_result_t<Block> synchronized(Lock& lock, Block&& block) {
    using Bare = std::remove_cv_t<Lock>;
    static_assert(!detail::isHandle<Bare>,
                  "pass the object itself: a pointer's own address protects nothing");
    if constexpr (std::derived_from<Bare, Object>) {
        const Object& object = lock;
        const std::lock_guard guard(object.monitor());
        return std::invoke(std::forward<Block>(block));
    } else {
        const AddressMonitor guard(identityOf(lock));
        return std::invoke(std::forward<Block>(block));
    }
}

/// The value attached to an object under a key; made by `defaultValue` and attached when there is none.
///
/// Runs under the object's lock: however many threads ask at the same time, all get the same value, and
/// `defaultValue` is called once at most. The value lives as long as the object.
///
/// Safe from any thread. A value of another type under the key stops the process: keys are told apart by
/// address alone, so take the address of a static variable of your own, one per kind of value.
///
/// @tparam T           The type of the value, that of `defaultValue`'s result when not given; copies are
///                     returned, so that it is usually a `std::shared_ptr`.
/// @param host         The object that keeps the value.
/// @param key          Compared by address, never looked at.
/// @param defaultValue Called on the calling thread, under the lock; when it throws, nothing is attached.
template <class T = void, class DefaultValue>
    requires std::invocable<DefaultValue>
auto associatedValue(const Object& host, const void* key, DefaultValue&& defaultValue) {
    using Kept =
        std::conditional_t<std::is_void_v<T>, std::remove_cvref_t<std::invoke_result_t<DefaultValue>>, T>;
    using Typed = detail::TypedAssociatedValue<Kept>;
    return synchronized(host, [&]() -> Kept {
        if (auto* found = host.association(key)) {
            if (found->type() != typeid(Kept)) detail::stopForDifferentKind(key, *found);
            return static_cast<Typed*>(found)->value;
        }
        auto fresh = std::make_unique<Typed>(std::invoke(std::forward<DefaultValue>(defaultValue)));
        Kept value = fresh->value;
        host.associate(key, std::move(fresh));
        return value;
    });
}

} // namespace vorlan
