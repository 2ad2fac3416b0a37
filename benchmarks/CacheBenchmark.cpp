// SPDX-License-Identifier: Apache-2.0

// Objects of a cache of a thousand: looking one up, alone or beside another thread, and putting another in its place.

#include "benchmarks/support/DispatchHandle.h"
#include "benchmarks/support/Rows.h"

#include <VorlanFoundation/Persistence/Cacher.h>

#include <Poco/LRUCache.h>
#include <QtCore/QCache>
#include <QtCore/QMutex>
#include <QtCore/QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vorlan::benchmarks {

namespace {

constexpr std::size_t size = 1'000; // objects in the cache

using Object = std::shared_ptr<std::int64_t>;

Object object() {
    return std::make_shared<std::int64_t>(1);
}

/// The keys, in the order in which they are asked for: one that no processor guesses.
const std::vector<std::string>& keys() {
    static const auto made = [] {
        std::vector<std::string> list;
        for (std::size_t i = 0; i < size; ++i)
            list.push_back("image/cover-" + std::to_string(i * 619 % size));
        return list;
    }();
    return made;
}

struct KeyHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const noexcept { return std::hash<std::string_view>()(key); }
};

using Map = std::unordered_map<std::string, Object, KeyHash, std::equal_to<>>;

/// A map behind a queue of the bare engine.
class BareCache {
public:
    Object object(std::string_view key) {
        Question question{map_, key, nullptr};
        dispatch_sync_f(queue_.get(), &question, [](void* context) {
            auto& asked = *static_cast<Question*>(context);
            const auto found = asked.map.find(asked.key);
            if (found != asked.map.end()) asked.answer = found->second;
        });
        return std::move(question.answer);
    }

    void insert(Object object, std::string_view key) {
        auto* change = new Change{map_, std::string(key), std::move(object)};
        dispatch_barrier_async_f(queue_.get(), change, [](void* context) {
            const std::unique_ptr<Change> made(static_cast<Change*>(context));
            const auto found = made->map.find(made->key);
            if (found != made->map.end())
                found->second = std::move(made->object);
            else
                made->map.emplace(std::move(made->key), std::move(made->object));
        });
    }

    void settle() {
        dispatch_barrier_sync_f(queue_.get(), nullptr, [](void*) {});
    }

private:
    struct Question {
        Map& map;
        std::string_view key;
        Object answer;
    };
    struct Change {
        Map& map;
        std::string key;
        Object object;
    };

    Map map_;
    DispatchHandle queue_{DISPATCH_QUEUE_CONCURRENT};
};

/// Ours.
class OurCache {
public:
    Object object(std::string_view key) { return cacher_.object(key); }
    void insert(const Object& object, std::string_view key) { cacher_.insert(object, key); }
    // A read waits for the changes before it. (Who asks for the queue has all reads pass it from then on.)
    void settle() { benchmark::DoNotOptimize(cacher_.object({})); }

private:
    Cacher<std::int64_t> cacher_;
};

/// Qt's cache is for one thread, so it is locked; its keys are made before, as an application would keep them.
class QtCache {
public:
    QtCache() {
        for (const auto& key : keys()) names_.emplace(key, QString::fromStdString(key));
    }

    Object object(std::string_view key) {
        const QMutexLocker lock(&mutex_);
        const Object* found = cache_.object(nameOf(key));
        return found != nullptr ? *found : nullptr;
    }
    void insert(Object object, std::string_view key) {
        auto made = std::make_unique<Object>(std::move(object));
        const QMutexLocker lock(&mutex_);
        cache_.insert(nameOf(key), made.release());
    }
    void settle() {}

private:
    const QString& nameOf(std::string_view key) const { return names_.find(key)->second; }

    std::unordered_map<std::string, QString, KeyHash, std::equal_to<>> names_;
    QMutex mutex_;
    QCache<QString, Object> cache_{static_cast<qsizetype>(size) * 2};
};

/// POCO's.
class PocoCache {
public:
    Object object(std::string_view key) {
        const auto found = cache_.get(std::string(key));
        return found ? *found : nullptr;
    }
    void insert(const Object& object, std::string_view key) { cache_.update(std::string(key), object); }
    void settle() {}

private:
    Poco::LRUCache<std::string, Object> cache_{static_cast<long>(size) * 2};
};

/// What no queue can match.
class LockedCache {
public:
    Object object(std::string_view key) {
        const std::shared_lock lock(mutex_);
        const auto found = map_.find(key);
        return found != map_.end() ? found->second : nullptr;
    }
    void insert(Object object, std::string_view key) {
        const std::lock_guard lock(mutex_);
        map_.insert_or_assign(std::string(key), std::move(object));
    }
    void settle() {}

private:
    std::shared_mutex mutex_;
    Map map_;
};

/// One cache for all threads of a row; never destroyed, as rows are repeated in any order.
template <class Cache>
Cache& filled() {
    static Cache& cache = *[] {
        auto* made = new Cache;
        for (const auto& key : keys()) made->insert(object(), key);
        made->settle();
        return made;
    }();
    return cache;
}

template <class Cache>
void lookUp(benchmark::State& state) {
    auto& cache = filled<Cache>();
    std::size_t place = static_cast<std::size_t>(state.thread_index()) * size / 2;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(cache.object(keys()[place]));
        place = place + 1 == size ? 0 : place + 1;
    }
}

template <class Cache>
void replace(benchmark::State& state) {
    auto& cache = filled<Cache>();
    const Object made = object();
    std::size_t place = 0;
    for ([[maybe_unused]] auto _ : state) {
        cache.insert(made, keys()[place]);
        place = place + 1 == size ? 0 : place + 1;
        // What is not done yet must not pile up; all rows pay for it.
        if (place == 0) cache.settle();
    }
    cache.settle();
}

template <class Cache>
void addRows(const std::string& name) {
    addRow("look up one of 1000", name, lookUp<Cache>);
    benchmark::RegisterBenchmark(("look up one of 1000, two threads/" + name).c_str(), lookUp<Cache>)
        ->Threads(2)
        ->UseRealTime();
    addThreadedRow("replace one of 1000", name, replace<Cache>);
}

} // namespace

} // namespace vorlan::benchmarks

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    addRows<BareCache>("floor: map behind a queue of the engine");
    addRows<OurCache>("ours: Cacher");
    addRows<QtCache>("peer: QCache, QMutex");
    addRows<PocoCache>("peer: Poco::LRUCache");
    addRows<LockedCache>("note: map, std::shared_mutex");
    return runRows(argc, argv);
}
