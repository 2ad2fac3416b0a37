// SPDX-License-Identifier: Apache-2.0
#pragma once

// Objects by their keys, in memory, for any number of threads.
//
//     Cacher<Image> images;
//     images["cover"] = cover;
//     std::shared_ptr<Image> image = images["cover"];
//     images["cover"] = nullptr;
//     auto map = images.object("map", [] { return loadMap(); });    // loads once, however many ask

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/Handle.h>
#include <VorlanFoundation/Platform/NSCache.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlan {

namespace detail {

class CacheContents;

/// What all `Cacher`s are made of.
class VORLAN_EXPORT CacherCore : public std::enable_shared_from_this<CacherCore> {
public:
    using Object = CacheStore::Object;
    using Producer = FunctionRef<Object()>;

    CacherCore(std::shared_ptr<void> cache, const std::shared_ptr<CacheStore>& store);
    CacherCore(const CacherCore&) = delete;
    CacherCore& operator=(const CacherCore&) = delete;
    ~CacherCore();

    std::shared_ptr<void> cache() const;
    void setCache(std::shared_ptr<void> cache, const std::shared_ptr<CacheStore>& store);
    const Queue& synchronizationQueue();
    void setSynchronizationQueue(const Queue& queue);
    void insert(Object object, std::string_view key);
    void remove(std::string_view key);
    void clear();
    Object object(std::string_view key);
    Object object(std::string_view key, Producer producer);

private:
    struct Production;
    struct Change {
        std::string key{};
        Object object{}; ///< Null to remove the one that is there.
        bool isForAll = false;
    };

    const Queue& queue();
    const Queue& queueWithLock();
    const Queue& keepQueue(const Queue& queue);
    void handOutQueue();
    std::shared_ptr<CacheStore> store() const;
    bool read(std::string_view key, Object& object, bool isOnQueue) const;
    static void make(Change& change, CacheStore& store);
    void submit(Change change);
    void submitAlone(Change change);
    void makePending();
    std::pair<std::shared_ptr<Production>, bool> production(std::string_view key);
    void finish(std::string_view key, Production& production);

    std::atomic<CacheContents*> contents_; ///< Of the store.
    std::atomic<const Queue*> queue_ = nullptr;
    std::atomic<std::size_t> reasonsToQueue_ = 0; ///< Blocks of changes, and one if a host has the queue.
    mutable std::mutex mutex_;                    ///< Guards what follows.
    std::shared_ptr<void> cache_;
    std::shared_ptr<CacheStore> store_;
    bool isQueueHandedOut_ = false;
    std::vector<std::unique_ptr<const Queue>> queues_; ///< All that there were: somebody may be entering one.
    std::vector<Change> pending_; ///< Waiting for one block of the queue, which is submitted.
    std::vector<Change> spare_;   ///< Empty, with room.
    std::map<std::string, std::shared_ptr<Production>, std::less<>> productions_;
};

} // namespace detail

/// A cache that many threads read and change, each change on its own: reads run on a concurrent queue and may overlap,
/// a change is a barrier on it.
///
/// Changes return at once. A read that comes after a change on the same thread sees it.
///
/// Threads:     safe from any thread, but for moving and dropping the handle.
/// Owns:        the cache, its queue, and with them the objects. What is submitted to the queue keeps both until it ran.
/// Re-entrancy: reading from within a block of the queue stops the process: it would wait for itself. Changes are made
///              there, so that destructors of the objects that go and the cache's eviction handler run there, too:
///              these may ask for changes, and may read `cache()`.
/// Time:        a read waits for the changes before it. Where nobody can tell the difference, as no host has asked for the
///              queue, reads with no change before them go without it, and changes that wait in a row share a block of it.
/// Errors:      none. An entry may vanish at any time, by the limits of the cache or for want of memory.
template <class T>
class Cacher {
public:
    /// An entry, to be read and to be assigned to: `std::shared_ptr<T> image = images["cover"]`.
    class Entry;

    /// A cache without limits.
    Cacher() : Cacher(std::make_shared<NSCache<T>>()) {}

    Cacher(Cacher&&) noexcept = default;
    Cacher& operator=(Cacher&&) noexcept = default;
    virtual ~Cacher() = default;

    /// What keeps the objects.
    std::shared_ptr<NSCache<T>> cache() const { return std::static_pointer_cast<NSCache<T>>(core_->cache()); }

    /// Puts another one in its place, for what runs on the queue from now on; it must not be null.
    void setCache(const std::shared_ptr<NSCache<T>>& cache) { core_->setCache(cache, storeOf(cache)); }

    /// The queue that every access passes: concurrent, named "Cacher-" and this cache's address, made when it is first
    /// needed.
    Queue synchronizationQueue() const { return core_->synchronizationQueue(); }

    /// Puts another one in its place, for what is asked from now on. The former ones are kept as long as this.
    void setSynchronizationQueue(const Queue& queue) { core_->setSynchronizationQueue(queue); }

    /// Sets the object of a key; when `object` is null, does what `remove` does. Returns at once.
    virtual void insert(const std::shared_ptr<T>& object, std::string_view key) {
        if (!object) return remove(key);
        core_->insert(detail::erased(object), key);
    }

    /// Removes the object of a key. Returns at once.
    virtual void remove(std::string_view key) { core_->remove(key); }

    /// The object of a key; null when there is none.
    virtual std::shared_ptr<T> object(std::string_view key) const {
        return std::static_pointer_cast<T>(core_->object(key));
    }

    /// The object of a key; when there is none the one that `producer` makes, which is inserted.
    ///
    /// However many ask for a key at the same time, one producer runs, on its asker's thread, and the others wait for its
    /// result, or get its exception. A null result is theirs as well, and is not inserted. A producer that asks for its
    /// own key stops the process; two on different threads that ask for each other's wait for ever.
    ///
    /// It looks up and inserts by itself, and asks nothing that a subclass has overridden.
    template <class Producer>
        requires std::is_invocable_r_v<std::shared_ptr<T>, Producer&>
    std::shared_ptr<T> object(std::string_view key, Producer&& producer) {
        const auto produce = [&]() -> detail::CacherCore::Object {
            return detail::erased(std::shared_ptr<T>(producer()));
        };
        return std::static_pointer_cast<T>(core_->object(key, produce));
    }

    /// Removes all objects. Returns at once.
    virtual void clear() { core_->clear(); }

    /// The entry of a key.
    Entry operator[](std::string_view key) { return Entry(*this, key); }

    /// The object of a key; null when there is none.
    std::shared_ptr<T> operator[](std::string_view key) const { return object(key); }

private:
    explicit Cacher(const std::shared_ptr<NSCache<T>>& cache)
        : core_(std::make_shared<detail::CacherCore>(cache, storeOf(cache))) {}

    static std::shared_ptr<detail::CacheStore> storeOf(const std::shared_ptr<NSCache<T>>& cache) {
        return cache ? cache->store() : nullptr;
    }

    detail::Handle<detail::CacherCore> core_;
};

/// Threads: as the cache's operations. Every read and assignment is one operation on the cache.
/// Owns:    nothing; to be used within the expression.
template <class T>
class Cacher<T>::Entry {
public:
    Entry(Cacher& cacher, std::string_view key) : cacher_(cacher), key_(key) {}
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() = default;

    /// The object; null when there is none.
    operator std::shared_ptr<T>() const {
        return cacher_.object(key_);
    } // NOLINT(*-explicit-*): reads as the object

    /// Sets the object; removes it when `object` is null.
    const Entry& operator=(
        const std::shared_ptr<T>& object) const { // NOLINT: what is assigned to is in the cache
        if (object)
            cacher_.insert(object, key_);
        else
            cacher_.remove(key_);
        return *this;
    }

    friend bool operator==(const Entry& entry, const std::shared_ptr<T>& object) {
        return std::shared_ptr<T>(entry) == object;
    }

private:
    Cacher& cacher_;
    const std::string_view key_;
};

} // namespace vorlan
