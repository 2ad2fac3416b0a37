// SPDX-License-Identifier: Apache-2.0
#pragma once

// The flags of a machine on paper, in the letters of FlagLetters.h.

#include "platform/network/FlagsEvaluator.h"

#include "tests/platform/network/FakeSystem.h"
#include "tests/platform/network/FlagLetters.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace vorlan::network::fake {

/// A machine with one cable, eth0, that leads to the network over IPv4; cases change it.
class FlagsOnPaper : public ::testing::Test {
protected:
    FlagsOnPaper() {
        kernel.addCable();
        kernel.routes.push_back({"10.0.0.0", 24, 2});
    }

    template <class What>
    FlagsEvaluation evaluate(const What& what) {
        std::optional<Survey> survey;
        FlagsEvaluation evaluation;
        evaluation.progress = examine(kernel, sysfs, survey, [&](const Survey& taken) {
            evaluation = evaluateFlags(taken, what);
            return evaluation.progress;
        });
        return evaluation;
    }

    static Destination to(const std::string& text) { return Destination::fromText(text).value(); }

    static std::string lettersOf(const FlagsEvaluation& evaluation) {
        EXPECT_EQ(evaluation.progress.outcome, Outcome::settled);
        return letters(evaluation.flags);
    }

    std::string flagsTo(const std::string& text) { return lettersOf(evaluate(to(text))); }

    std::string flagsToAnyOf(std::initializer_list<const char*> texts) {
        std::vector<Destination> addresses;
        for (const char* text : texts) addresses.push_back(to(text));
        return lettersOf(evaluate(addresses));
    }

    Link& eth0() { return kernel.world.links.at(2); }

    // A link to one peer, 10.8.0.1, that carries 10.9.0.0/16.
    Link& addTunnel(const std::string& kind) {
        auto& tunnel = kernel.add(7, "tunnel0", kind);
        tunnel.flags |= IFF_POINTOPOINT | IFF_NOARP;
        tunnel.hardware = ARPHRD_NONE;
        kernel.world.addresses.push_back({7, ip("10.8.0.2"), ip("10.8.0.1"), 32});
        kernel.routes.push_back({"10.8.0.1", 32, 7});
        kernel.routes.push_back({"10.9.0.0", 16, 7});
        return tunnel;
    }

    FakeKernel kernel;
    FakeSysfs sysfs;
};

} // namespace vorlan::network::fake
