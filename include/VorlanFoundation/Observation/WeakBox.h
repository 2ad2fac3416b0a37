// SPDX-License-Identifier: Apache-2.0
#pragma once

// One object held weakly, with an identity that outlives it.

#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Object.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>

namespace vorlan {

/// Wraps an object weakly and remembers its address, by which boxes are told apart also after the object
/// died.
///
/// The address is that of the whole object, so that an object seen through two of its interfaces is one. It
/// is a safe name for the object as long as a box remembers it if the object was made by `std::make_shared`,
/// whose memory is kept until the last weak reference is gone; an object made otherwise leaves its address to
/// be used again, and a new object there is taken for the old one until the old one's box is purged.
///
/// Threads: safe from any thread (a value that never changes).
/// Owns:    the object weakly.
/// Errors:  a box of no object (a null pointer) stops the process with a message.
template <class T>
class WeakBox {
public:
    /// There is no box without an object.
    WeakBox() = delete;

    /// Wraps an object.
    explicit WeakBox(const std::shared_ptr<T>& object) : weakObject_(object) {
        if (!object) fatalError("a weak box of no object", "VorlanFoundation/WeakBox");
        identity_ = identityOf(*object);
    }

    /// The object, or null once it has died.
    std::shared_ptr<T> object() const noexcept { return weakObject_.lock(); }

    /// Whether the object has died.
    bool isEmpty() const noexcept { return weakObject_.expired(); }

    /// The object's address, taken at construction.
    std::int64_t memoryAddress() const noexcept {
        return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(identity_));
    }

    /// The object's address as a pointer that is only to be compared.
    const void* identity() const noexcept { return identity_; }

    /// The hash of the box: its `memoryAddress`.
    std::int64_t hash() const noexcept { return memoryAddress(); }

    /// Whether `other` is a box of the same element type for the same address. A box whose object died still
    /// is equal by its address; an absent optional, a null pointer and anything that is no such box are not.
    template <class Other>
    bool isEqual(const Other& other) const noexcept {
        if constexpr (std::is_same_v<Other, WeakBox>) {
            return identity_ == other.identity_;
        } else if constexpr (requires {
                                 static_cast<bool>(other);
                                 *other;
                             }) {
            return static_cast<bool>(other) && isEqual(*other);
        } else {
            return false;
        }
    }

    /// The same as `isEqual`.
    friend bool operator==(const WeakBox& a, const WeakBox& b) noexcept { return a.isEqual(b); }

private:
    std::weak_ptr<T> weakObject_;
    const void* identity_;
};

} // namespace vorlan

/// Boxes hash by address, as they are equal by it.
template <class T>
struct std::hash<vorlan::WeakBox<T>> {
    std::size_t operator()(const vorlan::WeakBox<T>& box) const noexcept {
        return static_cast<std::size_t>(box.hash());
    }
};
