// SPDX-License-Identifier: Apache-2.0
#pragma once

// A name server for a case that runs in namespaces of its own.

#include "tests/support/ChildProcess.h"

#include <map>
#include <string>
#include <vector>

namespace vorlan::tests {

/// What a name server knows: names with their IPv4 and IPv6 addresses. It denies that there are other names.
using HostRecords = std::map<std::string, std::vector<std::string>>;

/// A running name server on an address of the loopback link, which has to be up, until it is dropped. It reads none
/// of the machine's files and writes none.
///
/// Threads: one thread at a time.
/// Owns:    the server's process, which ends with the test in any case.
/// Errors:  that it did not start is a failure of the case. Once it is made it answers.
class PrivateDNS {
public:
    explicit PrivateDNS(const HostRecords& records, const std::string& address = "127.0.0.1");

private:
    support::ChildProcess server_;
};

} // namespace vorlan::tests
