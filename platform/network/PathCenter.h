// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/NetworkPublisher.h"

#include <VorlanFoundation/Platform/NWPathSource.h>

#include <memory>
#include <utility>

namespace vorlan::network {

/// Tells subscribers the path to the network, whenever it has changed.
///
/// Threads:     safe from any thread, except from the center's queue.
/// Owns:        as `NetworkPublisher`.
/// Re-entrancy: a subscriber never calls back.
/// Errors:      where the kernel cannot be asked, the path is what the connect probe can tell.
class PathCenter final : public NWPathSource, public NetworkPublisher<NWPath> {
public:
    explicit PathCenter(std::shared_ptr<NetworkCenter> center) : NetworkPublisher(std::move(center)) {}

    NWPath currentPath() override;
    std::shared_ptr<void> subscribe(Subscriber subscriber) override { return listen(std::move(subscriber)); }

private:
    Progress evaluate(const Survey& survey) override;
    void giveUp(const Progress& progress) override;
};

} // namespace vorlan::network
