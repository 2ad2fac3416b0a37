// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/SampleRecords.h"

#include <array>
#include <cmath>
#include <random>
#include <string_view>

namespace vorlan::benchmarks {

namespace {

constexpr std::array<std::string_view, 12> names{
    "Ada Lovelace", "Grace Hopper",    "Alan Turing",   "Zoë Ångström", "Edsger Dijkstra", "Barbara Liskov",
    "Jürgen Groß",  "Katherine Jones", "Мария Петрова", "Donald Knuth", "Frances Allen",   "小林 さくら"};

constexpr std::array<std::string_view, 8> tags{"new",      "customer", "newsletter", "région-sud",
                                               "overseas", "vip",      "on hold",    "referred"};

constexpr std::array<std::string_view, 4> notes{
    "Prefers to be called in the afternoon; has asked twice for the new catalogue.",
    "Says \"not before May\".\nAsk again then.", "Kommt aus Köln, zahlt per Überweisung.",
    "Moved last year, the old address is still in the system of the warehouse."};

// Not the distributions of the standard library, whose numbers differ between implementations.
class Dice {
public:
    std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }
    double fraction() { return std::ldexp(static_cast<double>(engine_() >> 11U), -53); }

    template <class Choices>
    std::string oneOf(const Choices& choices) {
        return std::string(choices.at(below(choices.size())));
    }

private:
    std::mt19937_64 engine_{2001};
};

double rounded(double value, double scale) {
    return std::round(value * scale) / scale;
}

Record makeRecord(std::size_t index, Dice& dice) {
    Record record;
    record.id = 4'000'000'000 + static_cast<std::int64_t>(index) * 7;
    record.name = dice.oneOf(names);
    record.email = "person." + std::to_string(dice.below(1'000'000)) + "@mail.example.com";
    record.isActive = dice.below(3) != 0;
    record.visits = static_cast<std::uint32_t>(dice.below(2'000));
    record.balance = rounded((dice.fraction() - 0.25) * 10'000, 100);
    record.rating = dice.fraction();
    if (dice.below(3) != 0) record.note = dice.oneOf(notes);
    for (auto count = dice.below(5); count > 0; --count) record.tags.push_back(dice.oneOf(tags));
    record.position = {rounded(dice.fraction() * 180 - 90, 1'000'000),
                       rounded(dice.fraction() * 360 - 180, 1'000'000)};
    return record;
}

} // namespace

const Records& sampleRecords() {
    static const Records records = [] {
        Records made;
        Dice dice;
        for (std::size_t i = 0; i < sampleRecordCount; ++i) made.push_back(makeRecord(i, dice));
        return made;
    }();
    return records;
}

} // namespace vorlan::benchmarks
