// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation/Actionable.h>

#include "tests/observation/CallbackablePlayer.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

using namespace vorlan;
using tests::PlayerEvent;

namespace {

enum class PanelAction { open, close };

struct Panel : Actionable<Panel, PanelAction> {
    Actions actions;

    void run(PanelAction key) {
        if (const auto action = actions.find(key); action != actions.end()) {
            const auto run = action->second;
            run();
        }
    }
};

// With actions and with callbacks.
struct Deck : Actionable<Deck, PanelAction>, Callbackable<Deck, PlayerEvent> {
    using Actionable<Deck, PanelAction>::on;
    using Callbackable<Deck, PlayerEvent>::on;

    Actions actions;
    Callbacks callbacks;
    std::optional<Queue> callbackQueue;
};

// Keys need not be enumerations, and the table need not be for everyone.
class Menu : public Actionable<Menu, std::string> {
public:
    void choose(const std::string& title) const { actions.at(title)(); }

private:
    friend Actionable;
    Actions actions; // NOLINT(readability-identifier-naming): has the name that the interface asks for
};

} // namespace

TEST(ActionableTest, KeepsOneActionForEachKey) {
    Panel panel;
    std::string log;
    panel.on(PanelAction::close, [&] { log += "close "; });
    panel.on(PanelAction::open, [&] { log += "open "; });
    panel.run(PanelAction::open);
    panel.run(PanelAction::close);
    EXPECT_EQ(log, "open close ");
    EXPECT_EQ(panel.actions.size(), 2U);
}

TEST(ActionableTest, SecondActionTakesThePlaceOfTheFirst) {
    Panel panel;
    std::string log;
    const auto first = std::make_shared<int>();
    panel.on(PanelAction::close, [&log, first] { log += "first "; });
    panel.on(PanelAction::close, [&] { log += "second "; });
    panel.run(PanelAction::close);
    EXPECT_EQ(log, "second ");
    EXPECT_EQ(panel.actions.size(), 1U);
    EXPECT_EQ(first.use_count(), 1) << "the former action is gone";
}

TEST(ActionableTest, RunsNothingByItself) {
    Panel panel;
    panel.on(PanelAction::close, [] { FAIL(); });
    panel.run(PanelAction::open);
}

TEST(ActionableTest, ActionThatReplacesItselfIsRunToItsEnd) {
    Panel panel;
    std::string log;
    panel.on(PanelAction::close,
             [&log, &panel, name = std::string("a name that is long enough for the heap")] {
                 panel.on(PanelAction::close, [&] { log += " second"; });
                 log += name;
             });
    panel.run(PanelAction::close);
    EXPECT_EQ(log, "a name that is long enough for the heap");
    panel.run(PanelAction::close);
    EXPECT_EQ(log, "a name that is long enough for the heap second");
}

TEST(ActionableTest, TypeMayHaveActionsAndCallbacks) {
    Deck deck;
    std::string log;
    deck.on(PanelAction::open, [&] { log += "open "; });
    deck.on(PlayerEvent::ended, [&] { log += "ended "; });
    deck.callback(PlayerEvent::ended);
    deck.actions.at(PanelAction::open)();
    EXPECT_EQ(log, "ended open ");
    EXPECT_EQ(deck.actions.size(), 1U);
    EXPECT_EQ(deck.callbacks.size(), 1U);
}

TEST(ActionableTest, TableIsTheTypesOwn) {
    Panel panel{};
    int calls = 0;
    panel.actions[PanelAction::open] = [&] { ++calls; };
    panel.run(PanelAction::open);
    panel.actions.clear();
    panel.run(PanelAction::open);
    EXPECT_EQ(calls, 1);
    static_assert(std::is_same_v<Panel::Actions, std::unordered_map<PanelAction, std::function<void()>>>);
}

TEST(ActionableTest, KeysAreWhateverCanBeHashed) {
    Menu menu;
    std::string log;
    menu.on("Open", [&] { log += "open "; });
    menu.on("Close", [&] { log += "close "; });
    menu.choose("Close");
    EXPECT_EQ(log, "close ");
    static_assert(detail::Hashable<std::string> && detail::Hashable<PanelAction> &&
                  !detail::Hashable<std::vector<int>>);
}
