// SPDX-License-Identifier: Apache-2.0
#pragma once

// What stands for an object, where the object itself is meant.

#include <memory>
#include <type_traits>

namespace vorlan::detail {

template <class T>
inline constexpr bool isObjectPointer = std::is_pointer_v<T>;
template <class T>
inline constexpr bool isObjectPointer<std::shared_ptr<T>> = true;
template <class T, class Deleter>
inline constexpr bool isObjectPointer<std::unique_ptr<T, Deleter>> = true;

/// A pointer, bare or smart.
template <class T>
concept ObjectPointer = isObjectPointer<std::remove_cv_t<T>>;

} // namespace vorlan::detail
