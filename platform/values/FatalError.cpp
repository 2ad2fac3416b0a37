// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/FatalError.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace vorlan {

void fatalError(std::string_view message, std::string_view where) {
    std::string line(where);
    line.append(": Fatal error: ").append(message).append("\n");
    // One write, so that the line stays whole beside what other threads print.
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
    std::abort();
}

} // namespace vorlan
