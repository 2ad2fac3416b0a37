// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/OperationQueue.h>

#include "platform/operations/OperationName.h"
#include "platform/operations/ThreadPool.h"
#include "platform/values/ExceptionStop.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

namespace vorlan {

namespace {

constexpr std::string_view where = "VorlanFoundation/OperationQueue";

class BlockOperation final : public Operation {
public:
    explicit BlockOperation(Work block) : block_(std::move(block)) {}

private:
    void main() override { block_(); }

    Work block_;
};

int checkedWidth(int width) {
    if (width < 1) throw std::invalid_argument("an operation queue's width is at least 1");
    return width;
}

int defaultWidth() {
    return static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
}

} // namespace

// The operations by the order of adding, and those of them that are ready.
class OperationQueue::State final : public std::enable_shared_from_this<State> {
public:
    explicit State(OperationQueueConfiguration configuration)
        : width_(checkedWidth(configuration.maxConcurrentOperationCount.value_or(defaultWidth()))),
          configuration_(std::move(configuration)),
          threads_(configuration_.name, width_) {}

    void add(std::shared_ptr<Operation> operation);
    void cancelAll();
    void wait();
    std::vector<std::shared_ptr<Operation>> operations() const;
    int width() const;
    void setWidth(int width);
    bool isSuspended() const;
    void setSuspended(bool isSuspended);

private:
    using Number = std::uint64_t;

    struct Entry {
        std::shared_ptr<Operation> operation;
        KeyValueObservation readiness{};
        KeyValueObservation end{};
        std::uint64_t readinessReports = 0;
        bool wasStarted = false;
    };

    void observe(Number number, Operation& operation);
    void readinessChanged(Number number);
    void finishedChanged(Number number);
    void startWhatMay();
    std::shared_ptr<Operation> takeNext();
    void start(Operation& operation) const;

    mutable std::mutex mutex_; ///< Guards all below but the last two.
    std::condition_variable emptied_;
    std::map<Number, Entry> entries_;
    std::set<Number> ready_; ///< Those that were not started.
    Number nextNumber_ = 0;
    int width_;
    int underWay_ = 0;
    bool isSuspended_ = false;
    const OperationQueueConfiguration configuration_;
    ThreadPool threads_;

    /// The queue whose operation the calling thread is starting.
    static thread_local constinit const State* current_;
};

thread_local constinit const OperationQueue::State* OperationQueue::State::current_ = nullptr;

void OperationQueue::State::add(std::shared_ptr<Operation> operation) {
    if (!operation) throw std::invalid_argument("there is no operation to add");
    if (operation->isExecuting() || operation->isFinished())
        throw std::invalid_argument(operationName(*operation) +
                                    " was started before it was added to a queue");
    if (!operation->claimForQueue())
        throw std::invalid_argument(operationName(*operation) + " was added to a queue before");
    Number number = 0;
    {
        const std::lock_guard lock(mutex_);
        number = nextNumber_++;
        entries_.emplace(number, Entry{operation});
    }
    observe(number, *operation);
    // What it published before it was observed.
    finishedChanged(number);
    readinessChanged(number);
}

// The observations keep the queue alive: that ends with the operation, whose entry they go with.
void OperationQueue::State::observe(Number number, Operation& operation) {
    const auto self = shared_from_this();
    auto readiness = operation.observe(
        "isReady", [self, number](const KeyValueChange&) { self->readinessChanged(number); });
    auto end = operation.observe("isFinished",
                                 [self, number](const KeyValueChange&) { self->finishedChanged(number); });
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(number);
    if (found == entries_.end()) return;
    found->second.readiness = std::move(readiness);
    found->second.end = std::move(end);
}

// Asks the operation without the lock. When several threads do so at a time, the answer to the latest report
// counts: it is as new as any.
void OperationQueue::State::readinessChanged(Number number) {
    std::shared_ptr<Operation> operation;
    std::uint64_t report = 0;
    {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(number);
        if (found == entries_.end() || found->second.wasStarted) return;
        operation = found->second.operation;
        report = ++found->second.readinessReports;
    }
    const bool isReady = operation->isReady();
    {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(number);
        if (found == entries_.end() || found->second.wasStarted) return;
        if (found->second.readinessReports != report) return;
        if (isReady) {
            ready_.insert(number);
        } else {
            ready_.erase(number);
        }
    }
    startWhatMay();
}

void OperationQueue::State::finishedChanged(Number number) {
    std::shared_ptr<Operation> operation;
    {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(number);
        if (found == entries_.end()) return;
        operation = found->second.operation;
    }
    if (!operation->isFinished()) return;
    std::map<Number, Entry>::node_type ended; // Destroyed when the lock is released again.
    {
        const std::lock_guard lock(mutex_);
        ended = entries_.extract(number);
        if (ended.empty()) return;
        ready_.erase(number);
        if (ended.mapped().wasStarted) --underWay_;
        if (entries_.empty()) emptied_.notify_all();
    }
    startWhatMay();
}

void OperationQueue::State::startWhatMay() {
    while (auto operation = takeNext()) {
        Work work([self = shared_from_this(), operation = std::move(operation)] { self->start(*operation); });
        if (configuration_.underlyingQueue) {
            configuration_.underlyingQueue->async(std::move(work));
        } else {
            threads_.submit(std::move(work));
        }
    }
}

std::shared_ptr<Operation> OperationQueue::State::takeNext() {
    const std::lock_guard lock(mutex_);
    if (isSuspended_ || ready_.empty() || underWay_ >= width_) return nullptr;
    auto& entry = entries_.at(ready_.extract(ready_.begin()).value());
    entry.wasStarted = true;
    ++underWay_;
    return entry.operation;
}

void OperationQueue::State::start(Operation& operation) const {
    const auto* outer = std::exchange(current_, this);
    try {
        // It may have been finished, from elsewhere, on its way here.
        if (!operation.isFinished()) operation.start();
    } catch (...) {
        stopForException(operationName(operation), where);
    }
    current_ = outer;
}

void OperationQueue::State::cancelAll() {
    for (const auto& operation : operations()) operation->cancel();
}

void OperationQueue::State::wait() {
    if (current_ == this)
        fatalError("waiting for all operations of '" + configuration_.name +
                       "' from one of them would last for ever",
                   where);
    std::unique_lock lock(mutex_);
    emptied_.wait(lock, [this] { return entries_.empty(); });
}

std::vector<std::shared_ptr<Operation>> OperationQueue::State::operations() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<Operation>> operations;
    for (const auto& [number, entry] : entries_) operations.push_back(entry.operation);
    return operations;
}

int OperationQueue::State::width() const {
    const std::lock_guard lock(mutex_);
    return width_;
}

void OperationQueue::State::setWidth(int width) {
    {
        const std::lock_guard lock(mutex_);
        width_ = checkedWidth(width);
        // Within the lock: of two that set it at once, the same one must be the last for both.
        threads_.setWidth(width_);
    }
    startWhatMay();
}

bool OperationQueue::State::isSuspended() const {
    const std::lock_guard lock(mutex_);
    return isSuspended_;
}

void OperationQueue::State::setSuspended(bool isSuspended) {
    {
        const std::lock_guard lock(mutex_);
        isSuspended_ = isSuspended;
    }
    startWhatMay();
}

OperationQueue::OperationQueue(OperationQueueConfiguration configuration)
    : state_(std::make_shared<State>(std::move(configuration))) {}

OperationQueue::OperationQueue(OperationQueue&&) noexcept = default;

OperationQueue& OperationQueue::operator=(OperationQueue&& other) noexcept {
    if (this == &other) return *this;
    drop();
    state_ = std::move(other.state_);
    return *this;
}

OperationQueue::~OperationQueue() {
    drop();
}

void OperationQueue::drop() noexcept {
    if (state_) state_->setSuspended(false);
}

void OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    state_->add(std::move(operation));
}

std::shared_ptr<Operation> OperationQueue::addOperation(Work block) {
    auto operation = std::make_shared<BlockOperation>(std::move(block));
    state_->add(operation);
    return operation;
}

void OperationQueue::cancelAllOperations() {
    state_->cancelAll();
}

void OperationQueue::waitUntilAllOperationsAreFinished() {
    state_->wait();
}

std::vector<std::shared_ptr<Operation>> OperationQueue::operations() const {
    return state_->operations();
}

std::size_t OperationQueue::operationCount() const {
    return state_->operations().size();
}

int OperationQueue::maxConcurrentOperationCount() const {
    return state_->width();
}

void OperationQueue::setMaxConcurrentOperationCount(int count) {
    state_->setWidth(count);
}

bool OperationQueue::isSuspended() const {
    return state_->isSuspended();
}

void OperationQueue::setSuspended(bool isSuspended) {
    state_->setSuspended(isSuspended);
}

} // namespace vorlan
