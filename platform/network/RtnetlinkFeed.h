// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/dispatch/ReadSource.h"
#include "platform/network/ChangeFeed.h"
#include "platform/network/Kernel.h"
#include "platform/network/NetlinkReader.h"

#include <VorlanFoundation/Platform/Queue.h>

#include <functional>
#include <memory>
#include <vector>

namespace vorlan::network {

/// Hears the kernel's messages about links, addresses, routes, rules and next hops.
///
/// Threads: one thread at a time: that of its queue.
/// Owns:    one descriptor; closed on the queue some time after the feed is destroyed.
/// Time:    `readable` is called on the queue as long as something waits to be drained.
/// Errors:  lost messages (a full buffer, a message cut short) are news like any other.
class RtnetlinkFeed final : public ChangeFeed {
public:
    /// Begins to listen; the kernel keeps up to `bufferSize` bytes of messages until they are drained.
    static Answer<std::unique_ptr<ChangeFeed>> open(const Queue& queue, std::function<void()> readable,
                                                    int bufferSize = 1024 * 1024);

    News drain() override;

    /// Whether a datagram of the kernel's tells of a change that can matter to a path.
    static bool tellsOfChange(ByteView datagram) noexcept;

private:
    RtnetlinkFeed(int descriptor, const Queue& queue, std::function<void()> readable);

    int descriptor_;
    std::vector<std::byte> buffer_;
    ReadSource source_; // owns the descriptor
};

} // namespace vorlan::network
