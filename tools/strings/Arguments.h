// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a call asks for.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

enum class Command { none, check, print, list };

/// A call that is right.
struct Arguments {
    Command command = Command::none;
    std::vector<std::string> paths;
    std::optional<std::string> base;
    std::optional<std::string> table;
    bool isStrict = false;
    bool asJSON = false;
    bool wantsHelp = false; ///< Of the command, if there is one.
    bool wantsVersion = false;
};

/// Understands the words behind the program's name. Throws UsageError when they are no right call.
Arguments parseArguments(const std::vector<std::string_view>& words);

} // namespace tool
