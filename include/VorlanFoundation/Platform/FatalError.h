// SPDX-License-Identifier: Apache-2.0
#pragma once

// How the process ends on a programming error: always with a line that says what was wrong and where.

#include <VorlanFoundation/Platform/Export.h>

#include <string_view>

namespace vorlan {

/// Stops the process because the program is wrong.
///
/// Writes "where: Fatal error: message" and a line feed to standard error in one piece, then aborts
/// (SIGABRT). May be called from any thread, also while other threads run. Never returns, never throws.
///
/// @param message What was wrong, without a final full stop or line feed.
/// @param where   Where the rule stands that was broken, for example "VorlanFoundation/Queue".
[[noreturn]] VORLAN_EXPORT void fatalError(std::string_view message, std::string_view where);

} // namespace vorlan
