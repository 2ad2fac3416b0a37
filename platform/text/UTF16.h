// SPDX-License-Identifier: Apache-2.0
#pragma once

// Between our texts, in UTF-8, and ICU's, in UTF-16.

#include <string>
#include <string_view>
#include <unicode/unistr.h>

namespace vorlan {

/// A text for ICU; ill-formed bytes become U+FFFD.
icu::UnicodeString utf16FromUTF8(std::string_view text);

/// A text of ICU's.
std::string utf8FromUTF16(const icu::UnicodeString& text);

} // namespace vorlan
