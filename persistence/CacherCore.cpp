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
    ReaderSlot::awaitReadersOf(&contentsOf(former)->mutex());
}

const Queue& CacherCore::synchronizationQueue() {
    if (const Queue* queue = queue_.load(std::memory_order_acquire)) return *queue;
    const std::lock_guard lock(mutex_);
    if (const Queue* queue = queue_.load(std::memory_order_acquire)) return *queue;
    return keepQueue(Queue("Cacher-" + describeAddress(this), Queue::concurrent));
}

void CacherCore::setSynchronizationQueue(const Queue& queue) {
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

template <class Change>
void CacherCore::change(Change&& change) {
    synchronizationQueue().barrierAsync(
        [self = shared_from_this(), change = std::forward<Change>(change)]() mutable {
            change(*self->store());
        });
}

void CacherCore::insert(Object object, std::string_view key) {
    if (!object) return remove(key);
    change([object = std::move(object), key = std::string(key)](CacheStore& store) mutable {
        store.setObject(key, std::move(object), 0);
    });
}

void CacherCore::remove(std::string_view key) {
    change([key = std::string(key)](CacheStore& store) { store.removeObject(key); });
}

void CacherCore::clear() {
    change([](CacheStore& store) { store.removeAllObjects(); });
}

CacherCore::Object CacherCore::object(std::string_view key) {
    return synchronizationQueue().sync([&] { return read(key); });
}

// Without owning the store, as all readers would have to write to its count of owners.
CacherCore::Object CacherCore::read(std::string_view key) const {
    for (;;) {
        CacheContents* const contents = contents_.load(std::memory_order_acquire);
        const ReaderSlot slot(&contents->mutex());
        if (!slot) break;
        if (contents_.load(std::memory_order_seq_cst) != contents) continue; // replaced, and perhaps gone
        Object object;
        if (contents->readAnnounced(key, object)) return object;
        break;
    }
    return store()->object(key);
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
