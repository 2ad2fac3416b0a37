// SPDX-License-Identifier: Apache-2.0
#pragma once

// Texts in quotes.

#include <string>
#include <string_view>

namespace tool {

/// A word in a message, in single quotes.
std::string inQuotes(std::string_view word);

/// A text on one line in double quotes, with the escapes that JSON and tables of texts have alike.
std::string quotedText(std::string_view text);

} // namespace tool
