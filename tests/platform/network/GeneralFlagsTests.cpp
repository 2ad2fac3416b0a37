// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/network/FlagsOnPaper.h"

#include <gtest/gtest.h>

#include <vector>

namespace vorlan::network {
namespace {

using namespace fake;

/// The flags of the zero address.
class GeneralFlags : public FlagsOnPaper {};

TEST_F(GeneralFlags, ZeroAddressOfEitherFamilyIsTheNetworkInGeneral) {
    EXPECT_EQ(flagsTo("0.0.0.0"), "R");
    EXPECT_EQ(flagsTo("::"), "R");
    kernel.routes = {{"10.0.0.0", 24, 2}}; // neighbours are not the network in general
    EXPECT_EQ(flagsTo("0.0.0.0"), "-");
    EXPECT_EQ(flagsTo("::"), "-");
}

TEST_F(GeneralFlags, ZeroAddressItselfIsNeverAskedFor) {
    kernel.routes.push_back({.network = "0.0.0.0", .prefixLength = 32, .link = 1, .type = RTN_LOCAL});
    kernel.routes.push_back({.network = "::", .prefixLength = 128, .link = 1, .type = RTN_LOCAL});
    EXPECT_EQ(flagsTo("0.0.0.0"), "R");
    EXPECT_EQ(flagsTo("::"), "R");
}

TEST_F(GeneralFlags, EachQuarterOfTheNetworkWillDo) {
    kernel.address(2, "2001:db8::5", 64);
    const std::vector<TableRoute> quarters{{"0.0.0.0", 1, 2, "10.0.0.1"},
                                           {"128.0.0.0", 1, 2, "10.0.0.1"},
                                           {"2000::", 4, 2, "fe80::1"},
                                           {"3000::", 4, 2, "fe80::1"}};
    for (const auto& quarter : quarters) {
        kernel.routes = {quarter};
        EXPECT_EQ(flagsTo("0.0.0.0"), "R") << quarter.network;
        EXPECT_EQ(flagsTo("::"), "R") << quarter.network;
    }
    kernel.routes = {{"4000::", 2, 2, "fe80::1"}};
    EXPECT_EQ(flagsTo("::"), "-");
}

TEST_F(GeneralFlags, TheNetworkInGeneralIsTransientWhenAQuarterIs) {
    addTunnel("tun");
    kernel.routes.push_back({"128.0.0.0", 1, 7});
    EXPECT_EQ(flagsTo("0.0.0.0"), "Rt");
    kernel.routes.push_back({"0.0.0.0", 1, 7});
    EXPECT_EQ(flagsTo("::"), "Rt");
    kernel.world.links.at(7).flags = 0;
    EXPECT_EQ(flagsTo("0.0.0.0"), "-");
}

TEST_F(GeneralFlags, TheNetworkInGeneralIsNeitherDirectNorLocal) {
    kernel.routes = {{"0.0.0.0", 0, 2}};
    EXPECT_EQ(flagsTo("8.8.8.8"), "Rd");
    EXPECT_EQ(flagsTo("0.0.0.0"), "R");
    kernel.routes = {{.network = "0.0.0.0", .link = 1, .type = RTN_LOCAL}};
    EXPECT_EQ(flagsTo("8.8.8.8"), "Rl");
    EXPECT_EQ(flagsTo("0.0.0.0"), "-");
}

TEST_F(GeneralFlags, TheNetworkInGeneralIsNotKnownAsLongAsAQuarterIsNot) {
    kernel.routes.push_back({.network = "3000::", .prefixLength = 4, .error = EPERM});
    EXPECT_EQ(evaluate(to("0.0.0.0")).progress.outcome, Outcome::failed);
    kernel.routes.back() = {.network = "3000::", .prefixLength = 4, .link = 99};
    EXPECT_EQ(evaluate(to("0.0.0.0")).progress.outcome, Outcome::unsettled);
}

} // namespace
} // namespace vorlan::network
