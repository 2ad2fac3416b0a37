// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/network/PrivateDNS.h"

#include <gtest/gtest.h>

namespace vorlan::tests {

namespace {

/// It runs as the user of the case, who is root in the namespaces, and says what it does where we can read it.
std::vector<std::string> commandFor(const HostRecords& records, const std::string& address) {
    std::vector<std::string> command{"setpriv",
                                     "--pdeathsig",
                                     "KILL",
                                     "sh",
                                     "-c",
                                     R"(exec dnsmasq "$@" 2>&1)",
                                     "sh",
                                     "--no-daemon",
                                     "--user=root",
                                     "--group=root",
                                     "--pid-file=",
                                     "--conf-file=/dev/null",
                                     "--no-resolv",
                                     "--no-hosts",
                                     "--local=/#/",
                                     "--bind-interfaces",
                                     "--listen-address=" + address};
    for (const auto& [name, itsAddresses] : records)
        for (const auto& itsAddress : itsAddresses)
            command.push_back("--host-record=" + name + "," + itsAddress);
    return command;
}

} // namespace

PrivateDNS::PrivateDNS(const HostRecords& records, const std::string& address)
    : server_(commandFor(records, address)) {
    // It says so after it has opened its sockets.
    std::string said;
    for (std::string line; line != "gone"; line = server_.nextLine()) {
        said += line + "\n";
        if (line.find("started") != std::string::npos) return;
    }
    ADD_FAILURE() << "the name server did not start:" << said;
}

} // namespace vorlan::tests
