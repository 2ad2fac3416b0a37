// SPDX-License-Identifier: Apache-2.0

// The four rate limiters on time lines: calls at, runs at, with which argument.

#include "tests/execution/TimeLine.h"

#include <VorlanFoundation/Execution.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using timeline::parse;
using timeline::Stage;
using timeline::Time;
using timeline::TimeLine;

namespace {

using Play = TimeLine (*)(Time span, const TimeLine& calls);

std::int64_t milliseconds(Time span) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(span).count();
}

TimeLine playThrottler(Time span, const TimeLine& calls) {
    Stage stage;
    Throttler throttler(milliseconds(span), stage.queue());
    stage.play(calls,
               [&](const std::string& name) { throttler.throttle([&stage, name] { stage.note(name); }); });
    return stage.runs();
}

TimeLine playSampler(Time span, const TimeLine& calls) {
    Stage stage;
    Sampler sampler(span, stage.queue());
    stage.play(calls, [&](const std::string& name) { sampler.sample([&stage, name] { stage.note(name); }); });
    return stage.runs();
}

TimeLine playDebounce(Time span, const TimeLine& calls) {
    Stage stage;
    const auto act = debounce<std::string>(milliseconds(span), stage.queue(),
                                           [&](const std::string& name) { stage.note(name); });
    stage.play(calls, act);
    return stage.runs();
}

TimeLine playBatcher(Time span, const TimeLine& calls) {
    Stage stage;
    const auto deliver = [&](const std::vector<std::string>& items) {
        std::string all;
        for (const auto& item : items) all += item;
        stage.note(all);
    };
    BatchItemsTrottler<std::string> batcher(span, stage.queue(), deliver, stage.queue());
    stage.play(calls, [&](const std::string& name) { batcher(name); });
    return stage.runs();
}

struct Row {
    const char* name;
    Play play;
    Time span;
    const char* calls;
    const char* runs;
};

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.name;
}

class RateLimiterTable : public ::testing::TestWithParam<Row> {};

const std::vector<Row> rows{
    {"ThrottlerFirstAtOnce", playThrottler, 500ms, "0:a", "0:a"},
    {"ThrottlerWaitsInFull", playThrottler, 500ms, "0:a 10:b", "0:a 510:b"},
    {"ThrottlerWaitsFromTheCall", playThrottler, 500ms, "0:a 499:b", "0:a 999:b"},
    {"ThrottlerLastOfABurst", playThrottler, 500ms, "0:a 10:b 20:c 30:d", "0:a 530:d"},
    {"ThrottlerReplacesWhatHasNotRun", playThrottler, 500ms, "0:a 0:b", "0:b"},
    {"ThrottlerEqualIsNotFar", playThrottler, 500ms, "0:a 500:b", "0:a 1000:b"},
    {"ThrottlerFarEnough", playThrottler, 500ms, "0:a 501:b", "0:a 501:b"},
    {"ThrottlerRoundsDown", playThrottler, 500ms, "0:a 500.4:b", "0:a 1000.4:b"},
    {"ThrottlerRoundsUp", playThrottler, 500ms, "0:a 500.6:b", "0:a 500.6:b"},
    {"ThrottlerOvertakes", playThrottler, 500ms, "0:a 400:b 600:c", "0:a 600:c"},
    {"ThrottlerStarvesUnderSteadyCalls", playThrottler, 500ms, "0:a 200:b 400:c 501:d", "0:a 501:d"},

    {"SamplerFirstAndLatest", playSampler, 100ms, "0:a 10:b 20:c", "0:a 100:c"},
    {"SamplerNextDelayBeginsAtTheRun", playSampler, 100ms, "0:a 50:b 150:c", "0:a 100:b 200:c"},
    {"SamplerQuietDelayEnds", playSampler, 100ms, "0:a 100:b", "0:a 100:b"},
    {"SamplerAtOneInstant", playSampler, 100ms, "0:a 0:b 0:c", "0:a 100:c"},
    {"SamplerWithoutDelay", playSampler, 0ms, "0:a 1:b 2:c", "0:a 1:b 2:c"},

    {"DebounceAfterTheLast", playDebounce, 100ms, "0:a 10:b 20:c 30:d 40:e", "140:e"},
    {"DebounceOnce", playDebounce, 100ms, "0:a", "100:a"},
    {"DebounceTwice", playDebounce, 100ms, "0:a 100:b", "100:a 200:b"},
    {"DebounceJustInTime", playDebounce, 100ms, "0:a 99:b 198:c", "298:c"},
    {"DebounceAtOneInstant", playDebounce, 100ms, "0:a 0:b", "100:b"},
    {"DebounceWithoutDelay", playDebounce, 0ms, "0:a 0:b 5:c", "0:a 0:b 5:c"},

    {"BatcherTogether", playBatcher, 100ms, "0:a 10:b 20:c", "100:abc"},
    {"BatcherAlone", playBatcher, 100ms, "0:a 100:b", "100:a 200:b"},
    {"BatcherDelayBeginsWithTheFirst", playBatcher, 100ms, "0:a 99:b 101:c", "100:ab 201:c"},
    {"BatcherAtOneInstant", playBatcher, 100ms, "0:a 0:b", "100:ab"},
};

} // namespace

TEST_P(RateLimiterTable, RunsAtTheTimesAndWithTheArgumentsOfTheTimeLine) {
    const auto& row = GetParam();
    EXPECT_EQ(text(row.play(row.span, parse(row.calls))), text(parse(row.runs)));
}

INSTANTIATE_TEST_SUITE_P(TimeLine, RateLimiterTable, ::testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });
