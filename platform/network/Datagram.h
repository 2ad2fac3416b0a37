// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/NetlinkReader.h"

#include <span>

namespace vorlan::network {

/// What came of a receive from a netlink socket.
struct Datagram {
    int error = 0;          ///< An errno number; 0 when there is a datagram.
    bool truncated = false; ///< It was longer than the buffer.
    bool fromKernel =
        false; ///< Any process may send to a netlink socket; what did not come from the kernel is noise.
    ByteView bytes{}; ///< What was received, in the buffer.
};

/// Receives one datagram into `buffer`; `flags` are those of recvmsg().
Datagram receiveDatagram(int socket, std::span<std::byte> buffer, int flags) noexcept;

} // namespace vorlan::network
