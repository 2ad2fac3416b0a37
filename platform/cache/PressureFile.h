// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where the kernel tells how short of memory programs are: its pressure stall information.

#include <filesystem>
#include <optional>
#include <string_view>

namespace vorlan {

/// The pressure file of a process's own control group; absent when no group of the second version is mounted where the
/// process could see its own.
///
/// @param groups What /proc/self/cgroup says.
/// @param mounts What /proc/self/mountinfo says.
std::optional<std::filesystem::path> pressureFileOfGroup(std::string_view groups, std::string_view mounts);

/// The one that tells of this process most closely: its group's, else the machine's. It need not be there.
std::filesystem::path pressureFileOfProcess();

/// How much of the last ten seconds some program was held up for want of memory, in percent; absent when the file does
/// not say.
std::optional<double> memoryPressure(const std::filesystem::path& file);

} // namespace vorlan
