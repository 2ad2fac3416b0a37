// SPDX-License-Identifier: Apache-2.0
#pragma once

// What classes have in common that give a host's type operations of its own.

#include <compare>
#include <concepts>

namespace vorlan::detail {

/// The base of such a class, `Self`. It says nothing of the values of the host's type: their comparisons can be
/// defaulted, and are not there by themselves. Of a host's aggregate that is derived from one, some compilers warn where
/// it is written with designators, as these leave the base out.
template <class Self>
class Mixin {
    template <std::same_as<Self> M>
    friend constexpr bool operator==(const M&, const M&) noexcept {
        return true;
    }
    template <std::same_as<Self> M>
    friend constexpr std::strong_ordering operator<=>(const M&, const M&) noexcept {
        return std::strong_ordering::equal;
    }
};

} // namespace vorlan::detail
