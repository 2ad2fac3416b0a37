// SPDX-License-Identifier: Apache-2.0
#pragma once

// A handler of notifications that is still running when its registration ends.

#include <VorlanFoundation/Platform/NotificationCenter.h>

#include <atomic>
#include <cstddef>
#include <thread>
#include <utility>
#include <vector>

namespace support {

/// Posts on threads of its own to a handler whose calls take their time: each goes on until its registration has ended,
/// and a bit. That it ended is told by notifications that do not reach the handler any more, so that the registration
/// has to be for all names.
class SlowCall {
public:
    explicit SlowCall(vorlan::NotificationCenter center) : center_(std::move(center)) {}

    /// The handler, which refers to this.
    vorlan::NotificationCenter::Handler handler() {
        return [this](const vorlan::Notification& notification) { hear(notification); };
    }

    /// Calls the handler once on a thread of its own.
    void post() {
        posters_.emplace_back([this] { center_.post({.name = slow_}); });
    }

    /// Waits until that many calls have begun.
    void waitUntilUnderWay(std::ptrdiff_t calls = 1) const {
        while (begun_ < calls) std::this_thread::yield();
    }

    /// Whether all calls that began are over.
    bool isOver() const { return over_ == begun_; }

private:
    void hear(const vorlan::Notification& notification) {
        if (notification.name == probe_) {
            answeredProbe() = true;
            return;
        }
        ++begun_;
        while (isRegistered()) std::this_thread::yield();
        for (int i = 0; i < 1'000; ++i) std::this_thread::yield();
        ++over_;
    }

    bool isRegistered() const {
        answeredProbe() = false;
        center_.post({.name = probe_});
        return answeredProbe();
    }

    // A probe is answered by the thread that makes it.
    static bool& answeredProbe() {
        thread_local bool did = false;
        return did;
    }

    const vorlan::NotificationName slow_{"com.example.slow"};
    const vorlan::NotificationName probe_{"com.example.probe"};
    const vorlan::NotificationCenter center_;
    std::atomic<std::ptrdiff_t> begun_ = 0;
    std::atomic<std::ptrdiff_t> over_ = 0;
    std::vector<std::jthread> posters_;
};

} // namespace support
