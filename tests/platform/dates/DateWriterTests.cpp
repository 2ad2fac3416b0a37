// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/DateWriter.h"

#include "platform/text/FormatPool.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace vorlan;

namespace {

DateLayout layoutOf(std::string pattern, Calendar::Identifier calendar = Calendar::Identifier::gregorian) {
    return {.locale = Locale("en_US"),
            .zone = &detail::ZoneRules::gmt(),
            .calendar = calendar,
            .week = std::nullopt,
            .pattern = std::move(pattern),
            .dateStyle = {},
            .timeStyle = {},
            .isRelative = false,
            .dayName = {}};
}

bool hasProgram(std::string pattern, Calendar::Identifier calendar = Calendar::Identifier::gregorian) {
    const auto layout = layoutOf(std::move(pattern), calendar);
    return DatePatternProgram::of(*DateFormat::forLayout(layout), layout).has_value();
}

// Something of which there may be only so many.
struct Counted {
    explicit Counted(int& all) : count(&all) { ++all; }
    ~Counted() { --*count; }
    std::unique_ptr<Counted> clone() const { return std::make_unique<Counted>(*count); }
    int* count;
};

} // namespace

TEST(DateWriter, IsSharedByThoseWithTheSameLayout) {
    const auto writer = DateWriter::of(layoutOf("yyyy-MM-dd"));
    EXPECT_EQ(DateWriter::of(layoutOf("yyyy-MM-dd")), writer);
    EXPECT_NE(DateWriter::of(layoutOf("yyyy-MM")), writer);
    auto layout = layoutOf("yyyy-MM-dd");
    layout.zone = detail::ZoneRules::named("Europe/Berlin");
    EXPECT_NE(DateWriter::of(layout), writer);
    layout = layoutOf("yyyy-MM-dd");
    layout.week = WeekCustom{.firstWeekday = 2, .minimumDaysInFirstWeek = 4};
    EXPECT_NE(DateWriter::of(layout), writer);
}

TEST(DateWriter, IsForgottenWhereThereAreTooMany) {
    const std::weak_ptr<const DateWriter> first = DateWriter::of(layoutOf("yyyy"));
    int layouts = 0;
    while (!first.expired() && layouts < 1000)
        static_cast<void>(DateWriter::of(layoutOf("'" + std::to_string(++layouts) + "'")));
    EXPECT_TRUE(first.expired());
    EXPECT_GE(layouts, 100);
}

TEST(DatePatternProgram, KnowsTheFieldsThatAreUsedMost) {
    for (const char* pattern :
         {"yyyy-MM-dd", "yyyy-MM-dd HH:mm:ss", "eee, dd MMM yyyy HH:mm:ss Z", "M/d/yy, h:mm a",
          "EEEE, d MMMM y G", "yyyy-MM-dd'T'HH:mm:ss.SSSXXX", "QQQ D k K ''", ""})
        EXPECT_TRUE(hasProgram(pattern)) << pattern;
    EXPECT_TRUE(hasProgram("y", Calendar::Identifier::buddhist));
}

TEST(DatePatternProgram, LeavesWhatItDoesNotKnowToICU) {
    for (const char* pattern : {"zzzz", "yyyy zzz", "B", "w", "VV", "ZZZZ", "yyyyyyyyyyyy", "j"})
        EXPECT_FALSE(hasProgram(pattern)) << pattern;
    EXPECT_FALSE(hasProgram("y", Calendar::Identifier::persian));
    EXPECT_FALSE(hasProgram("y", Calendar::Identifier::japanese));
}

TEST(DatePatternProgram, LeavesDistantYearsToICU) {
    const auto layout = layoutOf("yyyy");
    const auto program = DatePatternProgram::of(*DateFormat::forLayout(layout), layout);
    ASSERT_TRUE(program);
    EXPECT_EQ(program->string(0), "1970");
    EXPECT_EQ(program->string(-13'000'000'000'000), std::nullopt);
    EXPECT_EQ(program->string(14'000'000'000'000), std::nullopt);
}

TEST(FormatPool, LendsACopyToOneAtATimeAndKeepsAFew) {
    int count = 0;
    {
        const FormatPool<Counted> pool(std::make_unique<Counted>(count));
        {
            const auto loan = pool.borrow();
            EXPECT_NE(&*pool.borrow(), &*loan);
        }
        EXPECT_EQ(count, 3);
        EXPECT_NE(&*pool.borrow(), nullptr);
        EXPECT_EQ(count, 3);
        std::vector<std::unique_ptr<FormatPool<Counted>::Loan>> loans;
        for (int i = 0; i < 20; ++i) loans.emplace_back(new auto(pool.borrow()));
        EXPECT_EQ(count, 21);
        loans.clear();
        EXPECT_LT(count, 10);
    }
    EXPECT_EQ(count, 0);
}
