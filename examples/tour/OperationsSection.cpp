// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/VorlanFoundation.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;

namespace {

bool showWorker() {
    const auto name = std::make_shared<std::string>();
    const auto worker = std::make_shared<Worker>();
    worker->start([name] { inForeground([name, own = Thread::current()->name()] { *name = own; }); });
    const bool isComplete = tour::serveMainQueueUntil([&] { return !name->empty(); });
    worker->stop();
    tour::line("Worker", "listened on a thread of its own, " + *name);
    return isComplete;
}

// Ends a while after its start has returned.
class Download : public AsynchronousOperation {
public:
    explicit Download(std::atomic<int>& underWay, std::atomic<int>& most)
        : underWay_(underWay), most_(most) {}

private:
    void main() override {
        AsynchronousOperation::main();
        const int now = ++underWay_;
        for (int known = most_; known < now && !most_.compare_exchange_weak(known, now);) {}
        Queue::global().asyncAfter(5ms, [self = shared(this)] {
            --self->underWay_;
            self->finish();
        });
    }

    std::atomic<int>& underWay_;
    std::atomic<int>& most_;
};

bool showDownloads() {
    std::atomic<int> underWay = 0;
    std::atomic<int> most = 0;
    OperationQueue downloads({.maxConcurrentOperationCount = 3});
    for (int i = 0; i < 9; ++i) downloads.addOperation(std::make_shared<Download>(underWay, most));
    downloads.waitUntilAllOperationsAreFinished();
    tour::line("OperationQueue", "9 downloads, never more at a time than " + std::to_string(most));
    return most == 3;
}

bool showDependencies() {
    std::string order;
    OperationQueue queue;
    queue.setSuspended(true);
    const auto bake = queue.addOperation([&] { order += " bake"; });
    const auto mix = queue.addOperation([&] { order += " mix"; });
    const auto eat = queue.addOperation([&] { order += " eat"; });
    eat->addDependency(bake);
    bake->addDependency(mix);
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    tour::line("Operation", "each after what it depends on:" + order);
    return order == " mix bake eat";
}

} // namespace

bool tour::showOperations() {
    title("Threads and operations");
    bool isComplete = true;
    for (const auto show : {showWorker, showDownloads, showDependencies}) isComplete &= show();
    return isComplete;
}
