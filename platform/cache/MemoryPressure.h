// SPDX-License-Identifier: Apache-2.0
#pragma once

// Has the caches of the process give memory back while the kernel is short of it.

#include "platform/dispatch/ReadSource.h"
#include "platform/files/Descriptor.h"

#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/TimerSource.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vorlan {

namespace detail {
class CacheContents;
}

/// Watches one of the kernel's pressure files from the first cache with an entry on. Each time that the kernel is short
/// of memory, every cache gives back half of its entries.
///
/// The kernel tells of 150 ms within 2 s in which something waited for memory. Where it does not let this process ask
/// for that, the file is read every five seconds while some cache has entries, and says whether more than a tenth of the
/// last ten seconds was lost. Where there is no such file, nothing happens.
///
/// Threads: safe from any thread. What caches drop is told on the queue.
/// Owns:    what it watches with; caches weakly.
/// Time:    the queue's clock; caches give back at most once a second.
/// Errors:  none. In a forked child nothing is watched: the engine's queues do not run there.
class MemoryPressure : public std::enable_shared_from_this<MemoryPressure> {
public:
    enum class Way {
        notYet,  ///< No cache had an entry.
        told,    ///< The kernel tells.
        looking, ///< The file is read from time to time.
        none,
    };

    /// That of the process.
    static MemoryPressure& shared();

    /// `queue` must run on the system's engine if the kernel tells of the file.
    MemoryPressure(std::filesystem::path file, const Queue& queue);
    MemoryPressure(const MemoryPressure&) = delete;
    MemoryPressure& operator=(const MemoryPressure&) = delete;
    ~MemoryPressure();

    /// Takes in a cache that has its first entry.
    void add(std::weak_ptr<detail::CacheContents> cache);

    /// What follows when the kernel is short of memory.
    void relieve();

    Way way() const;

    /// How many caches are known, those that are gone included until they are noticed.
    std::size_t cacheCount() const;

private:
    using Caches = std::vector<std::shared_ptr<detail::CacheContents>>;

    // These want the lock held.
    void watch();
    bool askToBeTold();
    void startLooking();
    Caches cachesWithEntries();

    void onTold(int nest);
    bool isEarly() const;
    void look();
    void end();

    const std::filesystem::path path_;
    const Queue queue_;
    mutable std::mutex mutex_; ///< Guards what follows.
    std::vector<std::weak_ptr<detail::CacheContents>> caches_;
    std::size_t roomUntilSweep_;
    std::optional<DispatchTime> lastRelief_;
    DispatchTime beginning_ = DispatchTime(0); ///< When the kernel was asked to tell.
    Way way_ = Way::notYet;
    Descriptor file_; ///< Open as long as the kernel tells.
    std::optional<ReadSource> source_;
    std::optional<TimerSource> timer_; ///< While there is something to look for.
};

} // namespace vorlan
