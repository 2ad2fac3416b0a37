// SPDX-License-Identifier: Apache-2.0
#include "platform/network/NameReachability.h"

#include "platform/network/FlagsEvaluator.h"

#include <algorithm>

namespace vorlan::network {

namespace {

constexpr std::chrono::seconds longestWait(5);
constexpr std::chrono::milliseconds longestWaitWhileWatching(300);
constexpr std::chrono::seconds firstPause(1);
constexpr std::chrono::seconds longestPause(60);

// One that waits for a server of a former network must not hold up the one that asks the present one.
constexpr int mostAtOnce = 2;

/// The flags toward some addresses, once.
///
/// Threads: one thread at a time: that of the center's queue.
class FlagsOnce final : public NetworkDependent {
public:
    explicit FlagsOnce(const std::vector<Destination>& addresses) : addresses_(addresses) {}

    Progress evaluate(const Survey& survey) override {
        found_ = evaluateFlags(survey, addresses_);
        return found_.progress;
    }
    void giveUp(const Progress& progress) override { found_.progress = progress; }

    SCNetworkReachabilitySource::Answer answer() const {
        if (found_.progress.outcome == Outcome::failed) return {kSCStatusFailed};
        if (found_.progress.outcome == Outcome::unsettled) return {kSCStatusReachabilityUnknown};
        return {kSCStatusOK, found_.flags};
    }

private:
    const std::vector<Destination>& addresses_;
    FlagsEvaluation found_;
};

} // namespace

SCNetworkReachabilitySource::Answer NameReachability::currentFlags() {
    const auto reader = std::make_shared<Awaited<bool>>();
    const bool isWatching = center().queue().sync([&] {
        if (isWatching_) {
            refresh();
            readers_.push_back(reader);
            if (knownFlags()) reader->set(true);
        }
        return isWatching_;
    });
    return isWatching ? flagsWhileWatching(reader) : flagsOnce();
}

SCNetworkReachabilitySource::Answer NameReachability::flagsWhileWatching(const Reader& reader) {
    reader->wait(longestWaitWhileWatching);
    return center().queue().sync([&]() -> Answer {
        std::erase(readers_, reader);
        if (!isWatching_) return {kSCStatusReachabilityUnknown};
        return knownFlags().value_or(Answer()); // those who watch will be told
    });
}

SCNetworkReachabilitySource::Answer NameReachability::flagsOnce() {
    const auto found = std::make_shared<Awaited<Addresses>>();
    center().providers().resolve(name_, [found](Addresses addresses) { found->set(std::move(addresses)); });
    const auto addresses = found->wait(longestWait);
    if (!addresses) return {kSCStatusReachabilityUnknown};
    return center().queue().sync([&] {
        FlagsOnce once(*addresses);
        center().update(once);
        return once.answer();
    });
}

std::optional<SCNetworkReachabilitySource::Answer> NameReachability::knownFlags() const {
    if (progress_.outcome == Outcome::failed) return Answer{kSCStatusFailed};
    return value() ? std::optional(Answer{kSCStatusOK, *value()}) : std::nullopt;
}

void NameReachability::beginWatching() {
    isWatching_ = true;
    resolverWatch_ = center().watchResolver();
    resolverChanges_ = center().resolverChanges();
}

void NameReachability::endWatching() {
    isWatching_ = false;
    ++watch_;
    resolverWatch_.reset();
    addresses_.reset();
    lookUpsUnderWay_ = 0;
    mostWanted_ = 0;
    ways_.clear();
    retry_.reset();
    pause_ = firstPause;
}

Progress NameReachability::evaluate(const Survey& survey) {
    const auto evaluation = addresses_ ? evaluateFlags(survey, *addresses_) : FlagsEvaluation();
    progress_ = evaluation.progress;
    if (!progress_.isSettled()) return progress_;
    if (addresses_) publish(evaluation.flags);
    if (const int mostUnderWay = lookUpsWarranted(survey); mostUnderWay > 0) {
        pause_ = firstPause;
        lookUp(mostUnderWay);
    }
    return progress_;
}

bool NameReachability::isReachable() const {
    return value() && contains(*value(), SCNetworkReachabilityFlags::reachable);
}

// How many look-ups may be under way because of what changed, 0 when nothing did; remembers what it goes by.
int NameReachability::lookUpsWarranted(const Survey& survey) {
    std::vector<Way> ways;
    for (const Verdict& verdict : survey.probes())
        ways.push_back({verdict.kind, verdict.route.outLink, verdict.route.gateway, verdict.route.source});
    const bool isElsewhere = ways != ways_;
    const bool isToldOtherwise = resolverChanges_ != center().resolverChanges();
    const bool isNews = changes_ != center().changes();
    ways_ = std::move(ways);
    resolverChanges_ = center().resolverChanges();
    changes_ = center().changes();
    if (isElsewhere || isToldOtherwise) return mostAtOnce;
    return isNews && !isReachable() ? 1 : 0;
}

// Where as many look-ups are under way already, the next one is put off until there is one less.
void NameReachability::lookUp(int mostUnderWay) {
    if (lookUpsUnderWay_ >= mostUnderWay) {
        mostWanted_ = std::max(mostWanted_, mostUnderWay);
        return;
    }
    ++lookUpsUnderWay_;
    mostWanted_ = 0; // this one begins later than what wanted another
    auto completion = [weak = weak_from_this(), watch = watch_, number = ++lastLookUp_](Addresses addresses) {
        const auto self = std::static_pointer_cast<NameReachability>(weak.lock());
        if (!self) return;
        self->center().queue().async([self, watch, number, addresses = std::move(addresses)]() mutable {
            self->take(watch, number, std::move(addresses));
        });
    };
    center().providers().resolve(name_, std::move(completion));
}

void NameReachability::take(std::uint64_t watch, std::uint64_t number, Addresses addresses) {
    if (watch != watch_) return;
    --lookUpsUnderWay_;
    if (mostWanted_ > 0) lookUp(std::exchange(mostWanted_, 0));
    if (number < lastTaken_) return;
    lastTaken_ = number;
    addresses_ = std::move(addresses);
    center().evaluate(*this);
    for (const Reader& reader : readers_) reader->set(true);
    retryUnlessReachable();
}

void NameReachability::retryUnlessReachable() {
    if (progress_.isSettled() && isReachable()) {
        retry_.reset();
        pause_ = firstPause;
        return;
    }
    retry_.emplace(center().queue());
    retry_->setEventHandler([weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<NameReachability>(weak.lock());
        const bool isAsking = self && self->lastTaken_ != self->lastLookUp_; // an older one may hang for long
        if (self && !isAsking) self->lookUp(mostAtOnce);
    });
    retry_->schedule({.deadline = center().queue().now() + DispatchTimeInterval(pause_)});
    retry_->resume();
    pause_ = std::min(2 * pause_, longestPause);
}

} // namespace vorlan::network
