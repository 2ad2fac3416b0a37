// SPDX-License-Identifier: Apache-2.0
#include "platform/network/SCNetworkReachability.h"

#include "platform/network/HostName.h"
#include "platform/network/SystemReachability.h"

#include <utility>

namespace vorlan {

/// A callback with what was retained for it.
///
/// Threads: safe from any thread (never changed).
/// Owns:    one reference on the info.
class SCNetworkReachability::Callback {
public:
    Callback(SCNetworkReachabilityCallBack callout, const SCNetworkReachabilityContext& context)
        : callout_(callout), context_(context) {
        if (context_.retain != nullptr) context_.info = const_cast<void*>(context_.retain(context_.info));
    }
    Callback(const Callback&) = delete;
    Callback& operator=(const Callback&) = delete;
    ~Callback() {
        if (context_.release != nullptr) context_.release(context_.info);
    }

    void call(const SCNetworkReachabilityRef& target, SCNetworkReachabilityFlags flags) const {
        callout_(target, flags, context_.info);
    }

    std::string description() const {
        return context_.copyDescription == nullptr ? std::string() : context_.copyDescription(context_.info);
    }

private:
    const SCNetworkReachabilityCallBack callout_;
    SCNetworkReachabilityContext context_;
};

/// Takes flags from the source to a queue, until it is ended.
///
/// The source's subscriber holds this and never the target: a target that died in the source's own call would drop its
/// subscription in there.
///
/// Threads: safe from any thread.
/// Owns:    the queue; the target weakly.
class SCNetworkReachability::Delivery : public std::enable_shared_from_this<Delivery> {
public:
    Delivery(Queue queue, std::weak_ptr<SCNetworkReachability> target)
        : queue_(std::move(queue)), target_(std::move(target)) {}

    /// Sends flags on their way.
    void publish(SCNetworkReachabilityFlags flags) {
        queue_.async([self = shared_from_this(), number = next(), flags] { self->deliver(number, flags); });
    }

    /// Holds back what tells of older states than the source has just been read in: all but the last on its way. That
    /// one is at least as new, as the source publishes what it finds before it is read.
    void skipOlderOnes() {
        const std::lock_guard lock(mutex_);
        firstValid_ = last_;
    }

    /// From here on nothing is delivered.
    void end() {
        const std::lock_guard lock(mutex_);
        isEnded_ = true;
    }

private:
    std::uint64_t next() {
        const std::lock_guard lock(mutex_);
        return ++last_;
    }

    bool isValid(std::uint64_t number) {
        const std::lock_guard lock(mutex_);
        return !isEnded_ && number >= firstValid_;
    }

    void deliver(std::uint64_t number, SCNetworkReachabilityFlags flags) {
        const auto target = target_.lock();
        if (target && isValid(number)) target->call(flags);
    }

    const Queue queue_;
    const std::weak_ptr<SCNetworkReachability> target_;
    std::mutex mutex_; // guards what follows
    bool isEnded_ = false;
    std::uint64_t last_ = 0; // counts what was sent
    std::uint64_t firstValid_ = 0;
};

SCNetworkReachabilitySource::~SCNetworkReachabilitySource() = default;

SCNetworkReachabilitySource::Answer SCNetworkReachability::flags() {
    const auto answer = source_->currentFlags();
    if (answer.status != kSCStatusOK) return answer;
    const std::lock_guard lock(mutex_);
    if (delivery_) delivery_->skipOlderOnes();
    return answer;
}

std::shared_ptr<const SCNetworkReachability::Callback> SCNetworkReachability::callback() {
    const std::lock_guard lock(mutex_);
    return callback_;
}

std::int32_t SCNetworkReachability::setCallback(SCNetworkReachabilityCallBack callout,
                                                const SCNetworkReachabilityContext* context) {
    if (context != nullptr && context->version != 0) return kSCStatusInvalidArgument;
    std::shared_ptr<const Callback> callback;
    if (callout != nullptr)
        callback = std::make_shared<const Callback>(
            callout, context == nullptr ? SCNetworkReachabilityContext{} : *context);
    const std::lock_guard lock(mutex_); // the former callback is dropped after it
    std::swap(callback_, callback);
    return kSCStatusOK;
}

std::int32_t SCNetworkReachability::setDispatchQueue(const std::optional<Queue>& queue) {
    if (queue) return begin(*queue);
    end();
    return kSCStatusOK;
}

std::int32_t SCNetworkReachability::begin(const Queue& queue) {
    const auto delivery = std::make_shared<Delivery>(queue, weak_from_this());
    {
        const std::lock_guard lock(mutex_);
        if (delivery_) return kSCStatusInvalidArgument;
        delivery_ = delivery;
    }
    auto subscription =
        source_->subscribe([delivery](SCNetworkReachabilityFlags flags) { delivery->publish(flags); });
    if (!subscription) {
        end();
        return kSCStatusFailed;
    }
    const std::lock_guard lock(mutex_);
    if (delivery == delivery_) std::swap(subscription_, subscription); // else it was ended meanwhile
    return kSCStatusOK;
}

void SCNetworkReachability::end() {
    std::shared_ptr<void> subscription;
    std::shared_ptr<Delivery> delivery;
    {
        const std::lock_guard lock(mutex_);
        std::swap(delivery_, delivery);
        std::swap(subscription_, subscription);
    }
    if (delivery) delivery->end();
}

void SCNetworkReachability::call(SCNetworkReachabilityFlags flags) {
    if (const auto current = callback()) current->call(shared_from_this(), flags);
}

std::string SCNetworkReachability::description() {
    std::string text = "<SCNetworkReachability " + source_->description();
    if (const auto current = callback()) {
        const auto info = current->description();
        text += info.empty() ? ", with a callback" : ", with a callback for " + info;
    }
    return text + ">";
}

namespace {

thread_local std::int32_t lastStatus = kSCStatusOK;

bool succeeds(std::int32_t status) {
    lastStatus = status;
    return status == kSCStatusOK;
}

template <class Operation>
bool perform(const SCNetworkReachabilityRef& target, Operation operation) {
    return succeeds(target ? operation(*target) : kSCStatusInvalidArgument);
}

SCNetworkReachabilityRef objectOver(std::shared_ptr<SCNetworkReachabilitySource> source) {
    if (!succeeds(source ? kSCStatusOK : kSCStatusInvalidArgument)) return nullptr;
    return std::make_shared<SCNetworkReachability>(std::move(source));
}

} // namespace

SCNetworkReachabilityRef SCNetworkReachabilityCreateWithName(std::string_view name) {
    auto resolvable = network::resolvableName(name);
    if (!resolvable) return objectOver(nullptr);
    if (auto literal = network::Destination::fromText(*resolvable))
        return objectOver(network::reachabilityOf(std::move(*literal)));
    return objectOver(network::reachabilityOf(std::move(*resolvable)));
}

SCNetworkReachabilityRef SCNetworkReachabilityCreateWithAddress(const SocketAddress& address) {
    auto destination = network::Destination::fromSocketAddress(address);
    return objectOver(destination ? network::reachabilityOf(std::move(*destination)) : nullptr);
}

SCNetworkReachabilityRef SCNetworkReachabilityCreateWithSource(
    std::shared_ptr<SCNetworkReachabilitySource> source) {
    return objectOver(std::move(source));
}

bool SCNetworkReachabilityGetFlags(const SCNetworkReachabilityRef& target,
                                   SCNetworkReachabilityFlags& flags) {
    return perform(target, [&](SCNetworkReachability& object) {
        const auto answer = object.flags();
        if (answer.status == kSCStatusOK) flags = answer.flags;
        return answer.status;
    });
}

bool SCNetworkReachabilitySetCallback(const SCNetworkReachabilityRef& target,
                                      SCNetworkReachabilityCallBack callout,
                                      const SCNetworkReachabilityContext* context) {
    return perform(target,
                   [&](SCNetworkReachability& object) { return object.setCallback(callout, context); });
}

bool SCNetworkReachabilitySetDispatchQueue(const SCNetworkReachabilityRef& target,
                                           const std::optional<Queue>& queue) {
    return perform(target, [&](SCNetworkReachability& object) { return object.setDispatchQueue(queue); });
}

std::string SCNetworkReachabilityCopyDescription(const SCNetworkReachabilityRef& target) {
    std::string text;
    perform(target, [&](SCNetworkReachability& object) {
        text = object.description();
        return kSCStatusOK;
    });
    return text;
}

std::int32_t SCError() noexcept {
    return lastStatus;
}

std::string SCErrorString(std::int32_t status) {
    switch (status) {
    case kSCStatusOK: return "Success";
    case kSCStatusFailed: return "The system could not be asked";
    case kSCStatusInvalidArgument: return "Invalid argument";
    case kSCStatusReachabilityUnknown: return "Reachability is not known yet";
    default: return "Unknown status " + std::to_string(status);
    }
}

} // namespace vorlan
