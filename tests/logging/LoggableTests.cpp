// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Logging/Loggable.h>

#include "tests/logging/LogCase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

using namespace vorlan;

namespace library {

struct Importer : Loggable<Importer> {
    void run() const { log("read 5 files"); } // NOLINT: as hosts do
    struct Step : Loggable<Step> {};
};

template <class T>
struct Box : Loggable<Box<T>> {};

} // namespace library

namespace {

class LoggableTest : public tests::LogCase {
protected:
    // What the log says behind the prefix, which is as long as that of all.
    std::string logged() const { return text().empty() ? "nothing" : text().substr(29); }
};

struct Local : Loggable<Local> {};

struct Witness {
    std::string description() const {
        ++asked;
        return "witness";
    }
    inline static int asked = 0;
};

} // namespace

TEST_F(LoggableTest, LineBeginsWithTheNameOfTheType) {
    Logger::makeLogging(true);
    const library::Importer importer;
    importer.run();
    EXPECT_EQ(logged(), "[Importer]: read 5 files\n");
}

TEST_F(LoggableTest, TypeLogsAsItsObjectsDo) {
    Logger::makeLogging(true);
    library::Importer::log("miss");
    EXPECT_EQ(logged(), "[Importer]: miss\n");
}

TEST_F(LoggableTest, NameIsWithoutWhatTheTypeIsDeclaredIn) {
    Logger::makeLogging(true);
    library::Importer::Step::log(1);
    EXPECT_EQ(logged(), "[Step]: 1\n");
    Logger::clean();
    Local::log(1);
    EXPECT_EQ(logged(), "[Local]: 1\n");
    Logger::clean();
    struct Inner : Loggable<Inner> {};
    Inner::log(1);
    EXPECT_EQ(logged(), "[Inner]: 1\n");
}

TEST_F(LoggableTest, NameOfATemplateHasItsArguments) {
    Logger::makeLogging(true);
    library::Box<int>::log(1);
    EXPECT_EQ(logged(), "[Box<int>]: 1\n");
}

TEST_F(LoggableTest, ValueIsDescribed) {
    Logger::makeLogging(true);
    Local::log(std::optional<int>());
    EXPECT_EQ(logged(), "[Local]: nil\n");
    Logger::clean();
    Local::log(2.0);
    EXPECT_EQ(logged(), "[Local]: 2.0\n");
    Logger::clean();
    Local::log("a\xFF");
    EXPECT_EQ(logged(), "[Local]: a\uFFFD\n");
}

TEST_F(LoggableTest, BlankTextHasThePrefixAsWell) {
    Logger::makeLogging(true);
    Local::log("");
    EXPECT_EQ(logged(), "[Local]: \n");
}

TEST_F(LoggableTest, DisabledCallDescribesNothingAndMakesNoFile) {
    Logger::makeLogging(false);
    Witness::asked = 0;
    Local::log(Witness());
    EXPECT_EQ(Witness::asked, 0);
    EXPECT_FALSE(std::filesystem::exists(file()));
    Logger::makeLogging(true);
    Local::log(Witness());
    EXPECT_EQ(Witness::asked, 1);
    EXPECT_EQ(logged(), "[Local]: witness\n");
}
