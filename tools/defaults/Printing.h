// SPDX-License-Identifier: Apache-2.0
#pragma once

// Values as they are printed.

#include <VorlanFoundation/Platform/Value.h>

#include <string>

namespace tool {

/// A value for people, and for scripts that know its type: as `write` takes it. Within arrays and dictionaries,
/// which are indented, texts are quoted and data is in angle brackets.
std::string plainText(const vorlan::Value& value);

/// A value as JSON, indented. What JSON has no form for is a text: dates in ISO 8601, data in base64, "inf", "-inf"
/// and "nan".
std::string jsonText(const vorlan::Value& value);

} // namespace tool
