// SPDX-License-Identifier: Apache-2.0
#pragma once

// Offsets from UTC by the fields Z, X and x of patterns.

#include <string>

namespace vorlan {

/// Appends an offset in seconds, as "+0530" or "Z": the letter and its count say how, as patterns have them. Not for
/// ZZZZ, which is in a language.
void appendOffset(std::string& text, int seconds, char letter, int count);

} // namespace vorlan
