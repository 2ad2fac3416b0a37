// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/ReachabilityStates.h"

#include <algorithm>
#include <iterator>

namespace vorlan::benchmarks {

namespace {

constexpr auto server = "198.51.100.7";
constexpr auto otherServer = "203.0.113.7";
constexpr auto serverV6 = "2001:db8:1::7";

constexpr auto addressV6 = "addr add fd00:9::1/64 dev veth0 nodad\n";
constexpr auto linkLocalV6 = "addr add fe80::1/64 dev veth0 nodad\n";
constexpr auto containers = "link add docker0 type bridge\n"
                            "addr add 172.17.0.1/16 dev docker0\n"
                            "link set docker0 up\n";

std::vector<NetworkState> routes() {
    return {
        {.name = "default route over a cable"},
        {.name = "no default route", .changes = "route del default\n"},
        {.name = "default route that is a blackhole",
         .changes = "route del default\nroute add blackhole default\n"},
        {.name = "default route that is prohibited",
         .changes = "route del default\nroute add prohibit default\n"},
        {.name = "default route that is unreachable",
         .changes = "route del default\nroute add unreachable default\n"},
        {.name = "a rule that prohibits everything", .changes = "rule add pref 100 prohibit\n"},
        {.name = "default route in a table of its own, by a rule (VPN, wg-quick)",
         .changes =
             "route del default\nroute add default via 10.9.0.2 table 100\nrule add pref 90 lookup 100\n"},
        {.name = "two halves in place of the default route (VPN, def1)",
         .changes =
             "route add 0.0.0.0/1 via 10.9.0.2\nroute add 128.0.0.0/1 via 10.9.0.2\nroute del default\n"},
        {.name = "default route by a next-hop object",
         .changes = "route del default\nnexthop add id 1 via 10.9.0.2 dev veth0\nroute add default nhid 1\n"},
        {.name = "default route by a group of next-hop objects",
         .changes = "route del default\nnexthop add id 1 via 10.9.0.2 dev veth0\nnexthop add id 2 group 1\n"
                    "route add default nhid 2\n"},
        {.name = "default route whose next-hop object was deleted",
         .changes = "route del default\nnexthop add id 1 via 10.9.0.2 dev veth0\nroute add default nhid 1\n"
                    "nexthop del id 1\n"},
    };
}

std::vector<NetworkState> links() {
    return {
        {.name = "cable pulled out, default route still there", .changesAtRouter = "link set vpeer down\n"},
        {.name = "link taken down", .changes = "link set veth0 down\n"},
        {.name = "link that waits to be let in (Wi-Fi before its handshake)",
         .changes = "link set veth0 mode dormant\nlink set veth0 down\nlink set veth0 state dormant\n"
                    "link set veth0 up\nroute add default via 10.9.0.2\n",
         .changesAtRouter = "addr flush dev vpeer\n"},
        {.name = "better default route over a link without a carrier",
         .changes =
             "link add veth1 type veth peer name vpeer1\naddr add 10.8.0.1/24 dev veth1\n"
             "link set veth1 up\nroute del default\nroute add default via 10.9.0.2 dev veth0 metric 600\n"
             "route add default via 10.8.0.2 dev veth1 metric 100\n"},
        {.name = "default route over a bridge",
         .changes = "addr flush dev veth0\nlink add br0 type bridge\nlink set veth0 master br0\n"
                    "addr add 10.9.0.1/24 dev br0\nlink set br0 up\nroute add default via 10.9.0.2\n"},
        {.name = "no default route, a bridge of containers",
         .changes = std::string("route del default\n") + containers},
    };
}

std::vector<NetworkState> sources() {
    return {
        {.name = "default route without an address",
         .changes = "addr flush dev veth0\nroute add default dev veth0\n"},
        {.name = "the same, beside a bridge of containers",
         .changes = std::string("addr flush dev veth0\nroute add default dev veth0\n") + containers},
        {.name = "address that the machine gave itself (169.254)",
         .changes = "addr flush dev veth0\naddr add 169.254.7.7/16 dev veth0 scope link\n"
                    "route add default dev veth0\n"},
        {.name = "IPv6 only",
         .changes = std::string("addr flush dev veth0\n") + addressV6 + "route add default via fd00:9::2\n"},
        {.name = "IPv6 only, by a link-local gateway",
         .changes = std::string("addr flush dev veth0\n") + linkLocalV6 + addressV6 +
                    "route add default via fe80::2 dev veth0\n"},
        {.name = "IPv6 only, its address not yet verified",
         .changes = "addr flush dev veth0\naddr add fd00:9::1/64 dev veth0\n"
                    "route add default via fd00:9::2\n",
         .setting = "dad_transmits",
         .settingValue = "60"},
        {.name = "IPv6 default route, link-local address only",
         .changes = std::string("addr flush dev veth0\n") + linkLocalV6 +
                    "route add default via fe80::2 dev veth0\n"},
    };
}

std::vector<NetworkState> unseen() {
    return {
        {.name = "the router is cut off from the network", .changesAtRouter = "link set rout down\n"},
        {.name = "the router drops everything (firewall)",
         .changesAtRouter = "rule add pref 90 iif vpeer blackhole\n"},
        {.name = "server behind a router that is cut off",
         .changesAtRouter = "link set rout down\n",
         .host = server},
        {.name = "neighbour that is switched off", .host = "10.9.0.99"},
    };
}

std::vector<NetworkState> addresses() {
    std::vector<NetworkState> all{
        {.name = "server behind the default route", .host = server},
        {.name = "server, the cable pulled out", .changesAtRouter = "link set vpeer down\n", .host = server},
        {.name = "server, no default route but one to its network",
         .changes = "route del default\nroute add 198.51.100.0/24 via 10.9.0.2\n",
         .host = server},
        {.name = "neighbour, no default route", .changes = "route del default\n", .host = "10.9.0.2"},
        {.name = "this machine's own address", .host = "10.9.0.1"},
        {.name = "loopback, no network at all", .changes = "link set veth0 down\n", .host = "127.0.0.1"},
        {.name = "container that does not run", .changes = containers, .host = "172.17.0.5"},
        {.name = "IPv6 server, IPv4 only", .host = serverV6},
        {.name = "IPv6 server, by a link-local gateway",
         .changes = std::string(linkLocalV6) + addressV6 + "route add default via fe80::2 dev veth0\n",
         .host = serverV6},
    };
    for (const std::string type : {"blackhole", "prohibit", "unreachable", "throw"})
        all.push_back({.name = "server in a network with a route of type " + type,
                       .changes = "route add " + type + " 203.0.113.0/24\n",
                       .host = otherServer});
    return all;
}

std::vector<NetworkState> names() {
    const std::string one = std::string(server) + " host.test\n";
    const std::string other = std::string(otherServer) + " host.test\n";
    const std::string six = std::string(serverV6) + " host.test\n";
    return {
        {.name = "name of a server", .host = "host.test", .hosts = one},
        {.name = "name that nobody knows", .host = "host.test"},
        {.name = "name of a server, no default route",
         .changes = "route del default\n",
         .host = "host.test",
         .hosts = one},
        {.name = "name of a server, the cable pulled out",
         .changesAtRouter = "link set vpeer down\n",
         .host = "host.test",
         .hosts = one},
        {.name = "name with two addresses, no way to the first",
         .changes = "route add blackhole 203.0.113.0/24\n",
         .host = "host.test",
         .hosts = other + one},
        {.name = "name with an IPv6 address, IPv4 only", .host = "host.test", .hosts = six},
        {.name = "name of this machine (localhost), no network at all",
         .changes = "link set veth0 down\n",
         .host = "localhost"},
    };
}

} // namespace

std::vector<NetworkState> networkStates() {
    std::vector<NetworkState> all;
    for (auto group : {routes, links, sources, unseen, addresses, names}) {
        auto states = group();
        std::ranges::move(states, std::back_inserter(all));
    }
    return all;
}

} // namespace vorlan::benchmarks
