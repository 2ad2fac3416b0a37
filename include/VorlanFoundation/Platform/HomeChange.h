// SPDX-License-Identifier: Apache-2.0
#pragma once

// How what is kept for one home folder learns that the process was given another: tests do that.

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FunctionRef.h>

#include <cstdint>

namespace vorlan::detail {

/// Changes the environment's folders by `change`. What was not saved is saved to the former folders before, and
/// everything that was read from them is forgotten. No other thread may use the library meanwhile.
VORLAN_EXPORT void changeHome(FunctionRef<void()> change);

/// How often that happened in this process.
VORLAN_EXPORT std::uint64_t homeGeneration() noexcept;

} // namespace vorlan::detail
