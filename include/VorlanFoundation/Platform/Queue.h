// SPDX-License-Identifier: Apache-2.0
#pragma once

// Dispatch queues: where and in which order work runs.
//
//     Queue io("com.example.io", Queue::concurrent, QualityOfService::utility);
//     io.async([] { write(); });
//     io.barrierAsync([] { compact(); });        // alone: after the write, before what is submitted next
//     int n = io.sync([] { return count(); });   // waits for its turn; exceptions reach the caller

#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/QueueProvider.h>
#include <VorlanFoundation/Platform/Work.h>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace vorlan {

/// A queue of work; copies are handles of the same queue.
///
/// Blocks of a serial queue run one after the other in the order of submission. Blocks of a concurrent queue
/// start in that order and may overlap, except barriers, which run alone. A queue made with a target runs its
/// blocks as blocks of the target. Global queues ignore barriers: they are shared by the whole process.
///
/// Global queues add about one thread a second when their blocks wait, so blocks should not wait for long.
///
/// Threads:    safe from any thread.
/// Owns:       submitted work until it ran, also after the last handle is gone; handles do not end a queue
///             early.
/// Re-entrancy: a block may submit to its own queue asynchronously; waiting for its own turn would last for
///              ever and stops the process instead.
/// Time:       deadlines are on `now()`, the machine's monotonic clock unless the provider has one of its
///             own; work is never early, and later when the machine is busy.
/// Errors:     an exception of synchronous work reaches the caller; one that leaves asynchronous work stops
///             the process with its text. After `fork` without `exec` global queues never run again in the
///             child.
class VORLAN_EXPORT Queue {
public:
    /// Whether blocks may overlap.
    enum Attribute { serial, concurrent };

    /// Makes a queue of its own.
    ///
    /// @param label     A name for debuggers and messages, best in reverse-DNS form; need not be unique.
    /// @param attribute `serial` or `concurrent`.
    /// @param qualityOfService     The pool that it draws its threads from; `unspecified` leaves the choice
    ///                             to the engine.
    /// @param autoreleaseFrequency Kept and reported, without effect.
    explicit Queue(std::string_view label, Attribute attribute = serial,
                   QualityOfService qualityOfService = QualityOfService::unspecified,
                   AutoreleaseFrequency autoreleaseFrequency = AutoreleaseFrequency::inherit);

    /// Makes a queue whose blocks run as blocks of `target`, which is kept alive.
    ///
    /// The target must run on the system's engine (any queue but one of the test kit); else the process
    /// stops.
    Queue(std::string_view label, Attribute attribute, QualityOfService qualityOfService,
          AutoreleaseFrequency autoreleaseFrequency, const Queue& target);

    /// A queue over a provider, which is kept alive; it must not be null.
    explicit Queue(std::shared_ptr<QueueProvider> provider) noexcept : provider_(std::move(provider)) {}

    /// The serial queue of the process's main thread.
    ///
    /// It is served by the default GLib main context (GTK, Qt and `RunLoop::main().run()` turn it), or
    /// through `RunLoop::drainMainQueue()` in a host with another loop.
    static const Queue& main();

    /// The concurrent queue of a quality of service, shared by the whole process.
    static const Queue& global(QualityOfService qualityOfService = QualityOfService::default_);

    /// The queue's name.
    std::string label() const { return provider_->label(); }

    /// The quality of service that it was made with.
    QualityOfService qualityOfService() const { return provider_->qualityOfService(); }

    /// The autorelease behaviour that it was made with.
    AutoreleaseFrequency autoreleaseFrequency() const { return provider_->autoreleaseFrequency(); }

    /// The present, by this queue's clock.
    DispatchTime now() const { return provider_->now(); }

    /// The present on the calendar: the machine's, or that of the provider's own clock.
    Date date() const { return provider_->date(); }

    /// Whether the calling code runs in a block of this queue, or of one that targets it.
    bool isCurrent() const { return provider_->isCurrent(); }

    /// Submits work and returns at once.
    void async(Work work) const { provider_->async(std::move(work), BlockKind::ordinary); }

    /// Submits work that runs alone on a concurrent queue, and returns at once.
    void barrierAsync(Work work) const { provider_->async(std::move(work), BlockKind::barrier); }

    /// Submits work once `interval` has gone by; in the past means now, `never()` drops the work at once.
    void asyncAfter(DispatchTimeInterval interval, Work work) const {
        asyncAfter(now() + interval, std::move(work));
    }

    /// Submits work once `deadline` has come; `DispatchTime::distantFuture()` drops it at once.
    void asyncAfter(DispatchTime deadline, Work work) const {
        provider_->asyncAfter(deadline, std::move(work), BlockKind::ordinary);
    }

    /// Submits work once `interval` has gone by, to run alone on a concurrent queue.
    void barrierAsyncAfter(DispatchTimeInterval interval, Work work) const {
        provider_->asyncAfter(now() + interval, std::move(work), BlockKind::barrier);
    }

    /// Runs `block` in its turn, usually on the calling thread, and returns what it returned.
    ///
    /// The caller is blocked meanwhile. Nothing is allocated.
    template <class Block>
    std::invoke_result_t<Block&> sync(Block&& block) const {
        return wait(block, BlockKind::ordinary);
    }

    /// The same, alone on a concurrent queue.
    template <class Block>
    std::invoke_result_t<Block&> barrierSync(Block&& block) const {
        return wait(block, BlockKind::barrier);
    }

    /// What stands behind the queue.
    const std::shared_ptr<QueueProvider>& provider() const noexcept { return provider_; }

    /// Whether two handles are of one queue.
    friend bool operator==(const Queue&, const Queue&) = default;

private:
    template <class Block>
    std::invoke_result_t<Block&> wait(Block& block, BlockKind kind) const;

    std::shared_ptr<QueueProvider> provider_;
};

namespace detail {

/// Carries a synchronous block's result, or its exception, back to the caller.
template <class Block, class Result>
struct SynchronousCall {
    Block& block;
    std::optional<Result> result{};
    std::exception_ptr error{};

    void run() { result.emplace(std::invoke(block)); }
    Result take() { return std::move(*result); }
};

template <class Block, class Result>
    requires std::is_reference_v<Result>
struct SynchronousCall<Block, Result> {
    Block& block;
    std::remove_reference_t<Result>* result = nullptr;
    std::exception_ptr error{};

    void run() {
        Result&& value = std::invoke(block);
        result = std::addressof(value);
    }
    Result take() { return static_cast<Result>(*result); }
};

template <class Block>
struct SynchronousCall<Block, void> {
    Block& block;
    std::exception_ptr error{};

    void run() { std::invoke(block); }
    void take() {}
};

} // namespace detail

template <class Block>
std::invoke_result_t<Block&> Queue::wait(Block& block, BlockKind kind) const {
    using Call = detail::SynchronousCall<Block, std::invoke_result_t<Block&>>;
    Call call{block};
    provider_->sync(
        [](void* context) {
            auto* made = static_cast<Call*>(context);
            try {
                made->run();
            } catch (...) {
                made->error = std::current_exception();
            }
        },
        &call, kind);
    if (call.error) std::rethrow_exception(call.error);
    return call.take();
}

} // namespace vorlan
