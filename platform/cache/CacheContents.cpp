// SPDX-License-Identifier: Apache-2.0
#include "platform/cache/CacheContents.h"

#include "platform/cache/MemoryPressure.h"

#include <algorithm>
#include <mutex>

namespace vorlan::detail {

namespace {

// How many are given back under one lock, so that nobody has to wait until millions are.
constexpr std::size_t givenBackAtOnce = 256;

} // namespace

CacheContents::Object CacheContents::object(std::string_view key) const {
    const ReadMostlyMutex::Reader reader(mutex_);
    return find(key);
}

bool CacheContents::readAnnounced(std::string_view key, Object& object) const {
    if (!mutex_.mayRead()) return false;
    object = find(key);
    return true;
}

CacheContents::Object CacheContents::find(std::string_view key) const {
    const auto found = entries_.find(KeyView(key));
    if (found == entries_.end()) return nullptr;
    const Entry& entry = found->second;
    const std::uint64_t moment = momentOfUse();
    if (entry.lastUse.load(std::memory_order_relaxed) != moment)
        entry.lastUse.store(moment, std::memory_order_relaxed);
    return entry.object;
}

// Each use is a moment of its own where there are limits. Without any, all between two changes are one, so that readers
// need not write to one word.
std::uint64_t CacheContents::momentOfUse() const {
    const bool isLimited = countLimit_ != 0 || totalCostLimit_ != 0;
    if (!isLimited) return moment_.load(std::memory_order_relaxed);
    return moment_.fetch_add(1, std::memory_order_relaxed) + 1;
}

void CacheContents::setObject(std::string_view key, Object object, std::size_t cost) {
    if (!object) return removeObject(key);
    const KeyView view(key);
    Object former; // released after the lock
    Evicted evicted;
    bool isFirst = false;
    {
        const std::lock_guard lock(mutex_);
        auto entry = entries_.find(view);
        if (totalCostLimit_ != 0 && cost > totalCostLimit_) {
            if (entry != entries_.end()) former = take(entry);
            evicted.emplace_back(key, std::move(object));
        } else {
            if (entry == entries_.end()) entry = add(view);
            former = std::exchange(entry->second.object, std::move(object));
            totalCost_ += cost - std::exchange(entry->second.cost, cost);
            entry->second.lastUse.store(nextMoment(), std::memory_order_relaxed);
            evicted = evictToLimits();
            isFirst = !std::exchange(isWatched_, true);
        }
    }
    if (isFirst) comeUnderWatch();
    tell(evicted);
}

// A new entry stands where it belongs at once: behind all that were used.
CacheContents::Entries::iterator CacheContents::add(const KeyView& key) {
    const auto entry = entries_.try_emplace(Key(key)).first;
    const std::uint64_t next = moment_.load(std::memory_order_relaxed) + 1;
    entry->second.key = &entry->first;
    entry->second.place = order_.emplace_hint(order_.end(), next, &entry->second);
    return entry;
}

// A moment that is later than all before. As nobody reads meanwhile, it takes no atomic addition.
std::uint64_t CacheContents::nextMoment() {
    const std::uint64_t moment = moment_.load(std::memory_order_relaxed) + 1;
    moment_.store(moment, std::memory_order_relaxed);
    return moment;
}

// Gives an entry its place in the order of use.
void CacheContents::move(Entry& entry, std::uint64_t moment) {
    auto node = order_.extract(entry.place);
    node.key() = moment;
    entry.place = order_.insert(order_.end(), std::move(node));
}

// Removes an entry; its object is left to the caller.
CacheContents::Object CacheContents::take(Entries::iterator entry) {
    Object object = std::move(entry->second.object);
    order_.erase(entry->second.place);
    totalCost_ -= entry->second.cost;
    entries_.erase(entry);
    return object;
}

void CacheContents::removeObject(std::string_view key) {
    Object former; // released after the lock
    const std::lock_guard lock(mutex_);
    const auto entry = entries_.find(KeyView(key));
    if (entry != entries_.end()) former = take(entry);
}

void CacheContents::removeAllObjects() {
    Entries former; // released after the lock
    const std::lock_guard lock(mutex_);
    std::swap(entries_, former);
    order_.clear();
    totalCost_ = 0;
}

std::size_t CacheContents::count() const {
    const ReadMostlyMutex::Reader reader(mutex_);
    return entries_.size();
}

std::size_t CacheContents::totalCost() const {
    const ReadMostlyMutex::Reader reader(mutex_);
    return totalCost_;
}

std::size_t CacheContents::countLimit() const {
    const ReadMostlyMutex::Reader reader(mutex_);
    return countLimit_;
}

std::size_t CacheContents::totalCostLimit() const {
    const ReadMostlyMutex::Reader reader(mutex_);
    return totalCostLimit_;
}

void CacheContents::setCountLimit(std::size_t limit) {
    Evicted evicted;
    {
        const std::lock_guard lock(mutex_);
        countLimit_ = limit;
        evicted = evictToLimits();
    }
    tell(evicted);
}

void CacheContents::setTotalCostLimit(std::size_t limit) {
    Evicted evicted;
    {
        const std::lock_guard lock(mutex_);
        totalCostLimit_ = limit;
        evicted = evictToLimits();
    }
    tell(evicted);
}

void CacheContents::setEvictionHandler(EvictionHandler handler) {
    auto made = handler ? std::make_shared<const EvictionHandler>(std::move(handler)) : nullptr;
    const std::lock_guard lock(mutex_); // the former one is released after it
    std::swap(handler_, made);
}

void CacheContents::giveBack(std::size_t count) {
    Evicted evicted;
    {
        const std::lock_guard lock(mutex_);
        while (evicted.size() < count && !entries_.empty()) evictFirst(evicted);
    }
    tell(evicted);
}

void CacheContents::giveBackHalf() {
    for (std::size_t rest = (count() + 1) / 2; rest > 0;) {
        const std::size_t part = std::min(rest, givenBackAtOnce);
        giveBack(part);
        rest -= part;
    }
}

bool CacheContents::leaveWhenEmpty() {
    const std::lock_guard lock(mutex_);
    if (!entries_.empty()) return false;
    isWatched_ = false;
    return true;
}

void CacheContents::comeUnderWatch() {
    (pressure_ != nullptr ? *pressure_ : MemoryPressure::shared()).add(weak_from_this());
}

void CacheContents::awaitReaders() const {
    const std::lock_guard lock(mutex_);
}

bool CacheContents::isOverLimit() const {
    return (countLimit_ != 0 && entries_.size() > countLimit_) ||
           (totalCostLimit_ != 0 && totalCost_ > totalCostLimit_);
}

CacheContents::Evicted CacheContents::evictToLimits() {
    Evicted evicted;
    while (isOverLimit()) evictFirst(evicted);
    return evicted;
}

void CacheContents::evictFirst(Evicted& evicted) {
    for (;;) {
        const auto first = order_.begin();
        Entry& entry = *first->second;
        const std::uint64_t lastUse = entry.lastUse.load(std::memory_order_relaxed);
        if (lastUse == first->first) break;
        move(entry, lastUse); // it was used since it was put here
    }
    const auto entry = entries_.find(*order_.begin()->second->key);
    evicted.emplace_back(entry->first.text, nullptr);
    evicted.back().second = take(entry);
}

void CacheContents::tell(const Evicted& evicted) const {
    if (evicted.empty()) return;
    std::shared_ptr<const EvictionHandler> handler;
    {
        const ReadMostlyMutex::Reader reader(mutex_);
        handler = handler_;
    }
    if (!handler) return;
    for (const auto& [key, object] : evicted) (*handler)(key, object);
}

} // namespace vorlan::detail
