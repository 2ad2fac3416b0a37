// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lets a type have callbacks by keys of its own choosing, any number for each.
//
//     struct Player : Callbackable<Player, PlayerEvent> {
//         Callbacks callbacks;
//         std::optional<Queue> callbackQueue = Queue("com.example.player.callbacks", Queue::concurrent);
//     };
//     player->on(PlayerEvent::ended, [] { playNext(); });
//     player->callback(PlayerEvent::ended);               // runs them, in the order in which they were added
//     player->callbackOnce(PlayerEvent::ended);           // and then forgets them

#include <VorlanFoundation/Observation/Actionable.h>
#include <VorlanFoundation/Observation/CallbackTable.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/RawValues.h>

#include <memory>
#include <optional>
#include <utility>

namespace vorlan {

namespace detail {

/// What can be a key of callbacks: an enumeration whose cases stand for texts or numbers.
template <class T>
concept CallbackKey = Hashable<T> && RawRepresentable<T>;

/// Tells whether the object that it is a part of is still there.
///
/// Threads: safe from any thread.
class LifeToken {
public:
    LifeToken() = default;
    // Every object has one of its own.
    LifeToken(const LifeToken&) : LifeToken() {}
    LifeToken(LifeToken&&) noexcept : LifeToken() {}
    LifeToken& operator=(const LifeToken&) noexcept { return *this; } // NOLINT(*-unhandled-self-assignment)
    LifeToken& operator=(LifeToken&&) noexcept { return *this; }
    ~LifeToken() = default;

    std::weak_ptr<const void> watch() const noexcept { return life_; }

private:
    std::shared_ptr<const void> life_ = std::make_shared<char>();
};

} // namespace detail

/// An interface with default operations that keeps lists of callbacks and runs them.
///
/// `Self` has two members: `callbacks`, of the type `Callbacks`, and `callbackQueue`, a `std::optional<Queue>`. Where
/// there is a queue it guards the table: what changes it is submitted as a barrier and happens later, and reading it
/// waits for what was submitted before. Where there is none all happens at once. `clear` and `callback` may be
/// replaced, which `callbackOnce` goes by. A type that is `Actionable` too names both operations as its own:
/// `using Actionable<Player, PlayerAction>::on; using Callbackable<Player, PlayerEvent>::on;`
///
/// Threads:     safe from any thread, but for destruction, for moving, and for giving it another queue. Callbacks run on
///              the thread that asks for them, never on the queue.
/// Owns:        its callbacks, through the table. What is submitted holds the table and not the object, which may be gone
///              by then. A copy has a table of its own, with the callbacks that the table held by then, and the same
///              queue; what is still queued goes to the original only. An object that is moved takes along what is still
///              queued; the one that it was moved from has no callbacks, and is given a queue (or none) before its next
///              use.
/// Re-entrancy: a callback may add and clear callbacks, run them, and destroy the object. The run under way keeps to the
///              list that it began with. To run callbacks from a block of a serial queue that guards them, or from a
///              barrier of a concurrent one, would last for ever and stops the process instead.
/// Errors:      an exception of a callback reaches the caller; the callbacks after it do not run, and `callbackOnce`
///              forgets none.
template <class Self, detail::CallbackKey CallbackType>
class Callbackable {
public:
    using Callbacks = CallbackTable<CallbackType>;

    Callbackable() = default;
    Callbackable(const Callbackable&) = default;
    Callbackable(Callbackable&&) noexcept = default;
    Callbackable& operator=(const Callbackable&) = default;
    Callbackable& operator=(Callbackable&&) noexcept = default;
    virtual ~Callbackable() = default;

    /// Adds a callback to those of the key, behind the others.
    void on(CallbackType key, Callback callback) {
        write([key, callback = std::move(callback)](Lists& lists) { lists.append(key, callback); });
    }

    /// Takes all callbacks from the key. A key that had any stays in the table, with an empty list.
    virtual void clear(CallbackType key) {
        write([key](Lists& lists) { lists.clear(key); });
    }

    /// Runs the callbacks that the key has now, one after the other in the order in which they were added; returns when
    /// the last one did.
    virtual void callback(CallbackType key) {
        const auto list = read(key);
        if (!list) return;
        for (const Callback& callback : *list) callback();
    }

    /// Runs the callbacks of the key, and then takes them from it: also those that were added meanwhile, which have not
    /// run.
    void callbackOnce(CallbackType key) {
        const auto alive = life_.watch();
        callback(key);
        if (!alive.expired()) clear(key);
    }

private:
    using Lists = detail::CallbackLists<CallbackType>;

    Self& self() { return static_cast<Self&>(*this); }

    template <class Change>
    void write(Change change) {
        const auto& lists = self().callbacks.lists();
        const std::optional<Queue>& queue = self().callbackQueue;
        if (!queue) return change(*lists);
        queue->barrierAsync([lists, change = std::move(change)] { change(*lists); });
    }

    std::shared_ptr<const CallbackList> read(CallbackType key) {
        auto& lists = *self().callbacks.lists();
        const std::optional<Queue>& queue = self().callbackQueue;
        return queue ? queue->sync([&] { return lists.list(key); }) : lists.list(key);
    }

    detail::LifeToken life_;
};

} // namespace vorlan
