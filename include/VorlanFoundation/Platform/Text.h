// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is asked of texts in UTF-8.

#include <VorlanFoundation/Platform/Export.h>

#include <string_view>

namespace vorlan {

/// Whether a text is made of blanks, tabs and line ends only, those of all scripts (Unicode's White_Space); also when
/// it is empty. Ill-formed bytes are none of these. Safe from any thread.
VORLAN_EXPORT bool isBlankText(std::string_view text) noexcept;

} // namespace vorlan
