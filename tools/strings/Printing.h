// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tables as they are printed.

#include <VorlanFoundation/Platform/StringTable.h>

#include <string>

namespace tool {

/// A table as a .strings file says it, with the forms of plural variables in comments.
std::string tableText(const vorlan::StringTable& table);

/// A table as JSON.
std::string jsonText(const vorlan::StringTable& table);

} // namespace tool
