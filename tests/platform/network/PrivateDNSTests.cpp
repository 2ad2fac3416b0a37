// SPDX-License-Identifier: Apache-2.0
// What the cases with names rest upon: that the system's look-up sees what they lay out, and nothing else.

#include "tests/platform/network/Namespace.h"
#include "tests/platform/network/PrivateDNS.h"
#include "tests/platform/network/PrivateEtc.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <fstream>
#include <optional>
#include <set>
#include <string>

namespace vorlan {
namespace {

using namespace tests;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// The addresses of a name, or the number of the failure.
struct LookUp {
    int error = 0;
    std::set<std::string> addresses;

    explicit LookUp(const std::string& name) {
        addrinfo hints{};
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* list = nullptr;
        error = getaddrinfo(name.c_str(), nullptr, &hints, &list);
        for (auto* entry = list; entry != nullptr; entry = entry->ai_next) {
            std::array<char, NI_MAXHOST> text{};
            getnameinfo(entry->ai_addr, entry->ai_addrlen, text.data(), text.size(), nullptr, 0,
                        NI_NUMERICHOST);
            addresses.insert(text.data());
        }
        if (list != nullptr) freeaddrinfo(list);
    }
};

class PrivateDNSInNamespace : public ::testing::TestWithParam<Privilege> {};

INSTANTIATE_TEST_SUITE_P(, PrivateDNSInNamespace, ::testing::Values(Privilege::root, Privilege::unprivileged),
                         ::testing::PrintToStringParamName());

TEST_P(PrivateDNSInNamespace, AnswersAreThoseOfTheRecords) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        ip("link set lo up");
        const PrivateDNS dns(HostRecords{{"four.test", {"10.9.0.77"}},
                                         {"six.test", {"fd00:9::77"}},
                                         {"both.test", {"10.9.0.78", "fd00:9::78"}}});
        EXPECT_THAT(LookUp("four.test").addresses, ElementsAre("10.9.0.77"));
        EXPECT_THAT(LookUp("six.test").addresses, ElementsAre("fd00:9::77"));
        EXPECT_THAT(LookUp("both.test").addresses, ElementsAre("10.9.0.78", "fd00:9::78"));
        EXPECT_EQ(LookUp("absent.test").error, EAI_NONAME);
    });
}

TEST_P(PrivateDNSInNamespace, NextServerHasItsOwnRecords) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        ip("link set lo up");
        EXPECT_EQ(LookUp("four.test").error, EAI_AGAIN);
        std::optional<PrivateDNS> dns(std::in_place, HostRecords{{"four.test", {"10.9.0.77"}}});
        EXPECT_THAT(LookUp("four.test").addresses, ElementsAre("10.9.0.77"));
        dns.reset();
        EXPECT_EQ(LookUp("four.test").error, EAI_AGAIN);
        dns.emplace(HostRecords{{"four.test", {"10.9.0.78"}}});
        EXPECT_THAT(LookUp("four.test").addresses, ElementsAre("10.9.0.78"));
    });
}

TEST_P(PrivateDNSInNamespace, HostsFileComesFirst) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        EXPECT_THAT(LookUp("localhost").addresses, Contains("127.0.0.1"));
        etc.useHosts("10.9.0.79 box.test\n");
        EXPECT_THAT(LookUp("box.test").addresses, ElementsAre("10.9.0.79"));
    });
}

/// What the kernel says about the mount on /etc; empty without one.
std::string mountOfEtc() {
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);)
        if (line.find(" /etc ") != std::string::npos) return line;
    return {};
}

TEST_P(PrivateDNSInNamespace, NobodyElseSeesItsEtc) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        EXPECT_THAT(mountOfEtc(), HasSubstr("tmpfs"));
        EXPECT_THAT(mountOfEtc(), Not(HasSubstr("shared:")));
    });
}

} // namespace
} // namespace vorlan
