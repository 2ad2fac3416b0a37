// SPDX-License-Identifier: Apache-2.0
#pragma once

// Identifiers that no two things share.

#include <VorlanFoundation/Platform/Export.h>

#include <string>

namespace vorlan {

/// A freshly made random identifier (RFC 4122, version 4) in its canonical form, in upper case: 36 characters,
/// as in "0D1C2B3A-4F5E-4A6B-8C7D-9E8F7A6B5C4D". Safe from any thread.
VORLAN_EXPORT std::string makeUUIDString();

} // namespace vorlan
