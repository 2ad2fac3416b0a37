// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Worker.h>

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/UUID.h>

#include <iostream>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace vorlan {

namespace {
constexpr std::string_view where = "VorlanFoundation/Worker";
}

Worker::Worker() = default;
Worker::~Worker() = default;

// All under the lock, which `runBlock` waits for: so the block runs when the start is over.
void Worker::start(std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    if (thread_ && thread_->isExecuting()) return;
    const auto self = shared(this);
    auto thread = std::make_shared<Thread>(self, &Worker::runloop);
    thread->setName(detail::unqualifiedTypeName(typeid(*this)) + "-" + makeUUIDString());
    thread->start();
    thread->runLoop().perform([self] { self->runBlock(); });
    thread_ = std::move(thread);
    block_.swap(block);
}

void Worker::start() {
    start([] { std::cout << "Doing Work\n" << std::flush; });
}

void Worker::stop() {
    if (const auto thread = this->thread()) thread->cancel();
}

void Worker::runloop() {
    const auto thread = this->thread();
    if (!thread) fatalError("the run loop was asked for without a thread", where);
    while (!thread->isCancelled()) RunLoop::current().runOnce(DispatchTime::distantFuture());
}

void Worker::runBlock() {
    std::function<void()> block;
    {
        const std::lock_guard lock(mutex_);
        block = block_;
    }
    if (!block) fatalError("there is no block to run", where);
    block();
}

std::shared_ptr<Thread> Worker::thread() const {
    const std::lock_guard lock(mutex_);
    return thread_;
}

} // namespace vorlan
