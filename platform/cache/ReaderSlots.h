// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lets many threads read something that few write, without a word that all readers write to.
//
// A reader announces the address of what it is about to read in a slot, which it shares with hardly anybody, and looks
// whether a writer is there. A writer says that it is there and waits until the address stands in no slot. (The idea
// is that of Dice and Kogan, "BRAVO: Biased Locking for Reader-Writer Locks", USENIX ATC 2019; used on a pointer's
// target, it is that of hazard pointers: Michael, IEEE TPDS 15(6), 2004.)

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <shared_mutex>
#include <thread>

namespace vorlan {

/// What a thread is reading, for as long as this lives.
///
/// Threads: one thread at a time: that which made it.
/// Errors:  converts to false where no slot was free: then the reader must take a lock.
class ReaderSlot {
public:
    /// Announces an address.
    explicit ReaderSlot(const void* address) noexcept : slot_(take(address)) {}
    ReaderSlot(const ReaderSlot&) = delete;
    ReaderSlot& operator=(const ReaderSlot&) = delete;
    ~ReaderSlot() { leave(); }

    /// Ends the announcement early.
    void leave() noexcept {
        if (slot_ != nullptr) slot_->store(nullptr, std::memory_order_release);
        slot_ = nullptr;
    }

    explicit operator bool() const noexcept { return slot_ != nullptr; }

    /// Returns once nobody reads what was announced under that address. Must be called when no more readers can come:
    /// each looks for that after it has announced itself.
    static void awaitReadersOf(const void* address) noexcept {
        for (auto& place : places)
            while (place.reading.load(std::memory_order_seq_cst) == address) std::this_thread::yield();
    }

private:
    using Slot = std::atomic<const void*>;
    // Each in a cache line of its own, and a neighbour that processors like to fetch along with it.
    struct alignas(128) Place {
        Slot reading = nullptr;
    };
    static constexpr std::size_t count = 32;
    static constexpr std::size_t mostTries = 4;
    static std::array<Place, count> places;

    // Identifiers of threads are addresses that lie some megabytes apart; the upper bits of the product mix all of theirs.
    static std::size_t placeOfThread() noexcept {
        const auto handle = std::bit_cast<std::uint64_t>(std::this_thread::get_id());
        return static_cast<std::size_t>((handle * 0x9E3779B97F4A7C15U) >> 59U);
    }

    static Slot* take(const void* address) noexcept {
        const std::size_t first = placeOfThread();
        for (std::size_t tried = 0; tried < mostTries; ++tried) {
            Slot& slot = places[(first + tried) % count].reading;
            const void* free = nullptr;
            if (slot.compare_exchange_strong(free, address, std::memory_order_seq_cst)) return &slot;
        }
        return nullptr;
    }

    Slot* slot_;
};

/// A lock for what is read far more often than written: any number of readers, or one writer.
///
/// Threads:     safe from any thread.
/// Re-entrancy: none, neither for readers nor for writers.
class ReadMostlyMutex {
public:
    /// Readers announce the lock's own address.
    ReadMostlyMutex() noexcept : ReadMostlyMutex(this) {}
    /// Readers announce this address, for example that of what is guarded.
    explicit ReadMostlyMutex(const void* announced) noexcept : announced_(announced) {}
    ReadMostlyMutex(const ReadMostlyMutex&) = delete;
    ReadMostlyMutex& operator=(const ReadMostlyMutex&) = delete;

    /// Whether a reader that has announced the address in a slot may go on; else it must take `Reader`.
    bool mayRead() const noexcept { return !isWriting_.load(std::memory_order_seq_cst); }

    /// Holds the lock for reading.
    ///
    /// Threads: one thread at a time: that which made it.
    class Reader {
    public:
        explicit Reader(ReadMostlyMutex& mutex)
            : mutex_(mutex), slot_(mutex.announced_), isFast_(slot_ && mutex.mayRead()) {
            if (isFast_) return;
            slot_.leave(); // who waits in here must not be waited for
            mutex_.slow_.lock_shared();
        }
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;
        ~Reader() {
            if (!isFast_) mutex_.slow_.unlock_shared();
        }

    private:
        ReadMostlyMutex& mutex_;
        ReaderSlot slot_;
        const bool isFast_;
    };

    /// Holds the lock for writing.
    void lock() {
        slow_.lock();
        isWriting_.store(true, std::memory_order_seq_cst);
        ReaderSlot::awaitReadersOf(announced_);
    }

    /// Lets it go.
    void unlock() {
        isWriting_.store(false, std::memory_order_release);
        slow_.unlock();
    }

private:
    const void* const announced_;
    std::shared_mutex slow_;
    std::atomic<bool> isWriting_ = false;
};

} // namespace vorlan
