// SPDX-License-Identifier: Apache-2.0

// The four rate limiters beside a plain model of each one's rule, which schedules one check for each call and
// saves nothing. Both are driven through the same random steps: calls of the test and of blocks on the queue,
// calls by what runs, turns of the queue with and without time going by, and the drop of the limiter.

#include "tests/execution/TimeLine.h"

#include <VorlanFoundation/Execution.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using timeline::Time;
using timeline::TimeLine;

namespace {

/// A limiter, real or model; the function holds it, so that letting go of the function drops it.
using Limiter = std::function<void(const std::string&)>;
using Note = std::function<void(const std::string&)>;

// What the limiters of the library run on.
class RealClock {
public:
    Time now() const {
        return std::chrono::duration_cast<Time>(
            std::chrono::nanoseconds((queue.now() - start_).nanoseconds()));
    }
    void after(Time span, std::function<void()> block) { queue.asyncAfter(span, std::move(block)); }
    void advance(Time span) { queue.advance(span); }

    vorlan::testing::ManualQueue queue;

private:
    const DispatchTime start_ = queue.now();
};

// What the models run on: blocks by their times, and in the order of submission where those are equal. A time
// in the past means now.
class ModelClock {
public:
    Time now() const { return now_; }
    void soon(std::function<void()> block) { after(0us, std::move(block)); }
    void after(Time span, std::function<void()> block) {
        blocks_.emplace(now_ + std::max(span, 0us), std::move(block));
    }

    void advance(Time span) {
        const auto end = now_ + span;
        while (!blocks_.empty() && blocks_.begin()->first <= end) {
            const auto next = blocks_.extract(blocks_.begin());
            now_ = next.key();
            next.mapped()();
        }
        now_ = end;
    }

private:
    Time now_{0};
    std::multimap<Time, std::function<void()>> blocks_;
};

struct ThrottlerModel : std::enable_shared_from_this<ThrottlerModel> {
    ThrottlerModel(ModelClock& queue, Time interval, Note note)
        : clock(queue), span(interval), run(std::move(note)) {}

    void call(const std::string& name) {
        const auto own = ++job; // What waits finds that it is not the latest any more.
        const bool isFar =
            !previousRun || std::chrono::round<std::chrono::milliseconds>(clock.now() - *previousRun) > span;
        clock.after(isFar ? 0us : span, [weak = weak_from_this(), own, name] {
            if (const auto self = weak.lock(); self && self->job == own) self->begin(name);
        });
    }
    void begin(const std::string& name) {
        previousRun = clock.now();
        run(name);
    }

    ModelClock& clock;
    Time span;
    Note run;
    int job = 0;
    std::optional<Time> previousRun{};
};

struct SamplerModel : std::enable_shared_from_this<SamplerModel> {
    SamplerModel(ModelClock& queue, Time delay, Note note)
        : clock(queue), span(delay), run(std::move(note)) {}

    void call(const std::string& name) {
        if (isDelaying) {
            stored = name;
            return;
        }
        clock.soon([note = run, name] { note(name); });
        stored.reset();
        isDelaying = true;
        clock.after(span, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->end();
        });
    }
    void end() {
        isDelaying = false;
        if (const auto next = stored) call(*next);
    }

    ModelClock& clock;
    Time span;
    Note run;
    bool isDelaying = false;
    std::optional<std::string> stored{};
};

struct DebounceModel : std::enable_shared_from_this<DebounceModel> {
    DebounceModel(ModelClock& queue, Time delay, Note note)
        : clock(queue), span(delay), run(std::move(note)) {}

    void call(const std::string& name) {
        const auto own = ++last;
        clock.after(span, [self = shared_from_this(), own, name] {
            if (self->span <= 0us || self->last == own) self->run(name);
        });
    }

    ModelClock& clock;
    Time span;
    Note run;
    int last = 0;
};

struct BatcherModel : std::enable_shared_from_this<BatcherModel> {
    BatcherModel(ModelClock& queue, Time delay, Note note)
        : clock(queue), span(delay), run(std::move(note)) {}

    void call(const std::string& name) {
        clock.soon([weak = weak_from_this(), name] {
            if (const auto self = weak.lock()) self->append(name);
        });
    }
    void append(const std::string& name) {
        items += name;
        if (std::exchange(isDelaying, true)) return;
        clock.after(span, [self = shared_from_this()] { self->deliver(); });
    }
    void deliver() {
        clock.soon([self = shared_from_this(), all = std::exchange(items, "")] { self->run(all); });
        isDelaying = false;
    }

    ModelClock& clock;
    Time span;
    Note run;
    bool isDelaying = false;
    std::string items{};
};

template <class Model>
Limiter makeModel(ModelClock& clock, Time span, const Note& note) {
    return
        [model = std::make_shared<Model>(clock, span, note)](const std::string& name) { model->call(name); };
}

using Make = Limiter (*)(RealClock&, Time, const Note&);

std::int64_t milliseconds(Time span) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(span).count();
}

Limiter makeThrottler(RealClock& clock, Time span, const Note& note) {
    const auto throttler = std::make_shared<Throttler>(milliseconds(span), clock.queue);
    return [throttler, note](const std::string& name) { throttler->throttle([note, name] { note(name); }); };
}

Limiter makeSampler(RealClock& clock, Time span, const Note& note) {
    const auto sampler = std::make_shared<Sampler>(span, clock.queue);
    return [sampler, note](const std::string& name) { sampler->sample([note, name] { note(name); }); };
}

Limiter makeDebounced(RealClock& clock, Time span, const Note& note) {
    return debounce<std::string>(milliseconds(span), clock.queue, note);
}

Limiter makeBatcher(RealClock& clock, Time span, const Note& note) {
    const auto deliver = [note](const std::vector<std::string>& items) {
        std::string all;
        for (const auto& item : items) all += item;
        note(all);
    };
    const auto batcher =
        std::make_shared<BatchItemsTrottler<std::string>>(span, clock.queue, deliver, clock.queue);
    return [batcher](const std::string& name) { batcher->batch(name); };
}

struct Step {
    enum Kind { call, post, turn, pass, drop } kind;
    Time span{};
    std::string name{};
};

struct Script {
    Time span;
    std::vector<Step> steps;
};

// Plays a script on one of the two clocks. What runs under a name in capitals calls again, in small letters.
template <class Clock>
class Player {
public:
    template <class MakeLimiter>
    TimeLine play(const Script& script, MakeLimiter make) {
        limiter_ = make(clock_, script.span, [this](const std::string& name) { ran(name); });
        for (const auto& step : script.steps) take(step);
        clock_.advance(3600s);
        return runs_;
    }

private:
    void take(const Step& step) {
        switch (step.kind) {
        case Step::call: return call(step.name);
        case Step::post: return clock_.after(step.span, [this, name = step.name] { call(name); });
        case Step::turn: return clock_.advance(0us);
        case Step::pass: return clock_.advance(step.span);
        case Step::drop: limiter_ = nullptr;
        }
    }

    void call(const std::string& name) {
        if (limiter_) limiter_(name);
    }

    void ran(const std::string& name) {
        runs_.push_back({clock_.now(), name});
        const auto first = static_cast<unsigned char>(name.front());
        if (std::isupper(first) != 0) call(std::string(1, static_cast<char>(std::tolower(first))));
    }

    Clock clock_;
    Limiter limiter_;
    TimeLine runs_;
};

class Scripts {
public:
    explicit Scripts(unsigned seed) : random_(seed) {}

    Script next() {
        Script script{span(), {}};
        const auto count = 1 + below(40);
        for (int i = 0; i < count; ++i) script.steps.push_back(step(script.span, i));
        return script;
    }

private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    Time span() {
        switch (below(8)) {
        case 0: return 0ms;
        case 1: return -5ms;
        default: return std::chrono::milliseconds(1 + below(50));
        }
    }

    // Never half a millisecond apart, which has tests of its own.
    Time gap(Time span) {
        const Time about = 1ms * (below(3) - 1) + 200us * below(5);
        return std::max(0us, below(2) == 0 ? span + about : 1ms * below(60) + about);
    }

    // No two blocks of the test's own are due at one time, nor one of them and a check of a limiter: which of
    // the two goes first is not promised.
    Step step(Time span, int number) {
        switch (below(16)) {
        case 0: return {Step::post, gap(span) + Time(1 + number), name(number)};
        case 1: return {Step::turn};
        case 2: return {below(8) == 0 ? Step::drop : Step::turn};
        case 3:
        case 4:
        case 5:
        case 6:
        case 7: return {Step::pass, gap(span)};
        default: return {Step::call, {}, name(number)};
        }
    }

    std::string name(int number) {
        const bool callsAgain = below(4) == 0;
        return {static_cast<char>((callsAgain ? 'A' : 'a') + number % 26)};
    }

    std::minstd_rand random_;
};

std::string text(const Script& script) {
    constexpr auto kinds = "!+/-x"; // call, post, turn, pass, drop
    std::string text = "span " + std::to_string(script.span.count()) + " us:";
    for (const auto& step : script.steps)
        text += std::string(" ") + kinds[step.kind] + step.name +
                (step.span == 0us ? "" : std::to_string(step.span.count()));
    return text;
}

template <class Model>
void compareOnRandomScripts(Make make) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Scripts scripts(seed);
    std::size_t runs = 0;
    for (int i = 0; i < 10'000; ++i) {
        const auto script = scripts.next();
        const auto expected = Player<ModelClock>().play(script, makeModel<Model>);
        const auto actual = Player<RealClock>().play(script, make);
        ASSERT_EQ(timeline::text(actual), timeline::text(expected)) << text(script);
        runs += actual.size();
    }
    EXPECT_GT(runs, 10'000U) << "the scripts let hardly anything run";
}

} // namespace

TEST(RateLimiterModel, ThrottlerFollowsItsRuleThroughCallsTurnsAndDrops) {
    compareOnRandomScripts<ThrottlerModel>(makeThrottler);
}

TEST(RateLimiterModel, SamplerFollowsItsRuleThroughCallsTurnsAndDrops) {
    compareOnRandomScripts<SamplerModel>(makeSampler);
}

TEST(RateLimiterModel, DebouncedFunctionFollowsItsRuleThroughCallsTurnsAndDrops) {
    compareOnRandomScripts<DebounceModel>(makeDebounced);
}

TEST(RateLimiterModel, BatchItemsTrottlerFollowsItsRuleThroughCallsTurnsAndDrops) {
    compareOnRandomScripts<BatcherModel>(makeBatcher);
}
