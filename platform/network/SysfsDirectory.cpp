// SPDX-License-Identifier: Apache-2.0
#include "platform/network/SysfsDirectory.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <system_error>

namespace vorlan::network {

namespace {

// Entries of sysfs are at most a page long.
std::string readFile(const std::filesystem::path& path) {
    std::array<char, 4096> buffer{};
    std::ifstream file(path, std::ios::binary);
    if (!file) return {};
    file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    return {buffer.data(), static_cast<std::size_t>(file.gcount())};
}

bool isThere(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

bool carriesIndex(const std::filesystem::path& device, LinkIndex index) {
    const std::string text = readFile(device / "ifindex");
    LinkIndex found = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), found);
    return parsed.ec == std::errc() && found == index;
}

} // namespace

bool SysfsDirectory::isDeviceName(std::string_view name) noexcept {
    constexpr std::size_t longest = 15; // the kernel's IFNAMSIZ, less the terminating NUL
    if (name.empty() || name.size() > longest || name == "." || name == "..") return false;
    return std::ranges::none_of(name, [](char c) { return c == '/' || c == '\0'; });
}

std::string_view SysfsDirectory::devtypeOf(std::string_view uevent) noexcept {
    constexpr std::string_view key = "DEVTYPE=";
    while (!uevent.empty()) {
        const std::string_view line = uevent.substr(0, uevent.find('\n'));
        if (line.starts_with(key)) return line.substr(key.size());
        uevent.remove_prefix(std::min(line.size() + 1, uevent.size()));
    }
    return {};
}

DeviceTraits SysfsDirectory::traits(const Link& link) const {
    if (!isDeviceName(link.name)) return {};
    const auto device = root_ / "class" / "net" / link.name;
    if (!carriesIndex(device, link.index)) return {};
    const std::string uevent = readFile(device / "uevent");
    DeviceTraits traits;
    traits.devtype = devtypeOf(uevent);
    traits.wireless =
        traits.devtype == "wlan" || isThere(device / "wireless") || isThere(device / "phy80211");
    return traits;
}

} // namespace vorlan::network
