// SPDX-License-Identifier: Apache-2.0
#pragma once

// A machine on paper whose kernel speaks when the case says so, and a center on a clock turned by hand.

#include "platform/network/NetworkCenter.h"

#include "tests/platform/network/FakeSystem.h"
#include "tests/platform/network/FlagLetters.h"

#include <VorlanFoundation/Platform/SCNetworkReachabilitySource.h>
#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::network::fake {

/// The machine has one cable, eth0, that leads to the network over IPv4.
class NetworkOnPaper : public ::testing::Test {
protected:
    // What the center owns are thin handles of what the case owns.
    struct KernelHandle final : Kernel {
        explicit KernelHandle(NetworkOnPaper& test) : test_(test) {
            ++test_.openKernels;
            ++test_.kernelOpenings;
        }
        ~KernelHandle() override { --test_.openKernels; }
        Answer<Snapshot> snapshot() override { return test_.kernel.snapshot(); }
        Answer<Route> route(const IPAddress& to, LinkIndex link) override {
            return test_.kernel.route(to, link);
        }
        Answer<Route> tableEntry(const IPAddress& to, LinkIndex link) override {
            return test_.kernel.tableEntry(to, link);
        }
        Answer<std::vector<LinkIndex>> hostRouteLinks() override { return test_.kernel.hostRouteLinks(); }
        NetworkOnPaper& test_;
    };

    struct FeedHandle final : ChangeFeed {
        explicit FeedHandle(NetworkOnPaper& test) : test_(test) {
            ++test_.openFeeds;
            ++test_.feedOpenings;
        }
        ~FeedHandle() override { --test_.openFeeds; }
        News drain() override { return std::exchange(test_.news, News::none); }
        NetworkOnPaper& test_;
    };

    /// A name that was asked for, and where the addresses go.
    struct LookUp {
        std::string name;
        std::function<void(std::vector<Destination>)> answer;
    };

    NetworkOnPaper() {
        kernel.add(2, "eth0");
        kernel.address(2, "10.0.0.5", 24);
        goOnline();
    }

    // What was dropped at the end of the case is removed in the queue's turn, and the queue keeps it until then.
    void TearDown() override { queue.runPending(); }

    NetworkProviders providers() {
        NetworkProviders made;
        made.openKernel = [this]() -> Answer<std::unique_ptr<Kernel>> {
            if (kernelError != 0) return Answer<std::unique_ptr<Kernel>>::failure(kernelError);
            return {std::make_unique<KernelHandle>(*this)};
        };
        made.openFeed = [this](const Queue&,
                               std::function<void()> callback) -> Answer<std::unique_ptr<ChangeFeed>> {
            if (feedError != 0) return Answer<std::unique_ptr<ChangeFeed>>::failure(feedError);
            readable = std::move(callback);
            return {std::make_unique<FeedHandle>(*this)};
        };
        made.sysfs = std::make_shared<FakeSysfs>();
        made.connectProbe = [this](const IPAddress&) { return ConnectAnswer{.error = connectError}; };
        made.resolve = [this](const std::string& name, std::function<void(std::vector<Destination>)> answer) {
            lookUps.push_back({name, std::move(answer)});
        };
        made.watchResolver = [this](std::function<void()> changed) -> std::shared_ptr<void> {
            ++resolverWatches;
            resolverChanged = std::move(changed);
            return {this, [this](void*) { --resolverWatches; }};
        };
        return made;
    }

    void goOnline() { kernel.routes = {{"0.0.0.0", 0, 2, "10.0.0.1"}, {"10.0.0.0", 24, 2}}; }
    void goOffline() { kernel.routes.clear(); }

    /// The kernel says that something changed; nothing is evaluated yet.
    void speak(ChangeFeed::News what = ChangeFeed::News::changed) {
        news = what;
        queue.sync([this] { readable(); });
    }

    /// Something changed, and the window is over.
    void settle() {
        speak();
        queue.advance(NetworkProviders().window);
    }

    /// Notes what a source tells, in the letters of FlagLetters.h.
    std::shared_ptr<void> listen(SCNetworkReachabilitySource& source, std::vector<std::string>& told) {
        auto token =
            source.subscribe([&](SCNetworkReachabilityFlags flags) { told.push_back(letters(flags)); });
        queue.runPending();
        return token;
    }

    /// What a source answers: letters, or the number of a status.
    static std::string answerOf(SCNetworkReachabilitySource& source) {
        const auto answer = source.currentFlags();
        return answer.status == kSCStatusOK ? letters(answer.flags) : std::to_string(answer.status);
    }

    static Destination to(const std::string& text) { return Destination::fromText(text).value(); }

    testing::ManualQueue queue;
    FakeKernel kernel;
    int kernelError = 0;
    int feedError = 0;
    int connectError = ENETUNREACH;
    ChangeFeed::News news = ChangeFeed::News::none;
    std::function<void()> readable;
    std::function<void()> resolverChanged;
    std::vector<LookUp> lookUps; // those not yet answered, and perhaps others
    int openKernels = 0;
    int kernelOpenings = 0;
    int openFeeds = 0;
    int feedOpenings = 0;
    int resolverWatches = 0;
    std::shared_ptr<NetworkCenter> network = std::make_shared<NetworkCenter>(queue, providers());
};

} // namespace vorlan::network::fake
