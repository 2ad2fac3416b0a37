// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/KernelNetwork.h"

#include "benchmarks/support/PrivateNetwork.h"

#include <arpa/inet.h>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <system_error>

namespace vorlan::benchmarks {

namespace {

constexpr std::size_t bufferSize = std::size_t{64} * 1024;
constexpr auto gateway = "10.9.0.2";

void check(bool isDone, const char* step) {
    if (!isDone) throw std::system_error(errno, std::generic_category(), step);
}

/// The bytes of a request, with room for its attributes.
using RequestBytes = std::array<char, 256>;

} // namespace

void RoutingSocket::Closer::operator()(mnl_socket* socket) const {
    mnl_socket_close(socket);
}

RoutingSocket::RoutingSocket()
    : socket_(mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC | SOCK_NONBLOCK)), buffer_(bufferSize) {
    check(socket_ != nullptr && mnl_socket_bind(socket_.get(), 0, MNL_SOCKET_AUTOPID) == 0, "netlink");
}

void RoutingSocket::listen() {
    for (int group : {RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_ROUTE,
                      RTNLGRP_IPV6_ROUTE, RTNLGRP_IPV4_RULE, RTNLGRP_IPV6_RULE, RTNLGRP_NEXTHOP})
        check(mnl_socket_setsockopt(socket_.get(), NETLINK_ADD_MEMBERSHIP, &group, sizeof group) == 0,
              "netlink group");
}

Clock::time_point RoutingSocket::request(nlmsghdr& message) {
    message.nlmsg_flags |= NLM_F_REQUEST | NLM_F_ACK;
    const auto start = Clock::now();
    check(mnl_socket_sendto(socket_.get(), &message, message.nlmsg_len) >= 0, "netlink request");
    const auto answer = receive(start + std::chrono::seconds(10));
    if (answer.empty()) errno = ETIMEDOUT;
    check(!answer.empty() && mnl_cb_run(answer.data(), answer.size(), 0, 0, nullptr, nullptr) >= 0,
          "netlink answer");
    return start;
}

std::span<const std::byte> RoutingSocket::receive(Clock::time_point deadline) {
    pollfd waiting{.fd = mnl_socket_get_fd(socket_.get()), .events = POLLIN, .revents = 0};
    const auto left =
        std::max(std::chrono::nanoseconds(0), std::chrono::nanoseconds(deadline - Clock::now()));
    const timespec limit{.tv_sec = left.count() / 1'000'000'000, .tv_nsec = left.count() % 1'000'000'000};
    if (ppoll(&waiting, 1, &limit, nullptr) <= 0) return {};
    const auto size = mnl_socket_recvfrom(socket_.get(), buffer_.data(), buffer_.size());
    if (size < 0 && errno == EAGAIN) return {};
    check(size > 0, "netlink");
    return {buffer_.data(), static_cast<std::size_t>(size)};
}

void RoutingSocket::waitForQuiet(std::chrono::milliseconds pause) {
    while (!receive(Clock::now() + pause).empty()) {}
}

Cable::Cable() {
    ip("link set lo up\n"
       "link add veth0 type veth peer name vpeer\n"
       "link set veth0 addrgenmode none\n"
       "link set vpeer addrgenmode none\n"
       "addr add 10.9.0.1/24 dev veth0\n"
       "link set vpeer up\n"
       "link set veth0 up\n"
       "route add default via 10.9.0.2\n");
    link_ = if_nametoindex("veth0");
    otherEnd_ = if_nametoindex("vpeer");
}

Clock::time_point Cable::addRoute() {
    return changeRoute(RTM_NEWROUTE, NLM_F_CREATE | NLM_F_EXCL);
}

Clock::time_point Cable::deleteRoute() {
    return changeRoute(RTM_DELROUTE, 0);
}

Clock::time_point Cable::plugIn() {
    return setOtherEnd(true);
}

Clock::time_point Cable::pullOut() {
    return setOtherEnd(false);
}

Clock::time_point Cable::changeRoute(unsigned short type, unsigned short flags) {
    alignas(nlmsghdr) RequestBytes bytes{};
    auto& message = *mnl_nlmsg_put_header(bytes.data());
    message.nlmsg_type = type;
    message.nlmsg_flags = flags;
    auto& route = *static_cast<rtmsg*>(mnl_nlmsg_put_extra_header(&message, sizeof(rtmsg)));
    route.rtm_family = AF_INET;
    route.rtm_table = RT_TABLE_MAIN;
    route.rtm_protocol = RTPROT_BOOT;
    route.rtm_scope = RT_SCOPE_UNIVERSE;
    route.rtm_type = RTN_UNICAST;
    mnl_attr_put_u32(&message, RTA_GATEWAY, inet_addr(gateway));
    mnl_attr_put_u32(&message, RTA_OIF, link_);
    return socket_.request(message);
}

Clock::time_point Cable::setOtherEnd(bool isUp) {
    alignas(nlmsghdr) RequestBytes bytes{};
    auto& message = *mnl_nlmsg_put_header(bytes.data());
    message.nlmsg_type = RTM_NEWLINK;
    auto& link = *static_cast<ifinfomsg*>(mnl_nlmsg_put_extra_header(&message, sizeof(ifinfomsg)));
    link.ifi_index = static_cast<int>(otherEnd_);
    link.ifi_change = IFF_UP;
    link.ifi_flags = isUp ? IFF_UP : 0;
    return socket_.request(message);
}

BareListener::BareListener(const Cable& cable) : link_(cable.link()) {
    socket_.listen();
}

bool BareListener::waitFor(bool isOnline, Clock::time_point deadline) {
    while ((hasRoute_ && isRunning_) != isOnline) {
        const auto datagram = socket_.receive(deadline);
        if (datagram.empty()) return false;
        hear(datagram);
    }
    return true;
}

void BareListener::gather(Clock::time_point end) {
    for (auto datagram = socket_.receive(end); !datagram.empty(); datagram = socket_.receive(end))
        hear(datagram);
}

void BareListener::hear(std::span<const std::byte> datagram) {
    int left = static_cast<int>(datagram.size());
    for (const auto* message = reinterpret_cast<const nlmsghdr*>(datagram.data());
         mnl_nlmsg_ok(message, left); message = mnl_nlmsg_next(message, &left)) {
        const auto* payload = mnl_nlmsg_get_payload(message);
        if (message->nlmsg_type == RTM_NEWROUTE || message->nlmsg_type == RTM_DELROUTE) {
            if (static_cast<const rtmsg*>(payload)->rtm_dst_len == 0)
                hasRoute_ = message->nlmsg_type == RTM_NEWROUTE;
        } else if (message->nlmsg_type == RTM_NEWLINK) {
            const auto* link = static_cast<const ifinfomsg*>(payload);
            if (link->ifi_index == static_cast<int>(link_)) isRunning_ = (link->ifi_flags & IFF_RUNNING) != 0;
        }
    }
}

} // namespace vorlan::benchmarks
