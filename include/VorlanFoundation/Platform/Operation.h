// SPDX-License-Identifier: Apache-2.0
#pragma once

// A piece of work with a state that others can follow, wait for and depend on.
//
//     class Thumbnail : public Operation {
//         void main() override { if (!isCancelled()) draw(); }
//     };

#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/KeyValueObserving.h>
#include <VorlanFoundation/Platform/Work.h>

#include <any>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

/// Work that is done once, usually by an `OperationQueue`.
///
/// Its state is published to key-value observers under "isReady", "isExecuting", "isFinished" and
/// "isCancelled", as Booleans. Those keys are all that a queue and dependent operations go by: a subclass that
/// overrides the properties and publishes their changes is as good as this class.
///
/// Threads: safe from any thread. Observers are told on the thread that changes the state.
/// Owns:    the operations that it depends on, until it is finished.
/// Errors:  an exception of `main` finishes the operation and leaves `start`; on a queue it stops the process
///          with its text.
class VORLAN_EXPORT Operation : public KeyValueObserving {
public:
    Operation();
    ~Operation() override;

    /// Does the work on the calling thread: executing, `main()`, finished. A cancelled operation is finished
    /// at once, without `main()`; a finished one does nothing. Starting one that is not ready, or is
    /// executing, stops the process with a message.
    virtual void start();

    /// The work; to be overridden. It should look at `isCancelled()` from time to time.
    virtual void main();

    /// Asks the operation to end early; one that was not started becomes ready, so that its queue can finish
    /// it. Does nothing once it is finished.
    virtual void cancel();

    /// Whether `cancel()` was called in time.
    bool isCancelled() const;

    /// Whether it may be started: all operations that it depends on are finished, or it was cancelled.
    virtual bool isReady() const;

    /// Whether its work is under way.
    virtual bool isExecuting() const;

    /// Whether its work is over.
    virtual bool isFinished() const;

    /// Whether `start()` may return before the work is over.
    virtual bool isAsynchronous() const;

    /// A name for messages.
    std::string name() const;
    void setName(std::string name);

    /// Has this operation wait until another is finished, by completion or cancellation. To be called before
    /// the start; it has no effect afterwards.
    ///
    /// Throws std::invalid_argument, and changes nothing, when the other is null, or waits for this one
    /// itself, directly or through others: then neither could ever start.
    void addDependency(std::shared_ptr<Operation> operation);

    /// Takes a dependency back; does nothing when there is no such dependency.
    void removeDependency(const std::shared_ptr<Operation>& operation);

    /// What it depends on, in the order of adding; empty once it is finished.
    std::vector<std::shared_ptr<Operation>> dependencies() const;

    /// What is run once, on a background queue, when the operation is finished; at once when it is already.
    void setCompletionBlock(Work block);

    /// Blocks the calling thread until the operation is finished and its observers were told; false when
    /// `limit` went by before. Waiting within the operation itself would last for ever.
    bool waitUntilFinished(DispatchTimeInterval limit = DispatchTimeInterval::never()) const;

    /// Also learns from it that the operation is finished.
    void didChangeValueForKey(std::string_view key) override;

    /// The four properties above.
    std::any valueForKey(std::string_view key) const override;

private:
    friend class OperationQueue;
    struct Core;
    struct Dependency;

    bool claimForQueue();
    bool dependsOn(const Operation& operation) const;
    KeyValueObservation observeEnd(Operation& operation, std::uint64_t number);
    void dependencyFinished(std::uint64_t number);
    void updateReadiness();
    void finish(bool wasExecuting);
    void complete();

    std::unique_ptr<Core> core_;
};

} // namespace vorlan
