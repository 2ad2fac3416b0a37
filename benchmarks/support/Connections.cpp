// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/Connections.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>

namespace vorlan::benchmarks {

namespace {

constexpr auto port = "7";
constexpr auto patience = std::chrono::milliseconds(1500);

/// Connections that are being made.
///
/// Threads: one thread at a time.
class Attempts {
public:
    Attempts() = default;
    Attempts(const Attempts&) = delete;
    Attempts& operator=(const Attempts&) = delete;
    ~Attempts() {
        for (const auto& one : attempts_) {
            if (one.fd >= 0) close(one.fd);
        }
    }

    void begin(const addrinfo& address) {
        const int attempt =
            socket(address.ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol);
        if (attempt < 0) return;
        attempts_.push_back({.fd = attempt, .events = POLLOUT, .revents = 0});
        const bool isBegun = connect(attempt, address.ai_addr, address.ai_addrlen) == 0;
        if (isBegun || errno == EINPROGRESS) return;
        isAnswered_ = isAnswered_ || errno == ECONNREFUSED;
        giveUp(attempts_.back());
    }

    /// Waits until one is answered; false when none is left, or in time.
    bool isOneAnswered() {
        if (isAnswered_) return true;
        const auto deadline = std::chrono::steady_clock::now() + patience;
        for (;;) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            const bool isPending =
                std::ranges::any_of(attempts_, [](const pollfd& one) { return one.events != 0; });
            if (!isPending || left.count() <= 0) return false;
            if (poll(attempts_.data(), attempts_.size(), static_cast<int>(left.count())) <= 0) continue;
            if (std::ranges::any_of(attempts_, finish)) return true;
        }
    }

private:
    /// Has `poll` leave it out from now on.
    static void giveUp(pollfd& attempt) {
        close(attempt.fd);
        attempt = {.fd = -1, .events = 0, .revents = 0};
    }

    static bool finish(pollfd& attempt) {
        if (attempt.fd < 0 || attempt.revents == 0) return false;
        int error = 0;
        socklen_t size = sizeof error;
        getsockopt(attempt.fd, SOL_SOCKET, SO_ERROR, &error, &size);
        if (error == 0 || error == ECONNREFUSED) return true;
        giveUp(attempt);
        return false;
    }

    std::vector<pollfd> attempts_;
    bool isAnswered_ = false; // at once
};

} // namespace

bool isAnswered(const std::vector<std::string>& hosts) {
    Attempts attempts;
    for (const auto& host : hosts) {
        addrinfo hints{};
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* found = nullptr;
        if (getaddrinfo(host.c_str(), port, &hints, &found) != 0) continue;
        const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
        for (const auto* one = found; one != nullptr; one = one->ai_next) attempts.begin(*one);
    }
    return attempts.isOneAnswered();
}

} // namespace vorlan::benchmarks
