// SPDX-License-Identifier: Apache-2.0
#include "platform/network/SysfsDirectory.h"

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <fstream>

namespace vorlan::network {
namespace {

class SysfsDirectoryAtHome : public ::testing::Test {
protected:
    void write(const std::string& file, const std::string& text) {
        const auto path = home.path() / "class" / "net" / file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << text;
    }

    DeviceTraits traits(const std::string& name, LinkIndex index) const {
        return SysfsDirectory(home.path()).traits({.index = index, .name = name});
    }

    testing::TemporaryHome home;
};

TEST_F(SysfsDirectoryAtHome, RadioIsKnownByItsFolders) {
    write("wlan0/ifindex", "3\n");
    EXPECT_FALSE(traits("wlan0", 3).wireless);
    std::filesystem::create_directory(home.path() / "class/net/wlan0/wireless");
    EXPECT_TRUE(traits("wlan0", 3).wireless);
}

TEST_F(SysfsDirectoryAtHome, RadioIsKnownByItsPhyThatPointsNowhere) {
    write("wlan0/ifindex", "3\n");
    std::filesystem::create_directory_symlink("../ieee80211/phy0", home.path() / "class/net/wlan0/phy80211");
    EXPECT_TRUE(traits("wlan0", 3).wireless);
}

TEST_F(SysfsDirectoryAtHome, RadioIsKnownByItsDevtype) {
    write("wlan0/ifindex", "3\n");
    write("wlan0/uevent", "DEVTYPE=wlan\nINTERFACE=wlan0\nIFINDEX=3\n");
    EXPECT_TRUE(traits("wlan0", 3).wireless);
    EXPECT_EQ(traits("wlan0", 3).devtype, "wlan");
}

TEST_F(SysfsDirectoryAtHome, EntryOfAnotherNamespaceIsIgnored) {
    write("wlan0/ifindex", "3\n");
    write("wlan0/uevent", "DEVTYPE=wlan\n");
    EXPECT_FALSE(traits("wlan0", 4).wireless);
    EXPECT_EQ(traits("wlan0", 4).devtype, "");
}

TEST_F(SysfsDirectoryAtHome, MissingOrDamagedEntriesHaveNoTraits) {
    EXPECT_EQ(traits("eth0", 2).devtype, "");
    write("eth0/ifindex", "");
    write("eth0/uevent", "DEVTYPE=wlan\n");
    EXPECT_FALSE(traits("eth0", 2).wireless);
    write("eth0/ifindex", "99999999999999999999");
    EXPECT_FALSE(traits("eth0", 2).wireless);
}

TEST_F(SysfsDirectoryAtHome, NamesThatLeadElsewhereAreIgnored) {
    write("../secret/ifindex", "3\n");
    write("../secret/uevent", "DEVTYPE=wlan\n");
    EXPECT_FALSE(traits("../secret", 3).wireless);
}

TEST(SysfsDirectory, DeviceNamesAreOneStepOfAPath) {
    for (const auto* name : {"eth0", "wlp3s0", "br-0.5", "fifteen-letters"})
        EXPECT_TRUE(SysfsDirectory::isDeviceName(name)) << name;
    for (const auto* name : {"", ".", "..", "a/b", "/", "sixteen--letters"})
        EXPECT_FALSE(SysfsDirectory::isDeviceName(name)) << name;
    EXPECT_FALSE(SysfsDirectory::isDeviceName(std::string_view("a\0b", 3)));
}

TEST(SysfsDirectory, DevtypeIsFoundOnItsLine) {
    EXPECT_EQ(SysfsDirectory::devtypeOf("DEVTYPE=wwan"), "wwan");
    EXPECT_EQ(SysfsDirectory::devtypeOf("INTERFACE=x\nDEVTYPE=bridge\n"), "bridge");
    EXPECT_EQ(SysfsDirectory::devtypeOf("XDEVTYPE=bridge\n\nDEVTYPE"), "");
    EXPECT_EQ(SysfsDirectory::devtypeOf("\n\n\n"), "");
    EXPECT_EQ(SysfsDirectory::devtypeOf(""), "");
}

} // namespace
} // namespace vorlan::network
