// SPDX-License-Identifier: Apache-2.0
#include "platform/network/Datagram.h"

#include <linux/netlink.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>

namespace vorlan::network {

Datagram receiveDatagram(int socket, std::span<std::byte> buffer, int flags) noexcept {
    sockaddr_nl sender{};
    iovec part{buffer.data(), buffer.size()};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof(sender);
    message.msg_iov = &part;
    message.msg_iovlen = 1;

    ssize_t count = -1;
    do count = recvmsg(socket, &message, flags);
    while (count < 0 && errno == EINTR);
    if (count < 0) return {.error = errno};

    Datagram datagram;
    datagram.truncated = (message.msg_flags & MSG_TRUNC) != 0;
    datagram.fromKernel = message.msg_namelen == sizeof(sender) && sender.nl_pid == 0;
    datagram.bytes = buffer.first(static_cast<std::size_t>(count));
    return datagram;
}

} // namespace vorlan::network
