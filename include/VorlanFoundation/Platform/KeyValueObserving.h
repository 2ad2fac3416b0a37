// SPDX-License-Identifier: Apache-2.0
#pragma once

// Objects that announce and report each change of their properties, by the properties' names.
//
//     auto observation = operation->observe("isFinished", [](const KeyValueChange& change) {
//         if (std::any_cast<bool>(change.newValue)) std::puts("done");
//     });

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Object.h>

#include <any>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vorlan {

class KeyValueObserving;

namespace detail {
struct KeyValueObserver;
struct KeyValueRegistry;
} // namespace detail

/// What an observer is told of a property.
struct KeyValueChange {
    KeyValueObserving& object; ///< Whose property it is.
    std::string_view key;      ///< The property's name; valid during the call.
    bool isPrior = false;      ///< Whether the change is only announced: it has not happened yet.
    std::any oldValue;         ///< As it was announced; empty where the announcement was not heard.
    std::any newValue;         ///< Empty in an announcement.
};

/// A registration with an observed object; ends when it is dropped.
///
/// Threads: one thread at a time; a call that is under way on another thread ends in its own time.
/// Owns:    the handler, together with a call that is under way. Not the object.
class VORLAN_EXPORT KeyValueObservation {
public:
    /// No registration.
    KeyValueObservation() noexcept;
    KeyValueObservation(KeyValueObservation&&) noexcept;
    KeyValueObservation& operator=(KeyValueObservation&&) noexcept;
    /// Ends the registration.
    ~KeyValueObservation();

    /// Ends the registration: no further call begins. A second time does nothing.
    void invalidate();

private:
    friend class KeyValueObserving;

    explicit KeyValueObservation(std::shared_ptr<detail::KeyValueObserver> observer) noexcept;

    std::shared_ptr<detail::KeyValueObserver> observer_;
};

/// An object whose properties can be observed by key.
///
/// Whoever changes a property calls `willChangeValueForKey`, changes it, and calls `didChangeValueForKey`,
/// also when old and new are equal: observers hear of each.
///
/// Threads:     safe from any thread; observers are called on the thread that makes the change.
/// Owns:        the handlers, until their registrations end.
/// Re-entrancy: a handler may add and end registrations and change properties. One that is added during a
///              call hears of the next.
/// Errors:      an exception of a handler leaves the call that told it; later observers are then not told.
class VORLAN_EXPORT KeyValueObserving : public virtual Object {
public:
    using Handler = std::function<void(const KeyValueChange&)>;

    /// What an observer wants to be told beside changes that have happened.
    struct Options {
        bool prior; ///< Also each announcement, before the change.
    };

    KeyValueObserving();
    ~KeyValueObserving() override;

    /// Has `handler` called at every change of the property until the registration ends.
    [[nodiscard]] KeyValueObservation observe(std::string key, Handler handler, Options options = {false});

    /// Announces that the property is about to change.
    virtual void willChangeValueForKey(std::string_view key);

    /// Reports that the property has changed.
    virtual void didChangeValueForKey(std::string_view key);

    /// The value of a property, as observers are told it; empty where there is no such property. To be
    /// overridden with the properties that a class adds.
    virtual std::any valueForKey(std::string_view key) const;

private:
    std::shared_ptr<detail::KeyValueRegistry> registry_;
};

} // namespace vorlan
