// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/Destination.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vorlan::network {

/// Looks host names up as the system does it, on threads of its own: a look-up can take longer than any pool of threads
/// can spare one (10 seconds and more where a server is silent), and cannot be broken off.
///
/// Threads:     safe from any thread.
/// Owns:        at most eight threads, each while there are names to look up. They keep what they need, also beyond
///              the resolver.
/// Re-entrancy: a completion may ask for the next name.
/// Time:        a name is looked up after it was asked for; askers for one name that waits for its turn share the
///              look-up.
/// Errors:      a name without an address, and one that could not be looked up, have no addresses. Neither look-ups nor
///              completions throw.
class HostResolver {
public:
    /// The addresses of a host, the best one first; blocks.
    using Lookup = std::function<std::vector<Destination>(const std::string& name)>;
    /// Is given the addresses, on a thread of the resolver, or on the asker's when there can be no thread.
    using Completion = std::function<void(std::vector<Destination>)>;

    explicit HostResolver(Lookup lookup);

    /// The system's look-up: the hosts file, multicast DNS, DNS, as nsswitch.conf has it.
    static std::vector<Destination> lookUp(const std::string& name);

    /// Looks a name up.
    void resolve(const std::string& name, Completion completion);

private:
    struct Request {
        std::string name;
        std::vector<Completion> completions;
    };
    struct State;

    void startThread();

    const std::shared_ptr<State> state_;
};

} // namespace vorlan::network
