// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/TableFile.h"

#include "tests/platform/localization/TableTree.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

class TableFileTest : public ::testing::Test {
protected:
    TableFileTest() { write("k = first;"); }

    std::filesystem::path path() const { return tree_.resources() / "Localizable.strings"; }
    void write(std::string_view content) const { tests::writeText(path(), content); }
    bool isYoung() const { return FileVersion::ofPath(path().c_str()).isYoung(); }

    tests::TableTree tree_;
    TableFile file_{path(), &StringTable::read};
    std::vector<std::string> problems_;
};

} // namespace

TEST_F(TableFileTest, VersionIsYoungOnlyAroundItsTime) {
    constexpr std::int64_t second = 1'000'000'000;
    auto version = FileVersion::ofPath(path().c_str());
    version.changed -= second;
    EXPECT_FALSE(version.isYoung());
    version.changed += 1000 * second;
    EXPECT_FALSE(version.isYoung()) << "a clock that is set back leaves no file young for ever";
}

// Its bytes could be others under the same version still.
TEST_F(TableFileTest, YoungVersionIsReadAgainUntilItIsNot) {
    EXPECT_TRUE(file_.refresh(problems_));
    const bool isReadAgain = file_.refresh(problems_);
    EXPECT_TRUE(isReadAgain || !isYoung());
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (file_.refresh(problems_) && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    EXPECT_FALSE(isYoung());
    EXPECT_FALSE(file_.refresh(problems_));
}

TEST_F(TableFileTest, TextsOfAnUnchangedFileAreTheSameObject) {
    while (file_.refresh(problems_)) std::this_thread::yield();
    const auto texts = file_.texts();
    ASSERT_NE(texts, nullptr);
    EXPECT_FALSE(file_.refresh(problems_));
    EXPECT_EQ(file_.texts(), texts);
    write("k = second;");
    EXPECT_TRUE(file_.refresh(problems_));
    EXPECT_EQ(file_.texts()->find("k")->text, "second");
    EXPECT_EQ(texts->find("k")->text, "first");
}

TEST_F(TableFileTest, FileThatIsNotThereHasNoTexts) {
    TableFile never;
    EXPECT_TRUE(never.refresh(problems_)) << "now this is known";
    EXPECT_FALSE(never.refresh(problems_));
    EXPECT_FALSE(never.isThere());
    EXPECT_EQ(never.texts(), nullptr);
    std::filesystem::remove(path());
    EXPECT_TRUE(file_.refresh(problems_));
    EXPECT_FALSE(file_.isThere());
    EXPECT_TRUE(problems_.empty());
}

TEST_F(TableFileTest, BrokenFileIsThereWithItsFormerTexts) {
    EXPECT_TRUE(file_.refresh(problems_));
    write("k = ;");
    EXPECT_TRUE(file_.refresh(problems_));
    EXPECT_TRUE(file_.isThere());
    EXPECT_EQ(file_.texts()->find("k")->text, "first");
    EXPECT_EQ(problems_, std::vector{"cannot use " + path().native() +
                                     ": line 1, column 5: expected a text, found ';'"});
}
