// SPDX-License-Identifier: Apache-2.0
#pragma once

// Says whether a text is JSON, by the grammar of RFC 8259 and nothing else: slowly, and rule by rule, so that a reader
// that is made for speed can be held against it.

#include <cstddef>
#include <string_view>

namespace vorlan::tests {

enum class Judgement { json, noJSON, tooDeep };

/// What the grammar says of a text in UTF-8 without a byte-order mark. Escapes of surrogates must come in pairs. Where
/// more than 512 arrays and objects stand within one another, that is all it says.
Judgement judgementOf(std::string_view text);

} // namespace vorlan::tests
