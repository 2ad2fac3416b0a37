// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <system_error>

namespace support {

/// How many descriptors of this process are of a file.
inline std::size_t openCount(const std::filesystem::path& path) {
    std::size_t count = 0;
    std::error_code closed;
    const auto file = std::filesystem::weakly_canonical(path);
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        count += std::filesystem::read_symlink(entry, closed) == file ? 1 : 0;
    return count;
}

} // namespace support
