// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Thread.h>

#include "platform/runloop/KernelThreadName.h"
#include "platform/values/ExceptionStop.h"
#include "platform/values/LimitedWait.h"

#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/FatalError.h>

#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace vorlan {

namespace {

thread_local constinit Thread* currentThread = nullptr;

} // namespace

struct Thread::State {
    enum class Phase { waiting, executing, finished };

    explicit State(Work work) : entry(std::move(work)) {}

    void enter(Phase next) {
        const std::lock_guard lock(mutex);
        phase = next;
        changed.notify_all();
    }

    std::unique_ptr<RunLoop> runLoop = RunLoop::make();
    std::atomic<bool> isCancelled = false;
    Work entry;
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::string name; ///< Guarded by the mutex, as is the next.
    Phase phase = Phase::waiting;
};

Thread::Thread(Work entry) : state_(std::make_unique<State>(std::move(entry))) {}
Thread::~Thread() = default;

bool Thread::isMainThread() noexcept {
    static thread_local const bool isMain = gettid() == getpid();
    return isMain;
}

std::shared_ptr<Thread> Thread::current() {
    return currentThread != nullptr ? shared(currentThread) : nullptr;
}

std::string Thread::name() const {
    const std::lock_guard lock(state_->mutex);
    return state_->name;
}

void Thread::setName(std::string name) {
    if (currentThread == this) setKernelThreadName(name);
    const std::lock_guard lock(state_->mutex);
    state_->name.swap(name);
}

void Thread::start() {
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->phase != State::Phase::waiting)
            fatalError("thread '" + state_->name + "' was started twice", "VorlanFoundation/Thread");
        state_->phase = State::Phase::executing;
    }
    try {
        std::thread([self = shared(this)] { self->run(); }).detach();
    } catch (...) {
        state_->enter(State::Phase::waiting);
        throw;
    }
}

void Thread::run() {
    currentThread = this;
    setKernelThreadName(name());
    state_->runLoop->beginThread();
    try {
        state_->entry(); // Lets go of what it ran, too.
    } catch (...) {
        stopForException("thread '" + name() + "'", "VorlanFoundation/Thread");
    }
    state_->runLoop->endThread();
    currentThread = nullptr;
    state_->enter(State::Phase::finished);
}

void Thread::cancel() {
    state_->isCancelled = true;
    state_->runLoop->wakeUp();
}

bool Thread::isCancelled() const {
    return state_->isCancelled;
}

bool Thread::isExecuting() const {
    const std::lock_guard lock(state_->mutex);
    return state_->phase == State::Phase::executing;
}

bool Thread::isFinished() const {
    const std::lock_guard lock(state_->mutex);
    return state_->phase == State::Phase::finished;
}

bool Thread::waitUntilFinished(DispatchTimeInterval limit) const {
    std::unique_lock lock(state_->mutex);
    return waitUntil(state_->changed, lock, limit,
                     [this] { return state_->phase == State::Phase::finished; });
}

RunLoop& Thread::runLoop() const {
    return *state_->runLoop;
}

} // namespace vorlan
