// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NWPath.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorlan {
namespace {

using ::testing::ElementsAre;

NWPath::Description full() {
    return {.status = NWPath::Status::satisfied,
            .interfaceTypes = {InterfaceType::other, InterfaceType::wifi},
            .availableInterfaces = {"wg0", "wlan0"},
            .gateways = {"10.0.0.1"},
            .localAddresses = {"10.0.0.5"},
            .supportsIPv4 = true,
            .supportsIPv6 = false,
            .reason = "because"};
}

TEST(NWPath, PathOfNothingIsUnsatisfied) {
    const NWPath path;
    EXPECT_EQ(path.status(), NWPath::Status::unsatisfied);
    EXPECT_FALSE(path.usesInterfaceType(InterfaceType::wifi));
    EXPECT_THAT(path.availableInterfaces(), ElementsAre());
    EXPECT_FALSE(path.supportsIPv4() || path.supportsIPv6());
    EXPECT_EQ(path.reason(), "");
}

TEST(NWPath, PathSaysWhatItWasMadeFrom) {
    const NWPath path(full());
    EXPECT_EQ(path.status(), NWPath::Status::satisfied);
    EXPECT_TRUE(path.usesInterfaceType(InterfaceType::wifi));
    EXPECT_TRUE(path.usesInterfaceType(InterfaceType::other));
    EXPECT_FALSE(path.usesInterfaceType(InterfaceType::cellular));
    EXPECT_FALSE(path.usesInterfaceType(InterfaceType::wiredEthernet));
    EXPECT_FALSE(path.usesInterfaceType(InterfaceType::loopback));
    EXPECT_THAT(path.availableInterfaces(), ElementsAre("wg0", "wlan0"));
    EXPECT_THAT(path.gateways(), ElementsAre("10.0.0.1"));
    EXPECT_THAT(path.localAddresses(), ElementsAre("10.0.0.5"));
    EXPECT_TRUE(path.supportsIPv4());
    EXPECT_FALSE(path.supportsIPv6());
    EXPECT_EQ(path.reason(), "because");
}

TEST(NWPath, OrderAndRepetitionOfTypesDoNotMatter) {
    auto description = full();
    description.interfaceTypes = {InterfaceType::wifi, InterfaceType::other, InterfaceType::wifi};
    EXPECT_EQ(NWPath(description), NWPath(full()));
}

TEST(NWPath, EverythingButTheReasonIsCompared) {
    auto description = full();
    description.reason = "for another reason";
    EXPECT_EQ(NWPath(description), NWPath(full()));
    const auto differs = [](auto change) {
        auto changed = full();
        change(changed);
        return NWPath(changed) != NWPath(full());
    };
    EXPECT_TRUE(differs([](auto& d) { d.status = NWPath::Status::requiresConnection; }));
    EXPECT_TRUE(differs([](auto& d) { d.interfaceTypes.pop_back(); }));
    EXPECT_TRUE(differs([](auto& d) { d.availableInterfaces.pop_back(); }));
    EXPECT_TRUE(differs([](auto& d) { d.gateways = {"10.0.0.2"}; }));
    EXPECT_TRUE(differs([](auto& d) { d.localAddresses = {"10.0.0.6"}; }));
    EXPECT_TRUE(differs([](auto& d) { d.supportsIPv4 = false; }));
    EXPECT_TRUE(differs([](auto& d) { d.supportsIPv6 = true; }));
}

TEST(NWPath, CopiesAreEqual) {
    const NWPath path(full());
    const NWPath copy = path; // NOLINT(performance-unnecessary-copy-initialization): the copy is the point
    EXPECT_EQ(copy, path);
}

} // namespace
} // namespace vorlan
