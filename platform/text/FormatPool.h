// SPDX-License-Identifier: Apache-2.0
#pragma once

// What only one thread at a time may use and what takes long to make, shared by many.

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace vorlan {

/// Lends copies of a model, one to each user at a time, and keeps a few for the next ones.
///
/// `Format` has a constant `clone()`, which any thread may call on the model, as none changes it.
///
/// Threads: safe from any thread, without a lock.
/// Owns:    the model and the copies that are not lent out.
template <class Format>
class FormatPool {
public:
    /// A copy while it is lent out. Ends before the pool does.
    class Loan {
    public:
        Loan(const FormatPool& pool, std::unique_ptr<Format> format)
            : pool_(&pool), format_(std::move(format)) {}
        Loan(const Loan&) = delete;
        Loan& operator=(const Loan&) = delete;
        ~Loan() { pool_->putBack(std::move(format_)); }

        Format& operator*() const { return *format_; }
        Format* operator->() const { return format_.get(); }

    private:
        const FormatPool* pool_;
        std::unique_ptr<Format> format_;
    };

    explicit FormatPool(std::unique_ptr<const Format> model) : model_(std::move(model)) {}
    FormatPool(const FormatPool&) = delete;
    FormatPool& operator=(const FormatPool&) = delete;
    ~FormatPool() {
        for (auto& idle : idle_) delete idle.load(std::memory_order_acquire);
    }

    Loan borrow() const {
        for (auto& idle : idle_)
            if (Format* format = idle.exchange(nullptr, std::memory_order_acq_rel))
                return Loan(*this, std::unique_ptr<Format>(format));
        return Loan(*this, model_->clone());
    }

private:
    void putBack(std::unique_ptr<Format> format) const {
        for (auto& idle : idle_) {
            Format* none = nullptr;
            if (!idle.compare_exchange_strong(none, format.get(), std::memory_order_acq_rel)) continue;
            static_cast<void>(format.release());
            return;
        }
    }

    static constexpr std::size_t capacity = 4;

    std::unique_ptr<const Format> model_;
    mutable std::array<std::atomic<Format*>, capacity> idle_{};
};

} // namespace vorlan
