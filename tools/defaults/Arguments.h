// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a call asks for.

#include <VorlanFoundation/Platform/Value.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

enum class Command { help, version, read, write, remove, list, domains };

/// A call that is right.
struct Arguments {
    Command command = Command::help;
    std::string domain;
    std::optional<std::string> key;
    vorlan::Value value;
    bool asJSON = false;
};

/// Understands the words behind the program's name. Throws UsageError when they are no right call.
Arguments parseArguments(const std::vector<std::string_view>& words);

} // namespace tool
