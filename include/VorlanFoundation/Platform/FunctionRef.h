// SPDX-License-Identifier: Apache-2.0
#pragma once

// A reference to a callable, for operations that call it before they return.

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace vorlan {

template <class Signature>
class FunctionRef;

/// Refers to a callable without owning or copying it; two pointers, and nothing is allocated.
///
/// Meant for parameters: a temporary lambda lives until the call is over. Never keep one.
///
/// Threads: safe from any thread, as far as the callable is.
/// Owns:    nothing.
template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
public:
    /// Refers to `callable`.
    template <class Callable>
        requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionRef> &&
                 std::is_invocable_r_v<Result, Callable&, Arguments...>)
    FunctionRef(Callable&& callable) noexcept // NOLINT(*-explicit-*): stands for the callable itself
        : callable_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
          call_([](void* target, Arguments... arguments) -> Result {
              return std::invoke(*static_cast<std::remove_reference_t<Callable>*>(target),
                                 std::forward<Arguments>(arguments)...);
          }) {}

    /// Calls what is referred to.
    Result operator()(Arguments... arguments) const {
        return call_(callable_, std::forward<Arguments>(arguments)...);
    }

private:
    void* callable_;
    Result (*call_)(void*, Arguments...);
};

} // namespace vorlan
