// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Operation.h>

#include "platform/operations/OperationName.h"
#include "platform/values/LimitedWait.h"

#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <unordered_set>
#include <utility>

namespace vorlan {

namespace {

constexpr std::string_view where = "VorlanFoundation/Operation";

// Who depends on whom is looked at and changed by one thread at a time, over all operations: two that were
// made to depend on each other at the same time would else both pass the search for cycles.
std::mutex& graphMutex() {
    static auto& mutex = *new std::mutex;
    return mutex;
}

} // namespace

struct Operation::Dependency {
    std::shared_ptr<Operation> operation;
    KeyValueObservation observation;
    bool isFinished = false;
};

struct Operation::Core {
    std::vector<std::shared_ptr<Operation>> dependencies() const {
        const std::lock_guard lock(mutex);
        std::vector<std::shared_ptr<Operation>> operations;
        for (const auto& [number, dependency] : waitsFor) operations.push_back(dependency.operation);
        return operations;
    }

    std::vector<std::shared_ptr<Operation>> takeDependencies() {
        std::unique_lock lock(mutex);
        const auto taken = std::exchange(waitsFor, {});
        unfinished = 0;
        lock.unlock();
        std::vector<std::shared_ptr<Operation>> operations;
        for (const auto& [number, dependency] : taken) operations.push_back(dependency.operation);
        return operations;
    }

    bool shouldBeReady() const { return isCancelled || unfinished == 0; }

    std::atomic<bool> isCancelled = false;
    std::atomic<bool> isExecuting = false;
    std::atomic<bool> isFinished = false;
    std::atomic<bool> isReady = true;
    std::atomic<bool> wasAddedToQueue = false;
    std::atomic<bool> hasDependents = false; ///< Changed under the graph's mutex, and never back.

    mutable std::mutex mutex; ///< Guards all below.
    mutable std::condition_variable completed;
    std::string name;
    std::map<std::uint64_t, Dependency> waitsFor; ///< By the order of adding.
    std::uint64_t nextDependency = 0;
    std::size_t unfinished = 0; ///< How many of those it waits for are not finished.
    std::optional<Work> completionBlock;
    bool isComplete = false;
    bool isPublishingReadiness = false;
};

Operation::Operation() : core_(std::make_unique<Core>()) {}

// A long chain of operations that never ran is taken apart link by link: each link's destructor would
// otherwise be called by the one before it, as deep as the chain is long.
Operation::~Operation() {
    auto links = core_->takeDependencies();
    while (!links.empty()) {
        const auto link = std::move(links.back());
        links.pop_back();
        if (link.use_count() == 1)
            std::ranges::move(link->core_->takeDependencies(), std::back_inserter(links));
    }
}

void Operation::start() {
    if (isFinished()) return;
    if (isCancelled()) return finish(false);
    if (!isReady()) fatalError(operationName(*this) + " was started before it was ready", where);
    willChangeValueForKey("isExecuting");
    if (core_->isExecuting.exchange(true)) fatalError(operationName(*this) + " was started twice", where);
    didChangeValueForKey("isExecuting");
    try {
        main();
    } catch (...) {
        finish(true);
        throw;
    }
    finish(true);
}

void Operation::finish(bool wasExecuting) {
    if (wasExecuting) willChangeValueForKey("isExecuting");
    willChangeValueForKey("isFinished");
    core_->isExecuting = false;
    core_->isFinished = true;
    if (wasExecuting) didChangeValueForKey("isExecuting");
    didChangeValueForKey("isFinished");
}

void Operation::main() {}

void Operation::cancel() {
    if (isFinished() || isCancelled()) return;
    willChangeValueForKey("isCancelled");
    core_->isCancelled = true;
    didChangeValueForKey("isCancelled");
    updateReadiness();
}

bool Operation::isCancelled() const {
    return core_->isCancelled;
}

bool Operation::isReady() const {
    return core_->isReady;
}

bool Operation::isExecuting() const {
    return core_->isExecuting;
}

bool Operation::isFinished() const {
    return core_->isFinished;
}

bool Operation::isAsynchronous() const {
    return false;
}

std::string Operation::name() const {
    const std::lock_guard lock(core_->mutex);
    return core_->name;
}

void Operation::setName(std::string name) {
    const std::lock_guard lock(core_->mutex);
    core_->name.swap(name);
}

void Operation::addDependency(std::shared_ptr<Operation> operation) {
    if (!operation) throw std::invalid_argument("an operation cannot depend on null");
    auto& other = *operation;
    std::uint64_t number = 0;
    {
        const std::lock_guard graph(graphMutex());
        if (&other == this || (core_->hasDependents && other.dependsOn(*this)))
            throw std::invalid_argument(operationName(*this) + " cannot depend on " + operationName(other) +
                                        ": that waits for it already, and neither could ever start");
        other.core_->hasDependents = true;
        const std::lock_guard lock(core_->mutex);
        if (core_->isComplete) return;
        number = core_->nextDependency++;
        core_->waitsFor.emplace(number, Dependency{operation, observeEnd(other, number)});
        ++core_->unfinished;
    }
    // It may have been finished before it was observed.
    if (other.isFinished()) {
        dependencyFinished(number);
    } else {
        updateReadiness();
    }
}

KeyValueObservation Operation::observeEnd(Operation& operation, std::uint64_t number) {
    return operation.observe("isFinished", [self = weak(this), number](const KeyValueChange& change) {
        if (!static_cast<const Operation&>(change.object).isFinished()) return;
        if (const auto waiting = self.lock()) waiting->dependencyFinished(number);
    });
}

// Called under the graph's mutex. Walks without recursion, as chains may be long.
bool Operation::dependsOn(const Operation& operation) const {
    std::unordered_set<const Operation*> seen;
    auto left = core_->dependencies();
    while (!left.empty()) {
        const auto next = std::move(left.back());
        left.pop_back();
        if (next.get() == &operation) return true;
        if (!seen.insert(next.get()).second) continue;
        for (auto& further : next->core_->dependencies()) left.push_back(std::move(further));
    }
    return false;
}

void Operation::removeDependency(const std::shared_ptr<Operation>& operation) {
    std::vector<Dependency> removed; // Destroyed when the lock is released again.
    {
        const std::lock_guard lock(core_->mutex);
        for (auto next = core_->waitsFor.begin(); next != core_->waitsFor.end();) {
            const auto one = next++;
            if (one->second.operation != operation) continue;
            if (!one->second.isFinished) --core_->unfinished;
            removed.push_back(std::move(one->second));
            core_->waitsFor.erase(one);
        }
    }
    updateReadiness();
}

std::vector<std::shared_ptr<Operation>> Operation::dependencies() const {
    return core_->dependencies();
}

void Operation::dependencyFinished(std::uint64_t number) {
    {
        const std::lock_guard lock(core_->mutex);
        const auto found = core_->waitsFor.find(number);
        if (found == core_->waitsFor.end() || std::exchange(found->second.isFinished, true)) return;
        --core_->unfinished;
    }
    updateReadiness();
}

// Publishes readiness when it is not what it should be. One thread does so at a time; another that changes
// what readiness depends on meanwhile leaves the rest to it.
void Operation::updateReadiness() {
    std::unique_lock lock(core_->mutex);
    if (std::exchange(core_->isPublishingReadiness, true)) return;
    try {
        while (core_->isReady != core_->shouldBeReady()) {
            lock.unlock();
            willChangeValueForKey("isReady");
            lock.lock();
            core_->isReady = core_->shouldBeReady();
            lock.unlock();
            didChangeValueForKey("isReady");
            lock.lock();
        }
    } catch (...) { // An observer's: it is as ready as it should be all the same.
        lock.lock();
        core_->isReady = core_->shouldBeReady();
        core_->isPublishingReadiness = false;
        throw;
    }
    core_->isPublishingReadiness = false;
}

void Operation::setCompletionBlock(Work block) {
    std::unique_lock lock(core_->mutex);
    if (core_->isComplete) {
        lock.unlock();
        Queue::global().async(std::move(block));
    } else {
        std::optional<Work> replaced(std::move(block)); // Destroyed when the lock is released again.
        core_->completionBlock.swap(replaced);
        lock.unlock();
    }
}

bool Operation::waitUntilFinished(DispatchTimeInterval limit) const {
    std::unique_lock lock(core_->mutex);
    return waitUntil(core_->completed, lock, limit, [this] { return core_->isComplete; });
}

void Operation::didChangeValueForKey(std::string_view key) {
    KeyValueObserving::didChangeValueForKey(key);
    if (key == "isFinished" && isFinished()) complete();
}

void Operation::complete() {
    std::unique_lock lock(core_->mutex);
    if (std::exchange(core_->isComplete, true)) return;
    auto block = std::exchange(core_->completionBlock, std::nullopt);
    core_->completed.notify_all();
    lock.unlock();
    core_->takeDependencies(); // Let go here.
    if (block) Queue::global().async(std::move(*block));
}

std::any Operation::valueForKey(std::string_view key) const {
    if (key == "isReady") return isReady();
    if (key == "isExecuting") return isExecuting();
    if (key == "isFinished") return isFinished();
    if (key == "isCancelled") return isCancelled();
    return KeyValueObserving::valueForKey(key);
}

bool Operation::claimForQueue() {
    return !core_->wasAddedToQueue.exchange(true);
}

} // namespace vorlan
