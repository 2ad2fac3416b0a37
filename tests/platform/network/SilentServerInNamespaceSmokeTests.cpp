// SPDX-License-Identifier: Apache-2.0
// Name servers that come late or say nothing: how long others wait, by the real clock.

#include "tests/platform/network/HostNames.h"
#include "tests/platform/network/PrivateDNS.h"
#include "tests/platform/network/PrivateEtc.h"

#include <VorlanFoundation/Reachability/Reachability.h>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <latch>
#include <memory>

namespace vorlan {
namespace {

using namespace tests;
using namespace std::chrono_literals;

constexpr std::chrono::seconds limitOfFlags = 5s;

/// Names a server on the cable that everything sent to is lost on the way. The resolver waits for it for more than two
/// minutes, so that what ends before does not wait for the resolver.
void useSilentServer(const PrivateEtc& etc) {
    ip("neigh add 10.9.0.53 lladdr 02:00:00:00:00:01 dev veth0");
    etc.useServer("10.9.0.53", 30);
}

/// How long it takes.
template <class Body>
std::chrono::steady_clock::duration timeOf(Body body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::steady_clock::now() - start;
}

class SilentServerInNamespaceSmoke : public ::testing::TestWithParam<Privilege> {};

INSTANTIATE_TEST_SUITE_P(, SilentServerInNamespaceSmoke,
                         ::testing::Values(Privilege::root, Privilege::unprivileged),
                         ::testing::PrintToStringParamName());

TEST_P(SilentServerInNamespaceSmoke, FlagsOfANameAreUnknownAfterFiveSecondsAndNobodyElseWaits) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        useSilentServer(etc);
        etc.useHosts("10.9.0.79 box.test\n");
        std::latch begun(1);
        std::int32_t status = kSCStatusOK;
        std::chrono::steady_clock::duration time{};
        auto waiting = std::async(std::launch::async, [&] {
            begun.count_down();
            time = timeOf([] { EXPECT_EQ(flagsOfName("silent.test"), std::nullopt); });
            status = SCError();
        });
        begun.wait();
        for (int round = 0; round < 20; ++round) {
            EXPECT_EQ(flagsOf(addressTarget("10.9.0.77")), direct);
            EXPECT_EQ(flagsOfName("10.9.0.77"), direct);
            EXPECT_EQ(flagsOfName("box.test"), direct);
        }
        EXPECT_EQ(waiting.wait_for(0s), std::future_status::timeout);
        waiting.get();
        EXPECT_EQ(status, kSCStatusReachabilityUnknown);
        EXPECT_GE(time, limitOfFlags - 100ms);
        EXPECT_LT(time, 4 * limitOfFlags);
    });
}

// It takes 300 ms on a machine with no load. This one may be too busy for that, but hardly always.
TEST_P(SilentServerInNamespaceSmoke, NotifierOfANameStartsSoon) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        useSilentServer(etc);
        const Queue queue("notifications");
        std::chrono::steady_clock::duration time = limitOfFlags;
        for (int round = 0; round < 10 && time >= limitOfFlags - 1s; ++round) {
            const auto host =
                std::make_shared<Reachability>("silent.test", ReachabilityQueues{.notificationQueue = queue});
            time = timeOf([&] { host->startNotifier(); });
            EXPECT_FALSE(host->isReachable());
            EXPECT_EQ(host->description(), "-- -------");
            host->stopNotifier();
        }
        EXPECT_LT(time, limitOfFlags - 1s);
    });
}

TEST_P(SilentServerInNamespaceSmoke, WatchedNameIsFoundOnceAServerAnswers) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        useSilentServer(etc);
        WatchedReachability watched("host.test");
        EXPECT_EQ(flagsOf(watched.target()), nothing);
        EXPECT_EQ(watched.last(), std::nullopt); // nothing is known, so nothing is told
        const PrivateDNS dns(HostRecords{{"host.test", {"10.9.0.77"}}});
        // The look-up under way goes on, and is not waited for.
        etc.useServer("127.0.0.1");
        EXPECT_TRUE(watched.becomes(direct, 20s)) << stateOf(watched);
    });
}

TEST_P(SilentServerInNamespaceSmoke, ServerThatComesLateIsFoundWithoutAnyOtherChange) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        WatchedReachability watched("host.test");
        EXPECT_TRUE(watched.becomes(nothing)) << stateOf(watched);
        const PrivateDNS dns(HostRecords{{"host.test", {"10.9.0.77"}}});
        EXPECT_TRUE(watched.becomes(direct, 20s)) << stateOf(watched);
    });
}

TEST_P(SilentServerInNamespaceSmoke, NameThatAppearsLateIsFoundWithoutAnyOtherChange) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        std::optional<PrivateDNS> dns(std::in_place, HostRecords{{"other.test", {"10.9.0.78"}}});
        WatchedReachability watched("host.test");
        EXPECT_TRUE(watched.becomes(nothing)) << stateOf(watched);
        dns.reset();
        dns.emplace(HostRecords{{"host.test", {"10.9.0.77"}}});
        EXPECT_TRUE(watched.becomes(direct, 20s)) << stateOf(watched);
    });
}

} // namespace
} // namespace vorlan
