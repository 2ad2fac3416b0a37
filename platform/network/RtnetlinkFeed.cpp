// SPDX-License-Identifier: Apache-2.0
#include "platform/network/RtnetlinkFeed.h"

#include "platform/network/Datagram.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace vorlan::network {

namespace {

// More than a full buffer holds. A socket that still has something after that is read again in its turn.
constexpr int mostDatagrams = 4096;
// An error that never goes away must not keep the queue busy.
constexpr int mostOverflows = 16;

/// Closes a descriptor that nobody took over.
///
/// Threads: one thread at a time.
class OpenSocket {
public:
    OpenSocket() : descriptor_(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)) {}
    OpenSocket(const OpenSocket&) = delete;
    OpenSocket& operator=(const OpenSocket&) = delete;
    ~OpenSocket() {
        if (descriptor_ >= 0) close(descriptor_);
    }

    int get() const { return descriptor_; }
    int release() { return std::exchange(descriptor_, -1); }

private:
    int descriptor_;
};

void enlargeBuffer(int socket, int size) {
    // The first exceeds the system's limit and needs a privilege; the second is cut to the limit.
    if (setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof(size)) == 0) return;
    static_cast<void>(setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size)));
}

bool joinGroups(int socket) {
    static constexpr std::array<int, 8> groups{RTNLGRP_LINK,       RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR,
                                               RTNLGRP_IPV4_ROUTE, RTNLGRP_IPV6_ROUTE,  RTNLGRP_IPV4_RULE,
                                               RTNLGRP_IPV6_RULE,  RTNLGRP_NEXTHOP};
    for (const int group : groups) {
        if (setsockopt(socket, SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof(group)) == 0) continue;
        // Kernels before 5.3 have no objects for next hops, and so no messages about them.
        if (group != RTNLGRP_NEXTHOP) return false;
    }
    return true;
}

bool isChange(const NetlinkMessage& message) noexcept {
    if (message.type < RTM_BASE) return false;
    if (message.type != RTM_NEWLINK && message.type != RTM_DELLINK) return true;
    // Bridges report the state of their ports on the group of links.
    const auto family = readRecord<unsigned char>(message.payload);
    return !family || *family != AF_BRIDGE;
}

} // namespace

Answer<std::unique_ptr<ChangeFeed>> RtnetlinkFeed::open(const Queue& queue, std::function<void()> readable,
                                                        int bufferSize) {
    using Opened = Answer<std::unique_ptr<ChangeFeed>>;
    OpenSocket socket;
    if (socket.get() < 0) return Opened::failure(errno);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    if (bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) < 0)
        return Opened::failure(errno);
    enlargeBuffer(socket.get(), bufferSize);
    if (!joinGroups(socket.get())) return Opened::failure(errno);
    return Opened(
        std::unique_ptr<ChangeFeed>(new RtnetlinkFeed(socket.release(), queue, std::move(readable))));
}

RtnetlinkFeed::RtnetlinkFeed(int descriptor, const Queue& queue, std::function<void()> readable)
    : descriptor_(descriptor),
      buffer_(std::size_t{32} * 1024),
      source_(descriptor, queue, std::move(readable)) {}

bool RtnetlinkFeed::tellsOfChange(ByteView datagram) noexcept {
    MessageReader messages(datagram);
    while (const auto message = messages.next())
        if (isChange(*message)) return true;
    return messages.isDamaged();
}

ChangeFeed::News RtnetlinkFeed::drain() {
    News news = News::none;
    int overflows = 0;
    for (int count = 0; count < mostDatagrams; ++count) {
        const Datagram datagram = receiveDatagram(descriptor_, buffer_, MSG_DONTWAIT);
        if (datagram.error == EAGAIN) break;
        if (datagram.error == ENOBUFS && ++overflows <= mostOverflows) {
            news = News::changed;
            continue;
        }
        if (datagram.error != 0) return News::broken;
        if (!datagram.fromKernel) continue;
        if (datagram.truncated || tellsOfChange(datagram.bytes)) news = News::changed;
    }
    return news;
}

} // namespace vorlan::network
