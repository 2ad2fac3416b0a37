// SPDX-License-Identifier: Apache-2.0

// Shared formatters in the hands of 16 threads.

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include "tests/extensions/Places.h"
#include "tests/extensions/SharedFormatters.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <latch>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using tests::sharedDateComponentsFormatters;
using tests::sharedDateFormatters;
using vorlan::testing::UserRegion;

namespace {

#ifdef VORLAN_SANITIZED
constexpr int rounds = 20;
#else
constexpr int rounds = 200;
#endif
constexpr std::size_t threadCount = 16;

// Far from the present, so that relative formatters have no word for them.
Date dateOf(int round) {
    return Date(1'000'003.0 * (round % 50) - 20'000'000);
}

double spanOf(int round) {
    return 61.0 * (round % 50);
}

std::vector<std::string> texts(int round) {
    std::vector<std::string> texts;
    for (const auto& place : sharedDateFormatters) texts.push_back(place.get().string(dateOf(round)));
    for (const auto& place : sharedDateComponentsFormatters)
        texts.push_back(place.get().string(spanOf(round)).value());
    texts.push_back(dateFormatter::iso8601Full().string(dateOf(round)));
    return texts;
}

std::vector<std::vector<std::string>> wantedTexts() {
    std::vector<std::vector<std::string>> wanted;
    for (int round = 0; round < 50; ++round) wanted.push_back(texts(round));
    return wanted;
}

void onAllThreads(FunctionRef<void()> body) {
    std::latch start(threadCount);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < threadCount; ++i)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            body();
        });
    for (auto& thread : threads) thread.join();
}

} // namespace

TEST(DateFormattersStress, SixteenThreadsPrintTheSame) {
    const UserRegion user({.locale = "de_DE", .timeZone = "Europe/Berlin"});
    const auto wanted = wantedTexts();
    std::atomic<int> differences = 0;
    onAllThreads([&] {
        for (int round = 0; round < rounds; ++round)
            if (texts(round) != wanted[static_cast<std::size_t>(round % 50)]) ++differences;
    });
    EXPECT_EQ(differences, 0);
}

TEST(DateFormattersStress, TextsAreOneFormattersOrTheOthersWhileTheyAreReplaced) {
    const auto former = dateFormatter::timeFull();
    DateFormatter other;
    other.setDateFormat("yyyy");
    std::atomic<int> differences = 0;
    onAllThreads([&] {
        for (int round = 0; round < rounds; ++round) {
            dateFormatter::setTimeFull(round % 2 == 0 ? other : former);
            const auto text = dateFormatter::timeFull().string(dateOf(round));
            if (text != other.string(dateOf(round)) && text != former.string(dateOf(round))) ++differences;
        }
    });
    dateFormatter::setTimeFull(former);
    EXPECT_EQ(differences, 0);
}

TEST(DateFormattersStress, SixteenThreadsAskForTheDay) {
    const UserRegion user({.locale = "th_TH", .timeZone = "America/Sao_Paulo"});
    const auto noon = tests::local({.year = 2018, .month = 11, .day = 4, .hour = 12});
    const auto start = tests::local({.year = 2018, .month = 11, .day = 4, .hour = 1});
    std::atomic<int> differences = 0;
    onAllThreads([&] {
        for (int round = 0; round < rounds; ++round)
            if (date::normalizedDate(noon) != start || !calendar::isDay(noon, {.sameAs = start}) ||
                calendar::index({.ofDay = noon, .inPeriod = 1000}) != 308)
                ++differences;
    });
    EXPECT_EQ(differences, 0);
}
