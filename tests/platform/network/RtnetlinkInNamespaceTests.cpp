// SPDX-License-Identifier: Apache-2.0
// The netlink sockets against the running kernel.

#include "platform/network/PathCenter.h"
#include "platform/network/RtnetlinkFeed.h"
#include "platform/network/RtnetlinkKernel.h"

#include "tests/platform/network/Namespace.h"
#include "tests/platform/network/NetlinkBytes.h"
#include "tests/platform/network/WatchedNetwork.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <future>
#include <sstream>

namespace vorlan::network {
namespace {

using namespace tests;
using namespace fake;
using ::testing::ElementsAre;
using News = ChangeFeed::News;

IPAddress at(const char* text) {
    return IPAddress::fromText(text).value();
}

/// A line of the kernel's list of netlink sockets.
struct SocketLine {
    std::uint32_t port = 0;
    bool listens = false;
    unsigned long drops = 0;
};

std::vector<SocketLine> routeSockets() {
    std::ifstream file("/proc/net/netlink");
    std::string line;
    std::getline(file, line); // the heading
    std::vector<SocketLine> sockets;
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::string address, groups, receive, send, dump, locks;
        unsigned protocol = 0;
        SocketLine socket;
        fields >> address >> protocol >> socket.port >> groups >> receive >> send >> dump >> locks >>
            socket.drops;
        socket.listens = groups.find_first_not_of('0') != std::string::npos;
        if (protocol == NETLINK_ROUTE && socket.port != 0) sockets.push_back(socket);
    }
    return sockets;
}

/// Sends a message to every listening socket of the namespace, as only the kernel should; returns how many
/// heard.
int spoof(const Bytes& bytes) {
    const int sender = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
    int heard = 0;
    for (const auto& line : routeSockets()) {
        sockaddr_nl target{};
        target.nl_family = AF_NETLINK;
        target.nl_pid = line.port;
        const auto* address = reinterpret_cast<const sockaddr*>(&target);
        if (line.listens && sendto(sender, bytes.data(), bytes.size(), 0, address, sizeof(target)) > 0)
            ++heard;
    }
    close(sender);
    return heard;
}

class RtnetlinkInNamespace : public ::testing::TestWithParam<Privilege> {
protected:
    static void plugIn() {
        ip("link set lo up\n"
           "link add veth0 type veth peer name vpeer\n"
           "addr add 10.9.0.1/24 dev veth0\n"
           "link set veth0 up\n"
           "link set vpeer up\n"
           "route add default via 10.9.0.2");
    }
};

INSTANTIATE_TEST_SUITE_P(, RtnetlinkInNamespace, ::testing::Values(Privilege::root, Privilege::unprivileged),
                         ::testing::PrintToStringParamName());

const Link* linkNamed(const Snapshot& snapshot, const std::string& name) {
    for (const auto& [index, link] : snapshot.links)
        if (link.name == name) return &link;
    return nullptr;
}

TEST_P(RtnetlinkInNamespace, SnapshotHasTheLinksAndTheirAddresses) {
    inOwnNamespace(GetParam(), [] {
        plugIn();
        const auto kernel = std::move(*RtnetlinkKernel::open());
        Snapshot snapshot;
        const Link* veth = nullptr;
        // The kernel may take up to a second to notice a carrier.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
        do {
            snapshot = *kernel->snapshot();
            veth = linkNamed(snapshot, "veth0");
            ASSERT_NE(veth, nullptr);
        } while (!veth->isRunning() && std::chrono::steady_clock::now() < deadline);
        EXPECT_TRUE(veth->isRunning());
        EXPECT_EQ(veth->kind, "veth");
        EXPECT_TRUE(snapshot.link(1)->isLoopback());
        const auto held = std::ranges::count_if(snapshot.addresses, [&](const LinkAddress& address) {
            return address.link == veth->index && address.local == at("10.9.0.1") &&
                   address.prefixLength == 24;
        });
        EXPECT_EQ(held, 1);
    });
}

TEST_P(RtnetlinkInNamespace, RoutesAreAnsweredAsTheKernelWouldUseThem) {
    inOwnNamespace(GetParam(), [] {
        plugIn();
        ip("route add blackhole 10.51.0.0/16\nroute add prohibit 10.52.0.0/16\nroute add throw 10.53.0.0/16\n"
           "route add unreachable 10.54.0.0/16");
        const auto kernel = std::move(*RtnetlinkKernel::open());
        const auto route = kernel->route(at("8.8.8.8"));
        ASSERT_TRUE(route);
        EXPECT_EQ(route->type, RTN_UNICAST);
        EXPECT_EQ(route->gateway.value().text(), "10.9.0.2");
        EXPECT_EQ(route->source.value().text(), "10.9.0.1");
        EXPECT_FALSE(kernel->route(at("10.9.0.77"))->gateway);
        EXPECT_EQ(kernel->route(at("10.9.0.1"))->type, RTN_LOCAL);
        EXPECT_EQ(kernel->route(at("10.51.0.1")).error(), EINVAL);
        EXPECT_EQ(kernel->route(at("10.52.0.1")).error(), EACCES);
        EXPECT_EQ(kernel->route(at("10.53.0.1")).error(), ENETUNREACH);
        EXPECT_EQ(kernel->route(at("10.54.0.1")).error(), EHOSTUNREACH);
        EXPECT_EQ(kernel->route(at("3000::1")).error(), ENETUNREACH);
    });
}

TEST_P(RtnetlinkInNamespace, TableEntriesAreThoseOfTheirLink) {
    inOwnNamespace(GetParam(), [] {
        plugIn();
        ip("link add veth1 type veth peer name vpeer1\naddr add 10.10.0.1/24 dev veth1\nlink set veth1 up\n"
           "link set vpeer1 up\nroute add default via 10.10.0.2 metric 600\n"
           "route add 203.0.113.1/32 via 10.10.0.2");
        const auto kernel = std::move(*RtnetlinkKernel::open());
        const Snapshot snapshot = *kernel->snapshot();
        std::map<std::string, LinkIndex> index;
        for (const auto& [number, link] : snapshot.links) index[link.name] = number;
        EXPECT_EQ(kernel->tableEntry(at("8.8.8.8"), index["veth0"])->metric, 0U);
        EXPECT_EQ(kernel->tableEntry(at("8.8.8.8"), index["veth1"])->metric, 600U);
        EXPECT_EQ(kernel->tableEntry(at("8.8.8.8"), index["veth1"])->prefixLength, 0U);
        EXPECT_FALSE(kernel->tableEntry(at("8.8.8.8"), index["vpeer"]));
        EXPECT_THAT(*kernel->hostRouteLinks(), ElementsAre(index["veth1"]));
    });
}

TEST_P(RtnetlinkInNamespace, ForgedMessagesAreNotHeard) {
    inOwnNamespace(GetParam(), [] {
        ip("link set lo up"); // a cable would go on changing for a while
        const Queue queue("feed");
        auto feed = std::move(*RtnetlinkFeed::open(queue, [] {}));
        EXPECT_EQ(queue.sync([&] { return feed->drain(); }), News::none);
        int heard = 0;
        for (int count = 0; count < 200; ++count) heard += spoof(message(RTM_NEWROUTE, Bytes(12)));
        if (heard == 0) GTEST_SKIP() << "the kernel lets nobody send to the feed here";
        EXPECT_EQ(queue.sync([&] { return feed->drain(); }), News::none);
        ip("addr add 10.9.0.1/32 dev lo");
        EXPECT_EQ(queue.sync([&] { return feed->drain(); }), News::changed);
        queue.sync([&] { feed.reset(); });
    });
}

TEST_P(RtnetlinkInNamespace, LostMessagesAreNewsAndTheFeedGoesOn) {
    inOwnNamespace(GetParam(), [] {
        ip("link set lo up"); // a cable would go on changing for a while
        const Queue queue("feed");
        const auto unheard = [] {};
        auto feed = std::move(*RtnetlinkFeed::open(queue, unheard, 2048));
        std::string flaps;
        for (int flap = 0; flap < 200; ++flap)
            flaps += "addr add 10.9.0.1/32 dev lo\naddr del 10.9.0.1/32 dev lo\n";
        ipBatch(flaps);
        const auto sockets = routeSockets();
        const auto lost =
            std::ranges::any_of(sockets, [](const auto& line) { return line.listens && line.drops > 0; });
        EXPECT_TRUE(lost);
        EXPECT_EQ(queue.sync([&] { return feed->drain(); }), News::changed);
        EXPECT_EQ(queue.sync([&] { return feed->drain(); }), News::none);
        ip("addr add 10.9.0.1/32 dev lo");
        EXPECT_EQ(queue.sync([&] { return feed->drain(); }), News::changed);
        queue.sync([&] { feed.reset(); });
    });
}

TEST_P(RtnetlinkInNamespace, MonitorFindsTheRightStateAfterAnOverflow) {
    inOwnNamespace(GetParam(), [] {
        plugIn();
        auto providers = NetworkProviders::ofThisMachine();
        providers.openFeed = [](const Queue& queue, std::function<void()> readable) {
            return RtnetlinkFeed::open(queue, std::move(readable), 2048);
        };
        const Queue queue("center");
        WatchedNetwork network(
            std::make_shared<PathCenter>(std::make_shared<NetworkCenter>(queue, std::move(providers))));
        ASSERT_TRUE(network.becomes(wiredV4));
        std::promise<void> unblock;
        queue.async([wait = unblock.get_future().share()] { wait.wait(); });
        std::string flaps;
        for (int flap = 0; flap < 300; ++flap) flaps += "route del default\nroute add default via 10.9.0.2\n";
        ipBatch(flaps + "route del default\n");
        unblock.set_value();
        EXPECT_TRUE(network.becomes(offline));
        ip("route add default via 10.9.0.2");
        EXPECT_TRUE(network.becomes(wiredV4));
    });
}

TEST_P(RtnetlinkInNamespace, FeedCallsOnItsQueueAndClosesItsDescriptor) {
    inOwnNamespace(GetParam(), [] {
        const Queue queue("feed");
        std::promise<bool> heard;
        std::atomic<bool> done = false;
        auto feed = std::move(*RtnetlinkFeed::open(queue, [&] {
            if (!done.exchange(true)) heard.set_value(queue.isCurrent());
        }));
        ip("link set lo up");
        EXPECT_TRUE(heard.get_future().get());
        const int whileOpen = openSockets();
        queue.sync([&] { feed.reset(); });
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (openSockets() >= whileOpen && std::chrono::steady_clock::now() < deadline) queue.sync([] {});
        EXPECT_EQ(openSockets(), whileOpen - 1);
    });
}

TEST(RtnetlinkFeed, ChangesAreToldFromNoise) {
    const auto tells = [](const Bytes& datagram) { return RtnetlinkFeed::tellsOfChange(datagram); };
    ifinfomsg header{};
    const Bytes linkOfDevice = bytesOf(header);
    header.ifi_family = AF_BRIDGE;
    const Bytes linkOfBridge = bytesOf(header);
    for (const std::uint16_t type : {RTM_NEWADDR, RTM_DELADDR, RTM_NEWROUTE, RTM_DELROUTE, RTM_NEWRULE,
                                     RTM_DELRULE, RTM_NEWNEXTHOP, RTM_DELNEXTHOP})
        EXPECT_TRUE(tells(message(type, {}))) << type;
    for (const std::uint16_t type : {RTM_NEWLINK, RTM_DELLINK}) {
        EXPECT_TRUE(tells(message(type, linkOfDevice)));
        EXPECT_FALSE(tells(message(type, linkOfBridge)));
        EXPECT_TRUE(tells(message(type, linkOfBridge) + message(RTM_NEWADDR, {})));
    }
    EXPECT_FALSE(tells(message(NLMSG_NOOP, {})));
    EXPECT_FALSE(tells({}));
    EXPECT_TRUE(tells(messageWithLength(0x80000000U, RTM_NEWADDR, {}))); // damaged: who knows what it was
}

} // namespace
} // namespace vorlan::network
