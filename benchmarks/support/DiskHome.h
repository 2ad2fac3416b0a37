// SPDX-License-Identifier: Apache-2.0
#pragma once

// A home on a disk, for what ends up in files.

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <linux/magic.h>
#include <sys/vfs.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace vorlan::benchmarks {

/// An empty home below /var/tmp, gone with all in it at the end. There, as /tmp is memory on many systems, and what a
/// disk costs is the point.
///
/// Threads: made first in the process, while no other thread reads the environment.
class DiskHome {
public:
    DiskHome() {
        struct statfs status{};
        if (statfs(parent, &status) != 0 || status.f_type == TMPFS_MAGIC)
            throw std::runtime_error("the benchmarks of files need a disk at /var/tmp");
    }

    const std::filesystem::path& path() const noexcept { return home_.path(); }

private:
    static constexpr auto parent = "/var/tmp";

    bool isSet_ = setenv("TMPDIR", parent, 1) == 0; ///< Before the home is made, which goes by it.
    testing::TemporaryHome home_;
};

} // namespace vorlan::benchmarks
