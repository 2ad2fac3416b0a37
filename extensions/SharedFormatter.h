// SPDX-License-Identifier: Apache-2.0
#pragma once

// A formatter that is made once, kept for all, and can be replaced.

#include <mutex>
#include <optional>
#include <utility>

namespace vorlan {

/// The place of one formatter.
///
/// Threads: safe from any thread; those that come while it is made wait for it, so that all get the same one.
/// Owns:    the formatter that it holds, until another takes its place.
template <class Formatter>
class SharedFormatter {
public:
    /// What makes it may use other places, but not this one.
    explicit SharedFormatter(Formatter (*make)()) noexcept : make_(make) {}

    Formatter get() {
        const std::lock_guard lock(mutex_);
        return made();
    }

    /// Has the first one made even so, as that may change others. The former one is let go outside of the lock.
    void set(Formatter formatter) {
        const std::lock_guard lock(mutex_);
        std::swap(made(), formatter);
    }

private:
    Formatter& made() {
        if (!formatter_) formatter_.emplace(make_());
        return *formatter_;
    }

    Formatter (*make_)();
    std::mutex mutex_;
    std::optional<Formatter> formatter_;
};

} // namespace vorlan
