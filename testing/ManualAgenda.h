// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a queue that is driven by hand still has to run, and the clock that says when.

#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/Work.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace vorlan::testing {

/// Work in the order in which it is due; safe from any thread.
class ManualAgenda {
public:
    enum class Kind { work, timerEvent };

    /// The present. Begins well after zero, so that there is a past to set deadlines in.
    DispatchTime now() const {
        const std::lock_guard lock(mutex_);
        return now_;
    }

    /// The present on the calendar, which moves with the clock.
    Date date() const {
        return Date(
            std::chrono::duration<double>(std::chrono::nanoseconds((now() - start).nanoseconds())).count());
    }

    /// Puts work down for a deadline, or for now when that is in the past.
    void add(DispatchTime deadline, Work work, Kind kind = Kind::work) {
        const std::lock_guard lock(mutex_);
        if (isClosed_) return;
        entries_.emplace(std::pair(std::max(deadline, now_), nextNumber_++), Entry{std::move(work), kind});
    }

    /// Drops all work, and what is still to come.
    void close() {
        Entries dropped; // Destroyed when the lock is released again.
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        entries_.swap(dropped);
    }

    /// Takes the first work that is due by `limit`, with the clock at its deadline; when there is none, sets
    /// the clock to `limit`.
    std::optional<Work> takeNext(DispatchTime limit) {
        const std::lock_guard lock(mutex_);
        const auto first = entries_.begin();
        const bool isDue = first != entries_.end() && first->first.first <= limit;
        now_ = std::max(now_, isDue ? first->first.first : limit);
        if (!isDue) return std::nullopt;
        return std::move(entries_.extract(first).mapped().work);
    }

    /// How many pieces of work wait, timers' events not counted.
    std::size_t workCount() const {
        const std::lock_guard lock(mutex_);
        return static_cast<std::size_t>(
            std::count_if(entries_.begin(), entries_.end(),
                          [](const auto& entry) { return entry.second.kind == Kind::work; }));
    }

private:
    struct Entry {
        Work work;
        Kind kind;
    };
    using Entries = std::map<std::pair<DispatchTime, std::uint64_t>, Entry>;

    static constexpr DispatchTime start = DispatchTime(0) + std::chrono::seconds(3600);

    mutable std::mutex mutex_;
    DispatchTime now_ = start;
    std::uint64_t nextNumber_ = 0;
    Entries entries_;
    bool isClosed_ = false;
};

} // namespace vorlan::testing
