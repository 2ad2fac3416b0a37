// SPDX-License-Identifier: Apache-2.0
#pragma once

// The objects of a weak set that were alive at one moment, held until the snapshot is dropped.

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace vorlan::detail {

/// A list of strong references whose greatest length is known before it is filled; short ones need no heap.
///
/// Walking the observers of an object is the hottest path of the library, and most objects have a few.
template <class T>
class StrongSnapshot {
public:
    StrongSnapshot() noexcept {} // NOLINT(*-use-equals-default): defaulted, it would clear the slots
    StrongSnapshot(const StrongSnapshot&) = delete;
    StrongSnapshot& operator=(const StrongSnapshot&) = delete;
    ~StrongSnapshot() { std::destroy(begin(), end()); }

    /// Makes room, once, before the first reference is appended.
    void reserve(std::size_t capacity) {
        if (capacity <= inlineCapacity) return;
        heap_ = std::make_unique_for_overwrite<Slot[]>(capacity);
        slots_ = heap_.get();
    }

    /// Appends a reference; there must be room.
    void append(std::shared_ptr<T>&& object) noexcept {
        ::new (static_cast<void*>(slots_[count_].bytes)) std::shared_ptr<T>(std::move(object));
        ++count_;
    }

    std::size_t size() const noexcept { return count_; }
    std::shared_ptr<T>* begin() noexcept {
        return count_ == 0 ? nullptr : std::launder(reinterpret_cast<std::shared_ptr<T>*>(slots_));
    }
    std::shared_ptr<T>* end() noexcept { return begin() + count_; }

private:
    struct Slot {
        // Left without initialiser: the references are made in place, one by one.
        alignas(std::shared_ptr<T>) std::byte bytes[sizeof(std::shared_ptr<T>)]; // NOLINT(*-avoid-c-arrays)
    };
    static constexpr std::size_t inlineCapacity = 16;

    Slot inline_[inlineCapacity];  // NOLINT(*-avoid-c-arrays)
    std::unique_ptr<Slot[]> heap_; // NOLINT(*-avoid-c-arrays)
    Slot* slots_ = inline_;
    std::size_t count_ = 0;
};

} // namespace vorlan::detail
