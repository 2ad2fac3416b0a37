// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lists of callbacks by keys.
//
//     CallbackTable<PlayerEvent> callbacks;
//     callbacks[PlayerEvent::ended] = CallbackList{[] { next(); }};
//     std::optional<CallbackList> list = callbacks[PlayerEvent::ended];

#include <VorlanFoundation/Platform/Subscript.h>

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vorlan {

/// A callable that takes nothing and may be called any number of times. Copies are the same callable, with one state;
/// what it returns is dropped.
///
/// Threads: safe from any thread, as far as the callable is.
/// Owns:    the callable, shared by its copies.
/// Errors:  an exception of the callable reaches the caller. An empty std::function is taken, and throws
///          std::bad_function_call when it is called; a null pointer to a function must not be.
class Callback {
public:
    /// Takes over (or copies) a callable; one that can only be moved will do.
    template <class Callable>
        requires(!std::same_as<std::remove_cvref_t<Callable>, Callback> &&
                 std::invocable<std::decay_t<Callable>&>)
    Callback(Callable&& callable) // NOLINT(*-explicit-*): a lambda is a callback as it stands
        : callable_(std::make_shared<std::decay_t<Callable>>(std::forward<Callable>(callable))),
          call_([](void* target) { std::invoke(*static_cast<std::decay_t<Callable>*>(target)); }) {}

    // Without a move: there is no callback that has nothing.
    Callback(const Callback&) = default;
    Callback& operator=(const Callback&) = default;

    void operator()() const { call_(callable_.get()); }

private:
    std::shared_ptr<void> callable_;
    void (*call_)(void*);
};

/// Callbacks, in the order in which they run.
using CallbackList = std::vector<Callback>;

namespace detail {

/// The lists of a table, which outlive it for as long as something that was queued has still to change them.
///
/// Threads: safe from any thread. No callback is called or destroyed with the lock held.
template <class Key>
class CallbackLists {
public:
    /// A list that was handed out is not changed any more: who has it calls what it held at that moment.
    struct Entry {
        std::shared_ptr<CallbackList> list = std::make_shared<CallbackList>();
        bool isHandedOut = false;
    };
    using Entries = std::unordered_map<Key, Entry>;

    CallbackLists() = default;
    explicit CallbackLists(Entries entries) : entries_(std::move(entries)) {}

    /// Null where the key has no list.
    std::shared_ptr<const CallbackList> list(const Key& key) {
        const std::lock_guard lock(mutex_);
        const auto entry = entries_.find(key);
        if (entry == entries_.end()) return nullptr;
        entry->second.isHandedOut = true;
        return entry->second.list;
    }

    void append(const Key& key, const Callback& callback) {
        const std::lock_guard lock(mutex_);
        auto& entry = entries_[key];
        if (entry.isHandedOut) entry = {.list = std::make_shared<CallbackList>(*entry.list)};
        entry.list->push_back(callback);
    }

    /// Gives a key a list in place of the one that it had.
    void set(const Key& key, CallbackList callbacks) {
        Entry entry{.list = std::make_shared<CallbackList>(std::move(callbacks))}; // then the former one
        const std::lock_guard lock(mutex_);
        std::swap(entries_[key], entry);
    }

    /// Gives a key that has a list an empty one.
    void clear(const Key& key) {
        Entry entry; // then the former one
        const std::lock_guard lock(mutex_);
        if (const auto found = entries_.find(key); found != entries_.end()) std::swap(found->second, entry);
    }

    void remove(const Key& key) {
        typename Entries::node_type former;
        const std::lock_guard lock(mutex_);
        former = entries_.extract(key);
    }

    std::size_t count() const {
        const std::lock_guard lock(mutex_);
        return entries_.size();
    }

    bool contains(const Key& key) const {
        const std::lock_guard lock(mutex_);
        return entries_.contains(key);
    }

    /// All of them, handed out.
    Entries entries() {
        const std::lock_guard lock(mutex_);
        for (auto& [key, entry] : entries_) entry.isHandedOut = true;
        return entries_;
    }

    void replace(Entries entries) {
        const std::lock_guard lock(mutex_);
        entries_.swap(entries);
    }

private:
    mutable std::mutex mutex_;
    Entries entries_;
};

/// The list of a key, for `Subscript`.
template <class Key>
struct CallbackEntry {
    std::shared_ptr<CallbackLists<Key>> lists;
    Key key;

    template <std::same_as<CallbackList> List>
    std::optional<List> read() const {
        const auto list = lists->list(key);
        return list ? std::optional(*list) : std::nullopt;
    }
    void write(CallbackList list) const { lists->set(key, std::move(list)); }
    void remove() const { lists->remove(key); }
};

} // namespace detail

/// A dictionary of keys and lists of callbacks.
///
/// Threads: safe from any thread, but for destruction, and for moving from it or to it.
/// Owns:    its lists; a copy has lists of its own, with the same callbacks. What is moved from is an empty table.
/// Re-entrancy: callbacks may change the table that they are in, also where it is their end that does so.
template <class Key>
class CallbackTable {
public:
    CallbackTable() = default;
    CallbackTable(const CallbackTable& other) : lists_(std::make_shared<Lists>(other.lists_->entries())) {}
    // Does not fail, so that containers move tables where they could copy them.
    CallbackTable(CallbackTable&& other) noexcept : lists_(other.takeLists()) {}
    CallbackTable& operator=(const CallbackTable& other) {
        lists_->replace(other.lists_->entries());
        return *this;
    }
    CallbackTable& operator=(CallbackTable&& other) noexcept {
        lists_ = other.takeLists();
        return *this;
    }
    ~CallbackTable() = default;

    /// The list of a key, to be read and set; absent where the key has none, which is not the same as an empty one.
    Subscript<detail::CallbackEntry<Key>> operator[](const Key& key) {
        return Subscript(detail::CallbackEntry<Key>{.lists = lists_, .key = key});
    }
    std::optional<CallbackList> operator[](const Key& key) const {
        return detail::CallbackEntry<Key>{.lists = lists_, .key = key}.template read<CallbackList>();
    }

    /// Whether a key has a list, be it empty.
    bool contains(const Key& key) const { return lists_->contains(key); }

    /// How many keys have a list.
    std::size_t size() const { return lists_->count(); }
    bool empty() const { return size() == 0; }

    /// What stands behind the table, the same until the table is moved.
    const std::shared_ptr<detail::CallbackLists<Key>>& lists() const noexcept { return lists_; }

private:
    using Lists = detail::CallbackLists<Key>;

    std::shared_ptr<Lists> takeLists() { return std::exchange(lists_, std::make_shared<Lists>()); }

    std::shared_ptr<Lists> lists_ = std::make_shared<Lists>();
};

} // namespace vorlan
