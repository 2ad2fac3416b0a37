// SPDX-License-Identifier: Apache-2.0
// Which types of interface a path uses, on machines that few have on their desk.

#include "platform/network/LinkClassifier.h"
#include "platform/network/PathEvaluator.h"

#include "tests/platform/network/FakeSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorlan::network {
namespace {

using namespace fake;
using ::testing::ElementsAre;
using enum InterfaceType;

/// A machine whose default route leaves by link 10, made by the case.
class InterfaceTypeOfPath : public ::testing::Test {
protected:
    InterfaceTypeOfPath() { kernel.routes = {{"0.0.0.0", 0, 10, "10.0.0.1"}}; }

    Link& out(const std::string& name, const std::string& kind = {}) {
        kernel.address(10, "10.0.0.5", 24);
        return kernel.add(10, name, kind);
    }

    Link& port(LinkIndex index, const std::string& name, const std::string& kind = {}) {
        Link& link = kernel.add(index, name, kind);
        link.master = 10;
        return link;
    }

    /// A link with a default route of its own, behind the others.
    Link& second(LinkIndex index, const std::string& name, std::uint32_t metric = 600) {
        const std::string network = "10.0." + std::to_string(index) + ".";
        kernel.address(index, network + "5", 24);
        kernel.routes.push_back(
            {.network = "0.0.0.0", .link = index, .gateway = network + "1", .metric = metric, .rule = 2});
        return kernel.add(index, name);
    }

    void radio(const std::string& name) { sysfs.devices[name].wireless = true; }

    NWPath path() { return evaluatePath(kernel, sysfs).path; }

    InterfaceTypes types() {
        const NWPath found = path();
        EXPECT_EQ(found.status(), NWPath::Status::satisfied) << found.reason();
        InterfaceTypes used;
        for (const auto type : {other, wifi, cellular, wiredEthernet, loopback})
            if (found.usesInterfaceType(type)) used.insert(type);
        return used;
    }

    FakeKernel kernel;
    FakeSysfs sysfs;
};

TEST_F(InterfaceTypeOfPath, RadioIsWifi) {
    out("wlan0");
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(wifi));
}

TEST_F(InterfaceTypeOfPath, ModemIsCellular) {
    out("wwan0");
    sysfs.devices["wwan0"].devtype = "wwan";
    EXPECT_THAT(types(), ElementsAre(cellular));
}

TEST_F(InterfaceTypeOfPath, ModemOfRawIPIsCellularThoughPointToPoint) {
    auto& link = out("rmnet0", "rmnet");
    link.hardware = 519;
    link.flags |= IFF_POINTOPOINT;
    EXPECT_THAT(types(), ElementsAre(cellular));
    link.kind = "wwan";
    link.hardware = ARPHRD_NONE;
    EXPECT_THAT(types(), ElementsAre(cellular));
}

TEST_F(InterfaceTypeOfPath, PointToPointProtocolIsOther) {
    auto& link = out("ppp0", "ppp");
    link.hardware = ARPHRD_PPP;
    link.flags |= IFF_POINTOPOINT;
    EXPECT_THAT(types(), ElementsAre(other));
}

TEST_F(InterfaceTypeOfPath, BluetoothIsOther) {
    out("bnep0");
    sysfs.devices["bnep0"].devtype = "bluetooth";
    EXPECT_THAT(types(), ElementsAre(other));
}

TEST_F(InterfaceTypeOfPath, ContainersOwnCableIsWired) {
    out("eth0", "veth").lower = 77;
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, UnknownHardwareIsOther) {
    out("ib0").hardware = ARPHRD_INFINIBAND;
    EXPECT_THAT(types(), ElementsAre(other));
}

TEST_F(InterfaceTypeOfPath, VlanIsWhatItsLowerLinkIs) {
    for (const auto* kind : {"vlan", "macvlan", "ipvlan", "macsec"}) {
        out("over", kind).lower = 3;
        kernel.add(3, "wlan0");
        radio("wlan0");
        EXPECT_THAT(types(), ElementsAre(wifi)) << kind;
    }
}

TEST_F(InterfaceTypeOfPath, VlanOverALinkOfAnotherNamespaceIsWired) {
    auto& link = out("eth0.5", "vlan");
    link.lower = 3;
    link.lowerIsElsewhere = true;
    kernel.add(3, "wlan0"); // has the same number, but is another device
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, VlanLoopComesToAnEnd) {
    out("a", "vlan").lower = 3;
    kernel.add(3, "b", "vlan").lower = 10;
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, VlanOverNothingIsWired) {
    out("eth0.5", "vlan").lower = 99;
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, StackIsFollowedForEightStepsOnly) {
    const auto stack = [&](LinkIndex height) {
        out("top", "vlan").lower = 11;
        for (LinkIndex step = 11; step < 10 + height; ++step)
            kernel.add(step, "s" + std::to_string(step), "vlan").lower = step + 1;
        kernel.add(10 + height, "wlan0");
    };
    radio("wlan0");
    stack(8);
    EXPECT_THAT(types(), ElementsAre(wifi));
    stack(9);
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, BondIsWhatItsRunningPortsAre) {
    out("bond0", "bond");
    port(3, "eth0").flags = IFF_UP; // the dead one
    port(4, "wlan0");
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(wifi));
    kernel.world.links.at(3).flags = running;
    EXPECT_THAT(types(), ElementsAre(wifi, wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, BondWithoutALivingPortIsWired) {
    out("bond0", "bond");
    port(3, "wlan0").flags = 0;
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, BridgeIgnoresThePortsOfItsGuests) {
    out("br0", "bridge");
    port(3, "wlan0");
    port(4, "veth1", "veth");
    port(5, "tap0", "tun");
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(wifi));
}

TEST_F(InterfaceTypeOfPath, BridgeWithGuestsOnlyIsWired) {
    out("br0", "bridge");
    port(4, "veth1", "veth");
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, BridgeWithManyPortsIsAllOfThem) {
    out("br0", "bridge");
    for (LinkIndex index = 20; index < 60; ++index) port(index, "eth" + std::to_string(index));
    port(60, "wlan0");
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(wifi, wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, BridgeThatIsItsOwnPortIsWired) {
    out("br0", "bridge").master = 10;
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, WireGuardOverWifiReportsBoth) {
    auto& tunnel = out("wg0", "wireguard");
    tunnel.hardware = ARPHRD_NONE;
    tunnel.flags |= IFF_POINTOPOINT;
    kernel.routes[0].gateway.clear();
    second(3, "wlan0");
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(other, wifi));
    EXPECT_THAT(path().availableInterfaces(), ElementsAre("wg0", "wlan0"));
}

TEST_F(InterfaceTypeOfPath, TunnelIsCarriedByTheCheapestWay) {
    out("tun0", "tun").flags |= IFF_POINTOPOINT;
    second(3, "wlan0", 600);
    second(4, "wwan0", 700);
    radio("wlan0");
    sysfs.devices["wwan0"].devtype = "wwan";
    EXPECT_THAT(types(), ElementsAre(other, wifi));
    kernel.world.links.at(3).flags = IFF_UP; // carries nothing any more
    EXPECT_THAT(types(), ElementsAre(other, cellular));
}

TEST_F(InterfaceTypeOfPath, TunnelByHalvesOverWifiReportsBoth) {
    kernel.routes = {{"0.0.0.0", 1, 10, "10.0.0.1"}, {"128.0.0.0", 1, 10, "10.0.0.1"}};
    out("tun0", "tun").flags |= IFF_POINTOPOINT;
    second(3, "wlan0").flags = running;
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(other, wifi));
}

TEST_F(InterfaceTypeOfPath, TunnelThatTookTheDefaultRouteIsCarriedByItsServersRoute) {
    out("tun0", "tun").flags |= IFF_POINTOPOINT;
    kernel.add(3, "wlan0");
    radio("wlan0");
    kernel.routes.push_back({.network = "203.0.113.1", .prefixLength = 32, .link = 3, .gateway = "10.0.3.1"});
    EXPECT_THAT(types(), ElementsAre(other, wifi));
}

TEST_F(InterfaceTypeOfPath, TunnelOverTunnelOverCableReportsTheCable) {
    out("wg0", "wireguard").flags |= IFF_POINTOPOINT;
    second(3, "tun0", 50).kind = "tun";
    second(4, "eth0", 100);
    EXPECT_THAT(types(), ElementsAre(other, wiredEthernet));
}

TEST_F(InterfaceTypeOfPath, TunnelWithoutAKnownCarrierIsOther) {
    out("tun0", "tun").flags |= IFF_POINTOPOINT;
    EXPECT_THAT(types(), ElementsAre(other));
}

TEST_F(InterfaceTypeOfPath, LinkBehindTheDefaultRouteIsNotInUse) {
    out("eth0");
    second(3, "wlan0");
    radio("wlan0");
    EXPECT_THAT(types(), ElementsAre(wiredEthernet));
}

} // namespace
} // namespace vorlan::network
