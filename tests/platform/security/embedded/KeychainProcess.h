// SPDX-License-Identifier: Apache-2.0
#pragma once

// Another process, which uses the keychain as the test says (KeychainHost.cpp).

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
class KeychainProcess {
public:
    /// Starts a host for a store ("embedded", "secretService" or "automatic"). With a wrapper, that is started with the
    /// host's command line as its last arguments.
    explicit KeychainProcess(std::string_view store = "embedded", std::vector<std::string> wrapper = {});

    /// Gives it a command without waiting for the answer.
    void tell(std::string_view command) const;

    /// The next answer; "gone" when the host ended without one. Waits up to a minute.
    std::string answer();

    /// Gives it a command, and waits for the answer.
    std::string ask(std::string_view command);

    /// Reads acknowledgements, a byte each, until there are so many; returns how many came.
    std::size_t readAcknowledgements(std::size_t atLeast);

    /// Waits for a first acknowledgement, for at most so long.
    void awaitAcknowledgement(int milliseconds) { child_.receive(milliseconds); }

    /// Kills it at once, and returns how many acknowledgements it had sent that nobody had read.
    std::size_t kill();

private:
    support::ChildProcess child_;
};

} // namespace vorlan::tests
