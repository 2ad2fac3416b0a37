// SPDX-License-Identifier: Apache-2.0

// Reads and changes the settings of any application from a shell: for support, and for scripts.

#include "tools/defaults/Arguments.h"
#include "tools/defaults/Commands.h"
#include "tools/support/Program.h"

int main(int argc, char** argv) {
    return tool::runProgram(argc, argv, tool::failed,
                            [](const auto& words) -> int { return tool::run(tool::parseArguments(words)); });
}
