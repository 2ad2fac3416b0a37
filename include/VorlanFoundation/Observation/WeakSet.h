// SPDX-License-Identifier: Apache-2.0
#pragma once

// A thread-safe set of objects that it does not own.
//
//     WeakSet<Window> windows{first, second};
//     for (auto window : windows) window->redraw();       // a snapshot; the dead are skipped

#include <VorlanFoundation/Observation/AddressIndex.h>
#include <VorlanFoundation/Observation/StrongSnapshot.h>
#include <VorlanFoundation/Observation/WeakBox.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <atomic>
#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <mutex>
#include <ranges>
#include <utility>
#include <vector>

namespace vorlan {

/// Walks a snapshot of a weak set and yields the members that are still alive when it comes to them.
///
/// Threads: one thread at a time; the set it was made from may change meanwhile, which it does not see.
/// Owns:    the members weakly.
template <class T>
class WeakIterator {
public:
    /// Walks over these boxes.
    explicit WeakIterator(std::vector<WeakBox<T>> boxes) : boxes_(std::move(boxes)) {}

    /// The next member that is alive; null when there are no more.
    std::shared_ptr<T> next() {
        while (position_ < boxes_.size())
            if (auto object = boxes_[position_++].object()) return object;
        return nullptr;
    }

private:
    std::vector<WeakBox<T>> boxes_;
    std::size_t position_ = 0;
};

/// A set of objects held weakly, told apart by address, never by value.
///
/// Members that died stay until they are purged: `cleanup()` and `allObjects()` do that, nothing else. No
/// operation promises an order of the members.
///
/// Threads:    safe from any thread, but for destruction. A write is visible to every later read of the same
///             thread, and to others from when it returned. Writers never wait for readers: a write that
///             finds the set busy is queued as a barrier, and reads wait for the writes queued before them.
/// Owns:       its members weakly.
/// Re-entrancy: a loop over the set may change it; the loop keeps to its snapshot.
/// Time:       adding, removing and looking up are O(1); `allObjects`, `cleanup` and making an iterator are
///             O(n).
/// Errors:     a null pointer stops the process with a message. See `WeakBox` for objects not made by
///             `std::make_shared`.
template <class T>
class WeakSet {
public:
    class Iterator;

    /// An empty set.
    WeakSet() = default;

    /// A set of the listed objects.
    WeakSet(std::initializer_list<std::shared_ptr<T>> objects) { insertAll(objects); }

    /// A set of the objects of any range, each once.
    template <std::ranges::input_range Objects>
        requires std::convertible_to<std::ranges::range_reference_t<Objects>, std::shared_ptr<T>>
    explicit WeakSet(Objects&& objects) {
        insertAll(objects);
    }

    WeakSet(const WeakSet&) = delete;
    WeakSet& operator=(const WeakSet&) = delete;
    ~WeakSet() { waitForQueuedWrites(); }

    /// Adds an object, unless it is a member.
    void insert(const std::shared_ptr<T>& object) {
        requireObject(object);
        if (isAtRest()) {
            if (const std::unique_lock lock(mutex_, std::try_to_lock); lock.owns_lock()) return add(object);
        }
        queueWrite([this, box = WeakBox<T>(object)] { add(box); });
    }

    /// Removes an object; does nothing when it is no member.
    void remove(const std::shared_ptr<T>& object) {
        requireObject(object);
        const void* identity = identityOf(*object);
        if (isAtRest()) {
            if (const std::unique_lock lock(mutex_, std::try_to_lock); lock.owns_lock())
                return drop(identity);
        }
        queueWrite([this, identity] { drop(identity); });
    }

    /// Removes the members that are alive, and the dead ones at once.
    void removeAllObjects() {
        for (const auto& object : allObjects()) remove(object);
    }

    /// How many members there are, those that died and were not purged included.
    std::size_t count() const {
        waitForQueuedWrites();
        const std::lock_guard lock(mutex_);
        return objects_.size();
    }

    /// Whether an object is a member.
    bool contains(const std::shared_ptr<T>& object) const {
        requireObject(object);
        waitForQueuedWrites();
        const std::lock_guard lock(mutex_);
        return positions_.contains(identityOf(*object));
    }

    /// The members that are alive, after purging the dead.
    std::vector<std::shared_ptr<T>> allObjects() {
        std::vector<std::shared_ptr<T>> objects;
        collect([&](std::size_t capacity) { objects.reserve(capacity); },
                [&](std::shared_ptr<T>&& object) { objects.push_back(std::move(object)); });
        return objects;
    }

    /// Calls `body` with each member of `allObjects()` in turn; all of them are held until the last call
    /// returned.
    template <class Body>
    void forEachObject(Body&& body) {
        detail::StrongSnapshot<T> members;
        collect([&](std::size_t capacity) { members.reserve(capacity); },
                [&](std::shared_ptr<T>&& object) { members.append(std::move(object)); });
        for (const auto& member : members) body(*member);
    }

    /// Forgets the members that died. Does not wait for queued writes.
    void cleanup() {
        const std::lock_guard lock(mutex_);
        for (std::size_t i = objects_.size(); i-- > 0;)
            if (objects_[i].isEmpty()) drop(objects_[i].identity());
    }

    /// A walk over the members of this moment. Does not wait for queued writes.
    WeakIterator<T> makeIterator() const {
        const std::lock_guard lock(mutex_);
        return WeakIterator<T>(objects_);
    }

    /// The walk of `makeIterator()`, for range-based loops.
    Iterator begin() const { return Iterator(makeIterator()); }
    /// The end of any walk.
    std::default_sentinel_t end() const noexcept { return {}; }

private:
    template <class Objects>
    void insertAll(const Objects& objects) {
        for (const auto& object : objects) insert(object);
    }

    static void requireObject(const std::shared_ptr<T>& object) {
        if (!object) fatalError("a weak set holds objects, and was given none", "VorlanFoundation/WeakSet");
    }

    // On a set that is at rest a barrier would run at once: a write that also finds the short lock free is
    // made in place. Any other takes its turn behind the writes that are queued, and the caller goes on.
    bool isAtRest() const noexcept { return queuedWrites_.load(std::memory_order_acquire) == 0; }

    template <class Change>
    void queueWrite(Change change) {
        queuedWrites_.fetch_add(1, std::memory_order_acq_rel);
        queue_.barrierAsync([this, change = std::move(change)] {
            {
                const std::lock_guard lock(mutex_);
                change();
            }
            queuedWrites_.fetch_sub(1, std::memory_order_acq_rel);
        });
    }

    void waitForQueuedWrites() const {
        if (!isAtRest()) queue_.sync([] {});
    }

    // From an object, or from a box that was made of it.
    void add(const WeakBox<T>& box) {
        if (positions_.insert(box.identity(), objects_.size())) objects_.push_back(box);
    }
    void add(const std::shared_ptr<T>& object) {
        if (positions_.insert(identityOf(*object), objects_.size())) objects_.emplace_back(object);
    }

    // The last box takes the place of the dropped one, so that the list stays dense.
    void drop(const void* identity) {
        const auto position = positions_.remove(identity);
        if (position == positions_.none) return;
        if (position + 1 != objects_.size()) {
            objects_[position] = std::move(objects_.back());
            positions_.update(objects_[position].identity(), position);
        }
        objects_.pop_back();
    }

    // Purges and collects in one pass; taking a strong reference runs no code of the members.
    template <class Reserve, class Append>
    void collect(Reserve&& reserve, Append&& append) {
        waitForQueuedWrites();
        const std::lock_guard lock(mutex_);
        reserve(objects_.size());
        for (std::size_t i = 0; i < objects_.size();) {
            if (auto object = objects_[i].object()) {
                append(std::move(object));
                ++i;
            } else {
                drop(objects_[i].identity());
            }
        }
    }

    mutable std::mutex mutex_;
    std::vector<WeakBox<T>> objects_;
    detail::AddressIndex positions_; ///< Where in the list an object's box stands.
    std::atomic<std::size_t> queuedWrites_ = 0;
    Queue queue_{"WeakSetQueue", Queue::concurrent};
};

/// The position of a range-based loop over a weak set.
///
/// Threads: one thread at a time.
/// Owns:    the member that it stands on.
template <class T>
class WeakSet<T>::Iterator {
public:
    using value_type = std::shared_ptr<T>;
    using difference_type = std::ptrdiff_t;

    /// Stands on the first member of the walk that is alive.
    explicit Iterator(WeakIterator<T> walk) : walk_(std::move(walk)), object_(walk_.next()) {}

    /// The member.
    const std::shared_ptr<T>& operator*() const noexcept { return object_; }
    /// Goes on to the next member that is alive.
    Iterator& operator++() {
        object_ = walk_.next();
        return *this;
    }
    void operator++(int) { ++*this; }
    /// Whether the walk is over.
    friend bool operator==(const Iterator& iterator, std::default_sentinel_t) {
        return iterator.object_ == nullptr;
    }

private:
    WeakIterator<T> walk_;
    std::shared_ptr<T> object_;
};

} // namespace vorlan
