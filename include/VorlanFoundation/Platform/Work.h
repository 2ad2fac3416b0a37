// SPDX-License-Identifier: Apache-2.0
#pragma once

// A piece of work on its way to where it will run.
//
// Every interface that keeps a callable beyond the call takes a `Work`, so any callable that takes nothing
// can be passed, also one that can only be moved:
//
//     inBackground([file = std::move(file)] { file->flush(); });

#include <concepts>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace vorlan {

namespace detail {

/// What a `Work` allocates: the callable behind two pointers. Queues pass its address through their engine.
struct WorkNode {
    enum class Action { runAndDestroy, destroy };

    void (*perform)(WorkNode*, Action);
    void* queue = nullptr; ///< Free for the queue that the work is on.
};

template <class Callable>
struct CallableNode : WorkNode {
    template <class Source>
    explicit CallableNode(Source&& source)
        : WorkNode{&CallableNode::act}, callable(std::forward<Source>(source)) {}

    static void act(WorkNode* node, Action action) {
        const std::unique_ptr<CallableNode> self(static_cast<CallableNode*>(node));
        if (action == Action::runAndDestroy) std::invoke(std::move(self->callable));
    }

    Callable callable;
};

} // namespace detail

/// A callable that takes nothing and is run at most once; moved, never copied. What it returns is dropped.
///
/// The callable and what it captures are destroyed on the thread that ran it, right after it ran, or on the
/// thread that drops a `Work` that never ran.
///
/// Threads: one thread at a time.
/// Owns:    the callable, in one allocation.
/// Errors:  an exception of the callable leaves `operator()`.
class Work {
public:
    /// Takes over (or copies) a callable.
    template <class Callable>
        requires(!std::same_as<std::remove_cvref_t<Callable>, Work> && std::invocable<std::decay_t<Callable>>)
    Work(Callable&& callable) // NOLINT(*-explicit-*): a lambda is work as it stands
        : node_(new detail::CallableNode<std::decay_t<Callable>>(std::forward<Callable>(callable))) {}

    /// Takes back what `release()` gave away.
    explicit Work(detail::WorkNode* node) noexcept : node_(node) {}

    Work(Work&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}

    Work& operator=(Work&& other) noexcept {
        Work(std::move(other)).swap(*this);
        return *this;
    }

    ~Work() {
        if (node_ != nullptr) node_->perform(node_, detail::WorkNode::Action::destroy);
    }

    /// Whether there is still something to run: true until it was run, moved from or released.
    explicit operator bool() const noexcept { return node_ != nullptr; }

    /// Runs the callable and destroys it, also when it throws. A second call does nothing.
    void operator()() {
        if (auto* node = release()) node->perform(node, detail::WorkNode::Action::runAndDestroy);
    }

    /// Gives the callable away as one pointer, for engines that carry a `void*`.
    detail::WorkNode* release() noexcept { return std::exchange(node_, nullptr); }

    /// Exchanges two works.
    void swap(Work& other) noexcept { std::swap(node_, other.node_); }

private:
    detail::WorkNode* node_;
};

} // namespace vorlan
