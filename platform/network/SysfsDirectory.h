// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/network/Sysfs.h"

#include <filesystem>
#include <string_view>

namespace vorlan::network {

/// The sysfs that is mounted at a folder, or a folder that is laid out like one.
///
/// A mounted sysfs shows the network namespace that it was mounted in, which need not be the caller's. An
/// entry is therefore used only when it carries the index of the link that was asked for.
///
/// Threads: safe from any thread.
/// Errors:  what cannot be read is as if it were not there.
class SysfsDirectory final : public Sysfs {
public:
    /// Reads below `root`.
    explicit SysfsDirectory(std::filesystem::path root = "/sys") : root_(std::move(root)) {}

    DeviceTraits traits(const Link& link) const override;

    /// The value of the DEVTYPE line of a uevent file's text; empty without one.
    static std::string_view devtypeOf(std::string_view uevent) noexcept;

    /// Whether a device's name is safe as one step of a path, and could be a device's at all.
    static bool isDeviceName(std::string_view name) noexcept;

private:
    std::filesystem::path root_;
};

} // namespace vorlan::network
