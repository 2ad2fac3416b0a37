// SPDX-License-Identifier: Apache-2.0
#include "tests/hosts/Scenario.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <utility>

namespace hosts {

using namespace vorlan;

namespace {

constexpr unsigned limit = 60; ///< Seconds.
constexpr int leastTicks = 20;
constexpr int leastRefreshes = 3;

void endLateHost(int) {
    constexpr std::string_view message = "the host's loop did not get all of its work in a minute\n";
    [[maybe_unused]] const auto written = write(STDERR_FILENO, message.data(), message.size());
    _exit(1);
}

} // namespace

Scenario::Scenario(Host host) : host_(std::move(host)) {
    // A signal needs neither a loop nor a thread of ours, so it comes whatever is stuck.
    std::signal(SIGALRM, endLateHost);
    alarm(limit);
    addWorkers();
    addQueues();
    addTimer();
}

// One worker for each way to the main queue. Where they live is known when their threads run.
void Scenario::addWorkers() {
    constexpr int perRound = 50;
    constexpr int total = 500;
    const auto add = [&](std::string name, std::function<void(Work)> submit) {
        submitters_.push_back({std::move(name), perRound, total, nullptr, std::move(submit)});
        workers_.push_back(std::make_shared<Worker>());
    };
    add("worker that submits", [](Work work) { Queue::main().async(std::move(work)); });
    add("worker that calls for the foreground", [](Work work) { inForeground(std::move(work)); });
    add("worker that waits", [](Work work) { Queue::main().sync(work); });
}

void Scenario::addQueues() {
    const Queue serial("tests.hosts.serial", Queue::serial, QualityOfService::utility);
    submitters_.push_back({"queue of its own", 50, 500,
                           [serial](Work work) { serial.async(std::move(work)); },
                           [](Work work) { inForeground(std::move(work)); }});
    submitters_.push_back({"queue of the process", 50, 500, inBackground, ensureMainThread});
    // One at a time, as delays that are over together promise no order.
    submitters_.push_back({"delay", 1, 20, inBackground, [](Work work) {
                               delayOnMainThread(std::chrono::milliseconds(2), std::move(work));
                           }});
}

// Ticks by itself, and for as long as anything else is under way.
void Scenario::addTimer() {
    submitters_.push_back({"timer", 1, leastTicks, [](Work) {}, inForeground});
    timer_.emplace(InfiniteTimer::Schedule{.deadline = 0, .pollInterval = 0.01});
}

void Scenario::start() {
    for (std::size_t index = 0; index < workers_.size(); ++index) startWorker(workers_[index], index);
    const auto timer = submitters_.size() - 1;
    for (auto index = workers_.size(); index < timer; ++index)
        submitters_[index].perform([this, index] { submitRound(index, 0); });
    timer_->start([this, timer] { submitRound(timer, ticks_++); });
}

void Scenario::startWorker(const std::shared_ptr<Worker>& worker, std::size_t index) {
    worker->start([this, index] {
        const auto thread = Thread::current();
        Queue::main().async([this, index, thread] {
            threads_.push_back(thread);
            submitters_[index].perform = [thread](Work work) { thread->runLoop().perform(std::move(work)); };
        });
        submitRound(index, 0);
    });
}

// Takes what it needs beforehand: with the last work of all under way, the scenario may be gone at any moment.
void Scenario::submitRound(std::size_t index, int first) {
    const auto submit = submitters_[index].submit;
    const int end = first + submitters_[index].perRound;
    for (int number = first; number < end; ++number) submit([this, index, number] { arrive(index, number); });
}

void Scenario::arrive(std::size_t index, int number) {
    auto& submitter = submitters_[index];
    if (!isOnMainThread("work of the " + submitter.name)) return;
    if (number != submitter.arrived)
        fault(submitter.name + ": number " + std::to_string(number) + " in the place of number " +
              std::to_string(submitter.arrived));
    ++submitter.arrived;
    ++arrivals_;
    host_.refresh();
    if (submitter.arrived % submitter.perRound == 0 && submitter.arrived < submitter.total)
        submitter.perform([this, index, next = submitter.arrived] { submitRound(index, next); });
    if (!isCompleting_ && isComplete()) complete();
}

bool Scenario::isComplete() const {
    return refreshes_ >= leastRefreshes &&
           std::ranges::all_of(submitters_, [](const auto& each) { return each.arrived >= each.total; });
}

// What the timer submitted last is on the main queue when the timer is gone, so it arrives before the finish.
void Scenario::complete() {
    isCompleting_ = true;
    stopSubmitters();
    Queue::main().async([this] { finish(); });
}

void Scenario::finish() {
    if (submitters_.back().arrived != ticks_)
        fault(std::to_string(ticks_) + " ticks, but " + std::to_string(submitters_.back().arrived) +
              " arrived");
    bool hasRun = false;
    inForeground([&] { hasRun = true; });
    if (!hasRun) fault("work for the foreground did not run at once on the main thread");
    isFinished_ = true;
    host_.finish();
}

void Scenario::stopSubmitters() {
    timer_.reset();
    for (const auto& worker : workers_) worker->stop();
}

void Scenario::refreshed() {
    if (isOnMainThread("the refresh") && arrivals_ > 0 && !isCompleting_) ++refreshes_;
}

int Scenario::report() {
    if (!isFinished_) fault("the host's loop ended before the work did");
    for (const auto& thread : threads_) {
        if (isFinished_ && !thread->waitUntilFinished(std::chrono::seconds(limit)))
            fault("a worker's thread did not end");
    }
    // Something of a failed scenario may still be under way, and must find it where it was.
    if (faults_ > 0) std::_Exit(1);
    std::cout << host_.name << ": " << arrivedFrom("worker") << " from workers, " << arrivedFrom("queue")
              << " from queues, " << arrivedFrom("delay") << " delayed, " << ticks_ << " ticks, "
              << refreshes_ << " refreshes" << std::endl;
    return 0;
}

int Scenario::arrivedFrom(const std::string& kind) const {
    int count = 0;
    for (const auto& each : submitters_)
        if (each.name.starts_with(kind)) count += each.arrived;
    return count;
}

bool Scenario::isOnMainThread(const std::string& what) {
    if (std::this_thread::get_id() == mainThread_) return true;
    fault(what + " came on another thread than the main one");
    return false;
}

// Told at once, as a scenario that went wrong may not come to its report.
void Scenario::fault(const std::string& what) {
    ++faults_;
    std::cerr << host_.name + ": " + what + "\n";
}

} // namespace hosts
