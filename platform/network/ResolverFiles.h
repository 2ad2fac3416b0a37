// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace vorlan::network {

/// Tells when a file changed that says how names are looked up: resolv.conf, hosts, nsswitch.conf.
///
/// They are often symbolic links to what a network manager writes, so the folders that the links lead to are watched as
/// well, also when the links are changed.
///
/// Threads: safe from any thread; `changed` is called on one of the watch's own, and may be called once more after the
///          watch was destroyed.
/// Owns:    `changed`, as long as it lives.
class ResolverFiles {
public:
    /// Watches the files in `folder`.
    ResolverFiles(std::filesystem::path folder, std::function<void()> changed);

private:
    class Watch;

    std::shared_ptr<Watch> watch_;
};

} // namespace vorlan::network
