// SPDX-License-Identifier: Apache-2.0

// A store that several processes have open.

#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/MainLoop.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include "tests/platform/defaults/ForeignPropertyList.h"
#include "tests/platform/defaults/HostProcess.h"
#include "tests/platform/defaults/ReportedProblems.h"
#include "tests/support/Inbox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using tests::contentOf;
using tests::HostProcess;

namespace {

constexpr auto name = "com.example.editor";
#ifdef VORLAN_SANITIZED
constexpr std::int64_t keysEach = 1'000;
#else
constexpr std::int64_t keysEach = 10'000;
#endif

std::filesystem::path pathIn(const vorlan::testing::TemporaryHome& home) {
    return home.path() / ".config" / name / "defaults.plist";
}

// Looks at a counter that somebody else counts up, again and again.
class CounterWatch {
public:
    CounterWatch(std::string key, std::filesystem::path file)
        : key_(std::move(key)), file_(std::move(file)) {}

    void look(const UserDefaults& store) {
        expectNotBack(inMemory_, store.integerForKey(key_));
        const auto content = contentOf(file_);
        if (content.empty()) return expectNotBack(inFile_, 0);
        const auto number = tests::foreignInteger(content, key_);
        ASSERT_TRUE(number) << "the file is not whole";
        expectNotBack(inFile_, static_cast<std::int64_t>(number->value_or(0)));
    }

private:
    void expectNotBack(std::int64_t& last, std::int64_t now) {
        EXPECT_GE(now, last) << key_;
        last = now;
    }

    std::string key_;
    std::filesystem::path file_;
    std::int64_t inMemory_ = 0;
    std::int64_t inFile_ = 0;
};

} // namespace

TEST(UserDefaultsProcesses, TwoThatWriteAtOnceLoseNothingAndAThirdSeesNoValueGoBack) {
    const vorlan::testing::TemporaryHome home;
    const tests::ReportedProblems problems;
    const UserDefaults store(name);
    const auto count = std::to_string(keysEach);
    HostProcess a(name);
    HostProcess b(name);
    a.tell("fill a " + count);
    b.tell("fill b " + count);
    CounterWatch countA("a-counter", pathIn(home));
    CounterWatch countB("b-counter", pathIn(home));
    while (!HasFailure() && !(a.hasAnswered() && b.hasAnswered())) {
        countA.look(store);
        countB.look(store);
    }
    EXPECT_EQ(a.answer(), "ok");
    EXPECT_EQ(b.answer(), "ok");
    EXPECT_EQ(a.finish(), 0);
    EXPECT_EQ(b.finish(), 0);

    HostProcess fresh(name);
    EXPECT_EQ(fresh.ask("count a " + count), count);
    EXPECT_EQ(fresh.ask("count b " + count), count);
    EXPECT_EQ(fresh.ask("get a-counter"), count);
    EXPECT_EQ(fresh.ask("get b-counter"), count);
    EXPECT_EQ(fresh.ask("problems"), "0 ");
    const auto isAllSeen = [&] {
        return store.storedEntries().size() == static_cast<std::size_t>(2 * keysEach + 2);
    };
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil(isAllSeen, 20s));
    countA.look(store);
    countB.look(store);
    EXPECT_EQ(problems.count(), 0U);
}

TEST(UserDefaultsProcesses, ProcessThatEndsRightAfterAWriteLosesNothing) {
    const vorlan::testing::TemporaryHome home;
    Value::Dictionary expected;
    for (const auto& [how, code] :
         {std::pair("", 0), {"leave exit", 0}, {"leave abruptly", 0}, {"leave abort", -6}})
        for (int round = 0; round < 5; ++round) {
            const auto key = "key" + std::to_string(expected.size());
            expected[key] = round;
            HostProcess host(name);
            EXPECT_EQ(host.ask("set " + key + " " + std::to_string(round)), "ok");
            if (*how != 0) host.tell(how);
            EXPECT_EQ(host.finish(), code) << how;
        }
    EXPECT_EQ(UserDefaults(name).storedEntries(), expected);
}

TEST(UserDefaultsProcesses, ProcessThatBecomesAnotherProgramLosesNothing) {
    const vorlan::testing::TemporaryHome home;
    HostProcess host(name);
    EXPECT_EQ(host.ask("set key 1"), "ok");
    EXPECT_EQ(host.ask("restart"), "ok");
    EXPECT_EQ(host.ask("get key"), "1");
    EXPECT_EQ(host.ask("set key 2"), "ok");
    EXPECT_EQ(host.ask("restart"), "ok");
    EXPECT_EQ(host.ask("get key"), "2");
    EXPECT_EQ(host.finish(), 0);
}

TEST(UserDefaultsProcesses, RemovalOfAProcessThatIsKilledIsNotForgotten) {
    const vorlan::testing::TemporaryHome home;
    {
        HostProcess host(name);
        EXPECT_EQ(host.ask("set kept 1"), "ok");
        EXPECT_EQ(host.ask("set removed 2"), "ok");
        EXPECT_EQ(host.ask("synchronize"), "true");
        EXPECT_EQ(host.ask("remove removed"), "ok");
        host.kill();
    }
    EXPECT_EQ(UserDefaults(name).storedEntries(), (Value::Dictionary{{"kept", 1}}));
}

TEST(UserDefaultsProcesses, WriteOfAProcessThatIsKilledIsFoundByOneThatHasTheStoreOpenAlready) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    EXPECT_EQ(store.objectForKey("theirs"), std::nullopt);
    {
        HostProcess host(name);
        EXPECT_EQ(host.ask("set theirs 1"), "ok");
        host.kill();
    }
    store.setObject(2, "ours");
    EXPECT_TRUE(store.synchronize());
    EXPECT_EQ(store.storedEntries(), (Value::Dictionary{{"theirs", 1}, {"ours", 2}}));
}

TEST(UserDefaultsProcesses, KeyGoesToTheLastThatSavesIt) {
    const vorlan::testing::TemporaryHome home;
    UserDefaults store(name);
    HostProcess host(name);
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(host.ask("set key " + std::to_string(2 * round)), "ok");
        EXPECT_EQ(host.ask("synchronize"), "true");
        EXPECT_TRUE(store.synchronize());
        EXPECT_EQ(store.integerForKey("key"), 2 * round);
        store.setObject(2 * round + 1, "key");
        EXPECT_TRUE(store.synchronize());
        EXPECT_EQ(host.ask("synchronize"), "true");
        EXPECT_EQ(host.ask("get key"), std::to_string(2 * round + 1));
    }
    EXPECT_EQ(host.finish(), 0);
}

TEST(UserDefaultsProcesses, ChangeIsSeenWithoutBeingAskedFor) {
    const vorlan::testing::TemporaryHome home;
    const UserDefaults store(name);
    EXPECT_EQ(store.objectForKey("key"), std::nullopt);
    HostProcess host(name);
    EXPECT_EQ(host.ask("text key hello there"), "ok");
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil(
        [&] { return store.stringForKey("key") == "hello there"; }, 10s));
    EXPECT_EQ(host.ask("remove key"), "ok");
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil([&] { return !store.objectForKey("key"); }, 10s));
}

TEST(UserDefaultsProcesses, ChangeIsToldToObserversOnTheirQueue) {
    const vorlan::testing::TemporaryHome home;
    const UserDefaults store(name);
    const Queue queue("com.example.settings");
    Inbox<std::string> seen;
    auto observation =
        store.observe("key", queue, [&] { seen.put(store.stringForKey("key").value_or("absent")); });
    HostProcess host(name);
    EXPECT_EQ(host.ask("text key one"), "ok");
    EXPECT_EQ(seen.take(), "one");
    EXPECT_EQ(host.ask("text key two"), "ok");
    EXPECT_EQ(seen.take(), "two");
    EXPECT_EQ(host.ask("remove key"), "ok");
    EXPECT_EQ(seen.take(), "absent");
    observation.invalidate();
    queue.sync([] {});
}

TEST(UserDefaultsProcesses, ChangeIsToldWhereTheFolderWasNotThereBefore) {
    const vorlan::testing::TemporaryHome home;
    for (const auto* missing : {".config/com.example.editor", ".config"}) {
        tests::forgetEverything();
        std::filesystem::remove_all(home.path() / missing);
        const UserDefaults store(name);
        const Queue queue("com.example.settings");
        Inbox<std::string> seen;
        auto observation =
            store.observe("key", queue, [&] { seen.put(store.stringForKey("key").value_or("absent")); });
        HostProcess host(name);
        EXPECT_EQ(host.ask("text key hello"), "ok");
        EXPECT_EQ(seen.take(), "hello") << missing;
        observation.invalidate();
        queue.sync([] {});
        EXPECT_EQ(host.finish(), 0);
    }
}

TEST(UserDefaultsProcesses, ChangeOfThisProcessIsSeenByTheOthers) {
    const vorlan::testing::TemporaryHome home;
    HostProcess host(name);
    EXPECT_EQ(host.ask("get key"), "absent");
    UserDefaults store(name);
    store.setObject("hello", "key");
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil([&] { return host.ask("get key") == "hello"; }, 10s));
}

// The best of several, so that a busy machine says nothing.
TEST(UserDefaultsSmoke, ChangeOfAnotherProcessIsToldWellWithinASecond) {
    const vorlan::testing::TemporaryHome home;
    const UserDefaults store(name);
    const Queue queue("com.example.settings");
    Inbox<std::int64_t> seen;
    auto observation = store.observe("key", queue, [&] { seen.put(store.integerForKey("key")); });
    HostProcess host(name);
    auto best = std::chrono::steady_clock::duration::max();
    for (int round = 1; round <= 10; ++round) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(host.ask("set key " + std::to_string(round)), "ok");
        EXPECT_EQ(seen.take(), round);
        best = std::min(best, std::chrono::steady_clock::now() - start);
    }
    EXPECT_LT(best, 500ms);
    observation.invalidate();
    queue.sync([] {});
}
