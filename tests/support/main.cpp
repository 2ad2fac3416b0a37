// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // The default style forks a process whose queues no longer run; this one starts the test anew.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    return RUN_ALL_TESTS();
}
