// SPDX-License-Identifier: Apache-2.0

// Versions that do not fit stop the application that has them, which is another process here.

#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/extensions/BundledHost.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

using namespace vorlan;
using tests::BundledHost;
using tests::textElement;

namespace {

class BundlesDeathTest : public ::testing::Test {
protected:
    tests::Outcome outcomeOf(const std::string& version, const std::string& build) const {
        host_.write(
            {{"CFBundleShortVersionString", textElement(version)}, {"CFBundleVersion", textElement(build)}});
        return host_.run({"bundleVersion", "appVersion", "bundleVersion"});
    }

    void expectStop(const std::string& version, const std::string& build) const {
        const auto outcome = outcomeOf(version, build);
        EXPECT_EQ(outcome.status, -SIGILL);
        EXPECT_EQ(outcome.answers, (std::vector<std::string>{build})) << "it went on until then";
    }

private:
    vorlan::testing::TemporaryHome home_;
    BundledHost host_{home_.path() / "application", tests::Layout::beside};
};

} // namespace

TEST_F(BundlesDeathTest, TenfoldVersionThatDoesNotFitStopsTheProcess) {
    expectStop("922337203685477581", "0");
    expectStop("-922337203685477581", "0");
    expectStop("9.2.2.3.3.7.2.0.3.6.8.5.4.7.7.5.8.0.7", "0");
}

TEST_F(BundlesDeathTest, SumThatDoesNotFitStopsTheProcess) {
    expectStop("922337203685477580", "8");
    expectStop("-922337203685477580", "-9");
    expectStop("1", "9223372036854775807");
}

TEST_F(BundlesDeathTest, VersionThatFitsDoesNot) {
    EXPECT_EQ(outcomeOf("922337203685477580", "7").status, 0);
}
