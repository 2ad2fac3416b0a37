// SPDX-License-Identifier: Apache-2.0

// Reads and changes the settings of any application from a shell: for support, and for scripts.

#include "tools/defaults/Arguments.h"
#include "tools/defaults/Commands.h"
#include "tools/defaults/Usage.h"

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <vector>

int main(int argc, char** argv) try {
    const std::vector<std::string_view> words(argv + (argc > 0 ? 1 : 0), argv + argc);
    return tool::run(tool::parseArguments(words));
} catch (const std::invalid_argument& error) {
    std::cerr << "vorlan-defaults: " << error.what() << "\n\n" << tool::usage;
    return tool::wrongUsage;
} catch (const std::exception& error) {
    std::cerr << "vorlan-defaults: " << error.what() << "\n";
    return tool::failed;
}
