// SPDX-License-Identifier: Apache-2.0
#pragma once

// What sysfs knows about a network device and netlink does not tell.

#include "platform/network/Snapshot.h"

#include <string>

namespace vorlan::network {

/// What a device says of itself.
struct DeviceTraits {
    bool wireless = false; ///< It has an 802.11 radio.
    std::string devtype{}; ///< "wlan", "wwan", "bluetooth", "bridge", ...; empty when it names none.
};

/// Looks devices up.
///
/// Threads: safe from any thread.
/// Errors:  a device that is not found, or is another one of the same name, has no traits.
class Sysfs {
public:
    Sysfs() = default;
    Sysfs(const Sysfs&) = delete;
    Sysfs& operator=(const Sysfs&) = delete;
    virtual ~Sysfs() = default;

    /// The traits of a link.
    virtual DeviceTraits traits(const Link& link) const = 0;
};

} // namespace vorlan::network
