// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string>

using namespace vorlan;

namespace {

class GlobalFunctionsDeathTest : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (GetParam()) support::useWorkerThreads();
    }
};

struct Account : Object {};

struct Colour {
    std::string description() const { return "dark \xFF green"; }
};

// A key is never looked at, so any address will do; this one is the same in the process that dies.
const void* const key = reinterpret_cast<const void*>(std::uintptr_t{0x12ABCDEF});

// What stands before the description of the value that was found.
const std::string clash =
    "^VorlanFoundation/GlobalFunctions:10: Fatal error: Unexpected: different kind of value "
    "already exists for key '0x0000000012abcdef': ";

template <class T>
void ask(const Object& host) {
    associatedValue(host, key, [] { return T(); });
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Process, GlobalFunctionsDeathTest, ::testing::Bool(), [](const auto& process) {
    return process.param ? "ThatHasUsedWorkerThreads" : "WithoutWorkerThreads";
});

TEST_P(GlobalFunctionsDeathTest, ValueOfAnotherTypeUnderTheKeyStopsTheProcess) {
    const auto account = std::make_shared<Account>();
    associatedValue(*account, key, [] { return 42; });
    EXPECT_EXIT(ask<std::string>(*account), ::testing::KilledBySignal(SIGABRT), clash + "42\n$");
    EXPECT_DEATH(ask<long>(*account), clash + "42\n$");
}

TEST_P(GlobalFunctionsDeathTest, TypeClashDescribesTheValueFound) {
    const auto describing = [](auto value) {
        const auto account = std::make_shared<Account>();
        associatedValue(*account, key, [&] { return value; });
        ask<char>(*account);
    };
    EXPECT_DEATH(describing(true), clash + "true\n$");
    EXPECT_DEATH(describing(2.0), clash + "2\\.0\n$");
    EXPECT_DEATH(describing(std::string("some text")), clash + "some text\n$");
    EXPECT_DEATH(describing(std::optional<int>()), clash + "nil\n$");
    EXPECT_DEATH(describing(Colour()), clash + "dark \xEF\xBF\xBD green\n$");
    EXPECT_DEATH(describing(std::make_shared<Account>()), clash + "<.*Account: 0x[0-9a-f]{16}>\n$");
}

TEST_P(GlobalFunctionsDeathTest, DelayThatIsNotFiniteOrTooLongStopsTheProcess) {
    constexpr auto infinity = std::numeric_limits<double>::infinity();
    for (const double seconds :
         {infinity, -infinity, std::numeric_limits<double>::quiet_NaN(), 9.3e9, -9.3e9, 1e300})
        EXPECT_EXIT(delay(seconds, [] {}), ::testing::KilledBySignal(SIGILL), "^$") << seconds;
}

// In a process that ends at once: the work would be pending for centuries.
TEST_P(GlobalFunctionsDeathTest, DelayOfUpToTwoHundredNinetyTwoYearsIsTaken) {
    const auto take = [] {
        delay(9.2e9, [] {});
        delay(-9.2e9, [] {});
        std::_Exit(0);
    };
    EXPECT_EXIT(take(), ::testing::ExitedWithCode(0), "^$");
}
