// SPDX-License-Identifier: Apache-2.0
#include "platform/network/HostResolver.h"

#include "tests/support/Inbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <pthread.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <memory>
#include <optional>
#include <semaphore>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vorlan::network {
namespace {

using ::testing::Contains;
using ::testing::IsEmpty;

constexpr int mostThreads = 8;

Destination to(const std::string& text) {
    return Destination::fromText(text).value();
}

/// Look-ups that begin when they are asked for, and end when the case says so; the address tells the how manieth it was.
class SlowNames {
public:
    std::vector<Destination> lookUp(const std::string& name) {
        const int number = ++count_;
        const int now = ++running_;
        for (int most = most_; now > most && !most_.compare_exchange_weak(most, now);) {}
        begun_.put(name);
        const bool mayGoOn = gate_.try_acquire_for(std::chrono::seconds(10));
        --running_;
        return mayGoOn ? std::vector{to("10.0.0." + std::to_string(number))} : std::vector<Destination>();
    }

    /// Lets so many look-ups end.
    void finish(int count = 1) { gate_.release(count); }

    /// The name whose look-up began next.
    std::string begun() { return begun_.take().value_or("nothing"); }

    int mostAtATime() const { return most_; }
    int count() const { return count_; }

private:
    support::Inbox<std::string> begun_;
    std::counting_semaphore<> gate_{0};
    std::atomic<int> count_ = 0;
    std::atomic<int> running_ = 0;
    std::atomic<int> most_ = 0;
};

/// What was answered, and for whom.
struct Answered {
    std::string asker;
    std::vector<Destination> addresses;
};

class HostResolution : public ::testing::Test {
protected:
    void ask(const std::string& name, const std::string& asker) {
        resolver->resolve(name, [answers = answers, asker](std::vector<Destination> addresses) {
            answers->put({asker, std::move(addresses)});
        });
    }

    // So that no other name is looked up.
    void occupyAllThreads() {
        for (int i = 0; i < mostThreads; ++i) ask("busy" + std::to_string(i), "busy");
        for (int i = 0; i < mostThreads; ++i) EXPECT_THAT(names->begun(), ::testing::StartsWith("busy"));
    }

    Answered nextAnswer() { return answers->take().value_or(Answered{"nobody", {}}); }

    // Shared with the threads, which end when they like.
    std::shared_ptr<SlowNames> names = std::make_shared<SlowNames>();
    std::shared_ptr<support::Inbox<Answered>> answers = std::make_shared<support::Inbox<Answered>>();
    std::shared_ptr<HostResolver> resolver = std::make_shared<HostResolver>(
        [names = names](const std::string& name) { return names->lookUp(name); });
};

TEST_F(HostResolution, AddressesAreFoundOnAThreadOfTheResolver) {
    support::Inbox<std::thread::id> threads;
    resolver->resolve("host", [&](const std::vector<Destination>& addresses) {
        EXPECT_EQ(addresses, std::vector{to("10.0.0.1")});
        threads.put(std::this_thread::get_id());
    });
    EXPECT_EQ(names->begun(), "host"); // and the asker was not kept waiting
    EXPECT_EQ(threads.count(), 0U);
    names->finish();
    const auto thread = threads.take();
    ASSERT_TRUE(thread);
    EXPECT_NE(*thread, std::this_thread::get_id());
}

TEST_F(HostResolution, NameWithoutAddressesIsAnsweredToo) {
    resolver = std::make_shared<HostResolver>([](const std::string&) { return std::vector<Destination>(); });
    ask("nowhere", "asker");
    const auto answer = nextAnswer();
    EXPECT_EQ(answer.asker, "asker");
    EXPECT_THAT(answer.addresses, IsEmpty());
}

TEST_F(HostResolution, EightNamesAreLookedUpAtATimeAndNoMore) {
    occupyAllThreads();
    for (int i = 0; i < 12; ++i) ask("late" + std::to_string(i), "late");
    names->finish(mostThreads + 12);
    for (int i = 0; i < mostThreads + 12; ++i) EXPECT_NE(nextAnswer().asker, "nobody");
    EXPECT_EQ(names->mostAtATime(), mostThreads);
    EXPECT_EQ(names->count(), mostThreads + 12);
}

TEST_F(HostResolution, NamesThatWaitHaveTheirTurnInOrder) {
    occupyAllThreads();
    for (const char* name : {"first", "second", "third"}) ask(name, name);
    for (const char* name : {"first", "second", "third"}) {
        names->finish();
        EXPECT_EQ(names->begun(), name);
    }
    names->finish(mostThreads);
    for (int i = 0; i < mostThreads + 3; ++i) EXPECT_NE(nextAnswer().asker, "nobody");
}

TEST_F(HostResolution, AskersForOneNameThatWaitsShareTheLookUp) {
    occupyAllThreads();
    for (const char* asker : {"one", "two", "three"}) ask("shared", asker);
    ask("other", "four");
    names->finish(mostThreads + 2);
    std::set<std::string> askers;
    std::vector<std::vector<Destination>> shared;
    for (int i = 0; i < mostThreads + 4; ++i) {
        const auto answer = nextAnswer();
        if (answer.asker != "busy" && answer.asker != "four") shared.push_back(answer.addresses);
        askers.insert(answer.asker);
    }
    EXPECT_EQ(askers, (std::set<std::string>{"busy", "one", "two", "three", "four"}));
    ASSERT_EQ(shared.size(), 3U);
    EXPECT_EQ(shared[0].size(), 1U);
    EXPECT_EQ(shared[0], shared[1]);
    EXPECT_EQ(shared[0], shared[2]);
    EXPECT_EQ(names->count(), mostThreads + 2);
}

// What is found may be older than the asking, so it does not do.
TEST_F(HostResolution, NameThatIsBeingLookedUpIsLookedUpAgainForTheNextAsker) {
    ask("host", "early");
    EXPECT_EQ(names->begun(), "host");
    ask("host", "late");
    EXPECT_EQ(names->begun(), "host");
    names->finish(2);
    const auto first = nextAnswer();
    const auto second = nextAnswer();
    EXPECT_EQ((std::set{first.asker, second.asker}), (std::set<std::string>{"early", "late"}));
    EXPECT_NE(first.addresses, second.addresses);
    EXPECT_EQ(names->count(), 2);
}

TEST_F(HostResolution, CompletionMayAskForTheNextName) {
    names->finish(2);
    resolver->resolve("first", [resolver = resolver, answers = answers](const std::vector<Destination>&) {
        resolver->resolve("second", [answers](const std::vector<Destination>& addresses) {
            answers->put({"asker", addresses});
        });
    });
    EXPECT_EQ(nextAnswer().asker, "asker");
    EXPECT_EQ(names->begun(), "first");
    EXPECT_EQ(names->begun(), "second");
}

/// Says on which thread it was made, when that ends.
class ThreadEnd {
public:
    explicit ThreadEnd(std::shared_ptr<support::Inbox<std::thread::id>> ends) : ends_(std::move(ends)) {}
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() { ends_->put(std::this_thread::get_id()); }

private:
    const std::shared_ptr<support::Inbox<std::thread::id>> ends_;
};

TEST_F(HostResolution, ThreadsEndWhenThereIsNothingLeftToLookUp) {
    const auto ends = std::make_shared<support::Inbox<std::thread::id>>();
    resolver = std::make_shared<HostResolver>([ends](const std::string&) {
        thread_local std::optional<ThreadEnd> atTheEnd;
        atTheEnd.emplace(
            ends); // the thread's own: that it is replaced, and says so, cannot be at one name a thread
        return std::vector<Destination>();
    });
    for (int round = 0; round < 2 * mostThreads; ++round) { // more than there may be at a time
        ask("host", "asker");
        EXPECT_EQ(nextAnswer().asker, "asker");
        EXPECT_TRUE(ends->take().has_value());
    }
}

TEST_F(HostResolution, ResolverThatIsGoneAnswersWhatItWasAsked) {
    support::Inbox<bool> released;
    {
        const std::shared_ptr<void> held(names.get(), [&](void*) { released.put(true); });
        resolver = std::make_shared<HostResolver>(
            [names = names, held](const std::string& name) { return names->lookUp(name); });
    }
    occupyAllThreads();
    ask("late", "late");
    resolver.reset();
    EXPECT_EQ(released.count(), 0U); // in use
    names->finish(mostThreads + 1);
    std::set<std::string> askers;
    for (int i = 0; i < mostThreads + 1; ++i) askers.insert(nextAnswer().asker);
    EXPECT_EQ(askers, (std::set<std::string>{"busy", "late"}));
    EXPECT_TRUE(released.take().has_value()); // nothing is kept
}

TEST_F(HostResolution, CompletionIsReleasedOnceItWasCalled) {
    support::Inbox<bool> released;
    {
        auto held = std::shared_ptr<void>(names.get(), [&](void*) { released.put(true); });
        resolver->resolve("host", [held](const std::vector<Destination>&) {});
    }
    EXPECT_EQ(names->begun(), "host");
    EXPECT_EQ(released.count(), 0U);
    names->finish();
    EXPECT_TRUE(released.take().has_value());
}

bool blocksSignals() {
    sigset_t mask{};
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    const std::array signals{SIGTERM, SIGINT, SIGHUP, SIGCHLD, SIGUSR1, SIGALRM};
    return std::ranges::all_of(signals, [&](int signal) { return sigismember(&mask, signal) == 1; });
}

TEST_F(HostResolution, SignalsAreLeftToTheHostsThreads) {
    support::Inbox<bool> blocked;
    resolver = std::make_shared<HostResolver>([&](const std::string&) {
        blocked.put(blocksSignals());
        return std::vector<Destination>();
    });
    ASSERT_FALSE(blocksSignals());
    ask("host", "asker");
    EXPECT_FALSE(blocksSignals()); // the asker's are as they were
    EXPECT_EQ(blocked.take(), true);
    EXPECT_EQ(nextAnswer().asker, "asker");
}

/// New threads want more memory than there is.
class NoThreads {
public:
    NoThreads() {
        pthread_attr_init(&former_);
        pthread_getattr_default_np(&former_);
        pthread_attr_t greedy;
        pthread_attr_init(&greedy);
        pthread_attr_setstacksize(&greedy, std::size_t{1} << 47U);
        works_ = pthread_setattr_default_np(&greedy) == 0;
        pthread_attr_destroy(&greedy);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;
    ~NoThreads() {
        pthread_setattr_default_np(&former_);
        pthread_attr_destroy(&former_);
    }
    bool works() const { return works_; }

private:
    pthread_attr_t former_{};
    bool works_ = false;
};

TEST_F(HostResolution, WithoutAThreadTheAskerIsAnsweredAtOnce) {
    {
        const NoThreads noThreads;
        ASSERT_TRUE(noThreads.works());
        ask("host", "asker");
        EXPECT_EQ(answers->count(), 1U);
        EXPECT_FALSE(blocksSignals());
    }
    EXPECT_THAT(nextAnswer().addresses, IsEmpty());
    EXPECT_EQ(names->count(), 0);
    names->finish();
    ask("host", "next asker"); // it is tried again
    EXPECT_EQ(nextAnswer().addresses, std::vector{to("10.0.0.1")});
}

TEST_F(HostResolution, WithoutAnotherThreadTheNameWaitsForTheOneThereIs) {
    ask("first", "first");
    EXPECT_EQ(names->begun(), "first");
    {
        const NoThreads noThreads;
        ASSERT_TRUE(noThreads.works());
        ask("second", "second");
        EXPECT_EQ(answers->count(), 0U);
    }
    names->finish(2);
    EXPECT_EQ(nextAnswer().asker, "first");
    const auto second = nextAnswer();
    EXPECT_EQ(second.asker, "second");
    EXPECT_EQ(second.addresses, std::vector{to("10.0.0.2")});
}

TEST(HostLookUp, NumbersAreTheirOwnAddresses) {
    EXPECT_EQ(HostResolver::lookUp("192.0.2.7"), std::vector{to("192.0.2.7")});
    EXPECT_EQ(HostResolver::lookUp("2001:db8::7"), std::vector{to("2001:db8::7")});
    EXPECT_EQ(HostResolver::lookUp("fe80::7%1"), std::vector{to("fe80::7%1")});
}

TEST(HostLookUp, ThisMachineHasItsAddressOnce) {
    const auto addresses = HostResolver::lookUp("localhost");
    EXPECT_THAT(addresses, ::testing::AnyOf(Contains(to("127.0.0.1")), Contains(to("::1"))));
    EXPECT_LE(std::ranges::count(addresses, to("127.0.0.1")), 1);
}

} // namespace
} // namespace vorlan::network
