// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/Aside.h"

#include <cstdio>
#include <system_error>

namespace vorlan::defaults {

void moveAside(const std::filesystem::path& path, Problems& problems) {
    std::error_code failed;
    for (int number = 1;; ++number) {
        const auto target = path.native() + ".damaged-" + std::to_string(number);
        if (std::filesystem::exists(std::filesystem::symlink_status(target, failed))) continue;
        const bool isDone = std::rename(path.c_str(), target.c_str()) == 0;
        problems.push_back(path.native() + " is damaged; " +
                           (isDone ? "it was renamed to " + target : "it could not be renamed"));
        return;
    }
}

} // namespace vorlan::defaults
