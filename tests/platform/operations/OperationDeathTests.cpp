// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Operation.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <memory>

using namespace vorlan;

namespace {

class StartsItself : public Operation {
    void main() override { start(); }
};

} // namespace

TEST(OperationDeathTest, StartingOneThatIsNotReadyStopsTheProcess) {
    support::useWorkerThreads();
    const auto mix = std::make_shared<Operation>();
    const auto bake = std::make_shared<Operation>();
    bake->setName("bake");
    bake->addDependency(mix);
    EXPECT_DEATH(bake->start(),
                 "VorlanFoundation/Operation: Fatal error: operation 'bake' was started before it was ready");
}

TEST(OperationDeathTest, StartingOneThatIsExecutingStopsTheProcess) {
    const auto operation = std::make_shared<StartsItself>();
    operation->setName("loop");
    EXPECT_DEATH(operation->start(),
                 "VorlanFoundation/Operation: Fatal error: operation 'loop' was started twice");
}
