// SPDX-License-Identifier: Apache-2.0

// The flags in ten characters.

#include <VorlanFoundation/Reachability.h>

#include "tests/reachability/ScriptedMonitor.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <set>
#include <string>

using namespace vorlan;
using tests::Flags;

namespace {

struct Place {
    std::size_t index;
    char letter;
    Flags flag;
};

constexpr Place places[] = {
    {1, 'R', Flags{0x2}}, {3, 'c', Flags{0x4}},  {4, 't', Flags{0x1}},     {5, 'i', Flags{0x10}},
    {6, 'C', Flags{0x8}}, {7, 'D', Flags{0x20}}, {8, 'l', Flags{0x10000}}, {9, 'd', Flags{0x20000}},
};

class ReachabilityDescriptionTest : public tests::ScriptedMonitor {
protected:
    std::string descriptionOf(Flags flags) {
        network.setFlags(flags);
        const auto fresh = std::make_shared<Reachability>(network.reachability(), queues());
        fresh->connection(); // finds the flags
        return fresh->description();
    }
};

} // namespace

TEST_F(ReachabilityDescriptionTest, EachOfThe256CombinationsHasALetterInEachFlagsPlace) {
    std::set<std::string> texts;
    for (unsigned combination = 0; combination < 256; ++combination) {
        Flags flags{};
        std::string expected = "-- -------";
        for (std::size_t bit = 0; bit < std::size(places); ++bit) {
            if (((combination >> bit) & 1U) == 0) continue;
            flags |= places[bit].flag;
            expected[places[bit].index] = places[bit].letter;
        }
        EXPECT_EQ(descriptionOf(flags), expected);
        texts.insert(expected);
    }
    EXPECT_EQ(texts.size(), 256U);
}

TEST_F(ReachabilityDescriptionTest, ExamplesReadAsWritten) {
    EXPECT_EQ(descriptionOf(Flags::reachable | Flags::isDirect), "-R ------d");
    EXPECT_EQ(descriptionOf(Flags::reachable | Flags::isLocalAddress), "-R -----l-");
    EXPECT_EQ(descriptionOf(Flags::reachable | Flags::transientConnection), "-R -t-----");
    EXPECT_EQ(descriptionOf(Flags::connectionRequired | Flags::interventionRequired), "-- c-i----");
    EXPECT_EQ(descriptionOf(Flags::connectionOnTraffic | Flags::connectionOnDemand), "-- ---CD--");
    EXPECT_EQ(descriptionOf(Flags{}), "-- -------");
    EXPECT_EQ(descriptionOf(Flags{0xffffffff}), "-R ctiCDld");
}

TEST_F(ReachabilityDescriptionTest, BitsWithoutALetterAreNotShown) {
    EXPECT_EQ(descriptionOf(Flags{0xfffcffc0}), "-- -------");
}

TEST_F(ReachabilityDescriptionTest, MonitorWithoutFlagsSaysSo) {
    network.setFlags(Flags::reachable);
    EXPECT_EQ(monitor->description(), "unavailable flags");
    network.failFlags(kSCStatusFailed);
    EXPECT_EQ(monitor->connection(), Reachability::Connection::unavailable);
    EXPECT_EQ(monitor->description(), "unavailable flags");
}

TEST_F(ReachabilityDescriptionTest, DescriptionFollowsTheChanges) {
    startQuietly();
    EXPECT_EQ(monitor->description(), "-- -------");
    network.setFlags(Flags::reachable);
    settle();
    EXPECT_EQ(monitor->description(), "-R -------");
}

TEST_F(ReachabilityDescriptionTest, MonitorIsDescribedAsAnyOtherValue) {
    network.setFlags(Flags::reachable | Flags::isDirect);
    startQuietly();
    EXPECT_EQ(describe(monitor), "-R ------d");
    EXPECT_EQ(describe(*monitor), "-R ------d");
}

TEST_F(ReachabilityDescriptionTest, SystemDescribesTheMonitorThatItTells) {
    const auto reference = network.reachability();
    const auto watched = std::make_shared<Reachability>(reference, queues());
    network.setFlags(Flags::reachable | Flags::isDirect);
    watched->startNotifier();
    EXPECT_NE(SCNetworkReachabilityCopyDescription(reference).find("-R ------d"), std::string::npos);
    watched->stopNotifier();
    EXPECT_EQ(SCNetworkReachabilityCopyDescription(reference).find("-R ------d"), std::string::npos);
}

namespace {

/// A source that has its own object described while it is asked for the flags.
class DescribedSource : public SCNetworkReachabilitySource {
public:
    Answer currentFlags() override {
        if (const auto target = reference.lock()) seen = SCNetworkReachabilityCopyDescription(target);
        return {.flags = Flags::reachable};
    }
    std::shared_ptr<void> subscribe(Subscriber) override { return std::make_shared<int>(); }
    std::string description() const override { return "described"; }

    std::weak_ptr<SCNetworkReachability> reference;
    std::string seen; // used while the monitor starts
};

} // namespace

TEST_F(ReachabilityDescriptionTest, SystemSaysOfAMonitorThatHasNoFlagsYetThatTheyAreUnavailable) {
    const auto source = std::make_shared<DescribedSource>();
    const auto reference = SCNetworkReachabilityCreateWithSource(source);
    source->reference = reference;
    const auto watched = std::make_shared<Reachability>(reference, queues());
    watched->startNotifier();
    EXPECT_NE(source->seen.find("unavailable flags"), std::string::npos) << source->seen;
}
