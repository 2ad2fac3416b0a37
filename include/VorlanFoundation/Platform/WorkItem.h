// SPDX-License-Identifier: Apache-2.0
#pragma once

// Work that can be called off after it was submitted.
//
//     WorkItem reminder([] { remind(); });
//     queue.asyncAfter(2s, reminder);
//     reminder.cancel();                      // nothing will be run

#include <atomic>
#include <concepts>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace vorlan {

/// A cancellable unit of work; copies are handles of the same unit.
///
/// It can be submitted wherever `Work` is taken, also several times, and then runs once for each.
///
/// Threads: safe from any thread.
/// Owns:    the callable, shared by all copies, those held by queues included, and kept until the last is
///          gone.
/// Time:    cancelling before a run starts keeps it from running; a run that has started is not interrupted.
class WorkItem {
public:
    /// Makes a unit of work from a callable that takes nothing.
    template <class Callable>
        requires(!std::same_as<std::remove_cvref_t<Callable>, WorkItem> &&
                 std::invocable<std::decay_t<Callable>&>)
    explicit WorkItem(Callable&& callable)
        : state_(std::make_shared<CallableState<std::decay_t<Callable>>>(std::forward<Callable>(callable))) {}

    /// Keeps every run that has not started from running. Cancelling again does nothing.
    void cancel() const noexcept { state_->cancelled.store(true, std::memory_order_release); }

    /// Whether `cancel()` was called.
    bool isCancelled() const noexcept { return state_->cancelled.load(std::memory_order_acquire); }

    /// Runs the work on the calling thread, unless it was cancelled.
    void operator()() const {
        if (!isCancelled()) state_->run();
    }

private:
    struct State {
        State() = default;
        State(const State&) = delete;
        State& operator=(const State&) = delete;
        virtual ~State() = default;
        virtual void run() = 0;

        std::atomic<bool> cancelled = false;
    };

    template <class Callable>
    struct CallableState final : State {
        template <class Source>
        explicit CallableState(Source&& source) : callable(std::forward<Source>(source)) {}
        void run() override { std::invoke(callable); }

        Callable callable;
    };

    std::shared_ptr<State> state_;
};

} // namespace vorlan
