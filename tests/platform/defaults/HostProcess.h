// SPDX-License-Identifier: Apache-2.0
#pragma once

// Another process, which opens a store and does with it what the test says (DefaultsHost.cpp).

#include "tests/support/ChildProcess.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan::tests {

/// A running host, in the environment that the test had when it was started; killed when it is dropped.
///
/// What cannot be done is a failure of the test case.
///
/// Threads: one thread at a time.
class HostProcess {
public:
    /// Starts a host that opens a store once it needs it. With a wrapper, that is started with the host's command
    /// line as its last arguments.
    explicit HostProcess(std::string_view store, std::vector<std::string> wrapper = {});

    /// Gives it a command without waiting for the answer.
    void tell(std::string_view command);

    /// The next answer; "gone" when the host ended without one. Waits up to a minute.
    std::string answer();

    /// Gives it a command, and waits for the answer.
    std::string ask(std::string_view command);

    /// Whether an answer can be had without waiting. Looks for it for a millisecond.
    bool hasAnswered();

    /// Reads acknowledgements, a byte each, until there are so many; returns how many came.
    std::size_t readAcknowledgements(std::size_t atLeast);

    /// Kills it at once, and returns how many acknowledgements it had sent that nobody had read.
    std::size_t kill();

    /// Lets it end, by itself; returns its exit code, or minus the number of the signal that ended it.
    int finish();

    pid_t id() const noexcept { return child_.id(); }

private:
    support::ChildProcess child_;
};

} // namespace vorlan::tests
