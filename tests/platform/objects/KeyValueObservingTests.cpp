// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/KeyValueObserving.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <any>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
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

TEST(KeyValueObserving, ExceptionOfAHandlerReachesWhoMadeTheChange) {
    const auto player = std::make_shared<Player>();
    const auto observation =
        player->observe("volume", [](const KeyValueChange&) { throw std::runtime_error("too loud"); });
    EXPECT_THROW(player->setVolume(11), std::runtime_error);
}

TEST(KeyValueObserving, ChangesOfSeveralThreadsKeepTheirOwnOldValues) {
    // Every thread announces and reports; each hears of as many changes as it made itself, none without an old
    // value.
    const auto player = std::make_shared<Player>();
    std::atomic<int> told = 0;
    std::atomic<int> withoutOldValue = 0;
    const auto observation = player->observe("volume", [&](const KeyValueChange& change) {
        ++told;
        if (!change.oldValue.has_value()) ++withoutOldValue;
    });
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 2'000; ++i) player->setVolume(i);
            });
    }
    EXPECT_EQ(told, 8'000);
    EXPECT_EQ(withoutOldValue, 0);
}

TEST(KeyValueObserving, RegistrationsMayComeAndGoWhileOthersAreTold) {
    const auto player = std::make_shared<Player>();
    std::atomic<bool> isOver = false;
    const std::jthread changer([&] {
        for (int i = 0; !isOver; ++i) player->setVolume(i);
    });
    for (int i = 0; i < 5'000; ++i) {
        auto told = std::make_shared<std::atomic<int>>(0);
        const auto observation = player->observe("volume", [told](const KeyValueChange&) { ++*told; });
    }
    isOver = true;
}
