// SPDX-License-Identifier: Apache-2.0
#include "platform/network/ConnectProbe.h"

#include "tests/platform/network/FakeSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorlan::network {
namespace {

using fake::ip;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

ConnectProbe always(const ConnectAnswer& answer) {
    return [answer](const IPAddress&) { return answer; };
}

TEST(ConnectProbe, SourceMakesThePathSatisfied) {
    const auto probe = [](const IPAddress& destination) -> ConnectAnswer {
        if (destination.family() == IPAddress::Family::v6) return {.error = ENETUNREACH};
        return {.source = ip("10.0.0.5")};
    };
    const NWPath path = pathByConnecting(probe, EPERM);
    EXPECT_EQ(path.status(), NWPath::Status::satisfied);
    EXPECT_TRUE(path.supportsIPv4());
    EXPECT_FALSE(path.supportsIPv6());
    EXPECT_TRUE(path.usesInterfaceType(InterfaceType::other));
    EXPECT_THAT(path.localAddresses(), ElementsAre("10.0.0.5"));
    EXPECT_THAT(path.reason(), HasSubstr("netlink is not available (Operation not permitted)"));
}

TEST(ConnectProbe, KernelsVerdictsMakeItUnsatisfied) {
    for (const int error : {ENETUNREACH, EHOSTUNREACH, EINVAL, EADDRNOTAVAIL, ENETDOWN}) {
        const NWPath path = pathByConnecting(always({.error = error}), EPERM);
        EXPECT_EQ(path.status(), NWPath::Status::unsatisfied) << error;
        EXPECT_FALSE(path.usesInterfaceType(InterfaceType::other)) << error;
    }
}

TEST(ConnectProbe, MissingPermissionNeverMakesItUnsatisfied) {
    for (const int error : {EPERM, EACCES, EMFILE, EAFNOSUPPORT, ENOSYS}) {
        const NWPath path = pathByConnecting(always({.error = error}), error);
        EXPECT_EQ(path.status(), NWPath::Status::satisfied) << error;
        EXPECT_TRUE(path.usesInterfaceType(InterfaceType::other)) << error;
    }
}

TEST(ConnectProbe, MachineWithoutIPv6IsJudgedByIPv4) {
    const auto probe = [](const IPAddress& destination) -> ConnectAnswer {
        return {.error = destination.family() == IPAddress::Family::v6 ? EAFNOSUPPORT : ENETUNREACH};
    };
    EXPECT_EQ(pathByConnecting(probe, EPERM).status(), NWPath::Status::unsatisfied);
}

TEST(ConnectProbe, UnusableSourceMakesItUnsatisfied) {
    for (const auto* source : {"0.0.0.0", "127.0.0.1", "169.254.1.1", "::1", "fe80::1"}) {
        const NWPath path = pathByConnecting(always({.source = ip(source)}), EPERM);
        EXPECT_EQ(path.status(), NWPath::Status::unsatisfied) << source;
    }
    EXPECT_EQ(pathByConnecting(always({}), EPERM).status(), NWPath::Status::unsatisfied);
}

TEST(ConnectProbe, RunningKernelAnswersForTheLoopbackAddress) {
    const ConnectAnswer answer = connectSocket(ip("127.0.0.1"));
    ASSERT_EQ(answer.error, 0);
    EXPECT_EQ(answer.source.value().text(), "127.0.0.1");
}

} // namespace
} // namespace vorlan::network
