// SPDX-License-Identifier: Apache-2.0
#pragma once

// Values as they are written on a command line.

#include <VorlanFoundation/Platform/Value.h>

#include <optional>
#include <string_view>

namespace tool {

/// What the text of a value is read as.
enum class ValueType { boolean, integer, number, text, date, data };

/// The type that an option names ("-bool"); absent when it names none.
std::optional<ValueType> valueTypeOf(std::string_view option);

/// Reads the text of a value. Throws UsageError when it is no such value.
vorlan::Value parseValue(ValueType type, std::string_view text);

} // namespace tool
