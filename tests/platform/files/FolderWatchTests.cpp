// SPDX-License-Identifier: Apache-2.0
#include "platform/files/FolderWatch.h"

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>

using namespace vorlan;

namespace {

using Names = std::set<std::string>;

// What is in a folder; absent when there is none.
std::optional<Names> namesIn(const std::filesystem::path& folder) {
    std::error_code failed;
    Names names;
    for (std::filesystem::directory_iterator entry(folder, failed), end; !failed && entry != end;
         entry.increment(failed))
        names.insert(entry->path().filename());
    return failed ? std::nullopt : std::optional(names);
}

// Watches a folder, and notes at each call what is there. The last change is always followed by a call, so that what
// it left is seen at some time; how many calls there are before is open.
class Watch {
public:
    explicit Watch(const std::filesystem::path& folder)
        : watch_(folder, [folder, inbox = inbox_] { inbox->put(namesIn(folder)); }) {}

    /// Whether a call comes that sees this.
    bool sees(const std::optional<Names>& expected) {
        while (const auto seen = inbox_->take())
            if (*seen == expected) return true;
        return false;
    }

    std::size_t count() const { return inbox_->count(); }

private:
    // Shared with the handler, whose last call may be under way at the end.
    using Calls = support::Inbox<std::optional<Names>>;
    std::shared_ptr<Calls> inbox_ = std::make_shared<Calls>();
    FolderWatch watch_;
};

void touch(const std::filesystem::path& file) {
    std::ofstream(file) << "x";
}

class FolderWatching : public ::testing::Test {
protected:
    const vorlan::testing::TemporaryHome home_;
    const std::filesystem::path folder_ = home_.path() / "watched";
};

} // namespace

TEST_F(FolderWatching, FilesThatComeAndGoAreTold) {
    std::filesystem::create_directory(folder_);
    Watch watch(folder_);
    touch(folder_ / "a");
    EXPECT_TRUE(watch.sees(Names{"a"}));
    touch(folder_ / "b");
    EXPECT_TRUE(watch.sees(Names{"a", "b"}));
    std::filesystem::rename(folder_ / "a", folder_ / "c");
    EXPECT_TRUE(watch.sees(Names{"b", "c"}));
    std::filesystem::remove(folder_ / "b");
    EXPECT_TRUE(watch.sees(Names{"c"}));
}

TEST_F(FolderWatching, FileThatIsReplacedIsTold) {
    std::filesystem::create_directory(folder_);
    touch(folder_ / "a");
    Watch watch(folder_);
    touch(home_.path() / "new");
    std::filesystem::rename(home_.path() / "new", folder_ / "a");
    EXPECT_TRUE(watch.sees(Names{"a"}));
}

TEST_F(FolderWatching, FileThatIsWrittenToIsTold) {
    std::filesystem::create_directory(folder_);
    touch(folder_ / "a");
    Watch watch(folder_);
    std::ofstream(folder_ / "a", std::ios::app) << "more";
    EXPECT_TRUE(watch.sees(Names{"a"}));
}

TEST_F(FolderWatching, FolderMayComeGoAndComeAgain) {
    Watch watch(folder_);
    for (const char* name : {"first", "second", "third"}) {
        std::filesystem::create_directory(folder_);
        EXPECT_TRUE(watch.sees(Names()));
        touch(folder_ / name);
        EXPECT_TRUE(watch.sees(Names{name}));
        std::filesystem::remove_all(folder_);
        EXPECT_TRUE(watch.sees(std::nullopt));
    }
}

TEST_F(FolderWatching, FolderMayBeRenamedAwayAndMadeAnew) {
    std::filesystem::create_directory(folder_);
    Watch watch(folder_);
    std::filesystem::rename(folder_, home_.path() / "elsewhere");
    EXPECT_TRUE(watch.sees(std::nullopt));
    std::filesystem::create_directory(folder_);
    touch(folder_ / "a");
    EXPECT_TRUE(watch.sees(Names{"a"}));
}

TEST_F(FolderWatching, ParentsMayBeMissing) {
    const auto deep = folder_ / "one" / "two" / "three";
    Watch watch(deep);
    for (int i = 0; i < 3; ++i) {
        std::filesystem::create_directories(deep);
        touch(deep / "a");
        EXPECT_TRUE(watch.sees(Names{"a"}));
        std::filesystem::remove_all(folder_);
        EXPECT_TRUE(watch.sees(std::nullopt));
    }
}

TEST_F(FolderWatching, ParentsMayComeOneByOne) {
    const auto deep = folder_ / "one" / "two";
    Watch watch(deep);
    std::filesystem::create_directory(folder_);
    touch(folder_ / "beside");
    std::filesystem::create_directory(folder_ / "one");
    touch(folder_ / "one" / "beside");
    std::filesystem::create_directory(deep);
    EXPECT_TRUE(watch.sees(Names()));
    touch(deep / "a");
    EXPECT_TRUE(watch.sees(Names{"a"}));
}

TEST_F(FolderWatching, FileInPlaceOfTheFolderMayGiveWayToIt) {
    touch(folder_);
    Watch watch(folder_);
    std::filesystem::remove(folder_);
    std::filesystem::create_directory(folder_);
    touch(folder_ / "a");
    EXPECT_TRUE(watch.sees(Names{"a"}));
    std::filesystem::remove_all(folder_);
    touch(folder_);
    EXPECT_TRUE(watch.sees(std::nullopt));
    std::filesystem::remove(folder_);
    std::filesystem::create_directory(folder_);
    EXPECT_TRUE(watch.sees(Names()));
}

TEST_F(FolderWatching, FileInPlaceOfAParentMayGiveWayToIt) {
    touch(folder_);
    Watch watch(folder_ / "deep");
    std::filesystem::remove(folder_);
    std::filesystem::create_directories(folder_ / "deep");
    EXPECT_TRUE(watch.sees(Names()));
}

TEST_F(FolderWatching, WatchesOfOneFolderAreIndependent) {
    std::filesystem::create_directory(folder_);
    Watch lasting(folder_);
    {
        Watch passing(folder_);
        touch(folder_ / "a");
        EXPECT_TRUE(passing.sees(Names{"a"}));
        EXPECT_TRUE(lasting.sees(Names{"a"}));
    }
    touch(folder_ / "b");
    EXPECT_TRUE(lasting.sees((Names{"a", "b"})));
}

TEST_F(FolderWatching, OtherFoldersAreNotTold) {
    std::filesystem::create_directories(folder_);
    std::filesystem::create_directories(home_.path() / "other");
    Watch watch(folder_);
    Watch other(home_.path() / "other");
    touch(folder_ / "a");
    EXPECT_TRUE(watch.sees(Names{"a"}));
    // All watches share a serial queue: once a later change of the one has been told, nothing of an earlier change
    // could still come to the other.
    touch(folder_ / "b");
    EXPECT_TRUE(watch.sees((Names{"a", "b"})));
    EXPECT_EQ(other.count(), 0U);
    touch(home_.path() / "other" / "c");
    EXPECT_TRUE(other.sees(Names{"c"}));
}

TEST_F(FolderWatching, HandlerIsReleasedWithTheWatch) {
    std::filesystem::create_directory(folder_);
    support::Inbox<bool> released;
    auto witness = std::shared_ptr<int>(new int(1), [&](const int* number) {
        delete number;
        released.put(true);
    });
    {
        const FolderWatch watch(folder_, [witness] {});
        witness.reset();
        touch(folder_ / "a");
        EXPECT_EQ(released.count(), 0U);
    }
    EXPECT_TRUE(released.take().has_value());
}
