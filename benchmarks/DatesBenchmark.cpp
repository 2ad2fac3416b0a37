// SPDX-License-Identifier: Apache-2.0

// What dates, spans and numbers cost as text, what a day's beginning costs, and what it costs to come by the tools.

#include "benchmarks/DatesBenchmark.h"

#include "benchmarks/support/SampleDates.h"
#include "benchmarks/support/Signal.h"

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include <cstdlib>
#include <memory>
#include <thread>

namespace vorlan::benchmarks {

namespace {

constexpr auto comingBy = "come by a calendar or a formatter";

template <class Get>
void addComingBy(const char* name, const Get& get) {
    addRow(comingBy, name, [=](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            auto got = get();
            benchmark::DoNotOptimize(got);
        }
    });
}

} // namespace

void addFormatterCopyingRows() {
    const auto shared = std::make_shared<int>(1);
    addComingBy("floor: copying a shared_ptr", [=] { return shared; });
    const DateFormatter formatter;
    addComingBy("ours: copying a DateFormatter", [=] { return formatter; });
    addComingBy("ours: dateFormatter::short_", [] { return dateFormatter::short_(); });
    addComingBy("ours: dateComponentsFormatter::countdownFormatter",
                [] { return dateComponentsFormatter::countdownFormatter(); });
    const auto calendar = Calendar::current();
    addComingBy("ours: copying a Calendar", [=] { return calendar; });
    addComingBy("ours: Calendar::current", [] { return Calendar::current(); });
    addComingBy("ours: TimeZone::current", [] { return TimeZone::current(); });
    addComingBy("ours: Locale::current", [] { return Locale::current(); });
    addComingBy("ours: a new DateFormatter", [] { return DateFormatter(); });
    addComingBy("ours: dateFormatter::iso8601Full", [] { return dateFormatter::iso8601Full(); });
}

} // namespace vorlan::benchmarks

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    setenv("TZ", sampleZone, 1); // for the C library and Qt
    const vorlan::testing::UserRegion user({.locale = sampleGerman, .timeZone = sampleZone, .calendar = {}});
    // With a second thread in the process, if only a sleeping one, reference counts are atomic: as in any
    // application.
    Signal isOver;
    std::thread bystander([&] { isOver.wait(); });
    addDateFormattingRows();
    addDateFormattingThreadsRows();
    addCalendarRows();
    addNumberFormattingRows();
    addFormatterCopyingRows();
    const int status = runRows(argc, argv);
    isOver.post();
    bystander.join();
    return status;
}
