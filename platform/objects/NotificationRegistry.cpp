// SPDX-License-Identifier: Apache-2.0
#include "platform/objects/NotificationRegistry.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace vorlan::detail {

namespace {

constexpr auto where = "VorlanFoundation/NotificationCenter";

template <class First, class Second>
bool haveOneOwner(const First& first, const Second& second) noexcept {
    return !first.owner_before(second) && !second.owner_before(first);
}

} // namespace

NotificationCondition::NotificationCondition(Filter filter)
    : name_(std::move(filter.name)),
      identity_(filter.object ? identityOf(*filter.object) : nullptr),
      object_(filter.object) {
    if (filter.object && filter.object.use_count() == 0)
        fatalError("the object of a filter has to live in a std::shared_ptr", where);
}

bool NotificationCondition::isMetBy(const Notification& notification) const noexcept {
    if (name_ && *name_ != notification.name) return false;
    return identity_ == nullptr || isAbout(notification.object);
}

bool NotificationCondition::isOf(const Filter& filter) const noexcept {
    return name_ == filter.name && (filter.object ? isAbout(filter.object) : identity_ == nullptr);
}

bool NotificationCondition::isAbout(const std::shared_ptr<const Object>& object) const noexcept {
    return object && haveOneOwner(object_, object) && identity_ == identityOf(*object);
}

// A walk over the registrations as they are when it begins.
class NotificationRegistry::Reading {
public:
    explicit Reading(NotificationRegistry& registry) : registry_(registry) {
        const std::lock_guard lock(registry_.mutex_);
        list_ = registry_.list_;
        ++list_->readers;
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() {
        const std::lock_guard lock(registry_.mutex_);
        --list_->readers;
    }

    const std::vector<Registration>& registrations() const noexcept { return list_->registrations; }

private:
    NotificationRegistry& registry_;
    std::shared_ptr<List> list_;
};

// One call, from before the observer is held until it is held no more: who waits for the end of the call may
// then count on being the only one who holds the observer.
class NotificationRegistry::Calling {
public:
    Calling(NotificationRegistry& registry, NotificationRegistration& registration)
        : registry_(registry), registration_(registration), hasBegun_(registry.begin(registration)) {
        if (hasBegun_ && registration.observer) observer_ = registration.observer->lock();
    }
    Calling(const Calling&) = delete;
    Calling& operator=(const Calling&) = delete;
    ~Calling() {
        observer_.reset();
        if (hasBegun_) registry_.finish(registration_);
    }

    void perform(const Notification& notification) {
        const bool isObserverGone = registration_.observer && !observer_;
        if (hasBegun_ && !isObserverGone) registration_.function(observer_.get(), notification);
    }

private:
    NotificationRegistry& registry_;
    NotificationRegistration& registration_;
    const bool hasBegun_;
    std::shared_ptr<void> observer_;
};

void NotificationRegistry::add(const Registration& registration) {
    std::shared_ptr<List> former; // Destroyed when the lock is released again.
    const std::lock_guard lock(mutex_);
    endDeadOnes();
    former = replaceList();
    if (list_->readers > 0) list_ = std::make_shared<List>(List{.registrations = list_->registrations});
    list_->registrations.push_back(registration);
    if (registration->observer) byObserver_.emplace(*registration->observer, registration);
}

void NotificationRegistry::post(const Notification& notification) {
    const Reading reading(*this);
    for (const auto& registration : reading.registrations())
        if (registration->condition.isMetBy(notification))
            Calling(*this, *registration).perform(notification);
}

void NotificationRegistry::end(const Registration& registration) {
    NotificationRegistration::Function function; // Destroyed when the lock is released again, as the next.
    std::shared_ptr<List> former;
    const std::lock_guard lock(mutex_);
    if (registration->isEnded) return;
    markAsEnded(*registration);
    if (callsOf(*registration) == 0) function = std::exchange(registration->function, nullptr);
    former = replaceList();
}

void NotificationRegistry::endAllOf(const std::shared_ptr<const void>& observer,
                                    const NotificationCenter::Filter* filter) {
    std::shared_ptr<List> former; // Destroyed when the lock is released again.
    const std::lock_guard lock(mutex_);
    auto [it, last] = byObserver_.equal_range(observer);
    while (it != last) {
        const bool isMeant = filter == nullptr || it->second->condition.isOf(*filter);
        if (isMeant) markAsEnded(*it->second);
        it = isMeant ? byObserver_.erase(it) : std::next(it);
    }
    former = replaceList();
}

void NotificationRegistry::waitForCallsOf(const NotificationRegistration& registration) {
    waitForCalls([&](const NotificationRegistration& called) { return &called == &registration; });
}

void NotificationRegistry::waitForCallsOf(const std::shared_ptr<const void>& observer) {
    waitForCalls([&](const NotificationRegistration& called) {
        return called.observer && haveOneOwner(*called.observer, observer);
    });
}

// Nobody ends the registrations of observers that died. Looking for them only when the registrations have doubled
// costs each addition the same on average.
void NotificationRegistry::endDeadOnes() {
    if (byObserver_.size() < sizeToLookForDeadOnesAt_) return;
    for (auto it = byObserver_.begin(); it != byObserver_.end();) {
        auto& registration = *it->second;
        const bool isDead = registration.observer->expired() || registration.condition.isOver();
        if (isDead) markAsEnded(registration);
        it = isDead ? byObserver_.erase(it) : std::next(it);
    }
    sizeToLookForDeadOnesAt_ = std::max<std::size_t>(32, 2 * byObserver_.size());
}

void NotificationRegistry::markAsEnded(NotificationRegistration& registration) {
    registration.isEnded = true;
    ++endedOnes_;
}

// Ended registrations stay in the list until they are half of it, so that thousands can be ended one by one. Gives the
// former list, or null when there is no need yet.
std::shared_ptr<NotificationRegistry::List> NotificationRegistry::replaceList() {
    if (2 * endedOnes_ <= list_->registrations.size()) return nullptr;
    auto list = std::make_shared<List>();
    std::ranges::copy_if(list_->registrations, std::back_inserter(list->registrations),
                         [](const Registration& one) { return !one->isEnded; });
    endedOnes_ = 0;
    return std::exchange(list_, std::move(list));
}

std::ptrdiff_t NotificationRegistry::callsOf(const NotificationRegistration& registration) const {
    return std::ranges::count(calls_, &registration, &Call::registration);
}

bool NotificationRegistry::begin(const NotificationRegistration& registration) {
    const std::lock_guard lock(mutex_);
    if (!registration.isEnded) calls_.push_back({std::this_thread::get_id(), &registration});
    return !registration.isEnded;
}

void NotificationRegistry::finish(NotificationRegistration& registration) {
    std::unique_lock lock(mutex_);
    if (registration.isEnded && callsOf(registration) == 1) {
        // The last call: those who wait for it may count on the function being destroyed.
        auto function = std::exchange(registration.function, nullptr);
        lock.unlock();
        function = nullptr;
        lock.lock();
    }
    const auto isOwn = [&, thread = std::this_thread::get_id()](const Call& call) {
        return call.registration == &registration && call.thread == thread;
    };
    calls_.erase(std::ranges::find_if(calls_, isOwn));
    if (registration.isEnded) finished_.notify_all();
}

template <class IsMeant>
void NotificationRegistry::waitForCalls(IsMeant&& isMeant) {
    const auto isWaitedFor = [&](const Call& call) {
        return call.registration->isEnded && isMeant(*call.registration);
    };
    const auto isOwn = [&, thread = std::this_thread::get_id()](const Call& call) {
        return call.thread == thread && isWaitedFor(call);
    };
    std::unique_lock lock(mutex_);
    if (std::ranges::any_of(calls_, isOwn)) return;
    finished_.wait(lock, [&] { return std::ranges::none_of(calls_, isWaitedFor); });
}

} // namespace vorlan::detail
