// SPDX-License-Identifier: Apache-2.0

// Numbers, sequences, circles and pages, and types with actions and callbacks: what docs/values.md shows.

#include <VorlanFoundation/VorlanFoundation.h>

#include <array>
#include <cstdint>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace vorlan;

namespace app {

enum class Color { red, green, blue };

struct Shape {
    virtual ~Shape() = default;
};
struct Disc : Shape {};
struct Ring : Disc {};

struct Label : Then<Label> {
    std::string text = {};
    bool isBold = false;
};

struct Playlist : OccupiableOperations<Playlist> {
    bool isEmpty() const { return titles.empty(); }
    std::vector<std::string> titles = {};
};

enum class PanelAction { open, close };

struct Panel : Actionable<Panel, PanelAction> {
    void press(PanelAction key) const {
        if (const auto action = actions.find(key); action != actions.end()) {
            const auto run = action->second; // a copy, as an action may put another in its own place
            run();
        }
    }
    Actions actions;
};

enum class PlayerEvent { ended };

} // namespace app

template <>
struct vorlan::RawValues<app::PlayerEvent> {
    static constexpr std::array cases{std::pair(app::PlayerEvent::ended, std::string_view("ended"))};
};

namespace app {

struct Player : Callbackable<Player, PlayerEvent> {
    Callbacks callbacks;
    std::optional<Queue> callbackQueue = Queue("com.example.player.callbacks", Queue::concurrent);
};

void say(std::string_view what) {
    std::cout << what << "\n";
}

void answer(bool isSo) {
    say(isSo ? "yes" : "no");
}

void writeNumbers() {
    say(number::string(1.005F, {.fractionDigits = 2})); // 1.00: the float is a little less than 1.005
    say(number::string(2.5F, {.fractionDigits = 0}));   // 2: half to even
    say(describe(number::roundToPlaces(0.3, 2, RoundingRule::toNearestOrAwayFromZero))); // 0.2998046875
    answer(number::boolValue(-1));
}

void keepSorted() {
    std::vector years{1815, 1906, 1912};
    const auto place = collection::indexForInserting(years, 1879, std::less<>());
    years.insert(years.begin() + place, 1879);
    say(std::to_string(place));
}

void askForMembership(Color color, const Shape& shape) {
    answer(isOne(color, {.of = {Color::red, Color::green}}));
    answer(except(color, {.of = {Color::blue}}));
    answer(isOne<Disc>(shape)); // of a Ring: no, only the very class counts
    answer(containsOne(std::vector{1, 2, 3}, {.of = {3, 4}}));
}

void configure() {
    const Label plain;
    const auto bold = plain.with([](Label& label) { label.isBold = true; }); // a changed copy
    const auto shared = then(std::make_shared<Label>(), [](Label& label) { label.text = "Open"; });
    answer(bold.isBold);
    say(shared->text);
}

void askForEmptiness(const std::optional<std::string>& name, const Playlist& playlist) {
    answer(isNilOrEmpty(name));
    answer(isNotEmpty(playlist.titles));
    answer(playlist.isNotEmpty());
}

void drawProgress() {
    const CircleMath circle(10);
    const auto end =
        circle.circlePoint({.percentage = 0.25, .angleShift = 0, .center = {50, 50}, .clockwise = true});
    say(formatText("%.3f", {circle.arcLength({.pecentage = 0.25})})); // 15.708
    say(formatText("%.0f, %.0f", {end.x, end.y}));                    // 60, 50
}

void turnPages() {
    Pager<std::string> pager{"welcome", "settings", "done"};
    while (!pager.isLast()) pager.makeNext();
    say(pager.pull().value_or("no page"));
    pager.makeNext();
    say(pager.pull().value_or("no page"));
    say(formatText("%.2f", {pager.donePercentage()})); // 1.33
}

void act() {
    Panel panel;
    panel.on(PanelAction::close, [] { say("hidden"); });
    panel.press(PanelAction::open); // nothing
    panel.press(PanelAction::close);
}

void callBack() {
    Player player;
    player.on(PlayerEvent::ended, [] { say("the next one"); });
    player.on(PlayerEvent::ended, [] { say("the lights go on"); });
    player.callbackOnce(PlayerEvent::ended); // both, in this order
    player.callbackOnce(PlayerEvent::ended); // none
}

} // namespace app

int main() {
    app::writeNumbers();
    app::keepSorted();
    app::askForMembership(app::Color::red, app::Ring());
    app::configure();
    app::askForEmptiness({}, app::Playlist());
    app::drawProgress();
    app::turnPages();
    app::act();
    app::callBack();
}
