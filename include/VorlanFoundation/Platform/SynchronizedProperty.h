// SPDX-License-Identifier: Apache-2.0
#pragma once

// A property that any thread may set while others read it.
//
//     monitor->whenReachable = [](Reachability&) { resume(); };
//     monitor->allowsCellularConnection = false;
//     if (monitor->allowsCellularConnection) ...

#include <mutex>
#include <utility>

namespace vorlan {

/// A value behind a lock of its own. Reading gives a copy, so that nothing is called while the lock is held.
///
/// Threads: safe from any thread.
template <class Value>
class SynchronizedProperty {
public:
    /// Begins with that value.
    SynchronizedProperty(
        Value value = Value()) // NOLINT(*-explicit-*): reads and writes like the value itself
        : value_(std::move(value)) {}
    SynchronizedProperty(const SynchronizedProperty&) = delete;
    SynchronizedProperty& operator=(const SynchronizedProperty&) = delete;

    /// Sets the value; the former one is destroyed outside the lock.
    SynchronizedProperty& operator=(Value value) {
        const std::lock_guard lock(mutex_);
        std::swap(value_, value);
        return *this;
    }

    /// A copy of the value.
    Value value() const {
        const std::lock_guard lock(mutex_);
        return value_;
    }

    /// A copy of the value.
    operator Value() const { return value(); } // NOLINT(*-explicit-*): as above

private:
    mutable std::mutex mutex_;
    Value value_;
};

} // namespace vorlan
