// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NotificationCenter.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace vorlan;

namespace {

const NotificationName ending("com.example.ending");

struct Listener : Object {
    void hear(const Notification&) {}
};

// Made before the default center and destroyed after all that is made after it: it posts at the very end.
struct LastOne {
    ~LastOne() {
        if (isWanted) NotificationCenter::default_().post({.name = ending});
    }
    std::atomic<bool> isWanted = false;
    NotificationObservation observation;
} lastOne;

void endAfterAskingForAPost() {
    lastOne.observation = NotificationCenter::default_().addObserver(
        {.name = ending}, [](const Notification&) { std::fputs("told at the end\n", stderr); });
    lastOne.isWanted = true;
    std::exit(0);
}

} // namespace

TEST(NotificationCenterDeathTest, NullHandlerStopsTheProcess) {
    const NotificationCenter center;
    EXPECT_DEATH((void)center.addObserver({.name = ending}, nullptr),
                 "^VorlanFoundation/NotificationCenter: Fatal error: there is no handler to call\n$");
}

TEST(NotificationCenterDeathTest, ObserverThatDoesNotLiveInASharedPointerStopsTheProcess) {
    const NotificationCenter center;
    Listener listener;
    const std::shared_ptr<Listener> ofNobody(std::shared_ptr<void>(), &listener);
    const auto message =
        "^VorlanFoundation/NotificationCenter: Fatal error: an observer has to live in a std::shared_ptr\n$";
    EXPECT_DEATH(center.addObserver(ofNobody, &Listener::hear), message);
    EXPECT_DEATH(center.addObserver(std::shared_ptr<Listener>(), &Listener::hear), message);
}

TEST(NotificationCenterDeathTest, FilterForAnObjectThatDoesNotLiveInASharedPointerStopsTheProcess) {
    const NotificationCenter center;
    Listener listener;
    const std::shared_ptr<Listener> ofNobody(std::shared_ptr<void>(), &listener);
    EXPECT_DEATH((void)center.addObserver({.object = ofNobody}, [](const Notification&) {}),
                 "^VorlanFoundation/NotificationCenter: Fatal error: the object of a filter has to live in a "
                 "std::shared_ptr\n$");
}

TEST(NotificationCenterDeathTest, DefaultCenterLivesAsLongAsTheProcess) {
    EXPECT_EXIT(endAfterAskingForAPost(), ::testing::ExitedWithCode(0), "^told at the end\n$");
}
