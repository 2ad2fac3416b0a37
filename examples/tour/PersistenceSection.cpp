// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/Testing.h>
#include <VorlanFoundation/VorlanFoundation.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace vorlan;

namespace {

struct Item {
    std::string name;
    double price = 0;
    friend bool operator==(const Item&, const Item&) = default;
};
VORLAN_CODABLE(Item, name, price)

struct Order {
    int number = 0;
    std::optional<std::string> note;
    std::vector<Item> items;
    friend bool operator==(const Order&, const Order&) = default;
};
VORLAN_CODABLE(Order, number, note, items)

Order sampleOrder() {
    return {.number = 7, .note = {}, .items = {{"Tea", 4.5}, {"Käse", 12}}};
}

bool showCacher() {
    Cacher<Order> orders;
    std::atomic<int> made = 0;
    const auto load = [&] {
        ++made;
        return std::make_shared<Order>(sampleOrder());
    };
    const auto first = orders.object("7", load);
    const auto second = orders.object("7", load);
    orders["7"] = nullptr;
    const std::shared_ptr<Order> removed = orders["7"];
    tour::line("Cacher", "asked twice for an order, which was loaded " + std::to_string(made) +
                             " time; removed, it is " + (removed ? "still there" : "gone"));
    return made == 1 && first == second && !removed;
}

// Over several lines, each in the column of the text.
void showText(const std::string& name, const std::string& text) {
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find('\n', begin);
        tour::line(begin == 0 ? name : "", text.substr(begin, end - begin));
    }
}

bool showCoding() {
    const auto order = sampleOrder();
    showText("JSONEncoder", JSONEncoder{.prettyPrinted = true}.encodeText(order));
    const auto data = toJSONData(order, JSONEncoder());
    const auto again = data ? fromJSONData<Order>(*data, JSONDecoder()) : std::nullopt;
    tour::line("JSONDecoder", again == order ? "the same order again" : "another order");
    return again == order;
}

bool showError() {
    std::string found;
    const Value::Array items{Value::Dictionary{{"name", "Tea"}, {"price", 4.5}},
                             Value::Dictionary{{"name", "Cake"}, {"price", "cheap"}}};
    fromJSON<Order>({{"number", 8}, {"items", items}}, JSONDecoder(), [&](const Result<Order>& result) {
        found = result ? "no error" : result.error().what();
    });
    tour::line("an error", found);
    return found.find("$.items[1].price: expected a number, found a string") != std::string::npos;
}

bool showCodedDefaults() {
    auto& defaults = UserDefaults::standard();
    defaults[{.codable = "order"}] = sampleOrder();
    const std::optional<Order> read = defaults[{.codable = "order"}];
    const auto obtained = defaults.obtain<Order>("order");
    const auto stored = defaults.dataForKey("order");
    defaults[{.codable = "order"}] = std::nullopt;
    const std::optional<Order> gone = defaults[{.codable = "order"}];
    tour::line("UserDefaults", "an order kept as " + std::to_string(stored ? stored->size() : 0) +
                                   " bytes of JSON; " + (gone ? "still there" : "removed again"));
    return read == sampleOrder() && obtained == read && !gone;
}

} // namespace

bool tour::showPersistence() {
    title("Persistence");
    const vorlan::testing::TemporaryHome home; // the user's own settings are left alone
    bool isComplete = true;
    for (const auto show : {showCacher, showCoding, showError, showCodedDefaults}) isComplete &= show();
    return isComplete;
}
