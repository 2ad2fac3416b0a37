// SPDX-License-Identifier: Apache-2.0
#include "platform/network/RtnetlinkKernel.h"

#include "platform/network/Datagram.h"

#include <libmnl/libmnl.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <utility>

namespace vorlan::network {

namespace {

constexpr int dumpAttempts = 5; // the first, and four more when the tables changed meanwhile

/// A request under construction.
///
/// Threads: one thread at a time.
template <class Header>
class Request {
public:
    Request(std::uint16_t type, std::uint16_t flags) : header_(mnl_nlmsg_put_header(space_.data())) {
        header_->nlmsg_type = type;
        header_->nlmsg_flags = NLM_F_REQUEST | flags;
        body_ = static_cast<Header*>(mnl_nlmsg_put_extra_header(header_, sizeof(Header)));
    }

    Header& body() { return *body_; }
    nlmsghdr& message() { return *header_; }
    void put(std::uint16_t type, std::uint32_t number) { mnl_attr_put_u32(header_, type, number); }
    void put(std::uint16_t type, ByteView bytes) { mnl_attr_put(header_, type, bytes.size(), bytes.data()); }

private:
    alignas(nlmsghdr) std::array<std::byte, 128> space_{};
    nlmsghdr* header_;
    Header* body_;
};

int errorIn(ByteView payload) {
    // The kernel's number is negative; one that is none must not look like success.
    const auto number = readRecord<std::int32_t>(payload);
    if (!number || *number > 0 || *number < -4095) return EBADMSG;
    return -*number;
}

bool leadsToOneHost(const Route& route) {
    const unsigned whole = route.family == IPAddress::Family::v4 ? 32 : 128;
    return route.type == RTN_UNICAST && route.prefixLength == whole && route.gateway && route.outLink != 0;
}

} // namespace

void RtnetlinkKernel::Closer::operator()(mnl_socket* socket) const {
    mnl_socket_close(socket);
}

RtnetlinkKernel::RtnetlinkKernel(std::unique_ptr<mnl_socket, Closer> socket)
    : socket_(std::move(socket)), buffer_(std::size_t{64} * 1024) {}

RtnetlinkKernel::~RtnetlinkKernel() = default;

Answer<std::unique_ptr<Kernel>> RtnetlinkKernel::open() {
    using Opened = Answer<std::unique_ptr<Kernel>>;
    std::unique_ptr<mnl_socket, Closer> socket(mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC));
    if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0) return Opened::failure(errno);
    const timeval patience{.tv_sec = 1, .tv_usec = 0};
    if (setsockopt(mnl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience)) < 0)
        return Opened::failure(errno);
    return Opened(std::unique_ptr<Kernel>(new RtnetlinkKernel(std::move(socket))));
}

Answer<Snapshot> RtnetlinkKernel::snapshot() {
    auto answer = dumpOnce();
    for (int attempt = 1; attempt < dumpAttempts && answer.error() == EAGAIN; ++attempt) answer = dumpOnce();
    return answer;
}

Answer<Snapshot> RtnetlinkKernel::dumpOnce() {
    Snapshot snapshot;
    Request<ifinfomsg> links(RTM_GETLINK, NLM_F_DUMP);
    links.put(IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    int error = exchange(links.message(), [&](const NetlinkMessage& message) {
        auto link = message.type == RTM_NEWLINK ? decodeLink(message.payload) : std::nullopt;
        if (link) snapshot.links.insert_or_assign(link->index, std::move(*link));
    });
    if (error != 0) return Answer<Snapshot>::failure(error);

    Request<ifaddrmsg> addresses(RTM_GETADDR, NLM_F_DUMP);
    error = exchange(addresses.message(), [&](const NetlinkMessage& message) {
        const auto address = message.type == RTM_NEWADDR ? decodeAddress(message.payload) : std::nullopt;
        if (address) snapshot.addresses.push_back(*address);
    });
    if (error != 0) return Answer<Snapshot>::failure(error);
    return snapshot;
}

Answer<Route> RtnetlinkKernel::route(const IPAddress& destination, LinkIndex outLink) {
    return ask(destination, outLink, 0);
}

Answer<Route> RtnetlinkKernel::tableEntry(const IPAddress& destination, LinkIndex outLink) {
    // Without this flag the kernel takes any address for a neighbour's when a link is given but no route
    // fits.
    return ask(destination, outLink, RTM_F_FIB_MATCH);
}

Answer<Route> RtnetlinkKernel::ask(const IPAddress& destination, LinkIndex outLink, unsigned flags) {
    Request<rtmsg> request(RTM_GETROUTE, 0);
    request.body().rtm_family = destination.family() == IPAddress::Family::v4 ? AF_INET : AF_INET6;
    request.body().rtm_dst_len = static_cast<unsigned char>(destination.bitCount());
    request.body().rtm_flags = flags;
    request.put(RTA_DST, destination.bytes());
    if (outLink != 0) request.put(RTA_OIF, outLink);
    std::optional<Route> route;
    const int error = exchange(request.message(), [&](const NetlinkMessage& message) {
        if (message.type == RTM_NEWROUTE) route = decodeRoute(message.payload);
    });
    if (error != 0) return Answer<Route>::failure(error);
    return route ? Answer<Route>(std::move(*route)) : Answer<Route>::failure(EBADMSG);
}

Answer<std::vector<LinkIndex>> RtnetlinkKernel::hostRouteLinks() {
    std::vector<LinkIndex> links;
    Request<rtmsg> request(RTM_GETROUTE, NLM_F_DUMP);
    const int error = exchange(request.message(), [&](const NetlinkMessage& message) {
        const auto route = message.type == RTM_NEWROUTE ? decodeRoute(message.payload) : std::nullopt;
        if (route && leadsToOneHost(*route)) links.push_back(route->outLink);
    });
    if (error != 0) return Answer<std::vector<LinkIndex>>::failure(error);
    return links;
}

int RtnetlinkKernel::exchange(nlmsghdr& request, Handler handle) {
    request.nlmsg_seq = ++sequence_;
    if (mnl_socket_sendto(socket_.get(), &request, request.nlmsg_len) < 0) return errno;
    Progress progress;
    while (!progress.complete) {
        const auto datagram = receive();
        if (!datagram) return datagram.error();
        digest(*datagram, handle, progress);
    }
    if (progress.error != 0) return progress.error;
    return progress.interrupted ? EAGAIN : 0;
}

void RtnetlinkKernel::digest(ByteView datagram, Handler handle, Progress& progress) const {
    MessageReader messages(datagram);
    while (const auto message = messages.next()) {
        // Answers to an earlier request that was given up may still be in the socket.
        if (message->sequence != sequence_ || message->port != mnl_socket_get_portid(socket_.get())) continue;
        if ((message->flags & NLM_F_DUMP_INTR) != 0 || message->type == NLMSG_OVERRUN)
            progress.interrupted = true;
        if (message->type == NLMSG_ERROR || message->type == NLMSG_DONE) {
            progress.error = errorIn(message->payload);
            progress.complete = true;
        } else if (message->type >= NLMSG_MIN_TYPE) {
            handle(*message);
            if ((message->flags & NLM_F_MULTI) == 0) progress.complete = true;
        }
    }
    if (messages.isDamaged()) progress = {.error = EBADMSG, .complete = true};
}

Answer<ByteView> RtnetlinkKernel::receive() {
    for (;;) {
        const Datagram datagram = receiveDatagram(mnl_socket_get_fd(socket_.get()), buffer_, 0);
        if (datagram.error == EAGAIN) return Answer<ByteView>::failure(ETIMEDOUT);
        if (datagram.error == ENOBUFS || datagram.truncated) return Answer<ByteView>::failure(EAGAIN);
        if (datagram.error != 0) return Answer<ByteView>::failure(datagram.error);
        if (datagram.fromKernel) return datagram.bytes;
    }
}

} // namespace vorlan::network
