// SPDX-License-Identifier: Apache-2.0
#include "platform/network/ConnectProbe.h"

#include "platform/network/RouteJudge.h"
#include "platform/network/Survey.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

namespace vorlan::network {

namespace {

constexpr std::uint16_t discardPort = 9;

/// A UDP socket that is closed with its owner.
///
/// Threads: one thread at a time.
class DatagramSocket {
public:
    explicit DatagramSocket(int family) : descriptor_(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;
    ~DatagramSocket() {
        if (descriptor_ >= 0) close(descriptor_);
    }

    int get() const { return descriptor_; }

private:
    int descriptor_;
};

template <class SocketAddress>
ConnectAnswer connectTo(int family, SocketAddress address) {
    const DatagramSocket socket(family);
    if (socket.get() < 0) return {.error = errno};
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (connect(socket.get(), generic, sizeof(address)) < 0) return {.error = errno};
    socklen_t size = sizeof(address);
    if (getsockname(socket.get(), generic, &size) < 0) return {.error = errno};
    if constexpr (std::is_same_v<SocketAddress, sockaddr_in>)
        return {.source = IPAddress::fromBytes(IPAddress::Family::v4,
                                               std::as_bytes(std::span(&address.sin_addr, 1)))};
    else
        return {.source = IPAddress::fromBytes(IPAddress::Family::v6,
                                               std::as_bytes(std::span(&address.sin6_addr, 1)))};
}

// All other errors say that the question could not be asked. EACCES may stand for a route that prohibits, but
// also for a sandbox that does: the mistake that keeps a host from trying is the worse one.
bool isVerdict(int error, IPAddress::Family family) {
    static constexpr std::array verdicts{ENETUNREACH, EHOSTUNREACH, EINVAL, EADDRNOTAVAIL, ENETDOWN};
    // Machines without IPv6 exist; where IPv4 is not supported, a sandbox has taken it away.
    if (error == EAFNOSUPPORT) return family == IPAddress::Family::v6;
    return std::ranges::find(verdicts, error) != verdicts.end();
}

bool isReachable(const ConnectAnswer& answer, IPAddress::Family family) {
    if (answer.error != 0) return !isVerdict(answer.error, family);
    return answer.source && isRoutableSource(*answer.source);
}

std::string describe(const ConnectAnswer& answer) {
    if (answer.error != 0) return std::system_category().message(answer.error);
    return answer.source ? "leaves from " + answer.source->text() : "has no source";
}

void add(const IPAddress& destination, const ConnectAnswer& answer, NWPath::Description& path) {
    path.reason += "; " + destination.text() + ": " + describe(answer);
    if (!isReachable(answer, destination.family())) return;
    path.status = NWPath::Status::satisfied;
    (destination.family() == IPAddress::Family::v4 ? path.supportsIPv4 : path.supportsIPv6) = true;
    path.interfaceTypes = {InterfaceType::other};
    if (!answer.source) return;
    auto& addresses = path.localAddresses;
    auto text = answer.source->text();
    if (std::ranges::find(addresses, text) == addresses.end()) addresses.push_back(std::move(text));
}

} // namespace

ConnectAnswer connectSocket(const IPAddress& destination) {
    if (destination.family() == IPAddress::Family::v4) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(discardPort);
        std::memcpy(&address.sin_addr, destination.bytes().data(), sizeof(address.sin_addr));
        return connectTo(AF_INET, address);
    }
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(discardPort);
    std::memcpy(&address.sin6_addr, destination.bytes().data(), sizeof(address.sin6_addr));
    return connectTo(AF_INET6, address);
}

NWPath pathByConnecting(const ConnectProbe& probe, int netlinkError) {
    NWPath::Description path;
    path.reason = "netlink is not available (" + std::system_category().message(netlinkError) +
                  "), asked by connecting sockets";
    for (const IPAddress& destination : probeDestinations()) add(destination, probe(destination), path);
    return NWPath(std::move(path));
}

} // namespace vorlan::network
