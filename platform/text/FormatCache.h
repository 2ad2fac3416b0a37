// SPDX-License-Identifier: Apache-2.0
#pragma once

// What takes long to make and never changes, kept for the next who asks for the same.

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

namespace vorlan {

/// Values by all that defines them. A program that asks for ever different ones does not grow: all are forgotten when
/// there are too many. Who has one keeps it.
///
/// Threads: safe from any thread. Values are made outside the lock, so that two threads may make the same one; both get
///          the first.
/// Owns:    its values, shared with those that asked for them.
template <class Value>
class FormatCache {
public:
    using Pointer = std::shared_ptr<const Value>;

    /// The value of a key, made by `make` when there is none. What is made as null is not kept.
    template <class Make>
    Pointer value(const std::string& key, Make&& make) {
        if (auto found = find(key)) return found;
        Pointer made = std::forward<Make>(make)();
        if (!made) return nullptr;
        std::unordered_map<std::string, Pointer> forgotten; // let go outside the lock
        const std::lock_guard lock(mutex_);
        if (values_.size() >= capacity) forgotten.swap(values_);
        return values_.emplace(key, std::move(made)).first->second;
    }

private:
    Pointer find(const std::string& key) {
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        return found != values_.end() ? found->second : nullptr;
    }

    static constexpr std::size_t capacity = 256;

    std::mutex mutex_;
    std::unordered_map<std::string, Pointer> values_;
};

} // namespace vorlan
