// SPDX-License-Identifier: Apache-2.0

// Checks the translations of an application before its users see them: for translators, and for builds.

#include "tools/strings/Arguments.h"
#include "tools/strings/Commands.h"
#include "tools/support/Program.h"

int main(int argc, char** argv) {
    return tool::runProgram(argc, argv, tool::failed,
                            [](const auto& words) -> int { return tool::run(tool::parseArguments(words)); });
}
