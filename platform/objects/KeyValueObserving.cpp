// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/KeyValueObserving.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vorlan {

struct detail::KeyValueObserver {
    void tell(const KeyValueChange& change) const {
        if (isValid) handler(change);
    }

    std::string key;
    KeyValueObserving::Handler handler;
    bool wantsPrior;
    std::weak_ptr<KeyValueRegistry> registry;
    std::uint64_t number = 0; ///< Among those of the object.
    std::atomic<bool> isValid = true;
};

struct detail::KeyValueRegistry {
    // A change that was announced and not yet reported, with the value at that time. Each thread closes its
    // own, the latest first, as changes of one key may be announced several times over.
    struct Announced {
        std::thread::id thread;
        std::string key;
        std::any oldValue;
    };

    std::vector<std::shared_ptr<KeyValueObserver>> observersOf(std::string_view key) {
        const std::lock_guard lock(mutex);
        std::vector<std::shared_ptr<KeyValueObserver>> found;
        for (const auto& [number, observer] : observers)
            if (observer->key == key) found.push_back(observer);
        return found;
    }

    void announce(std::string_view key, std::any oldValue) {
        const std::lock_guard lock(mutex);
        announced.push_back({std::this_thread::get_id(), std::string(key), std::move(oldValue)});
    }

    std::any takeAnnounced(std::string_view key) {
        const std::lock_guard lock(mutex);
        const auto isIt = [&, thread = std::this_thread::get_id()](const Announced& one) {
            return one.thread == thread && one.key == key;
        };
        const auto last = std::find_if(announced.rbegin(), announced.rend(), isIt);
        if (last == announced.rend()) return {};
        auto oldValue = std::move(last->oldValue);
        announced.erase(std::next(last).base());
        return oldValue;
    }

    void remove(const KeyValueObserver& observer) {
        decltype(observers)::node_type removed; // Destroyed when the lock is released again.
        const std::lock_guard lock(mutex);
        removed = observers.extract(observer.number);
    }

    std::mutex mutex;
    std::map<std::uint64_t, std::shared_ptr<KeyValueObserver>> observers; ///< By the order of registration.
    std::uint64_t nextNumber = 0;
    std::vector<Announced> announced;
};

KeyValueObservation::KeyValueObservation() noexcept = default;
KeyValueObservation::KeyValueObservation(std::shared_ptr<detail::KeyValueObserver> observer) noexcept
    : observer_(std::move(observer)) {}
KeyValueObservation::KeyValueObservation(KeyValueObservation&&) noexcept = default;

KeyValueObservation& KeyValueObservation::operator=(KeyValueObservation&& other) noexcept {
    if (this == &other) return *this;
    invalidate();
    observer_ = std::move(other.observer_);
    return *this;
}

KeyValueObservation::~KeyValueObservation() {
    invalidate();
}

void KeyValueObservation::invalidate() {
    const auto observer = std::exchange(observer_, nullptr);
    if (!observer) return;
    observer->isValid = false;
    if (const auto registry = observer->registry.lock()) registry->remove(*observer);
}

KeyValueObserving::KeyValueObserving() : registry_(std::make_shared<detail::KeyValueRegistry>()) {}
KeyValueObserving::~KeyValueObserving() = default;

KeyValueObservation KeyValueObserving::observe(std::string key, Handler handler, Options options) {
    auto observer = std::make_shared<detail::KeyValueObserver>(std::move(key), std::move(handler),
                                                               options.prior, registry_);
    const std::lock_guard lock(registry_->mutex);
    observer->number = registry_->nextNumber++;
    registry_->observers.emplace(observer->number, observer);
    return KeyValueObservation(std::move(observer));
}

void KeyValueObserving::willChangeValueForKey(std::string_view key) {
    const auto observers = registry_->observersOf(key);
    if (observers.empty()) return;
    const KeyValueChange change{*this, key, true, valueForKey(key), {}};
    registry_->announce(key, change.oldValue);
    for (const auto& observer : observers)
        if (observer->wantsPrior) observer->tell(change);
}

void KeyValueObserving::didChangeValueForKey(std::string_view key) {
    auto oldValue = registry_->takeAnnounced(key);
    const auto observers = registry_->observersOf(key);
    if (observers.empty()) return;
    const KeyValueChange change{*this, key, false, std::move(oldValue), valueForKey(key)};
    for (const auto& observer : observers) observer->tell(change);
}

std::any KeyValueObserving::valueForKey(std::string_view) const {
    return {};
}

} // namespace vorlan
