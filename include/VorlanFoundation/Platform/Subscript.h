// SPDX-License-Identifier: Apache-2.0
#pragma once

// What `store[key]` is: something to read as an optional, and to assign a value or std::nullopt.

#include <concepts>
#include <optional>
#include <utility>

namespace vorlan {

/// An entry of a store that is read and written through `operator[]`.
///
///     std::optional<double> volume = defaults["volume"];
///     const auto shown = defaults["volume"].valueOr(0.5);
///     defaults["volume"] = 0.8;
///     defaults["volume"] = std::nullopt;      // removed
///
/// `Entry` does the work: `read<T>()` returns an optional, `write(value)` sets it, `remove()` removes it.
///
/// Threads: as the store's operations. Every read and assignment is one operation on the store.
/// Owns:    nothing; to be used within the expression, while the store is there.
template <class Entry>
class Subscript {
public:
    /// Stands for an entry.
    explicit Subscript(Entry entry) : entry_(std::move(entry)) {}
    /// Assigning one entry to another would have to guess a type: read it as one first.
    Subscript(const Subscript&) = delete;
    Subscript& operator=(const Subscript&) = delete;
    ~Subscript() = default;

    /// The entry's value as a T; absent when it is missing or of another type.
    template <class T>
    operator std::optional<T>() const { // NOLINT(*-explicit-*): reads as the optional
        return entry_.template read<T>();
    }

    /// The same, for where the type is not given by what it is assigned to.
    template <class T>
    std::optional<T> as() const {
        return entry_.template read<T>();
    }

    /// The entry's value; `fallback` when it is missing or of another type.
    template <class T>
    T valueOr(T fallback) const {
        return entry_.template read<T>().value_or(std::move(fallback));
    }

    /// Sets the entry.
    template <class T>
        requires requires(Entry entry, T&& value) { entry.write(std::forward<T>(value)); }
    const Subscript& operator=(T&& value) const { // NOLINT: what is assigned to is in the store
        entry_.write(std::forward<T>(value));
        return *this;
    }

    /// Sets the entry, or removes it when `value` is absent.
    template <class T>
    const Subscript& operator=(std::optional<T> value) const { // NOLINT: as above
        if (value) {
            entry_.write(*std::move(value));
        } else {
            entry_.remove();
        }
        return *this;
    }

    /// Removes the entry.
    const Subscript& operator=(std::nullopt_t) const { // NOLINT: as above
        entry_.remove();
        return *this;
    }

private:
    Entry entry_;
};

} // namespace vorlan
