// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/Destination.h"
#include "platform/network/NetworkPublisher.h"
#include "platform/values/LimitedWait.h"

#include <VorlanFoundation/Platform/SCNetworkReachabilitySource.h>
#include <VorlanFoundation/Platform/TimerSource.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::network {

/// The flags toward a host by name.
///
/// While there is a subscriber the name is looked up when the first comes, when the way to the network or the resolver's
/// files changed, and as long as no address of it can be reached at each news of the network and after 1, 2, 4 and
/// so on up to 60 seconds. A look-up that may be waiting for a server of the network before does not hold up the next
/// one. Without a subscriber each reading looks it up.
///
/// Threads:     safe from any thread, except from the center's queue.
/// Owns:        as `NetworkPublisher`. A look-up under way holds it weakly.
/// Re-entrancy: a subscriber never calls back.
/// Time:        a reader waits for 5 seconds at most, with a subscriber for 300 ms.
/// Errors:      kSCStatusReachabilityUnknown when the look-up takes longer than 5 seconds; with a subscriber there are
///              no flags meanwhile. kSCStatusFailed when the kernel cannot be asked, of which subscribers hear nothing.
class NameReachability final : public SCNetworkReachabilitySource,
                               public NetworkPublisher<SCNetworkReachabilityFlags> {
public:
    /// The flags toward the host of that name.
    NameReachability(std::shared_ptr<NetworkCenter> center, std::string name)
        : NetworkPublisher(std::move(center)), name_(std::move(name)) {}

    Answer currentFlags() override;
    std::shared_ptr<void> subscribe(Subscriber subscriber) override { return listen(std::move(subscriber)); }
    std::string description() const override { return "of host " + name_; }

private:
    using Addresses = std::vector<Destination>;
    using Reader = std::shared_ptr<Awaited<bool>>;

    // The way to one of the probes: names have other addresses in other networks.
    struct Way {
        Verdict::Kind kind;
        LinkIndex link;
        std::optional<IPAddress> gateway;
        std::optional<IPAddress> source;
        friend bool operator==(const Way&, const Way&) = default;
    };

    Progress evaluate(const Survey& survey) override;
    void giveUp(const Progress& progress) override { progress_ = progress; }
    void beginWatching() override;
    void endWatching() override;

    Answer flagsWhileWatching(const Reader& reader);
    Answer flagsOnce();
    std::optional<Answer> knownFlags() const;
    bool isReachable() const;
    int lookUpsWarranted(const Survey& survey);
    void lookUp(int mostUnderWay);
    void take(std::uint64_t watch, std::uint64_t number, Addresses addresses);
    void retryUnlessReachable();

    const std::string name_;
    // The rest is used on the center's queue only.
    Progress progress_;
    bool isWatching_ = false;
    std::uint64_t watch_ = 0; // counts the times that watching ended: answers of another one are void
    std::shared_ptr<void> resolverWatch_;
    std::optional<Addresses> addresses_;
    int lookUpsUnderWay_ = 0;
    int mostWanted_ = 0;           // how many may be for one that was put off; 0 when none was
    std::uint64_t lastLookUp_ = 0; // counts them
    std::uint64_t lastTaken_ = 0;  // the one whose answer is in use
    std::vector<Way> ways_;        // how the network was when the name was last found to need a look-up
    std::uint64_t resolverChanges_ = 0;
    std::uint64_t changes_ = 0;
    std::optional<TimerSource> retry_;
    std::chrono::seconds pause_{1};
    std::vector<Reader> readers_;
};

} // namespace vorlan::network
