// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/Kernel.h"

#include <VorlanFoundation/Platform/FunctionRef.h>

#include <memory>

struct mnl_socket;
struct nlmsghdr;

namespace vorlan::network {

/// Asks the running kernel over a netlink socket of its own.
///
/// The socket belongs to the network namespace of the thread that opened it.
///
/// Threads: one thread at a time.
/// Owns:    one descriptor.
/// Time:    each answer takes microseconds; one that never comes is given up after a second (ETIMEDOUT).
/// Errors:  as `Kernel`'s.
class RtnetlinkKernel final : public Kernel {
public:
    /// Opens the socket.
    static Answer<std::unique_ptr<Kernel>> open();

    ~RtnetlinkKernel() override;

    Answer<Snapshot> snapshot() override;
    Answer<Route> route(const IPAddress& destination, LinkIndex outLink) override;
    Answer<Route> tableEntry(const IPAddress& destination, LinkIndex outLink) override;
    Answer<std::vector<LinkIndex>> hostRouteLinks() override;

private:
    using Handler = FunctionRef<void(const NetlinkMessage&)>;
    struct Closer {
        void operator()(mnl_socket* socket) const;
    };
    struct Progress {
        int error = 0;
        bool complete = false;
        bool interrupted = false;
    };
    explicit RtnetlinkKernel(std::unique_ptr<mnl_socket, Closer> socket);

    Answer<Route> ask(const IPAddress& destination, LinkIndex outLink, unsigned flags);
    Answer<Snapshot> dumpOnce();
    int exchange(nlmsghdr& request, Handler handle);
    void digest(ByteView datagram, Handler handle, Progress& progress) const;
    Answer<ByteView> receive();

    std::unique_ptr<mnl_socket, Closer> socket_;
    std::vector<std::byte> buffer_;
    std::uint32_t sequence_ = 0;
};

} // namespace vorlan::network
