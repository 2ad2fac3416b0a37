// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include <VorlanFoundation/Platform/Queue.h>

#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace vorlan::testing {

namespace {

/// Who is told of values of a kind.
///
/// Threads: one thread at a time: that of the network's queue.
template <class Value>
class Subscribers {
public:
    using Subscriber = std::function<void(const Value&)>;

    std::uint64_t add(Subscriber subscriber) {
        subscribers_.emplace(++lastID_, std::move(subscriber));
        return lastID_;
    }
    void remove(std::uint64_t id) { subscribers_.erase(id); }
    std::size_t count() const { return subscribers_.size(); }
    void tell(const Value& value) const {
        for (const auto& [id, subscriber] : subscribers_) subscriber(value);
    }

private:
    std::map<std::uint64_t, Subscriber> subscribers_;
    std::uint64_t lastID_ = 0;
};

SCNetworkReachabilityFlags flagsOf(const NWPath& path) {
    using enum SCNetworkReachabilityFlags;
    auto flags = SCNetworkReachabilityFlags();
    if (path.status() == NWPath::Status::unsatisfied) return flags;
    flags |= reachable;
    if (path.status() == NWPath::Status::requiresConnection) flags |= connectionRequired;
    if (path.usesInterfaceType(InterfaceType::cellular)) flags |= transientConnection;
    return flags;
}

} // namespace

/// The path, the flags and their subscribers.
///
/// Threads: safe from any thread: everything happens on one serial queue, which also keeps the order in which
///          subscribers are told; no lock is held while they are.
class ScriptedNetwork::Source final : public NWPathSource, public std::enable_shared_from_this<Source> {
public:
    using Flags = SCNetworkReachabilityFlags;
    using FlagsAnswer = SCNetworkReachabilitySource::Answer;

    explicit Source(NWPath path) : path_(std::move(path)), flags_(flagsOf(path_)) {}

    NWPath currentPath() override {
        return queue_.sync([this] { return path_; });
    }

    std::shared_ptr<void> subscribe(Subscriber subscriber) override {
        return add(paths_, std::move(subscriber), [this] { return std::optional(path_); });
    }

    void set(const NWPath& path, bool always) {
        queue_.sync([&] {
            if (!always && path == path_) return;
            path_ = path;
            paths_.tell(path_);
            change(flagsOf(path_), false);
        });
    }

    std::size_t subscriberCount() {
        return queue_.sync([this] { return paths_.count(); });
    }

    FlagsAnswer currentFlags() {
        return queue_.sync([this] { return FlagsAnswer{status_, flags_}; });
    }

    std::shared_ptr<void> subscribeToFlags(const SCNetworkReachabilitySource::Subscriber& subscriber) {
        return add(flagsSubscribers_, subscriber,
                   [this] { return status_ == kSCStatusOK ? std::optional(flags_) : std::nullopt; });
    }

    void setFlags(Flags flags, bool always) {
        queue_.sync([&] { change(flags, always); });
    }

    void failFlags(std::int32_t status) {
        queue_.sync([&] {
            const bool isOver = std::exchange(status_, status) != kSCStatusOK && status == kSCStatusOK;
            if (isOver) flagsSubscribers_.tell(flags_);
        });
    }

    std::size_t flagsSubscriberCount() {
        return queue_.sync([this] { return flagsSubscribers_.count(); });
    }

private:
    template <class Value, class Subscriber, class Present>
    std::shared_ptr<void> add(Subscribers<Value>& to, Subscriber subscriber, Present present) {
        const auto id = queue_.sync([&] {
            if (const auto value = present()) subscriber(*value);
            return to.add(std::move(subscriber));
        });
        return std::shared_ptr<void>(this,
                                     [self = shared_from_this(), &to, id](void*) { self->remove(to, id); });
    }

    // A subscriber may turn out to be the last who holds the subscription while it is being told.
    template <class Value>
    void remove(Subscribers<Value>& from, std::uint64_t id) {
        if (queue_.isCurrent())
            queue_.async([self = shared_from_this(), &from, id] { from.remove(id); });
        else
            queue_.sync([&] { from.remove(id); });
    }

    void change(Flags flags, bool always) {
        status_ = kSCStatusOK;
        if (!always && flags == flags_) return;
        flags_ = flags;
        flagsSubscribers_.tell(flags_);
    }

    const Queue queue_{"com.vorlan.testing.scripted-network"};
    NWPath path_;
    Flags flags_;
    std::int32_t status_ = kSCStatusOK;
    Subscribers<NWPath> paths_;
    Subscribers<Flags> flagsSubscribers_;
};

namespace {

/// The flags of a network, for one reachability object.
///
/// Threads: safe from any thread.
/// Owns:    the network.
template <class Network>
class FlagsSource final : public SCNetworkReachabilitySource {
public:
    explicit FlagsSource(std::shared_ptr<Network> network) : network_(std::move(network)) {}

    Answer currentFlags() override { return network_->currentFlags(); }
    std::shared_ptr<void> subscribe(Subscriber subscriber) override {
        return network_->subscribeToFlags(std::move(subscriber));
    }
    std::string description() const override { return "of a scripted network"; }

private:
    const std::shared_ptr<Network> network_;
};

} // namespace

ScriptedNetwork::ScriptedNetwork() : ScriptedNetwork(NWPath()) {}

ScriptedNetwork::ScriptedNetwork(NWPath path) : source_(std::make_shared<Source>(std::move(path))) {}

std::shared_ptr<NWPathSource> ScriptedNetwork::source() const {
    return source_;
}

void ScriptedNetwork::setPath(NWPath path) {
    source_->set(path, false);
}

void ScriptedNetwork::deliver(NWPath path) {
    source_->set(path, true);
}

std::size_t ScriptedNetwork::subscriberCount() const {
    return source_->subscriberCount();
}

SCNetworkReachabilityRef ScriptedNetwork::reachability() const {
    return SCNetworkReachabilityCreateWithSource(std::make_shared<FlagsSource<Source>>(source_));
}

void ScriptedNetwork::setFlags(SCNetworkReachabilityFlags flags) {
    source_->setFlags(flags, false);
}

void ScriptedNetwork::deliverFlags(SCNetworkReachabilityFlags flags) {
    source_->setFlags(flags, true);
}

void ScriptedNetwork::failFlags(std::int32_t status) {
    source_->failFlags(status);
}

std::size_t ScriptedNetwork::flagsSubscriberCount() const {
    return source_->flagsSubscriberCount();
}

} // namespace vorlan::testing
