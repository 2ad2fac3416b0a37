// SPDX-License-Identifier: Apache-2.0
#pragma once

// How the host hears of what went wrong where no call can say it: a damaged settings file, a full disk.

#include <VorlanFoundation/Platform/Export.h>

#include <functional>
#include <string_view>

namespace vorlan {

/// Is told what went wrong (one sentence without a final full stop) and where ("VorlanFoundation/UserDefaults").
using ProblemHandler = std::function<void(std::string_view message, std::string_view where)>;

/// Has problems told to `handler` instead of written to standard error, one line each; null restores that.
///
/// The handler may be called on any thread, also on several at once, and must not throw. It may call anything of
/// this library. Safe from any thread; a call of the former handler may be under way on another thread still.
VORLAN_EXPORT void setProblemHandler(ProblemHandler handler);

namespace detail {
/// Tells the handler.
VORLAN_EXPORT void reportProblem(std::string_view message, std::string_view where) noexcept;
} // namespace detail

} // namespace vorlan
