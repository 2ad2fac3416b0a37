// SPDX-License-Identifier: Apache-2.0
#pragma once

// Finds positions in a list by address.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vorlan::detail {

/// A map from addresses to positions: open addressing with linear probing (Knuth, TAOCP 3, 6.4, algorithms L
/// and R).
///
/// Observers come and go in pairs of an insertion and a removal; a node allocated for each would cost more
/// than all the rest of it.
///
/// Threads: one thread at a time.
class AddressIndex {
public:
    /// Puts down a position for an address that has none; returns whether it had none.
    bool insert(const void* address, std::size_t position) {
        if (slots_.size() < 2 * (count_ + 1)) grow();
        auto& slot = slots_[find(address)];
        if (slot.address != nullptr) return false;
        slot = {address, position};
        ++count_;
        return true;
    }

    /// Whether there is a position for an address.
    bool contains(const void* address) const {
        return !slots_.empty() && slots_[find(address)].address != nullptr;
    }

    /// Changes the position of an address that has one.
    void update(const void* address, std::size_t position) { slots_[find(address)].position = position; }

    /// Forgets an address; returns its position, or `none`.
    std::size_t remove(const void* address) {
        if (slots_.empty()) return none;
        auto hole = find(address);
        if (slots_[hole].address == nullptr) return none;
        const auto position = slots_[hole].position;
        // Every later entry of the run that could not be found across the hole moves into it.
        for (auto next = following(hole); slots_[next].address != nullptr; next = following(next)) {
            const auto home = homeOf(slots_[next].address);
            if (distance(home, next) < distance(hole, next)) continue;
            slots_[hole] = slots_[next];
            hole = next;
        }
        slots_[hole] = {};
        --count_;
        return position;
    }

    static constexpr std::size_t none = static_cast<std::size_t>(-1);

private:
    struct Slot {
        const void* address = nullptr;
        std::size_t position = 0;
    };

    std::size_t mask() const { return slots_.size() - 1; }
    std::size_t following(std::size_t slot) const { return (slot + 1) & mask(); }
    std::size_t distance(std::size_t from, std::size_t to) const { return (to - from) & mask(); }

    // The upper bits of the product with 2^64 divided by the golden ratio (Fibonacci hashing, loc. cit.).
    std::size_t homeOf(const void* address) const {
        const auto product = reinterpret_cast<std::uintptr_t>(address) * std::uint64_t{0x9E3779B97F4A7C15};
        return static_cast<std::size_t>(product >> 32) & mask();
    }

    // The slot of an address, or the free one where it would go.
    std::size_t find(const void* address) const {
        auto slot = homeOf(address);
        while (slots_[slot].address != nullptr && slots_[slot].address != address) slot = following(slot);
        return slot;
    }

    void grow() {
        std::vector<Slot> former(slots_.empty() ? 4 : 2 * slots_.size());
        former.swap(slots_);
        for (const auto& slot : former)
            if (slot.address != nullptr) slots_[find(slot.address)] = slot;
    }

    std::vector<Slot> slots_; ///< Empty, or a power of two of them, at most half of them taken.
    std::size_t count_ = 0;
};

} // namespace vorlan::detail
