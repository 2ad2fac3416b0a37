// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/Destination.h"
#include "platform/network/NetworkPublisher.h"

#include <VorlanFoundation/Platform/SCNetworkReachabilitySource.h>

#include <memory>
#include <string>
#include <utility>

namespace vorlan::network {

/// The flags toward an address.
///
/// Threads:     safe from any thread, except from the center's queue.
/// Owns:        as `NetworkPublisher`.
/// Re-entrancy: a subscriber never calls back.
/// Errors:      kSCStatusFailed when the kernel cannot be asked: that does not make anything unreachable, so
///              subscribers hear nothing of it. kSCStatusReachabilityUnknown when its tables keep changing; with a
///              subscriber there are no flags meanwhile.
class AddressReachability final : public SCNetworkReachabilitySource,
                                  public NetworkPublisher<SCNetworkReachabilityFlags> {
public:
    AddressReachability(std::shared_ptr<NetworkCenter> center, Destination destination)
        : NetworkPublisher(std::move(center)), destination_(std::move(destination)) {}

    Answer currentFlags() override;
    std::shared_ptr<void> subscribe(Subscriber subscriber) override { return listen(std::move(subscriber)); }
    std::string description() const override { return "of address " + destination_.text(); }

private:
    Progress evaluate(const Survey& survey) override;
    void giveUp(const Progress& progress) override { progress_ = progress; }

    const Destination destination_;
    Progress progress_; // used on the center's queue only
};

} // namespace vorlan::network
