// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/VorlanFoundation.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

using namespace vorlan;

namespace {

enum class Color { red, green, blue };

struct Shape {
    virtual ~Shape() = default;
};
struct Circle : Shape {};
struct Ring : Circle {};

struct Label {
    std::string text = {};
    bool isBold = false;
};

// A quarter of a ring of progress.
bool showCircle() {
    const CircleMath circle(10);
    const auto arc = circle.arcLength({.pecentage = 0.25});
    const auto end = circle.circlePoint({.percentage = 0.25, .clockwise = true});
    tour::line("CircleMath",
               formatText("a quarter of a circle of radius 10 is %.2f long and ends at (%.0f, %.0f)",
                          {arc, end.x, std::abs(end.y)}));
    return arc == 5 * std::numbers::pi && std::abs(end.x - 10) + std::abs(end.y) < 1e-9;
}

bool showPages() {
    Pager<std::string> pager{"welcome", "settings", "done"};
    std::string seen;
    while (const auto page = pager.pull()) {
        seen += *page + formatText(" (%.0f %%) ", {100 * pager.donePercentage()});
        pager.makeNext();
    }
    tour::line("Pager", seen + "and no further");
    return pager.currentPage() == 3 && !pager.pull();
}

bool showSortedInsertion() {
    std::vector sorted{1, 3, 7, 9};
    const auto place = collection::indexForInserting(sorted, 5, std::less<>());
    sorted.insert(sorted.begin() + place, 5);
    tour::line("sorted", "5 goes to place " + std::to_string(place) + " of 1, 3, 7, 9");
    return place == 2 && std::ranges::is_sorted(sorted);
}

bool showMembership() {
    const auto color = Color::red;
    const std::unique_ptr<Shape> shape = std::make_unique<Ring>();
    const bool isWarm = isOne(color, {.of = {Color::red, Color::green}});
    const bool isCircle = isOne<Circle>(shape);
    tour::line("isOne", std::string("red is one of red and green; a ring is ") + (isCircle ? "a" : "no") +
                            " circle, as only the very type counts");
    return isWarm && !isCircle && except(color, {.of = {Color::blue}});
}

bool showValues() {
    const auto bold = with(Label{.text = "Save"}, [](Label& label) { label.isBold = true; });
    const auto shared = then(std::make_shared<Label>(), [](Label& label) { label.text = "Open"; });
    const std::optional<std::string> name;
    tour::line("values", "a bold '" + bold.text + "' and '" + shared->text +
                             "' were made in a line each, and " +
                             (isNilOrEmpty(name) ? "nobody has" : *name + " has") + " a name");
    return bold.isBold && isNotEmpty(shared->text) && isNilOrEmpty(name);
}

} // namespace

bool tour::showGeometry() {
    title("Circles, pages and values");
    bool isComplete = true;
    for (const auto show : {showCircle, showPages, showSortedInsertion, showMembership, showValues})
        isComplete &= show();
    return isComplete;
}
