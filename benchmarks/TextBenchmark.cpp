// SPDX-License-Identifier: Apache-2.0

// What operations on texts cost, and the search for a place in a sorted sequence.

#include "benchmarks/TextBenchmark.h"

#include "benchmarks/support/InTurn.h"
#include "benchmarks/support/Signal.h"

#include <VorlanFoundation/Extensions/Collections.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

namespace vorlan::benchmarks {

void addInsertionRows() {
    constexpr std::size_t size = 1'000;
    std::vector<std::int64_t> sorted;
    for (std::size_t i = 0; i < size; ++i) sorted.push_back(static_cast<std::int64_t>(i) * 2);
    // Every other one of these is there already.
    const auto element = [](std::size_t i) { return static_cast<std::int64_t>(i * 619 % size * 2 + i % 2); };

    GroupInTurn<std::int64_t> group("place of a number among 1000", size);
    group.add("floor: std::lower_bound", [=](std::size_t i) -> std::int64_t {
        return std::lower_bound(sorted.begin(), sorted.end(), element(i)) - sorted.begin();
    });
    group.add("ours: collection::indexForInserting", [=](std::size_t i) {
        return collection::indexForInserting(sorted, element(i), std::less<>());
    });
}

} // namespace vorlan::benchmarks

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    const vorlan::testing::TemporaryHome home;
    const vorlan::testing::UserRegion user({.locale = "de_DE", .timeZone = {}, .calendar = {}});
    const Translations translations(home.path());
    // With a second thread in the process, if only a sleeping one, reference counts are atomic: as in any
    // application.
    Signal isOver;
    std::thread bystander([&] { isOver.wait(); });
    addDigestRows();
    addLocalizedRows(translations);
    addPluralRows();
    addTextSearchRows();
    addTextFormatRows();
    addInsertionRows();
    const int status = runRows(argc, argv);
    isOver.post();
    bystander.join();
    return status;
}
