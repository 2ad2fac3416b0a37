// SPDX-License-Identifier: Apache-2.0
#pragma once

// Makes and configures a value or an object in one expression.
//
//     auto label = with(base, [](Label& l) { l.bold = true; });               // a changed copy
//     do_(settings, [](const Settings& s) { log(s.name); });
//     auto window = then(std::make_shared<Window>(), [](Window& w) { w.show(); });

#include <VorlanFoundation/Extensions/Mixin.h>
#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Object.h>
#include <VorlanFoundation/Platform/ObjectPointer.h>

#include <concepts>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace vorlan {

/// A copy of a value, changed by the block. An exception of the block passes.
template <std::move_constructible T, std::invocable<T&> Block>
constexpr T with(T value, Block&& block) {
    std::invoke(std::forward<Block>(block), value);
    return value;
}

/// Calls the block with a value. An exception of the block passes.
template <class T, std::invocable<T&> Block>
constexpr void do_(T&& value, Block&& block) {
    std::invoke(std::forward<Block>(block), value);
}

/// Calls the block with the object that a pointer, bare or smart, points to; gives the pointer back. A null pointer
/// stops the process. An exception of the block passes.
template <detail::ObjectPointer Pointer, class Block>
    requires std::invocable<Block, decltype(*std::declval<Pointer&>())>
constexpr Pointer then(Pointer object, Block&& block) {
    if (object == nullptr) fatalError("there is no object to call the block with", "VorlanFoundation/Then");
    std::invoke(std::forward<Block>(block), *object);
    return object;
}

/// Calls the block with an object; gives the object back. An exception of the block passes.
template <std::derived_from<Object> T, std::invocable<T&> Block>
constexpr T& then(T& object, Block&& block) {
    std::invoke(std::forward<Block>(block), object);
    return object;
}

/// Gives a type these as operations of its own: `auto label = base.with([](Label& l) { l.bold = true; });`
///
///     struct Label : Then<Label> { ... };
///
/// Within the class these hide the free functions: there write `vorlan::with`. They are of the class that names itself: the
/// copy of a subclass's value is a `Label`, so subclasses use the free functions.
///
/// Threads: as the type itself.
/// Errors:  an exception of a block passes. `then` of an object that lives in no shared_ptr throws std::bad_weak_ptr.
template <class Self>
class Then : public detail::Mixin<Then<Self>> {
public:
    /// A copy, changed by the block.
    template <class Block>
    constexpr Self with(Block&& block) const {
        return vorlan::with(self(), std::forward<Block>(block));
    }

    /// Calls the block with this.
    template <class Block>
    constexpr void do_(Block&& block) {
        vorlan::do_(static_cast<Self&>(*this), std::forward<Block>(block));
    }
    template <class Block>
    constexpr void do_(Block&& block) const {
        vorlan::do_(self(), std::forward<Block>(block));
    }

    /// Calls the block with this object and returns it.
    template <class Block>
        requires std::derived_from<Self, Object>
    std::shared_ptr<Self> then(Block&& block) {
        return vorlan::then(vorlan::shared(static_cast<Self*>(this)), std::forward<Block>(block));
    }

private:
    constexpr const Self& self() const { return static_cast<const Self&>(*this); }
};

} // namespace vorlan
