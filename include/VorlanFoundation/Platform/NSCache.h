// SPDX-License-Identifier: Apache-2.0
#pragma once

// Objects by their keys, kept as long as there is room for them.
//
//     NSCache<Image> images;
//     images.setTotalCostLimit(64 * 1024 * 1024);
//     images.setObject("cover", cover, cover->byteCount());
//     if (const auto image = images.object("cover")) draw(*image);

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/SynchronizedProperty.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace vorlan {

namespace detail {

/// A cache of objects of whatever type: what stands behind every `NSCache`.
class VORLAN_EXPORT CacheStore {
public:
    using Object = std::shared_ptr<void>;
    using EvictionHandler = std::function<void(const std::string& key, const Object& object)>;

    /// The only kind that there is.
    static std::shared_ptr<CacheStore> make();

    CacheStore(const CacheStore&) = delete;
    CacheStore& operator=(const CacheStore&) = delete;
    virtual ~CacheStore();

    virtual Object object(std::string_view key) const = 0;
    virtual void setObject(std::string_view key, Object object, std::size_t cost) = 0;
    virtual void removeObject(std::string_view key) = 0;
    virtual void removeAllObjects() = 0;
    virtual std::size_t count() const = 0;
    virtual std::size_t totalCost() const = 0;
    virtual std::size_t countLimit() const = 0;
    virtual std::size_t totalCostLimit() const = 0;
    virtual void setCountLimit(std::size_t limit) = 0;
    virtual void setTotalCostLimit(std::size_t limit) = 0;
    virtual void setEvictionHandler(EvictionHandler handler) = 0;

    /// Evicts so many, those first that were not used for longest.
    virtual void giveBack(std::size_t count) = 0;

private:
    friend class CacheContents;

    CacheStore() = default;
};

/// An object as a store keeps it: without its type, and without its constness, which its readers know.
template <class Object>
CacheStore::Object erased(const std::shared_ptr<Object>& object) {
    return std::const_pointer_cast<std::remove_cv_t<Object>>(object);
}

} // namespace detail

/// Objects by text keys, with limits if wanted; those that were not used for longest go first.
///
/// To use an object is to set it or to look it up. An entry may vanish at any time, so what is looked up may be missing
/// though nobody removed it: while the kernel is short of memory, every cache of the process gives back half of its
/// entries at a time, those first that were not used for longest.
///
/// Threads:     safe from any thread. Readers do not wait for each other.
/// Owns:        its objects, shared with whoever looks them up. Objects that leave the cache are released outside of its
///              lock, by the thread that made them leave. The first entry of the process's first cache has the kernel
///              watched for the rest of the process: two descriptors, or a timer while there are entries; no thread.
/// Re-entrancy: the eviction handler, and destructors of objects, may use the cache.
/// Time:        looking up takes the same time however many there are; setting grows with their logarithm on average. What
///              evicts first puts in order what was looked up since the last time: once, that may be all there is. For
///              want of memory entries go at most once a second. The kernel tells at most every two seconds, after tasks
///              of the process's control group (of the machine, where groups are not measured) waited 150 ms for memory;
///              where it tells ordinary users nothing it is asked every five seconds.
/// Errors:      none. On a machine whose kernel does not measure memory pressure, and in a forked child, none is noticed.
template <class Object>
class NSCache {
public:
    /// What is called with each entry that the cache drops by itself.
    using EvictionHandler =
        std::function<void(const std::string& key, const std::shared_ptr<Object>& object)>;

    /// A cache without limits.
    NSCache() = default;

    /// A name for logs; empty at first.
    SynchronizedProperty<std::string> name;

    /// The object of a key; null when there is none.
    std::shared_ptr<Object> object(std::string_view key) const {
        return std::static_pointer_cast<Object>(store_->object(key));
    }

    /// Sets the object of a key, in place of the one before. A null object removes it.
    ///
    /// @param cost What it counts for in the total cost, in a unit of the host's. An object that costs more than the
    ///             limit by itself is not kept, and counts as evicted.
    void setObject(std::string_view key, const std::shared_ptr<Object>& object, std::size_t cost = 0) {
        store_->setObject(key, detail::erased(object), cost);
    }

    /// Removes the object of a key.
    void removeObject(std::string_view key) { store_->removeObject(key); }

    /// Removes all objects.
    void removeAllObjects() { store_->removeAllObjects(); }

    /// How many objects there are.
    std::size_t count() const { return store_->count(); }

    /// What they cost together.
    std::size_t totalCost() const { return store_->totalCost(); }

    /// The most objects that are kept; 0 for any number.
    std::size_t countLimit() const { return store_->countLimit(); }

    /// The most that objects may cost together; 0 for any cost.
    std::size_t totalCostLimit() const { return store_->totalCostLimit(); }

    /// Sets the limit, at once.
    void setCountLimit(std::size_t limit) { store_->setCountLimit(limit); }

    /// Sets the limit, at once.
    void setTotalCostLimit(std::size_t limit) { store_->setTotalCostLimit(limit); }

    /// Sets what is called with each entry that the cache drops by itself, after it was dropped, on the thread that
    /// made it necessary, or for want of memory on a background queue; null for nothing.
    void setEvictionHandler(EvictionHandler handler) {
        if (!handler) return store_->setEvictionHandler(nullptr);
        store_->setEvictionHandler(
            [handler = std::move(handler)](const std::string& key, const detail::CacheStore::Object& object) {
                handler(key, std::static_pointer_cast<Object>(object));
            });
    }

    /// What is inside.
    const std::shared_ptr<detail::CacheStore>& store() const noexcept { return store_; }

private:
    const std::shared_ptr<detail::CacheStore> store_ = detail::CacheStore::make();
};

} // namespace vorlan
