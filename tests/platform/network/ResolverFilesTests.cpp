// SPDX-License-Identifier: Apache-2.0
#include "platform/network/ResolverFiles.h"

#include "platform/files/FolderWatch.h"
#include "tests/support/Inbox.h"

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace vorlan::network {
namespace {

using Path = std::filesystem::path;

// Empty for a file that is not there.
std::string textOf(const Path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const Path& file, const std::string& text) {
    std::ofstream(file) << text;
}

void replace(const Path& file, const std::string& text) {
    const Path fresh = file.string() + ".new";
    write(fresh, text);
    std::filesystem::rename(fresh, file);
}

void pointTo(const Path& link, const Path& target) {
    const Path fresh = link.string() + ".new";
    std::filesystem::create_symlink(target, fresh);
    std::filesystem::rename(fresh, link);
}

/// Watches the files in a folder, and notes at each call what they hold. The last change is always followed by a
/// call; how many calls there are before is open.
class Watch {
public:
    explicit Watch(const Path& folder, const std::string& file = "resolv.conf")
        : files_(std::in_place, folder,
                 [path = folder / file, calls = calls_] { calls->put(textOf(path)); }) {}

    /// Whether a call comes that finds this in the file.
    bool sees(const std::string& expected) {
        while (const auto text = calls_->take())
            if (*text == expected) return true;
        return false;
    }

    /// How many calls came that nobody asked for.
    std::size_t count() const { return calls_->count(); }

    void drop() { files_.reset(); }

private:
    using Calls = support::Inbox<std::string>;
    std::shared_ptr<Calls> calls_ = std::make_shared<Calls>(); // shared with the last call
    std::optional<ResolverFiles> files_;
};

class ResolverFileWatching : public ::testing::Test {
protected:
    ResolverFileWatching() {
        for (const Path& folder : {etc_, run_, other_}) std::filesystem::create_directory(folder);
    }

    // Returns when all that watches the folder has been told of everything that has happened there: all watches share
    // a serial queue, and are called in the order in which they were made.
    static void waitForCalls(const Path& folder) {
        const auto calls = std::make_shared<support::Inbox<bool>>();
        const FolderWatch last(folder, [calls] { calls->put(true); });
        write(folder / "something else", "x");
        EXPECT_TRUE(calls->take().has_value());
    }

    const vorlan::testing::TemporaryHome home_;
    const Path etc_ = home_.path() / "etc";
    const Path run_ = home_.path() / "run";
    const Path other_ = home_.path() / "other";
    const Path resolv_ = etc_ / "resolv.conf";
};

TEST_F(ResolverFileWatching, RewrittenFileIsTold) {
    write(resolv_, "before");
    Watch watch(etc_);
    write(resolv_, "after that");
    EXPECT_TRUE(watch.sees("after that"));
    std::ofstream(resolv_, std::ios::app) << " and more";
    EXPECT_TRUE(watch.sees("after that and more"));
}

TEST_F(ResolverFileWatching, ReplacedFileIsTold) {
    write(resolv_, "before");
    Watch watch(etc_);
    replace(resolv_, "after1"); // of the same length
    EXPECT_TRUE(watch.sees("after1"));
    replace(resolv_, "after2");
    EXPECT_TRUE(watch.sees("after2"));
}

TEST_F(ResolverFileWatching, EachOfTheFilesIsWatched) {
    for (const std::string file : {"resolv.conf", "hosts", "nsswitch.conf"}) {
        Watch watch(etc_, file);
        write(etc_ / file, file);
        EXPECT_TRUE(watch.sees(file)) << file;
    }
}

TEST_F(ResolverFileWatching, FileMayComeAndGo) {
    Watch watch(etc_);
    write(resolv_, "here");
    EXPECT_TRUE(watch.sees("here"));
    std::filesystem::remove(resolv_);
    EXPECT_TRUE(watch.sees(""));
    replace(resolv_, "again");
    EXPECT_TRUE(watch.sees("again"));
}

TEST_F(ResolverFileWatching, FolderMayComeLater) {
    std::filesystem::remove(etc_);
    Watch watch(etc_);
    std::filesystem::create_directory(etc_);
    write(resolv_, "here");
    EXPECT_TRUE(watch.sees("here"));
}

TEST_F(ResolverFileWatching, ChangedTargetOfALinkIsTold) {
    write(run_ / "stub.conf", "before");
    std::filesystem::create_symlink("../run/stub.conf", resolv_);
    Watch watch(etc_);
    write(run_ / "stub.conf", "rewritten text");
    EXPECT_TRUE(watch.sees("rewritten text"));
    replace(run_ / "stub.conf", "replaced");
    EXPECT_TRUE(watch.sees("replaced"));
}

TEST_F(ResolverFileWatching, LinkMayBeAbsolute) {
    write(run_ / "stub.conf", "before");
    std::filesystem::create_symlink(run_ / "stub.conf", resolv_);
    Watch watch(etc_);
    replace(run_ / "stub.conf", "after");
    EXPECT_TRUE(watch.sees("after"));
}

TEST_F(ResolverFileWatching, LinkMayLeadToALink) {
    write(other_ / "real.conf", "before");
    std::filesystem::create_symlink("../other/real.conf", run_ / "stub.conf");
    std::filesystem::create_symlink("../run/stub.conf", resolv_);
    Watch watch(etc_);
    replace(other_ / "real.conf", "after");
    EXPECT_TRUE(watch.sees("after"));
    write(etc_ / "local.conf", "elsewhere");
    pointTo(run_ / "stub.conf", etc_ / "local.conf");
    EXPECT_TRUE(watch.sees("elsewhere"));
}

TEST_F(ResolverFileWatching, LinkThatLeadsElsewhereIsFollowed) {
    write(run_ / "stub.conf", "here");
    write(other_ / "stub.conf", "elsewhere");
    std::filesystem::create_symlink("../run/stub.conf", resolv_);
    Watch watch(etc_);
    pointTo(resolv_, "../other/stub.conf");
    EXPECT_TRUE(watch.sees("elsewhere"));
    replace(other_ / "stub.conf", "news from there");
    EXPECT_TRUE(watch.sees("news from there"));
    waitForCalls(other_);
    replace(run_ / "stub.conf", "not any more");
    waitForCalls(run_);
    EXPECT_EQ(watch.count(), 0U);
}

TEST_F(ResolverFileWatching, LinkMayGiveWayToAFileAndComeAgain) {
    write(run_ / "stub.conf", "linked");
    Watch watch(etc_);
    pointTo(resolv_, "../run/stub.conf");
    EXPECT_TRUE(watch.sees("linked"));
    replace(resolv_, "a file");
    EXPECT_TRUE(watch.sees("a file"));
    pointTo(resolv_, "../run/stub.conf");
    EXPECT_TRUE(watch.sees("linked"));
    replace(run_ / "stub.conf", "linked, and changed");
    EXPECT_TRUE(watch.sees("linked, and changed"));
}

TEST_F(ResolverFileWatching, LinkMayLeadToNothingYet) {
    std::filesystem::create_symlink("../later/deep/stub.conf", resolv_);
    Watch watch(etc_);
    std::filesystem::create_directories(home_.path() / "later" / "deep");
    write(home_.path() / "later" / "deep" / "stub.conf", "at last");
    EXPECT_TRUE(watch.sees("at last"));
}

TEST_F(ResolverFileWatching, LinksThatLeadInACircleAreNoFile) {
    std::filesystem::create_symlink("../run/stub.conf", resolv_);
    std::filesystem::create_symlink("../etc/resolv.conf", run_ / "stub.conf");
    std::filesystem::create_symlink("hosts", etc_ / "hosts");
    Watch watch(etc_);
    replace(run_ / "stub.conf", "broken open");
    EXPECT_TRUE(watch.sees("broken open"));
}

TEST_F(ResolverFileWatching, FolderOfTheTargetMayBeSwitched) {
    std::filesystem::create_directory(run_ / "one");
    std::filesystem::create_directory(run_ / "two");
    write(run_ / "one" / "stub.conf", "one");
    write(run_ / "two" / "stub.conf", "two");
    std::filesystem::create_directory_symlink(run_ / "one", etc_ / "current");
    std::filesystem::create_symlink("current/stub.conf", resolv_);
    Watch watch(etc_);
    pointTo(etc_ / "current", run_ / "two");
    EXPECT_TRUE(watch.sees("two"));
    replace(run_ / "two" / "stub.conf", "two, and changed");
    EXPECT_TRUE(watch.sees("two, and changed"));
}

TEST_F(ResolverFileWatching, LinkMayLeadUpFromAFolderThatIsALinkItself) {
    std::filesystem::create_directory(run_ / "one");
    write(run_ / "real.conf", "before");
    std::filesystem::create_symlink("../real.conf", run_ / "one" / "stub.conf");
    std::filesystem::create_directory_symlink(run_ / "one", etc_ / "current");
    std::filesystem::create_symlink("current/stub.conf", resolv_);
    Watch watch(etc_);
    replace(run_ / "real.conf", "after");
    EXPECT_TRUE(watch.sees("after"));
}

TEST_F(ResolverFileWatching, OtherFilesAreNotTold) {
    write(resolv_, "here");
    write(run_ / "hosts", "linked");
    std::filesystem::create_symlink("../run/hosts", etc_ / "hosts");
    Watch watch(etc_);
    for (const Path& folder : {etc_, run_}) {
        write(folder / "passwd", "x");
        replace(folder / "resolv.conf.bak", "x");
        std::filesystem::remove(folder / "passwd");
        waitForCalls(folder);
    }
    EXPECT_EQ(watch.count(), 0U);
    write(resolv_, "changed");
    EXPECT_TRUE(watch.sees("changed"));
}

TEST_F(ResolverFileWatching, NothingIsToldOnceItIsDropped) {
    Watch watch(etc_);
    Watch other(etc_);
    watch.drop();
    write(resolv_, "here");
    EXPECT_TRUE(other.sees("here"));
    waitForCalls(etc_);
    EXPECT_EQ(watch.count(), 0U);
}

TEST_F(ResolverFileWatching, CallbackIsReleasedWithTheWatch) {
    support::Inbox<bool> released;
    {
        auto held = std::shared_ptr<void>(&released, [&](void*) { released.put(true); });
        const ResolverFiles files(etc_, [held] {});
        held.reset();
        write(resolv_, "here");
        EXPECT_EQ(released.count(), 0U);
    }
    EXPECT_TRUE(released.take().has_value());
}

TEST_F(ResolverFileWatching, WatchMayBeMadeAndDroppedWhileFilesChange) {
    const std::array folders{etc_, run_, other_};
    for (const Path& folder : {run_, other_}) write(folder / "stub.conf", "here");
    pointTo(resolv_, "../run/stub.conf");
    pointTo(etc_ / "hosts", "../other/stub.conf");
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        for (std::size_t i = 0; !isOver; ++i) write(folders[i % folders.size()] / "something else", "x");
    });
    for (int round = 0; round < 100; ++round) Watch watch(etc_);
    isOver = true;
    writer.join();
    Watch watch(etc_);
    replace(run_ / "stub.conf", "after");
    EXPECT_TRUE(watch.sees("after"));
}

} // namespace
} // namespace vorlan::network
