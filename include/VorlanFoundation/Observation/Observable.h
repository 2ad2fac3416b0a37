// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lets any object have observers.
//
//     struct PlayerObserver {
//         virtual void player(Player& player, bool didPause) = 0;
//     };
//     class Player : public Observable<PlayerObserver> {
//         void pause() { notifyObservers([&](PlayerObserver& o) { o.player(*this, true); }); }
//     };
//     auto token = player->addObserver(badge);

#include <VorlanFoundation/Execution/GlobalFunctions.h>
#include <VorlanFoundation/Observation/NotificationPass.h>
#include <VorlanFoundation/Observation/ObservationToken.h>
#include <VorlanFoundation/Observation/WeakSet.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/Object.h>

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

namespace vorlan {

namespace detail {
/// Its address is the key under which observer sets are associated with objects.
VORLAN_EXPORT extern const char observerSetKey[]; // NOLINT(*-avoid-c-arrays): its identity counts
/// The same for the passes that notify them.
VORLAN_EXPORT extern const char notificationPassesKey[]; // NOLINT(*-avoid-c-arrays)
} // namespace detail

/// An interface with default operations that gives an object an observer registry.
///
/// The registry is a `WeakSet` associated with the object, made when it is first asked for. A type may
/// replace the virtual operations; tokens call `removeObserver` as the type has it. A type has one kind of
/// observers: an object that is `Observable` for two stops the process when the second is used.
///
/// Threads:     safe from any thread, but for destruction. Callbacks run on the thread that notifies, before
///              `notifyObservers` returns.
/// Owns:        observers weakly; a token owns its observer strongly. While it notifies, the object holds
///              itself (if it lives in a `std::shared_ptr`) and the observers that were alive at the start.
/// Re-entrancy: a callback may add, remove and notify observers and drop the object. The pass under way keeps
///              to the observers it began with, but for those taken out by `ObservationToken::cancelAndWait`.
/// Time:        adding and removing are O(1), notifying is O(n). The order of observers is not promised.
/// Errors:      a null observer stops the process, as does `addObserver` on an object that does not live in a
///              `std::shared_ptr`. An exception of a callback ends the pass and reaches the caller.
///
/// @tparam ObserverType The observers' type, usually an interface. An observer made with `std::make_shared`
///                      keeps its address from being reused while the registry remembers it; otherwise a new
///                      object at the address of one that died counts as registered, and is not added, until
///                      the next notification purges the dead one.
template <class ObserverType>
class Observable : public virtual Object {
public:
    using Observer = ObserverType;
    using Token = std::shared_ptr<ObservationToken>;

    ~Observable() override = default;

    /// The observers; the same set at every call.
    std::shared_ptr<WeakSet<Observer>> observerSet() const {
        return associatedValue(*this, detail::observerSetKey,
                               [] { return std::make_shared<WeakSet<Observer>>(); });
    }

    /// Registers an observer, which is called at every notification from now on while it lives. Registering
    /// it again gives another token for the same one registration.
    virtual Token addObserver(const std::shared_ptr<Observer>& observer);

    /// Registers several; the tokens are in the order of the observers.
    virtual std::vector<Token> addObservers(const std::vector<std::shared_ptr<Observer>>& observers) {
        std::vector<Token> tokens;
        tokens.reserve(observers.size());
        for (const auto& observer : observers) tokens.push_back(addObserver(observer));
        return tokens;
    }

    /// Ends the registration of an observer; does nothing when it has none.
    virtual void removeObserver(const std::shared_ptr<Observer>& observer) { observers().remove(observer); }

    /// Ends all registrations.
    virtual void removeAllObservers() { observers().removeAllObjects(); }

    /// Calls `function` with each observer that is alive, on the calling thread, before it returns.
    virtual void notifyObservers(FunctionRef<void(Observer&)> function) { forEachObserver(function); }

    /// The same for the observers that are a `T`: `player->notifyObservers<Loud>([](Loud& o) { o.beep(); })`.
    template <class T, class Function>
    void notifyObservers(Function&& function) {
        forEachObserver([&](Observer& observer) {
            if (auto* converted = dynamic_cast<T*>(&observer)) function(*converted);
        });
    }

private:
    class Registration;

    // Associated with the object; the address is then kept at hand, as looking it up takes the object's lock.
    WeakSet<Observer>& observers() const {
        return cached(observers_, [this] { return observerSet(); });
    }
    detail::NotificationPasses& passes() const {
        return cached(passes_, [this] {
            return associatedValue(*this, detail::notificationPassesKey,
                                   [] { return std::make_shared<detail::NotificationPasses>(); });
        });
    }

    // Null for an object that does not live in a `std::shared_ptr`, or is being destroyed. That is the rare case:
    // `weak_from_this().lock()` would say so without an exception, at the price of two more counts every time.
    std::shared_ptr<const Object> held() const noexcept {
        try {
            return shared_from_this();
        } catch (const std::bad_weak_ptr&) {
            return nullptr;
        }
    }

    template <class T, class Find>
    static T& cached(std::atomic<T*>& cache, Find&& find) {
        if (auto* known = cache.load(std::memory_order_acquire)) return *known;
        auto* found = find().get();
        cache.store(found, std::memory_order_release);
        return *found;
    }

    template <class Function>
    void forEachObserver(Function&& function) {
        const auto self = held();
        detail::NotificationPass pass(passes());
        observers().forEachObject([&](Observer& observer) {
            if (pass.announce(identityOf(observer))) function(observer);
        });
    }

    void skipAndWait(const std::shared_ptr<Observer>& observer) {
        // The removal may still be queued; looking waits for it.
        observers().contains(observer);
        passes().skipAndWait(identityOf(*observer));
    }

    mutable std::atomic<WeakSet<Observer>*> observers_ = nullptr;
    mutable std::atomic<detail::NotificationPasses*> passes_ = nullptr;
};

template <class ObserverType>
class Observable<ObserverType>::Registration final : public ObservationToken {
public:
    Registration(Observable& observable, std::weak_ptr<Object> lifetime,
                 const std::shared_ptr<Observer>& observer)
        : lifetime_(std::move(lifetime)), observable_(observable), observer_(observer) {}

protected:
    void cancellationClosure() override {
        if (const auto alive = lifetime_.lock()) observable_.removeObserver(observer_);
    }
    void waitForCallbacks() override {
        if (const auto alive = lifetime_.lock()) observable_.skipAndWait(observer_);
    }

private:
    std::weak_ptr<Object> lifetime_;
    Observable& observable_; ///< Used only while the object is held.
    std::shared_ptr<Observer> observer_;
};

template <class ObserverType>
typename Observable<ObserverType>::Token Observable<ObserverType>::addObserver(
    const std::shared_ptr<Observer>& observer) {
    auto lifetime = weak_from_this();
    if (lifetime.expired())
        fatalError("an observable object has to live in a std::shared_ptr", "VorlanFoundation/Observable");
    observers().insert(observer);
    return std::make_shared<Registration>(*this, std::move(lifetime), observer);
}

} // namespace vorlan
