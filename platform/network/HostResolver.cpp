// SPDX-License-Identifier: Apache-2.0
#include "platform/network/HostResolver.h"

#include <netdb.h>
#include <netinet/in.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace vorlan::network {

namespace {

constexpr int mostThreads = 8;

/// Keeps signals away from the threads that are made meanwhile: they are the host's to handle.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

template <class Field>
std::optional<Destination> destinationOf(IPAddress::Family family, const Field& field, LinkIndex link = 0) {
    const auto address = IPAddress::fromBytes(family, std::as_bytes(std::span(&field, 1)));
    return address ? std::optional(Destination{*address, link}) : std::nullopt;
}

std::optional<Destination> destinationOf(const addrinfo& info) {
    if (info.ai_family == AF_INET && info.ai_addrlen >= sizeof(sockaddr_in)) {
        sockaddr_in record{};
        std::memcpy(&record, info.ai_addr, sizeof(record));
        return destinationOf(IPAddress::Family::v4, record.sin_addr);
    }
    if (info.ai_family != AF_INET6 || info.ai_addrlen < sizeof(sockaddr_in6)) return std::nullopt;
    sockaddr_in6 record{};
    std::memcpy(&record, info.ai_addr, sizeof(record));
    return destinationOf(IPAddress::Family::v6, record.sin6_addr, record.sin6_scope_id);
}

} // namespace

/// What the threads share.
///
/// Threads: safe from any thread.
struct HostResolver::State {
    explicit State(Lookup function) : lookup(std::move(function)) {}

    void work() {
        while (const auto request = next()) {
            const auto addresses = lookup(request->name);
            for (const auto& completion : request->completions) completion(addresses);
        }
    }

    // Nothing when there is nothing left to do; the thread must then end.
    std::optional<Request> next() {
        const std::lock_guard lock(mutex);
        if (waiting.empty()) {
            --threads;
            return std::nullopt;
        }
        auto request = std::move(waiting.front());
        waiting.pop_front();
        return request;
    }

    // What no thread is there for; if there is another one, it takes what waits.
    std::deque<Request> giveUpThread() {
        const std::lock_guard lock(mutex);
        return --threads == 0 ? std::exchange(waiting, {}) : std::deque<Request>();
    }

    const Lookup lookup;
    std::mutex mutex;
    std::deque<Request> waiting;
    int threads = 0;
};

HostResolver::HostResolver(Lookup lookup) : state_(std::make_shared<State>(std::move(lookup))) {}

std::vector<Destination> HostResolver::lookUp(const std::string& name) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM; // one entry for each address
    addrinfo* list = nullptr;
    if (getaddrinfo(name.c_str(), nullptr, &hints, &list) != 0) return {};
    std::vector<Destination> addresses;
    for (const addrinfo* info = list; info != nullptr; info = info->ai_next)
        if (auto destination = destinationOf(*info)) addresses.push_back(std::move(*destination));
    freeaddrinfo(list);
    return addresses;
}

void HostResolver::resolve(const std::string& name, Completion completion) {
    {
        const std::lock_guard lock(state_->mutex);
        const auto same = std::ranges::find(state_->waiting, name, &Request::name);
        if (same != state_->waiting.end()) {
            same->completions.push_back(std::move(completion));
            return;
        }
        state_->waiting.push_back({name, {std::move(completion)}});
        if (state_->threads == mostThreads) return;
        ++state_->threads;
    }
    startThread();
}

void HostResolver::startThread() {
    const SignalsBlocked blocked;
    try {
        std::thread([state = state_] { state->work(); }).detach();
    } catch (const std::system_error&) {
        for (const auto& request : state_->giveUpThread())
            for (const auto& completion : request.completions) completion({});
    }
}

} // namespace vorlan::network
