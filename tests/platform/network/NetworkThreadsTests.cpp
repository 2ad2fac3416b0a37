// SPDX-License-Identifier: Apache-2.0

// The center on a real queue, used by many threads at once.

#include "platform/network/AddressReachability.h"
#include "platform/network/HostResolver.h"
#include "platform/network/NameReachability.h"
#include "tests/platform/network/NetworkOnPaper.h"
#include "tests/support/Inbox.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vorlan::network {
namespace {

using namespace fake;
using namespace std::chrono_literals;

using Source = SCNetworkReachabilitySource;
using Letters = support::Inbox<std::string>;

/// The machine on paper, whose parts are used on a real queue only.
class NetworkThreads : public NetworkOnPaper {
protected:
    NetworkThreads() {
        auto made = providers();
        const auto resolver =
            std::make_shared<HostResolver>([](const std::string&) { return std::vector{to("10.0.0.77")}; });
        made.resolve = [resolver](const std::string& host, HostResolver::Completion completion) {
            resolver->resolve(host, std::move(completion));
        };
        made.window = 1ms;
        network = std::make_shared<NetworkCenter>(worker, made);
        sources = {adopt(new AddressReachability(network, to("10.0.0.77"))),
                   adopt(new AddressReachability(network, to("0.0.0.0"))),
                   adopt(new NameReachability(network, "host.test"))};
        network.reset();
    }

    template <class Kind>
    std::shared_ptr<Source> adopt(Kind* source) {
        return std::shared_ptr<Kind>(source, [this](const Kind* last) {
            delete last;
            released.put(true);
        });
    }

    void change(bool isOnline) {
        worker.async([this, isOnline] {
            if (isOnline)
                goOnline();
            else
                goOffline();
            news = ChangeFeed::News::changed;
            if (readable) readable();
        });
    }

    // Comes, looks and goes, again and again.
    void visit(const std::shared_ptr<Source>& source) {
        for (int round = 0; round < 100; ++round) {
            const auto token = source->subscribe([this](SCNetworkReachabilityFlags) { ++calls; });
            if (round % 4 == 0 && source->currentFlags().status == kSCStatusFailed) ++failures;
        }
    }

    void expectReleased(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) EXPECT_TRUE(released.take().has_value());
    }

    support::Inbox<bool> released;
    std::atomic<int> calls = 0;
    std::atomic<int> failures = 0;
    const Queue worker{"network threads"};
    std::vector<std::shared_ptr<Source>> sources;
};

// The last state is told last, whatever was lost on the way.
bool sees(Letters& told, const std::string& expected) {
    while (const auto flags = told.take())
        if (*flags == expected) return true;
    return false;
}

TEST_F(NetworkThreads, EverybodyMayComeAndGoWhileTheNetworkChanges) {
    const auto told = std::make_shared<Letters>();
    auto lasting =
        sources[0]->subscribe([told](SCNetworkReachabilityFlags flags) { told->put(letters(flags)); });
    EXPECT_EQ(told->take(), "Rd");
    std::vector<std::thread> threads;
    for (const auto& source : sources) threads.emplace_back([this, source] { visit(source); });
    for (int i = 0; i < 100; ++i) change(i % 2 != 0);
    change(false);
    for (auto& thread : threads) thread.join();
    EXPECT_TRUE(sees(*told, "-"));
    change(true);
    EXPECT_TRUE(sees(*told, "Rd"));
    EXPECT_EQ(failures, 0);
    lasting.reset();
    const auto count = sources.size();
    sources.clear();
    expectReleased(count);
    worker.sync([this] {
        EXPECT_EQ(openFeeds, 0);
        EXPECT_EQ(openKernels, 0);
        EXPECT_EQ(resolverWatches, 0);
    });
}

TEST_F(NetworkThreads, TokenMayBeTheLastThatKeepsTheNetwork) {
    std::vector<std::thread> threads;
    for (auto& source : sources)
        threads.emplace_back([this, source = std::exchange(source, nullptr)]() mutable {
            auto token = source->subscribe([this](SCNetworkReachabilityFlags) { ++calls; });
            source.reset();
            token.reset();
        });
    for (auto& thread : threads) thread.join();
    expectReleased(threads.size());
    worker.sync([this] {
        EXPECT_EQ(openFeeds, 0);
        EXPECT_EQ(openKernels, 0);
    });
}

} // namespace
} // namespace vorlan::network
