// SPDX-License-Identifier: Apache-2.0

// What each combination of the flags means.

#include <VorlanFoundation/Reachability.h>

#include "tests/reachability/ScriptedMonitor.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>

using namespace vorlan;
using ::testing::ElementsAre;
using tests::Flags;
using enum Reachability::Connection;

namespace {

class ReachabilityConnectionTest : public tests::ScriptedMonitor {
protected:
    Reachability::Connection connectionOf(Flags flags) {
        network.setFlags(flags);
        const auto fresh = std::make_shared<Reachability>(network.reachability(), queues());
        EXPECT_EQ(fresh->isReachable(), fresh->connection() != unavailable);
        return fresh->connection();
    }
};

/// The flags by letters: those of the description, and T for transientConnection, C for connectionOnTraffic.
Flags flagsOf(std::string_view letters) {
    Flags flags{};
    for (const char letter : letters) switch (letter) {
        case 'T': flags |= Flags::transientConnection; break;
        case 'R': flags |= Flags::reachable; break;
        case 'c': flags |= Flags::connectionRequired; break;
        case 'C': flags |= Flags::connectionOnTraffic; break;
        case 'i': flags |= Flags::interventionRequired; break;
        case 'D': flags |= Flags::connectionOnDemand; break;
        case 'l': flags |= Flags::isLocalAddress; break;
        case 'd': flags |= Flags::isDirect; break;
        default: ADD_FAILURE() << "no such flag: " << letter;
        }
    return flags;
}

struct Row {
    std::string_view flags;
    Reachability::Connection connection;
};

// What decides: reachable, connectionRequired, connectionOnTraffic, interventionRequired, connectionOnDemand.
constexpr Row table[] = {
    {"", unavailable},    {"c", unavailable},    {"C", unavailable},    {"cC", unavailable},
    {"i", unavailable},   {"ci", unavailable},   {"Ci", unavailable},   {"cCi", unavailable},
    {"D", unavailable},   {"cD", unavailable},   {"CD", unavailable},   {"cCD", unavailable},
    {"iD", unavailable},  {"ciD", unavailable},  {"CiD", unavailable},  {"cCiD", unavailable},
    {"R", wifi},          {"RC", wifi},          {"Ri", wifi},          {"RD", wifi},
    {"RCi", wifi},        {"RCD", wifi},         {"RiD", wifi},         {"RCiD", wifi},
    {"Rc", unavailable},  {"RcC", wifi},         {"RcD", wifi},         {"RcCD", wifi},
    {"Rci", unavailable}, {"RcCi", unavailable}, {"RciD", unavailable}, {"RcCiD", unavailable},
};

// What makes no difference.
constexpr std::string_view companions[] = {"", "T", "l", "d", "Tl", "Td", "ld", "Tld"};

} // namespace

TEST_F(ReachabilityConnectionTest, EachOfThe256CombinationsMeansWhatTheTableSays) {
    std::set<std::uint32_t> seen;
    for (const auto& row : table)
        for (const auto companion : companions) {
            const Flags flags = flagsOf(row.flags) | flagsOf(companion);
            seen.insert(static_cast<std::uint32_t>(flags));
            EXPECT_EQ(connectionOf(flags), row.connection) << row.flags << companion;
        }
    EXPECT_EQ(seen.size(), 256U);
}

TEST_F(ReachabilityConnectionTest, DeliveriesOfEachCombinationGoToTheCallbackOfItsConnection) {
    network.setFlags(flagsOf("Tld")); // any but the first of the table
    startQuietly();
    for (const auto& row : table)
        for (const auto companion : companions) {
            network.setFlags(flagsOf(row.flags) | flagsOf(companion));
            const std::string expected = row.connection == unavailable ? "unreachable" : "reachable";
            EXPECT_THAT(news(), ElementsAre(expected, "changed")) << row.flags << companion;
        }
}

TEST_F(ReachabilityConnectionTest, ConnectionThatIsMadeOnDemandCountsAsThere) {
    EXPECT_EQ(connectionOf(Flags::reachable | Flags::connectionRequired | Flags::connectionOnDemand), wifi);
}

TEST_F(ReachabilityConnectionTest, ConnectionThatNeedsTheUserIsNotThereYet) {
    EXPECT_EQ(connectionOf(Flags::reachable | Flags::connectionRequired | Flags::connectionOnTraffic |
                           Flags::interventionRequired),
              unavailable);
}

TEST_F(ReachabilityConnectionTest, ReachableAloneIsAConnectionAndNothingIsNone) {
    EXPECT_EQ(connectionOf(Flags::reachable), wifi);
    EXPECT_EQ(connectionOf(Flags{}), unavailable);
}

TEST_F(ReachabilityConnectionTest, BitsWithoutAMeaningMakeNoDifference) {
    constexpr Flags others{0xfffcffc0};
    EXPECT_EQ(connectionOf(others), unavailable);
    EXPECT_EQ(connectionOf(others | Flags::reachable), wifi);
    EXPECT_EQ(connectionOf(others | Flags::reachable | Flags::connectionRequired), unavailable);
}

TEST_F(ReachabilityConnectionTest, MonitorIsAskedAsAStatusReporter) {
    network.setFlags(Flags::reachable);
    startQuietly();
    const std::shared_ptr<ReachabilityStatusReporter> reporter = monitor;
    EXPECT_TRUE(reporter->isReachable());
    network.setFlags(Flags::connectionRequired);
    settle();
    EXPECT_FALSE(reporter->isReachable());
}

TEST(Connection, DescribesItselfInWords) {
    EXPECT_EQ(description(unavailable), "No Connection");
    EXPECT_EQ(description(wifi), "WiFi");
    EXPECT_EQ(description(cellular), "Cellular");
    EXPECT_EQ(describe(wifi), "WiFi") << "in logs, too";
    EXPECT_EQ(describe(std::optional(cellular)), "Cellular");
}

TEST(Connection, CanBeAKey) {
    const std::unordered_set<Reachability::Connection> seen{wifi, cellular, wifi, unavailable};
    EXPECT_EQ(seen.size(), 3U);
    EXPECT_EQ(std::hash<Reachability::Connection>()(wifi), std::hash<Reachability::Connection>()(wifi));
}
