// SPDX-License-Identifier: Apache-2.0
#pragma once

// Runs operations, a limited number at a time.
//
//     OperationQueue downloads({.maxConcurrentOperationCount = 4});
//     downloads.addOperation(std::make_shared<Download>(url));

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Handle.h>
#include <VorlanFoundation/Platform/Operation.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Work.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vorlan {

/// How an operation queue is made.
struct OperationQueueConfiguration {
    /// As many operations as this are under way at a time; at least 1. Absent: one for each processor.
    std::optional<int> maxConcurrentOperationCount{};
    /// A name for messages, and for its threads in the system's tools.
    std::string name = "OperationQueue";
    /// Where operations are started, in place of threads of its own: the main queue, or one that a test
    /// drives by hand.
    std::optional<Queue> underlyingQueue{};
};

/// Starts operations when they are ready, in the order of adding, no more than its width at a time.
///
/// It learns of an operation's state by the keys that the operation publishes, and by nothing else. An
/// operation counts from its start until it has published that it is finished, also where `start()` returned
/// long before. The queue never has more threads than its width, however long operations block them.
///
/// Threads:     safe from any thread, but for moving and dropping the handle.
/// Owns:        operations, until they are finished. What was added is run to its end also when the handle is
///              dropped, a suspended queue being resumed for that.
/// Re-entrancy: an operation may add operations to its own queue; waiting there for all of them stops the
///              process with a message, as it would last for ever.
/// Errors:      std::invalid_argument as stated below; an exception that leaves an operation's `start` stops
///              the process with its text, and so does a system that has no thread to give at all.
class VORLAN_EXPORT OperationQueue {
public:
    /// Makes an empty queue. Throws std::invalid_argument for a width below 1.
    explicit OperationQueue(OperationQueueConfiguration configuration = {});
    OperationQueue(OperationQueue&&) noexcept;
    OperationQueue& operator=(OperationQueue&&) noexcept;
    ~OperationQueue();

    /// Adds an operation. Throws std::invalid_argument, and adds nothing, when it is null, was added to a
    /// queue before, or is executing or finished.
    void addOperation(std::shared_ptr<Operation> operation);

    /// Adds an operation whose work is a block, and returns it.
    std::shared_ptr<Operation> addOperation(Work block);

    /// Cancels all operations that are on the queue now.
    void cancelAllOperations();

    /// Blocks the calling thread until no operation is left on the queue.
    void waitUntilAllOperationsAreFinished();

    /// The operations that are on the queue, not yet finished, in the order of adding.
    std::vector<std::shared_ptr<Operation>> operations() const;

    /// How many operations are on the queue.
    std::size_t operationCount() const;

    /// The width: how many operations may be under way at a time.
    int maxConcurrentOperationCount() const;

    /// Changes the width; those under way go on. Throws std::invalid_argument for a width below 1.
    void setMaxConcurrentOperationCount(int count);

    /// Whether no operation is started at present.
    bool isSuspended() const;

    /// Holds back the operations that were not started, or lets them go on.
    void setSuspended(bool isSuspended);

private:
    class State;

    void drop() noexcept;

    detail::Handle<State> state_;
};

} // namespace vorlan
