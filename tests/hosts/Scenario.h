// SPDX-License-Identifier: Apache-2.0
#pragma once

// What each host of these tests is put through: work for the main queue from workers, queues, delays and a
// timer, while the host's own loop has events of its own to serve. Seen through the public interface only, and
// without a word about the host's loop.
//
//     Scenario scenario({.name = "qt", .refresh = [&] { window.update(); }, .finish = [] { QApplication::quit(); }});
//     scenario.start();
//     QApplication::exec(); // whose paint events call scenario.refreshed()
//     return scenario.report();

#include <VorlanFoundation/VorlanFoundation.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace hosts {

/// What the scenario asks of a host, always on the main thread.
struct Host {
    std::string name;
    std::function<void()>
        refresh; ///< Asks the host's loop for an event of its own, as drawing the window again.
    std::function<void()> finish; ///< Ends the host's loop.
};

/// Has many submitters number their work for the main queue, and counts what arrives there.
///
/// It is finished when all work has arrived and the host has meanwhile refreshed itself. A host that does not
/// get there in a minute is ended.
///
/// Threads: made, started and asked on the main thread.
/// Owns:    its workers and its timer; nothing of them is left when it has reported success.
class Scenario {
public:
    explicit Scenario(Host host);
    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;
    ~Scenario() = default;

    /// Lets the submitters begin. The main queue is touched by their threads first, not by this one.
    void start();

    /// To be called by the host when its loop has served what `Host::refresh` asked for.
    void refreshed();

    /// To be called when the host's loop has ended: prints what was seen, and returns the exit status.
    int report();

private:
    struct Submitter {
        std::string name;
        int perRound; ///< How many works it submits without waiting for them to arrive.
        int total;
        std::function<void(vorlan::Work)> perform; ///< Has it do something where it lives.
        std::function<void(vorlan::Work)> submit;  ///< Its way to the main queue.
        int arrived = 0;
    };

    void addWorkers();
    void addQueues();
    void addTimer();
    void startWorker(const std::shared_ptr<vorlan::Worker>& worker, std::size_t index);
    void submitRound(std::size_t index, int first);
    void arrive(std::size_t index, int number);
    bool isComplete() const;
    void complete();
    void finish();
    void stopSubmitters();
    int arrivedFrom(const std::string& kind) const;
    bool isOnMainThread(const std::string& what);
    void fault(const std::string& what);

    const Host host_;
    const std::thread::id mainThread_ = std::this_thread::get_id();
    std::vector<Submitter>
        submitters_; ///< Only the counts change after the start, and on the main thread only.
    std::vector<std::shared_ptr<vorlan::Worker>> workers_;
    std::vector<std::shared_ptr<vorlan::Thread>> threads_; ///< Those of the workers.
    std::optional<vorlan::InfiniteTimer> timer_;
    int ticks_ = 0; ///< The timer's, counted where it ticks.
    int arrivals_ = 0;
    int refreshes_ = 0;
    bool isCompleting_ = false;
    bool isFinished_ = false;
    std::atomic<int> faults_ = 0;
};

} // namespace hosts
