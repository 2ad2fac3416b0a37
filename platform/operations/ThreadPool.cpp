// SPDX-License-Identifier: Apache-2.0
#include "platform/operations/ThreadPool.h"

#include "platform/runloop/KernelThreadName.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace vorlan {

class ThreadPool::State : public std::enable_shared_from_this<State> {
public:
    State(std::string name, int width) : name_(std::move(name)), width_(width) {}

    void submit(Work work) {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(work));
        provideThread();
    }

    void setWidth(int width) {
        const std::lock_guard lock(mutex_);
        width_ = width;
        changed_.notify_all();
        provideThread();
    }

    void close() {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        changed_.notify_all();
    }

private:
    // An idle thread is told of each new work; it finds out by itself when another has taken it.
    void provideThread() {
        if (waiting_.empty()) return;
        changed_.notify_one();
        if (static_cast<int>(waiting_.size()) <= idle_ || threads_ >= width_) return;
        ++threads_;
        try {
            std::thread([self = shared_from_this()] { self->run(); }).detach();
        } catch (const std::system_error& error) {
            if (--threads_ > 0) return; // Another thread gets there.
            fatalError("no thread can be made for '" + name_ + "': " + error.what(),
                       "VorlanFoundation/ThreadPool");
        }
    }

    void run() {
        setKernelThreadName(name_);
        std::unique_lock lock(mutex_);
        while (awaitWork(lock)) {
            auto work = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            work();
            lock.lock();
        }
        --threads_;
    }

    // False when the thread is to leave: it is one too many, idle for long, or the pool is gone.
    bool awaitWork(std::unique_lock<std::mutex>& lock) {
        constexpr auto longEnough = std::chrono::seconds(5);
        if (threads_ > width_) return false;
        if (!waiting_.empty()) return true;
        ++idle_;
        changed_.wait_for(lock, longEnough,
                          [this] { return !waiting_.empty() || isClosed_ || threads_ > width_; });
        --idle_;
        return !waiting_.empty() && threads_ <= width_;
    }

    const std::string name_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Work> waiting_;
    int width_;
    int threads_ = 0;
    int idle_ = 0; ///< How many of them wait for work, those told of some included.
    bool isClosed_ = false;
};

ThreadPool::ThreadPool(const std::string& name, int width) : state_(std::make_shared<State>(name, width)) {}

ThreadPool::~ThreadPool() {
    state_->close();
}

void ThreadPool::submit(Work work) {
    state_->submit(std::move(work));
}

void ThreadPool::setWidth(int width) {
    state_->setWidth(width);
}

} // namespace vorlan
