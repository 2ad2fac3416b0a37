// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/network/PrivateEtc.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <system_error>

namespace vorlan::tests {

namespace {

constexpr const char* thisMachine = "127.0.0.1 localhost\n::1 localhost\n";

// A case that went on would write into the machine's own /etc.
void check(int result, const char* step) {
    if (result != 0) throw std::system_error(errno, std::generic_category(), step);
}

/// The few files that programs which the cases start read.
std::map<std::string, std::string> filesToKeep() {
    std::map<std::string, std::string> kept;
    for (const char* name : {"group", "ld.so.cache", "localtime", "passwd", "protocols", "services"}) {
        std::ifstream file(std::filesystem::path("/etc") / name, std::ios::binary);
        if (file) kept[name].assign(std::istreambuf_iterator(file), {});
    }
    return kept;
}

/// Mounts a folder in memory over /etc, which nobody else may see.
///
/// Where the root is shared with the machine, a mount on it would be the machine's as well; and in a change-root
/// tree the root is no mount that could be made private. What is mounted in /sys, on the other hand, is private
/// already: so the whole tree is shown there once more, and that becomes the root.
void mountEtc() {
    constexpr const char* tree = "/sys/kernel";
    check(mount("/", tree, nullptr, MS_BIND | MS_REC, nullptr), "showing the tree once more");
    check(mount("none", tree, nullptr, MS_REC | MS_PRIVATE, nullptr), "making it private");
    check(chroot(tree), "entering it");
    check(chdir("/"), "entering its root");
    check(mount("tmpfs", "/etc", "tmpfs", 0, "mode=755"), "mounting /etc");
}

} // namespace

PrivateEtc::PrivateEtc() {
    const auto kept = filesToKeep();
    mountEtc();
    for (const auto& [name, content] : kept) rewrite(name, content);
    rewrite("nsswitch.conf", "passwd: files\ngroup: files\nhosts: files dns\n");
    useHosts("");
    useServer("127.0.0.1");
}

void PrivateEtc::replace(const std::string& name, const std::string& text) const {
    rewrite(name + ".new", text);
    std::filesystem::rename("/etc/" + name + ".new", "/etc/" + name);
}

void PrivateEtc::rewrite(const std::string& name, const std::string& text) const {
    std::ofstream file("/etc/" + name, std::ios::binary | std::ios::trunc);
    file << text << std::flush;
    EXPECT_TRUE(file) << name;
}

void PrivateEtc::useServer(const std::string& address, int pause) const {
    replace("resolv.conf",
            "nameserver " + address + "\noptions attempts:5 timeout:" + std::to_string(pause) + "\n");
}

void PrivateEtc::useHosts(const std::string& lines) const {
    replace("hosts", thisMachine + lines);
}

} // namespace vorlan::tests
