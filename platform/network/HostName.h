// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlan::network {

/// The longest name of a host in bytes, a final dot not counted (RFC 1035, section 3.1, less what a text has not).
inline constexpr std::size_t longestHostName = 253;

/// The name as resolvers take it: letters beyond ASCII in their IDNA form. Nothing when it is empty, too long, not well
/// formed, holds a NUL or has no such form.
std::optional<std::string> resolvableName(std::string_view name);

} // namespace vorlan::network
