// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Throttler.h>

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <memory>
#include <string>
#include <utility>

using namespace vorlan;

namespace {

// A queue whose calendar shows whatever it is told to.
class WrongCalendar final : public QueueProvider {
public:
    explicit WrongCalendar(double seconds) : date_(seconds) {}

    std::string label() const override { return "wrong calendar"; }
    DispatchTime now() const override { return queue_.now(); }
    Date date() const override { return date_; }
    bool isCurrent() const override { return queue_.isCurrent(); }
    void async(Work work, BlockKind) override { queue_.async(std::move(work)); }
    void asyncAfter(DispatchTime deadline, Work work, BlockKind) override {
        queue_.asyncAfter(deadline, std::move(work));
    }
    void sync(void (*function)(void*), void* context, BlockKind) override {
        queue_.sync([&] { function(context); });
    }
    TimerReference makeTimer() override { return queue_.provider()->makeTimer(); }

private:
    vorlan::testing::ManualQueue queue_;
    Date date_;
};

} // namespace

TEST(ThrottlerDeathTest, TimeSinceTheLastRunThatNoIntegerHoldsStopsTheProcess) {
    for (const double seconds :
         {std::numeric_limits<double>::infinity(), 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        Throttler throttler(500, Queue(std::make_shared<WrongCalendar>(seconds)));
        EXPECT_EXIT(throttler.throttle([] {}), ::testing::KilledBySignal(SIGILL), "^$") << seconds;
    }
}
