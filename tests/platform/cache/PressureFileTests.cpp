// SPDX-License-Identifier: Apache-2.0
#include "platform/cache/PressureFile.h"

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace vorlan {
namespace {

namespace fs = std::filesystem;

constexpr auto usualMount =
    "25 21 0:22 / /sys/fs/cgroup rw,nosuid shared:4 - cgroup2 cgroup2 rw,nsdelegate\n";

TEST(PressureFile, IsThatOfTheProcesssOwnGroup) {
    EXPECT_EQ(pressureFileOfGroup("0::/user.slice/app.scope\n", usualMount),
              fs::path("/sys/fs/cgroup/user.slice/app.scope/memory.pressure"));
    EXPECT_EQ(pressureFileOfGroup("0::/\n", usualMount), fs::path("/sys/fs/cgroup/memory.pressure"));
}

TEST(PressureFile, IsFoundBesideHierarchiesOfTheFirstVersion) {
    const auto groups = "4:memory:/elsewhere\n1:name=systemd:/other\n0::/app\n";
    const auto mounts = "21 1 8:1 / / rw,relatime - ext4 /dev/sda1 rw\n"
                        "30 21 0:25 / /sys/fs/cgroup/memory rw - cgroup cgroup rw,memory\n"
                        "31 21 0:26 / /sys/fs/cgroup/unified rw,relatime - cgroup2 none rw\n";
    EXPECT_EQ(pressureFileOfGroup(groups, mounts), fs::path("/sys/fs/cgroup/unified/app/memory.pressure"));
}

TEST(PressureFile, MountMayShowAPartOfTheGroups) {
    const auto mount = "25 21 0:22 /pod/box /sys/fs/cgroup ro - cgroup2 cgroup rw\n";
    EXPECT_EQ(pressureFileOfGroup("0::/pod/box/app\n", mount),
              fs::path("/sys/fs/cgroup/app/memory.pressure"));
    EXPECT_EQ(pressureFileOfGroup("0::/pod/box\n", mount), fs::path("/sys/fs/cgroup/memory.pressure"));
    EXPECT_EQ(pressureFileOfGroup("0::/pod/boxes\n", mount), std::nullopt);
    EXPECT_EQ(pressureFileOfGroup("0::/\n", mount), std::nullopt);
}

TEST(PressureFile, BlanksInPathsAreUnderstood) {
    const auto mount = R"(25 21 0:22 / /mnt/my\040groups\134 rw shared:1 master:2 - cgroup2 none rw)";
    EXPECT_EQ(pressureFileOfGroup("0::/my app\n", mount),
              fs::path(R"(/mnt/my groups\/my app/memory.pressure)"));
}

TEST(PressureFile, IsAbsentWithoutGroupsOfTheSecondVersion) {
    EXPECT_EQ(pressureFileOfGroup("4:memory:/app\n", usualMount), std::nullopt);
    EXPECT_EQ(pressureFileOfGroup("0::/app\n", "25 21 0:22 / /sys rw - sysfs sysfs rw\n"), std::nullopt);
    EXPECT_EQ(pressureFileOfGroup("", ""), std::nullopt);
    EXPECT_EQ(pressureFileOfGroup("0::/app\n", "cgroup2\n- cgroup2\n1 2 3 4 5 6 -\n"), std::nullopt);
}

TEST(PressureFile, SaysHowMuchOfTheLastTenSecondsWasLost) {
    const testing::TemporaryHome home;
    const auto file = home.path() / "memory.pressure";
    EXPECT_EQ(memoryPressure(file), std::nullopt);
    std::ofstream(file) << "some avg10=12.34 avg60=5.00 avg300=0.10 total=999\nfull avg10=1.00\n";
    EXPECT_EQ(memoryPressure(file), 12.34);
    std::ofstream(file) << "full avg10=1.00\n";
    EXPECT_EQ(memoryPressure(file), std::nullopt);
    std::ofstream(file) << "some avg10=many\n";
    EXPECT_EQ(memoryPressure(file), std::nullopt);
}

} // namespace
} // namespace vorlan
