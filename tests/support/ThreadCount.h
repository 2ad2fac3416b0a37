// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <thread>

namespace support {

/// How many threads the process has at this moment, in one number of the kernel's: a listing of /proc/self/task leaves
/// some out while others end.
inline std::size_t threadCount() {
    // A sanitizer has a thread of its own from the first on that the process makes, so that one is made before.
    [[maybe_unused]] static const bool isFirstMade = (std::jthread([] {}).join(), true);
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "Threads:") {}
    std::size_t count = 0;
    status >> count;
    return count;
}

} // namespace support
