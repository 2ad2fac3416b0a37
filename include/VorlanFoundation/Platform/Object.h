// SPDX-License-Identifier: Apache-2.0
#pragma once

// Objects with an identity: what can be observed, locked and given associated values.
//
//     class Player : public Observable<PlayerObserver> { ... };     // an Object by its base
//     auto player = std::make_shared<Player>();

#include <VorlanFoundation/Platform/Export.h>

#include <atomic>
#include <concepts>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace vorlan {

/// The address that identifies an object: that of the whole object, whichever of its bases is asked.
template <class T>
const void* identityOf(const T& object) noexcept {
    if constexpr (std::is_polymorphic_v<T>) {
        return dynamic_cast<const void*>(std::addressof(object));
    } else {
        return std::addressof(object);
    }
}

namespace detail {

/// A value attached to an object, whatever its type.
class VORLAN_EXPORT AssociatedValue {
public:
    AssociatedValue() = default;
    AssociatedValue(const AssociatedValue&) = delete;
    AssociatedValue& operator=(const AssociatedValue&) = delete;
    virtual ~AssociatedValue();

    virtual const std::type_info& type() const noexcept = 0;
    virtual std::string description() const = 0;
};

struct ObjectExtras;

} // namespace detail

/// The base of objects whose identity matters; such objects live in `std::shared_ptr`.
///
/// Carries a recursive monitor (used by `synchronized`) and values associated by key (`associatedValue`),
/// both made on first use: an object that needs neither pays one pointer for them. Interfaces derive from it
/// virtually, so that an object with several of them is still one object.
///
/// Threads: safe from any thread, but for destruction.
/// Owns:    its associated values, until it is destroyed; they go after the derived parts of the object.
/// Example:
///     class Account : public virtual Object { ... };
class VORLAN_EXPORT Object : public std::enable_shared_from_this<Object> {
public:
    Object() noexcept = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object();

    /// The object's recursive lock; meets BasicLockable. `synchronized` is the way to use it.
    std::recursive_mutex& monitor() const;

    /// What is associated under `key`, or null. The monitor must be held by the calling thread.
    detail::AssociatedValue* association(const void* key) const;

    /// Associates a value under a key, in place of what was there. The monitor must be held by the calling
    /// thread.
    void associate(const void* key, std::unique_ptr<detail::AssociatedValue> value) const;

private:
    detail::ObjectExtras& extras() const;

    mutable std::atomic<detail::ObjectExtras*> extras_ = nullptr;
};

/// A strong reference to an object from within it, of its own type: `[self = shared(this)] { self->finish();
/// }`.
///
/// The object must live in a `std::shared_ptr`; else, and while it is being destroyed, std::bad_weak_ptr is
/// thrown.
template <class T>
    requires std::derived_from<T, Object>
std::shared_ptr<T> shared(T* object) {
    return std::shared_ptr<T>(object->shared_from_this(), object);
}

/// A weak reference to an object from within it, of its own type; empty where `shared` would throw.
template <class T>
    requires std::derived_from<T, Object>
std::weak_ptr<T> weak(T* object) noexcept {
    if (auto self = object->weak_from_this().lock()) return std::shared_ptr<T>(std::move(self), object);
    return {};
}

} // namespace vorlan
