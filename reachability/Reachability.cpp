// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Reachability/Reachability.h>

#include "reachability/ReachabilityWeakifier.h"

#include <array>
#include <utility>

namespace vorlan {

namespace {

using Flags = SCNetworkReachabilityFlags;

constexpr std::string_view queueLabel = "com.vorlan.reachability";

// Without any target the engine would give each queue that has work a thread, and a change of the network is work for
// all monitors at once.
Queue serialQueue(const ReachabilityQueues& queues) {
    const Queue& target = queues.targetQueue ? *queues.targetQueue : Queue::global(queues.queueQoS);
    return {queueLabel, Queue::serial, queues.queueQoS, AutoreleaseFrequency::inherit, target};
}

SCNetworkReachabilityRef objectOfHost(std::string_view hostname) {
    if (auto object = SCNetworkReachabilityCreateWithName(hostname)) return object;
    throw ReachabilityError::failedToCreateWithHostname(std::string(hostname), SCError());
}

SCNetworkReachabilityRef objectOfZeroAddress() {
    constexpr auto address = SocketAddress::zero();
    if (auto object = SCNetworkReachabilityCreateWithAddress(address)) return object;
    throw ReachabilityError::failedToCreateWithAddress(address, SCError());
}

Reachability::Connection connectionBy(Flags flags) {
    using enum Reachability::Connection;
    const bool isAutomatic =
        contains(flags, Flags::connectionOnTraffic) || contains(flags, Flags::connectionOnDemand);
    if (!contains(flags, Flags::reachable)) return unavailable;
    if (isAutomatic && !contains(flags, Flags::interventionRequired)) return wifi;
    return contains(flags, Flags::connectionRequired) ? unavailable : wifi;
}

std::string textOf(Flags flags) {
    static constexpr std::array letters{
        std::pair(Flags::connectionRequired, 'c'),
        std::pair(Flags::transientConnection, 't'),
        std::pair(Flags::interventionRequired, 'i'),
        std::pair(Flags::connectionOnTraffic, 'C'),
        std::pair(Flags::connectionOnDemand, 'D'),
        std::pair(Flags::isLocalAddress, 'l'),
        std::pair(Flags::isDirect, 'd'),
    };
    // The first place is that of a mobile network, which has no bit here.
    std::string text = contains(flags, Flags::reachable) ? "-R " : "-- ";
    for (const auto& [bit, letter] : letters) text += contains(flags, bit) ? letter : '-';
    return text;
}

} // namespace

Reachability::Reachability(const ReachabilityQueues& queues) : Reachability(objectOfZeroAddress(), queues) {}

Reachability::Reachability(std::string_view hostname, const ReachabilityQueues& queues)
    : Reachability(objectOfHost(hostname), queues) {}

Reachability::Reachability(SCNetworkReachabilityRef reachabilityRef, const ReachabilityQueues& queues)
    : reachabilityRef_(std::move(reachabilityRef)),
      reachabilitySerialQueue_(serialQueue(queues)),
      notificationQueue_(queues.notificationQueue) {}

Reachability::~Reachability() {
    stopNotifier();
}

void Reachability::startNotifier() {
    std::uint64_t stopsBefore = 0;
    {
        const std::lock_guard lock(mutex_);
        if (notifier_ != Notifier::stopped) return;
        registerWithSystem();
        notifier_ = Notifier::starting;
        stopsBefore = stops_;
    }
    reachabilitySerialQueue_.sync([this] { refreshFlags(); });
    const std::lock_guard lock(mutex_);
    if (stops_ == stopsBefore) notifier_ = Notifier::running;
}

void Reachability::registerWithSystem() {
    const auto weakifier = std::make_shared<ReachabilityWeakifier>(weak(this));
    const auto context = ReachabilityWeakifier::context(weakifier);
    if (!SCNetworkReachabilitySetCallback(reachabilityRef_, callout, &context)) {
        const auto status = SCError();
        clearRegistration();
        throw ReachabilityError::unableToSetCallback(status);
    }
    if (!SCNetworkReachabilitySetDispatchQueue(reachabilityRef_, reachabilitySerialQueue_)) {
        const auto status = SCError();
        clearRegistration();
        throw ReachabilityError::unableToSetDispatchQueue(status);
    }
}

void Reachability::clearRegistration() {
    SCNetworkReachabilitySetCallback(reachabilityRef_, nullptr, nullptr);
    SCNetworkReachabilitySetDispatchQueue(reachabilityRef_, std::nullopt);
}

void Reachability::stopNotifier() {
    const std::lock_guard lock(mutex_);
    clearRegistration();
    notifier_ = Notifier::stopped;
    ++stops_;
}

void Reachability::callout(const SCNetworkReachabilityRef&, Flags flags, void* info) {
    if (const auto monitor = ReachabilityWeakifier::monitorOf(info)) monitor->store(flags);
}

void Reachability::refreshFlags() {
    Flags found{};
    if (!SCNetworkReachabilityGetFlags(reachabilityRef_, found)) {
        const auto status = SCError();
        stopNotifier();
        throw ReachabilityError::unableToGetFlags(status);
    }
    store(found);
}

void Reachability::store(Flags flags) {
    if (flags_.exchange(flags) != flags) notifyReachabilityChanged();
}

void Reachability::notifyReachabilityChanged() {
    if (!notificationQueue_) return;
    notificationQueue_->async([weak = weak(this)] {
        if (const auto self = weak.lock()) self->deliver();
    });
}

void Reachability::deliver() {
    const auto& callback = connection() == Connection::unavailable ? whenUnreachable : whenReachable;
    if (const auto call = callback.value()) call(*this);
    notificationCenter.value().post(
        {.name = notificationName::reachabilityChanged(), .object = shared(this)});
}

Reachability::Connection Reachability::connection() const {
    findFlagsIfUnknown();
    const auto flags = flags_.load();
    return flags ? connectionBy(*flags) : Connection::unavailable;
}

// Asking leaves the answer as it is, so it is const; that there are flags now is told as any change is.
void Reachability::findFlagsIfUnknown() const {
    if (flags_.load()) return;
    auto& self = const_cast<Reachability&>(*this);
    try {
        reachabilitySerialQueue_.sync([&] { self.refreshFlags(); });
    } catch (const ReachabilityError&) {
        // The flags stay unknown, which says it.
    }
}

bool Reachability::isReachable() const {
    return connection() != Connection::unavailable;
}

std::string Reachability::description() const {
    const auto flags = flags_.load();
    return flags ? textOf(*flags) : "unavailable flags";
}

std::string description(Reachability::Connection connection) {
    switch (connection) {
    case Reachability::Connection::unavailable: return "No Connection";
    case Reachability::Connection::wifi: return "WiFi";
    case Reachability::Connection::cellular: return "Cellular";
    }
    return {};
}

const NotificationName& notificationName::reachabilityChanged() {
    static const auto& name =
        *new NotificationName("reachabilityChanged"); // may be used by static objects at the end
    return name;
}

} // namespace vorlan
