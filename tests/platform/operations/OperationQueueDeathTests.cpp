// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/OperationQueue.h>

#include "tests/support/WorkerThreads.h"

#include <VorlanFoundation/Execution/AsynchronousOperation.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <utility>

using namespace vorlan;

TEST(OperationQueueDeathTest, WaitingForAllFromOneOfThemStopsTheProcess) {
    const auto wait = [] {
        OperationQueue queue({.name = "downloads"});
        queue.addOperation([&] { queue.waitUntilAllOperationsAreFinished(); });
        support::waitForEver();
    };
    EXPECT_DEATH(wait(), "VorlanFoundation/OperationQueue: Fatal error: waiting for all operations of "
                         "'downloads' from one of them would last for ever");
}

TEST(OperationQueueDeathTest, ExceptionOfAnOperationStopsTheProcessWithItsText) {
    const auto fail = [] {
        OperationQueue queue;
        queue.setSuspended(true);
        queue.addOperation([] { throw std::runtime_error("no connection"); })->setName("fetch");
        queue.setSuspended(false);
        support::waitForEver();
    };
    EXPECT_DEATH(fail(), "VorlanFoundation/OperationQueue: Fatal error: an exception left operation 'fetch': "
                         "no connection");
}

TEST(OperationQueueDeathTest, ExceptionThatIsNoneOfTheStandardsStopsTheProcessToo) {
    const auto fail = [] {
        OperationQueue queue;
        queue.setSuspended(true);
        queue.addOperation([] { throw 7; })->setName("fetch");
        queue.setSuspended(false);
        support::waitForEver();
    };
    EXPECT_DEATH(fail(), "VorlanFoundation/OperationQueue: Fatal error: an exception left operation 'fetch'");
}

TEST(OperationQueueDeathTest, ExceptionOfAnAsynchronousOperationsStartStopsTheProcessWithItsText) {
    class Fetch : public AsynchronousOperation {
        void main() override { throw std::runtime_error("no connection"); }
    };
    const auto fail = [] {
        OperationQueue queue;
        const auto fetch = std::make_shared<Fetch>();
        fetch->setName("fetch");
        queue.addOperation(fetch);
        support::waitForEver();
    };
    EXPECT_DEATH(fail(), "VorlanFoundation/OperationQueue: Fatal error: an exception left operation 'fetch': "
                         "no connection");
}

TEST(OperationQueueDeathTest, UseAfterMoveStopsTheProcessWithAMessage) {
    OperationQueue queue;
    const OperationQueue other(std::move(queue));
    EXPECT_DEATH(queue.cancelAllOperations(), // NOLINT(bugprone-use-after-move): that is what is tested
                 "VorlanFoundation/Handle: Fatal error: used after it was moved from");
}
