// SPDX-License-Identifier: Apache-2.0
#include "platform/objects/NotificationRegistry.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <utility>

namespace vorlan {

namespace {
constexpr auto where = "VorlanFoundation/NotificationCenter";
} // namespace

NotificationObservation::NotificationObservation() noexcept = default;
NotificationObservation::NotificationObservation(
    std::shared_ptr<detail::NotificationRegistration> registration) noexcept
    : registration_(std::move(registration)) {}
NotificationObservation::NotificationObservation(NotificationObservation&&) noexcept = default;

NotificationObservation& NotificationObservation::operator=(NotificationObservation&& other) noexcept {
    const NotificationObservation former(
        std::exchange(registration_, std::exchange(other.registration_, nullptr)));
    return *this;
}

NotificationObservation::~NotificationObservation() {
    invalidate();
}

// With the handler the owner of this very object may go: both of these leave it alone once the registration ends.
void NotificationObservation::invalidate() {
    const auto registration = registration_;
    if (!registration) return;
    if (const auto registry = registration->registry.lock())
        registry->end(registration);
    else
        registration_ = nullptr; // Without a center there is nobody who calls.
}

void NotificationObservation::invalidateAndWait() {
    const auto registration = registration_;
    const auto registry = registration ? registration->registry.lock() : nullptr;
    invalidate();
    if (registry) registry->waitForCallsOf(*registration);
}

NotificationCenter::NotificationCenter() : registry_(std::make_shared<detail::NotificationRegistry>()) {}

const NotificationCenter& NotificationCenter::default_() {
    // Never destroyed: static objects may post, and be told, while the process ends.
    static const auto* const center = new NotificationCenter;
    return *center;
}

NotificationObservation NotificationCenter::addObserver(Filter filter, Handler handler) const {
    if (!handler) fatalError("there is no handler to call", where);
    auto function = [handler = std::move(handler)](void*, const Notification& notification) {
        handler(notification);
    };
    auto registration = std::make_shared<detail::NotificationRegistration>(
        detail::NotificationCondition(std::move(filter)), std::nullopt, registry_, std::move(function));
    registry_->add(registration);
    return NotificationObservation(std::move(registration));
}

void NotificationCenter::add(std::shared_ptr<void> observer, Selector selector, Filter filter) const {
    if (observer.use_count() == 0) fatalError("an observer has to live in a std::shared_ptr", where);
    registry_->add(std::make_shared<detail::NotificationRegistration>(
        detail::NotificationCondition(std::move(filter)), std::weak_ptr<void>(observer), registry_,
        std::move(selector)));
}

void NotificationCenter::removeObserver(const std::shared_ptr<const void>& observer) const {
    registry_->endAllOf(observer);
}

void NotificationCenter::removeObserver(const std::shared_ptr<const void>& observer,
                                        const Filter& filter) const {
    registry_->endAllOf(observer, &filter);
}

// The two that last keep the registry themselves: what they call or wait for may drop the center.

void NotificationCenter::removeObserverAndWait(const std::shared_ptr<const void>& observer) const {
    const auto registry = registry_;
    registry->endAllOf(observer);
    registry->waitForCallsOf(observer);
}

void NotificationCenter::post(const Notification& notification) const {
    const auto registry = registry_;
    registry->post(notification);
}

} // namespace vorlan
