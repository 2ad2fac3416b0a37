// SPDX-License-Identifier: Apache-2.0
#pragma once

// A session bus that only the test is on.

#include "tests/support/ChildProcess.h"

#include <filesystem>
#include <optional>
#include <string>

namespace support {

/// A message bus of the test's own, in place of the session's, until it is dropped: DBUS_SESSION_BUS_ADDRESS says
/// where it is. It starts no services by itself.
///
/// Threads: one thread at a time; make it before anything that uses the bus.
/// Owns:    the bus's process and its socket.
class PrivateBus {
public:
    PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus();

    const std::string& address() const noexcept { return address_; }

    /// Whether nobody has killed it yet.
    bool isRunning() const noexcept { return daemon_.has_value(); }

    /// Kills the bus at once.
    void kill();

    /// Waits until someone owns a name on it; a failure of the test case when no one does within ten seconds.
    void waitForName(const std::string& name) const;

private:
    std::filesystem::path folder_;
    std::string address_;
    std::optional<std::string> former_;
    std::optional<ChildProcess> daemon_;
};

} // namespace support
