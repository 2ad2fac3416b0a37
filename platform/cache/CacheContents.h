// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/cache/ReaderSlots.h"

#include <VorlanFoundation/Platform/NSCache.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vorlan {
class MemoryPressure;
}

namespace vorlan::detail {

/// The entries of a cache, by key and by when they were used.
///
/// To use an entry is to note the moment in it. Where it stands in the order of use is corrected when it comes up for
/// eviction, so that looking up changes nothing that others read, and setting anew costs no search in the order.
///
/// Threads: safe from any thread.
class CacheContents final : public CacheStore, public std::enable_shared_from_this<CacheContents> {
public:
    /// Made shared. It gives memory back with the caches of the whole process, or with those of `pressure`, which
    /// outlives it.
    explicit CacheContents(MemoryPressure* pressure = nullptr) noexcept : pressure_(pressure) {}

    /// Gives back half of its entries, or the only one; others get their turn in between.
    void giveBackHalf();

    /// Whether it has no entries; then it asks to be watched again with the next one.
    bool leaveWhenEmpty();

    /// Returns when nobody looks anything up who began before.
    void awaitReaders() const;

    /// Looks a key up for a reader that has announced the address of this; false when it may not read.
    bool readAnnounced(std::string_view key, Object& object) const;

    Object object(std::string_view key) const override;
    void setObject(std::string_view key, Object object, std::size_t cost) override;
    void removeObject(std::string_view key) override;
    void removeAllObjects() override;
    std::size_t count() const override;
    std::size_t totalCost() const override;
    std::size_t countLimit() const override;
    std::size_t totalCostLimit() const override;
    void setCountLimit(std::size_t limit) override;
    void setTotalCostLimit(std::size_t limit) override;
    void setEvictionHandler(EvictionHandler handler) override;
    void giveBack(std::size_t count) override;

private:
    // Keys carry their hash: the library's table would work it out again for each neighbour that a search passes.
    struct KeyView {
        explicit KeyView(std::string_view key) noexcept
            : text(key), hash(std::hash<std::string_view>()(key)) {}
        std::string_view text;
        std::size_t hash;
    };
    struct Key {
        explicit Key(const KeyView& view) : text(view.text), hash(view.hash) {}
        std::string text;
        std::size_t hash;
    };
    struct KeyHash {
        using is_transparent = void;
        std::size_t operator()(const auto& key) const noexcept { return key.hash; }
    };
    struct KeyEqual {
        using is_transparent = void;
        bool operator()(const auto& a, const auto& b) const noexcept {
            return a.hash == b.hash && a.text == b.text;
        }
    };
    struct Entry;
    using Entries = std::unordered_map<Key, Entry, KeyHash, KeyEqual>;
    using Order = std::multimap<std::uint64_t, Entry*>; // by the moment of use that was known last
    struct Entry {
        Object object;
        std::size_t cost = 0;
        const Key* key = nullptr; // the map's
        Order::iterator place{};
        mutable std::atomic<std::uint64_t> lastUse = 0;
    };
    using Evicted = std::vector<std::pair<std::string, Object>>;

    // These want the lock held.
    Object find(std::string_view key) const;
    std::uint64_t momentOfUse() const;
    Entries::iterator add(const KeyView& key);
    std::uint64_t nextMoment();
    void move(Entry& entry, std::uint64_t moment);
    Object take(Entries::iterator entry);
    bool isOverLimit() const;
    void evictFirst(Evicted& evicted);
    Evicted evictToLimits();

    // Without it.
    void comeUnderWatch();
    void tell(const Evicted& evicted) const;

    MemoryPressure* const pressure_;      // null for the process's
    mutable ReadMostlyMutex mutex_{this}; // guards what follows
    Entries entries_;
    Order order_;
    mutable std::atomic<std::uint64_t> moment_ = 0;
    std::size_t totalCost_ = 0;
    std::size_t countLimit_ = 0;
    std::size_t totalCostLimit_ = 0;
    bool isWatched_ = false; // for memory pressure
    std::shared_ptr<const EvictionHandler> handler_;
};

} // namespace vorlan::detail
