// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Result.h>

#include <gtest/gtest.h>

#include <string>

using namespace vorlan;

TEST(ResultDeathTest, FailureAskedForItsValueStopsTheProcess) {
    const auto message = "VorlanFoundation/Result: Fatal error: a failure was asked for its value";
    const Result<std::string> failure(NSError("com.example.disk", 28));
    EXPECT_DEATH(static_cast<void>(*failure), message);
    EXPECT_DEATH(static_cast<void>(failure->size()), message);
    EXPECT_DEATH(static_cast<void>(failure.value()), message);
}

TEST(ResultDeathTest, SuccessAskedForItsErrorStopsTheProcess) {
    const Result<std::string> success(std::string("text"));
    EXPECT_DEATH(static_cast<void>(success.error()),
                 "VorlanFoundation/Result: Fatal error: a success was asked for its error");
}
