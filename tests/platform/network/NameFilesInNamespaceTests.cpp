// SPDX-License-Identifier: Apache-2.0
// The files that say how names are looked up, changed in the ways in which they are changed.
//
// The hosts of these cases can be reached before and after, so that they are not looked up again by themselves; and
// nothing else happens, so that the changed file is what tells that they must be.

#include "tests/platform/network/HostNames.h"
#include "tests/platform/network/PrivateDNS.h"
#include "tests/platform/network/PrivateEtc.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vorlan {
namespace {

using namespace tests;

/// Two servers that do not agree: by 127.0.0.1 the host is beside this machine, by 127.0.0.2 it is this machine.
struct TwoServers {
    const PrivateDNS beside{{{"host.test", {"10.9.0.77"}}}, "127.0.0.1"};
    const PrivateDNS here{{{"host.test", {"10.9.0.1"}}}, "127.0.0.2"};
};

class NameFilesInNamespace : public ::testing::TestWithParam<Privilege> {};

INSTANTIATE_TEST_SUITE_P(, NameFilesInNamespace, ::testing::Values(Privilege::root, Privilege::unprivileged),
                         ::testing::PrintToStringParamName());

TEST_P(NameFilesInNamespace, ServerOfAReplacedFileIsAsked) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        const TwoServers servers;
        WatchedReachability watched("host.test");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
        etc.useServer("127.0.0.2");
        EXPECT_TRUE(watched.becomes(local)) << stateOf(watched);
        etc.useServer("127.0.0.1");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
    });
}

TEST_P(NameFilesInNamespace, ServerOfARewrittenFileIsAsked) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        const TwoServers servers;
        WatchedReachability watched("host.test");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
        etc.rewrite("resolv.conf", "nameserver 127.0.0.2\n");
        EXPECT_TRUE(watched.becomes(local)) << stateOf(watched);
    });
}

TEST_P(NameFilesInNamespace, FileThatALinkLeadsToIsFollowed) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        const TwoServers servers;
        std::filesystem::create_directory("/etc/stub");
        etc.rewrite("stub/resolv.conf", "nameserver 127.0.0.1\n");
        std::filesystem::remove("/etc/resolv.conf");
        std::filesystem::create_symlink("stub/resolv.conf", "/etc/resolv.conf");
        WatchedReachability watched("host.test");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
        etc.replace("stub/resolv.conf", "nameserver 127.0.0.2\n");
        EXPECT_TRUE(watched.becomes(local)) << stateOf(watched);
        etc.rewrite("stub/resolv.conf", "nameserver 127.0.0.1\n");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
    });
}

TEST_P(NameFilesInNamespace, LinkThatIsLaidElsewhereIsFollowed) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        const TwoServers servers;
        WatchedReachability watched("host.test");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
        std::filesystem::create_directory("/etc/manager");
        etc.rewrite("manager/resolv.conf", "nameserver 127.0.0.2\n");
        std::filesystem::create_symlink("manager/resolv.conf", "/etc/resolv.conf.new");
        std::filesystem::rename("/etc/resolv.conf.new", "/etc/resolv.conf");
        EXPECT_TRUE(watched.becomes(local)) << stateOf(watched);
        etc.replace("manager/resolv.conf", "nameserver 127.0.0.1\n");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
    });
}

TEST_P(NameFilesInNamespace, HostsFileIsFollowed) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        etc.useHosts("10.9.0.77 box.test\n");
        WatchedReachability watched("box.test");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
        etc.useHosts("10.9.0.1 box.test\n");
        EXPECT_TRUE(watched.becomes(local)) << stateOf(watched);
        etc.rewrite("hosts", "192.0.2.1 box.test\n");
        EXPECT_TRUE(watched.becomes(routed)) << stateOf(watched);
        etc.useHosts("");
        EXPECT_TRUE(watched.becomes(nothing)) << stateOf(watched);
    });
}

TEST_P(NameFilesInNamespace, OrderOfTheServicesIsFollowed) {
    inOwnNamespace(GetParam(), [] {
        const PrivateEtc etc;
        connectBothFamilies();
        const PrivateDNS dns(HostRecords{{"box.test", {"192.0.2.1"}}});
        etc.useHosts("10.9.0.77 box.test\n");
        WatchedReachability watched("box.test");
        EXPECT_TRUE(watched.becomes(direct)) << stateOf(watched);
        etc.replace("nsswitch.conf", "hosts: dns files\n");
        EXPECT_TRUE(watched.becomes(routed)) << stateOf(watched);
    });
}

} // namespace
} // namespace vorlan
