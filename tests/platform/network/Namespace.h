// SPDX-License-Identifier: Apache-2.0
#pragma once

// Runs test cases against a real kernel without touching the machine's network.

#include <functional>
#include <ostream>
#include <string>

namespace vorlan::tests {

/// Who a case runs as.
enum class Privilege {
    root,         ///< The system's root, in network and mount namespaces of its own.
    unprivileged, ///< An ordinary user, in a user namespace besides.
};

/// The name of a privilege, for the names of cases.
inline void PrintTo(Privilege privilege, std::ostream* stream) {
    *stream << (privilege == Privilege::root ? "AsRoot" : "AsOrdinaryUser");
}

/// Runs `body` in a process of its own, in fresh namespaces with a sysfs of their own.
///
/// A network namespace belongs to a thread, and threads are made by whoever needs them first, so the
/// namespaces must be there before the process is: the running case is started again in them, by name, and
/// its failures are failures of this one. Where the machine forbids the namespaces the case is skipped, with
/// the reason.
///
/// Threads: main queue only: the test's main thread.
void inOwnNamespace(Privilege privilege, const std::function<void()>& body);

/// Runs ip(8) with these arguments; several lines are several runs. A failure is a failure of the case.
void ip(const std::string& lines);

/// Runs ip(8) once with all these lines, which is many times faster; stops at the first that fails.
void ipBatch(const std::string& lines);

/// The number of sockets that the process has open. Other descriptors come and go with the engine of the queues.
int openSockets();

} // namespace vorlan::tests
