// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Persistence/Cacher.h>

#include "platform/cache/CacheContents.h"

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <thread>

namespace vorlan::detail {

namespace {

constexpr auto where = "VorlanFoundation/Cacher";

// Room for so many changes is kept for the next ones.
constexpr std::size_t mostSpare = 64;

CacheContents* contentsOf(const std::shared_ptr<CacheStore>& store) {
    if (!store) fatalError("the cache must not be null", where);
    return static_cast<CacheContents*>(store.get()); // there is no other kind
}

} // namespace

/// An object that is being made, and those who wait for it.
///
/// Threads: safe from any thread.
struct CacherCore::Production {
    const std::thread::id maker = std::this_thread::get_id();
    Object object; ///< Set by the maker, before it is done.
    std::exception_ptr error;

    void setDone() {
        const std::lock_guard lock(mutex);
        isDone = true;
        done.notify_all();
    }

    Object wait() {
        std::unique_lock lock(mutex);
        done.wait(lock, [this] { return isDone; });
        if (error) std::rethrow_exception(error);
        return object;
    }

    std::mutex mutex;
    std::condition_variable done;
    bool isDone = false;
};

CacherCore::CacherCore(std::shared_ptr<void> cache, const std::shared_ptr<CacheStore>& store)
    : contents_(contentsOf(store)), cache_(std::move(cache)), store_(store) {}

CacherCore::~CacherCore() = default;

std::shared_ptr<void> CacherCore::cache() const {
    const std::lock_guard lock(mutex_);
    return cache_;
}

std::shared_ptr<CacheStore> CacherCore::store() const {
    const std::lock_guard lock(mutex_);
    return store_;
}

void CacherCore::setCache(std::shared_ptr<void> cache, const std::shared_ptr<CacheStore>& store) {
    CacheContents* const contents = contentsOf(store);
    auto former = store; // dropped at the end, as is the cache
    {
        const std::lock_guard lock(mutex_);
        std::swap(cache_, cache);
        std::swap(store_, former);
        contents_.store(contents, std::memory_order_seq_cst);
    }
    // Readers do not hold the former one; from here on they find the new one.
    ReaderSlot::awaitReadersOf(contentsOf(former));
}

const Queue& CacherCore::synchronizationQueue() {
    handOutQueue();
    return queue();
}

// From here on a host may have blocks on the queue that no read may overlap with.
void CacherCore::handOutQueue() {
    const std::lock_guard lock(mutex_);
    if (std::exchange(isQueueHandedOut_, true)) return;
    reasonsToQueue_.fetch_add(1, std::memory_order_seq_cst);
    contentsOf(store_)->awaitReaders();
}

const Queue& CacherCore::queue() {
    if (const Queue* queue = queue_.load(std::memory_order_acquire)) return *queue;
    const std::lock_guard lock(mutex_);
    return queueWithLock();
}

const Queue& CacherCore::queueWithLock() {
    if (const Queue* queue = queue_.load(std::memory_order_acquire)) return *queue;
    return keepQueue(Queue("Cacher-" + describeAddress(this), Queue::concurrent));
}

void CacherCore::setSynchronizationQueue(const Queue& queue) {
    handOutQueue();
    const std::lock_guard lock(mutex_);
    keepQueue(queue);
}

const Queue& CacherCore::keepQueue(const Queue& queue) {
    const auto known =
        std::ranges::find(queues_, queue, [](const auto& kept) -> const Queue& { return *kept; });
    const auto& kept =
        known != queues_.end() ? *known : queues_.emplace_back(std::make_unique<const Queue>(queue));
    queue_.store(kept.get(), std::memory_order_release);
    return *kept;
}

// What the changes are made to is the cache that is there when they are made.
void CacherCore::make(Change& change, CacheStore& store) {
    if (change.isForAll) return store.removeAllObjects();
    if (!change.object) return store.removeObject(change.key);
    store.setObject(change.key, std::move(change.object), 0);
}

// While no host has the queue, changes that are asked for before one could run share its barrier: nobody can tell, and
// of many in a row each costs less than a block of the queue does.
void CacherCore::submit(Change change) {
    std::unique_lock lock(mutex_);
    if (isQueueHandedOut_) {
        lock.unlock();
        return submitAlone(std::move(change));
    }
    pending_.push_back(std::move(change));
    if (pending_.size() > 1) return;
    // With the lock: who adds to these, and then reads, must find the block ahead of it.
    reasonsToQueue_.fetch_add(1, std::memory_order_seq_cst);
    queueWithLock().barrierAsync([self = shared_from_this()] { self->makePending(); });
}

void CacherCore::submitAlone(Change change) {
    queue().barrierAsync(
        [self = shared_from_this(), change = std::move(change)]() mutable { make(change, *self->store()); });
}

void CacherCore::makePending() {
    std::vector<Change> changes;
    {
        const std::lock_guard lock(mutex_);
        std::swap(changes, pending_);
        std::swap(pending_, spare_);
    }
    auto store = this->store();
    for (auto& change : changes) {
        if (store.get() != contents_.load(std::memory_order_acquire))
            store = this->store(); // replaced meanwhile
        make(change, *store);
    }
    changes.clear();
    store.reset(); // who passes the queue from here on may let the cache go
    reasonsToQueue_.fetch_sub(1, std::memory_order_release);
    if (changes.capacity() > mostSpare) return;
    const std::lock_guard lock(mutex_);
    std::swap(changes, spare_);
}

void CacherCore::insert(Object object, std::string_view key) {
    submit({std::string(key), std::move(object)});
}

void CacherCore::remove(std::string_view key) {
    submit({std::string(key), nullptr});
}

void CacherCore::clear() {
    submit({.isForAll = true});
}

// As long as no change is under way and no host has the queue, nobody could tell whether a read passed it, and it does
// not: that takes longer than the read.
CacherCore::Object CacherCore::object(std::string_view key) {
    Object object;
    if (reasonsToQueue_.load(std::memory_order_relaxed) == 0 && read(key, object, false)) return object;
    queue().sync([&] {
        if (!read(key, object, true)) object = store()->object(key);
    });
    return object;
}

// Without owning the store, as all readers would have to write to its count of owners. Until it is known to be there
// still, nothing but its address may be used. False when that cannot be now.
bool CacherCore::read(std::string_view key, Object& object, bool isOnQueue) const {
    for (;;) {
        CacheContents* const contents = contents_.load(std::memory_order_acquire);
        const ReaderSlot slot(contents);
        if (!slot) return false;
        if (contents_.load(std::memory_order_seq_cst) != contents) continue; // replaced, and perhaps gone
        if (!isOnQueue && reasonsToQueue_.load(std::memory_order_seq_cst) != 0) return false;
        return contents->readAnnounced(key, object);
    }
}

std::pair<std::shared_ptr<CacherCore::Production>, bool> CacherCore::production(std::string_view key) {
    const std::lock_guard lock(mutex_);
    const auto found = productions_.find(key);
    if (found == productions_.end())
        return {productions_.emplace(key, std::make_shared<Production>()).first->second, true};
    if (found->second->maker == std::this_thread::get_id())
        fatalError("a producer asks for the key that it produces", where);
    return {found->second, false};
}

void CacherCore::finish(std::string_view key, Production& production) {
    {
        const std::lock_guard lock(mutex_);
        productions_.erase(productions_.find(key));
    }
    production.setDone();
}

CacherCore::Object CacherCore::object(std::string_view key, Producer producer) {
    if (auto found = object(key)) return found;
    const auto [production, isMaker] = this->production(key);
    if (!isMaker) return production->wait();
    try {
        production->object = object(key); // another one may just have been finished
        if (!production->object) {
            production->object = producer();
            if (production->object) insert(production->object, key);
        }
    } catch (...) {
        production->error = std::current_exception();
    }
    finish(key, *production); // after the insertion: who asks from here on finds it
    return production->wait();
}

} // namespace vorlan::detail
