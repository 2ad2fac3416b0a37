// SPDX-License-Identifier: Apache-2.0

// The four rate limiters on time lines: calls at, runs at, with which argument. First by tables, then by random
// calls beside a small model of each one's rule.

#include "tests/execution/TimeLine.h"

#include <VorlanFoundation/Execution.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <utility>
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

// Each model knows the rule of one limiter: what is called, and what runs while time goes by until `now`.
struct Model {
    virtual ~Model() = default;
    virtual void call(Time now, const std::string& name) = 0;
    virtual void pass(Time now) = 0;

    const Time span;
    TimeLine runs{};

protected:
    explicit Model(Time time) : span(time) {}
};

struct ThrottlerModel final : Model {
    explicit ThrottlerModel(Time time) : Model(time) {}
    void call(Time now, const std::string& name) override {
        const bool isFar =
            !previousRun || std::chrono::round<std::chrono::milliseconds>(now - *previousRun) > span;
        job = {{now + (isFar ? Time(0) : span), name}};
    }
    void pass(Time now) override {
        if (!job || job->time > now) return;
        runs.push_back(*job);
        previousRun = job->time;
        job.reset();
    }
    std::optional<Time> previousRun{};
    std::optional<timeline::Event> job{};
};

struct SamplerModel final : Model {
    explicit SamplerModel(Time time) : Model(time) {}
    void call(Time now, const std::string& name) override {
        if (delayEnd) {
            stored = name;
        } else {
            run(now, name);
        }
    }
    void pass(Time now) override {
        while (delayEnd && *delayEnd <= now) {
            const auto end = *std::exchange(delayEnd, std::nullopt);
            if (const auto next = std::exchange(stored, std::nullopt)) run(end, *next);
        }
    }
    void run(Time now, const std::string& name) {
        runs.push_back({now, name});
        delayEnd = now + span;
    }
    std::optional<Time> delayEnd{};
    std::optional<std::string> stored{};
};

struct DebounceModel final : Model {
    explicit DebounceModel(Time time) : Model(time) {}
    void call(Time now, const std::string& name) override { last = {{now + span, name}}; }
    void pass(Time now) override {
        if (last && last->time <= now) runs.push_back(*std::exchange(last, std::nullopt));
    }
    std::optional<timeline::Event> last{};
};

struct BatcherModel final : Model {
    explicit BatcherModel(Time time) : Model(time) {}
    void call(Time now, const std::string& name) override {
        if (!batch) batch = {{now + span, ""}};
        batch->name += name;
    }
    void pass(Time now) override {
        if (batch && batch->time <= now) runs.push_back(*std::exchange(batch, std::nullopt));
    }
    std::optional<timeline::Event> batch{};
};

// Gaps of all kinds about a span: none, tiny, nearly it, it, a little more, and any. Never do they add up to half
// a millisecond, which the calendar's fractions of a second do not hold exactly.
TimeLine randomCalls(std::minstd_rand& random, Time span) {
    TimeLine calls;
    Time now(0);
    for (auto count = 1 + random() % 30; count > 0; --count) {
        const std::array<Time, 7> gaps{0us,
                                       1ms,
                                       span - 1ms,
                                       span,
                                       span + 1ms,
                                       Time(1000 * (random() % 1000)),
                                       Time(1000 * (random() % 100) + 200 * (random() % 5))};
        now += gaps[random() % gaps.size()];
        calls.push_back({now, std::string(1, static_cast<char>('a' + calls.size() % 26))});
    }
    return calls;
}

template <class Model>
TimeLine runsOfModel(Time span, const TimeLine& calls) {
    Model model(span);
    Time now(0);
    for (const auto& [time, name] : calls) {
        if (time > now) model.pass(now = time);
        model.call(now, name);
    }
    model.pass(now + 3600s);
    return model.runs;
}

template <class Model>
void compareWithModel(Play play) {
    constexpr int schedules = 10'000;
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    for (int i = 0; i < schedules; ++i) {
        const Time span = std::chrono::milliseconds(2 + random() % 500);
        const auto calls = randomCalls(random, span);
        ASSERT_EQ(text(play(span, calls)), text(runsOfModel<Model>(span, calls)))
            << "of " << milliseconds(span) << " ms: " << text(calls);
    }
}

} // namespace

TEST_P(RateLimiterTable, RunsAtTheTimesAndWithTheArgumentsOfTheTimeLine) {
    const auto& row = GetParam();
    EXPECT_EQ(text(row.play(row.span, parse(row.calls))), text(parse(row.runs)));
}

INSTANTIATE_TEST_SUITE_P(TimeLine, RateLimiterTable, ::testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

TEST(RateLimiterModel, ThrottlerFollowsItsRuleOnRandomSchedules) {
    compareWithModel<ThrottlerModel>(playThrottler);
}

TEST(RateLimiterModel, SamplerFollowsItsRuleOnRandomSchedules) {
    compareWithModel<SamplerModel>(playSampler);
}

TEST(RateLimiterModel, DebouncedFunctionFollowsItsRuleOnRandomSchedules) {
    compareWithModel<DebounceModel>(playDebounce);
}

TEST(RateLimiterModel, BatchItemsTrottlerFollowsItsRuleOnRandomSchedules) {
    compareWithModel<BatcherModel>(playBatcher);
}
