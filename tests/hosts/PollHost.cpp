// SPDX-License-Identifier: Apache-2.0

// A host whose loop is a bare poll of descriptors: one of its own, and the main queue's.

#include "tests/hosts/Scenario.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>

namespace {

/// A descriptor that becomes readable when it is rung.
class Bell {
public:
    Bell() = default;
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;
    ~Bell() { close(descriptor_); }

    int descriptor() const { return descriptor_; }
    void ring() const { eventfd_write(descriptor_, 1); }
    void hush() const {
        std::uint64_t count = 0;
        eventfd_read(descriptor_, &count);
    }

private:
    const int descriptor_ = eventfd(0, EFD_CLOEXEC);
};

} // namespace

int main() {
    const Bell bell;
    bool isRunning = true;
    hosts::Scenario scenario(
        {.name = "poll", .refresh = [&] { bell.ring(); }, .finish = [&] { isRunning = false; }});
    scenario.start();

    std::array<pollfd, 2> events{
        {{.fd = bell.descriptor(), .events = POLLIN, .revents = 0},
         {.fd = vorlan::RunLoop::mainQueueDescriptor(), .events = POLLIN, .revents = 0}}};
    while (isRunning) {
        if (poll(events.data(), events.size(), -1) < 0) {
            if (errno == EINTR) continue;
            std::perror("poll");
            break;
        }
        if ((events[0].revents & POLLIN) != 0) {
            bell.hush();
            scenario.refreshed();
        }
        if ((events[1].revents & POLLIN) != 0) vorlan::RunLoop::drainMainQueue();
    }
    return scenario.report();
}
