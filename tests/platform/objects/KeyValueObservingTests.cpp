// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/KeyValueObserving.h>

#include "tests/support/Inbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <any>
#include <atomic>
#include <barrier>
#include <functional>
#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using support::Inbox;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// A player whose volume and title are published.
class Player : public KeyValueObserving {
public:
    void setVolume(int volume) {
        willChangeValueForKey("volume");
        volume_ = volume;
        didChangeValueForKey("volume");
    }
    void setTitle(std::string title) {
        willChangeValueForKey("title");
        title_ = std::move(title);
        didChangeValueForKey("title");
    }
    std::any valueForKey(std::string_view key) const override {
        if (key == "volume") return volume_.load();
        if (key == "title") return title_;
        return KeyValueObserving::valueForKey(key);
    }

private:
    std::atomic<int> volume_ = 0;
    std::string title_;
};

// Has a value of its own for each thread, so that it can be told whose value an observer was given.
class Meter : public KeyValueObserving {
public:
    static void set(int value) { value_ = value; }
    std::any valueForKey(std::string_view) const override { return value_; }

private:
    static inline thread_local int value_ = 0;
};

std::string textOf(const std::any& value) {
    if (const auto* number = std::any_cast<int>(&value)) return std::to_string(*number);
    if (const auto* text = std::any_cast<std::string>(&value)) return *text;
    return "-";
}

// Writes down each change: "will volume 1>-", "did volume 1>2".
KeyValueObserving::Handler writeInto(std::vector<std::string>& log) {
    return [&log](const KeyValueChange& change) {
        log.push_back(std::string(change.isPrior ? "will " : "did ") + std::string(change.key) + " " +
                      textOf(change.oldValue) + ">" + textOf(change.newValue));
    };
}

} // namespace

TEST(KeyValueObserving, TellsObserversOfAKeyOfItsChangesWithOldAndNewValue) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    const auto observation = player->observe("volume", writeInto(log));
    player->setVolume(1);
    player->setTitle("a song");
    player->setVolume(2);
    EXPECT_THAT(log, ElementsAre("did volume 0>1", "did volume 1>2"));
}

TEST(KeyValueObserving, AnnouncesChangesToThoseWhoWantToKnowBefore) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    const auto observation = player->observe("volume", writeInto(log), {.prior = true});
    player->setVolume(1);
    EXPECT_THAT(log, ElementsAre("will volume 0>-", "did volume 0>1"));
}

TEST(KeyValueObserving, TellsOfEqualValuesToo) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    const auto observation = player->observe("volume", writeInto(log));
    player->setVolume(0);
    EXPECT_THAT(log, ElementsAre("did volume 0>0"));
}

TEST(KeyValueObserving, NestedChangesOfAKeyAreEachTold) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    const auto observation = player->observe("volume", writeInto(log), {.prior = true});
    player->willChangeValueForKey("volume");
    player->setVolume(1);
    player->didChangeValueForKey("volume");
    EXPECT_THAT(log, ElementsAre("will volume 0>-", "will volume 0>-", "did volume 0>1", "did volume 0>1"));
}

TEST(KeyValueObserving, KeyWithoutAValueIsToldWithoutValues) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    const auto observation = player->observe("colour", writeInto(log));
    player->willChangeValueForKey("colour");
    player->didChangeValueForKey("colour");
    EXPECT_THAT(log, ElementsAre("did colour ->-"));
}

TEST(KeyValueObserving, ObserverThatCameAfterTheAnnouncementIsToldWithoutAnOldValue) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    player->willChangeValueForKey("volume");
    const auto observation = player->observe("volume", writeInto(log), {.prior = true});
    player->didChangeValueForKey("volume");
    player->setVolume(3);
    EXPECT_THAT(log, ElementsAre("did volume ->0", "will volume 0>-", "did volume 0>3"));
}

TEST(KeyValueObserving, TellsWhoseChangeItIs) {
    const auto player = std::make_shared<Player>();
    const KeyValueObserving* told = nullptr;
    const auto observation =
        player->observe("volume", [&](const KeyValueChange& change) { told = &change.object; });
    player->setVolume(1);
    EXPECT_EQ(told, player.get());
}

TEST(KeyValueObserving, ObserversAreToldInTheOrderOfRegistration) {
    const auto player = std::make_shared<Player>();
    std::string order;
    const auto first = player->observe("volume", [&](const KeyValueChange&) { order += '1'; });
    const auto second = player->observe("volume", [&](const KeyValueChange&) { order += '2'; });
    player->setVolume(1);
    EXPECT_EQ(order, "12");
}

TEST(KeyValueObservation, EndsWhenItIsDroppedOrInvalidated) {
    const auto player = std::make_shared<Player>();
    const auto value = std::make_shared<int>(0);
    auto first = player->observe("volume", [value](const KeyValueChange&) { ++*value; });
    std::optional<KeyValueObservation> second(
        player->observe("volume", [value](const KeyValueChange&) { ++*value; }));
    player->setVolume(1);
    EXPECT_EQ(*value, 2);
    first.invalidate();
    first.invalidate();
    second.reset();
    player->setVolume(2);
    EXPECT_EQ(*value, 2);
    EXPECT_EQ(value.use_count(), 1);
}

TEST(KeyValueObservation, MovesAndEndsWhatItIsAssignedOver) {
    const auto player = std::make_shared<Player>();
    std::string told;
    KeyValueObservation observation;
    observation = player->observe("volume", [&](const KeyValueChange&) { told += 'a'; });
    KeyValueObservation moved(std::move(observation));
    player->setVolume(1);
    moved = player->observe("volume", [&](const KeyValueChange&) { told += 'b'; });
    player->setVolume(2);
    EXPECT_EQ(told, "ab");
}

TEST(KeyValueObservation, OutlivesTheObject) {
    auto player = std::make_shared<Player>();
    auto observation = player->observe("volume", [](const KeyValueChange&) {});
    player.reset();
    observation.invalidate();
}

TEST(KeyValueObserving, HandlerMayEndItsOwnAndOtherRegistrations) {
    const auto player = std::make_shared<Player>();
    std::string told;
    KeyValueObservation first;
    KeyValueObservation second;
    first = player->observe("volume", [&](const KeyValueChange&) {
        told += '1';
        first.invalidate();
        second.invalidate();
    });
    second = player->observe("volume", [&](const KeyValueChange&) { told += '2'; });
    player->setVolume(1);
    player->setVolume(2);
    EXPECT_EQ(told, "1");
}

TEST(KeyValueObserving, HandlerAddedDuringACallHearsOfTheNextChange) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    std::optional<KeyValueObservation> second;
    const auto first = player->observe("volume", [&](const KeyValueChange&) {
        if (!second) second.emplace(player->observe("volume", writeInto(log)));
    });
    player->setVolume(1);
    EXPECT_THAT(log, IsEmpty());
    player->setVolume(2);
    EXPECT_THAT(log, ElementsAre("did volume 1>2"));
}

TEST(KeyValueObserving, HandlerMayChangeProperties) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    const auto title = player->observe("title", writeInto(log));
    const auto volume = player->observe("volume", [&](const KeyValueChange&) { player->setTitle("quiet"); });
    player->setVolume(1);
    EXPECT_THAT(log, ElementsAre("did title >quiet"));
}

TEST(KeyValueObserving, ExceptionOfAHandlerReachesWhoMadeTheChangeAndLaterObserversAreNotTold) {
    const auto player = std::make_shared<Player>();
    std::string told;
    const auto first = player->observe("volume", [&](const KeyValueChange&) { told += '1'; });
    auto second =
        player->observe("volume", [](const KeyValueChange&) { throw std::runtime_error("too loud"); });
    const auto third = player->observe("volume", [&](const KeyValueChange&) { told += '3'; });
    EXPECT_THROW(player->setVolume(11), std::runtime_error);
    EXPECT_EQ(told, "1");
    second.invalidate();
    player->setVolume(5);
    EXPECT_EQ(told, "113");
}

TEST(KeyValueObserving, ExceptionOfAnAnnouncementLeavesTheChangeUndoneAndLaterOnesAsTheyAre) {
    const auto player = std::make_shared<Player>();
    std::vector<std::string> log;
    auto angry = player->observe("volume", [](const KeyValueChange&) { throw std::runtime_error("no"); },
                                 {.prior = true});
    EXPECT_THROW(player->setVolume(11), std::runtime_error);
    angry.invalidate();
    const auto observation = player->observe("volume", writeInto(log), {.prior = true});
    player->setVolume(1);
    player->setVolume(2);
    EXPECT_THAT(log, ElementsAre("will volume 0>-", "did volume 0>1", "will volume 1>-", "did volume 1>2"));
}

TEST(KeyValueObservation, EndedByAnotherThreadLetsACallThatIsUnderWayEndInItsOwnTime) {
    const auto player = std::make_shared<Player>();
    const auto value = std::make_shared<int>(0);
    std::latch isUnderWay(1);
    std::latch mayEnd(1);
    auto observation = player->observe("volume", [value, &isUnderWay, &mayEnd](const KeyValueChange&) {
        isUnderWay.count_down();
        mayEnd.wait();
        ++*value;
    });
    std::jthread changer([&] { player->setVolume(1); });
    isUnderWay.wait();
    observation.invalidate();
    EXPECT_GT(value.use_count(), 1) << "the handler is held by the call";
    player->setVolume(2);
    mayEnd.count_down();
    changer.join();
    EXPECT_EQ(*value, 1);
    EXPECT_EQ(value.use_count(), 1);
}

TEST(KeyValueObserving, ChangesOfTwoThreadsThatOverlapKeepTheirOwnOldValues) {
    const auto meter = std::make_shared<Meter>();
    std::vector<std::string> log;
    const auto observation = meter->observe("reading", writeInto(log));
    const auto change = [&](int from, std::barrier<>& turn) {
        meter->willChangeValueForKey("reading");
        turn.arrive_and_wait(); // Both have announced.
        Meter::set(from + 1);
    };
    std::barrier turn(2);
    std::jthread other([&] {
        Meter::set(10);
        change(10, turn);
        turn.arrive_and_wait(); // The first to announce reports first, or last: each its own.
        meter->didChangeValueForKey("reading");
    });
    Meter::set(20);
    change(20, turn);
    meter->didChangeValueForKey("reading");
    turn.arrive_and_wait();
    other.join();
    Meter::set(0);
    EXPECT_THAT(log, ElementsAre("did reading 20>21", "did reading 10>11"));
}

TEST(KeyValueObserving, ChangesOfManyThreadsAreAllToldWithTheirOwnOldValues) {
    const auto meter = std::make_shared<Meter>();
    std::atomic<int> told = 0;
    std::atomic<int> mixedUp = 0;
    const auto observation = meter->observe("reading", [&](const KeyValueChange& change) {
        ++told;
        if (textOf(change.newValue) != std::to_string(std::any_cast<int>(change.oldValue) + 1)) ++mixedUp;
    });
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                for (int i = t * 100'000; i < t * 100'000 + 2'000; ++i) {
                    Meter::set(i);
                    meter->willChangeValueForKey("reading");
                    Meter::set(i + 1);
                    meter->didChangeValueForKey("reading");
                }
            });
    }
    EXPECT_EQ(told, 8'000);
    EXPECT_EQ(mixedUp, 0);
}

TEST(KeyValueObserving, RegistrationsMayComeAndGoWhileOthersAreTold) {
    const auto player = std::make_shared<Player>();
    std::atomic<bool> isOver = false;
    std::jthread changer([&] {
        for (int i = 0; !isOver; ++i) {
            player->setVolume(i);
            std::this_thread::yield(); // Others want the lock too.
        }
    });
    for (int i = 0; i < 300; ++i) {
        const auto firstCall = std::make_shared<Inbox<bool>>();
        const auto wasTold = std::make_shared<std::atomic<bool>>(false);
        const auto observation = player->observe("volume", [firstCall, wasTold](const KeyValueChange&) {
            if (!wasTold->exchange(true)) firstCall->put(true);
        });
        EXPECT_TRUE(firstCall->take());
    }
    isOver = true;
}
