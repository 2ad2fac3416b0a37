// SPDX-License-Identifier: Apache-2.0

// A log file that several threads and processes write at once, and a switch that another process turns.

#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Platform/UserDefaults.h>
#include <VorlanFoundation/Testing/MainLoop.h>

#include "tests/extensions/BundledHost.h"
#include "tests/logging/LogCase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <latch>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using tests::BundledHost;
using tests::linesOf;
using tests::textElement;
namespace fs = std::filesystem;

namespace {

#ifdef VORLAN_SANITIZED
constexpr int linesEach = 50;
#else
constexpr int linesEach = 400;
#endif
constexpr int processCount = 4;
constexpr int threadCount = 8;

class LoggerProcessesTest : public tests::LogCase {
protected:
    // The application, with an identifier, so that all its processes share one store.
    BundledHost application(const std::string& name = "notes") const {
        BundledHost host(home() / name, tests::Layout::beside, name);
        host.write({{"CFBundleIdentifier", textElement("com.example." + name)},
                    {"CFBundleName", textElement("Notes")}});
        return host;
    }

    // The processes, once all of them are ready to log.
    std::vector<tests::RunningHost> startFlood(const BundledHost& host, const std::string& limit) const {
        std::vector<tests::RunningHost> processes;
        for (int i = 0; i < processCount; ++i) {
            processes.push_back(host.start({"changeFileSizeLimit", limit, "waitForStart", "flood",
                                            "p" + std::to_string(i), std::to_string(linesEach)}));
            EXPECT_EQ(processes.back().nextLine(), "ok");
            EXPECT_EQ(processes.back().nextLine(), "ready");
        }
        for (auto& process : processes) process.closeInput();
        return processes;
    }

    std::uintmax_t size() const {
        std::error_code none;
        const auto bytes = fs::file_size(file(), none);
        return none ? 0 : bytes;
    }
};

void expectFlooded(tests::RunningHost& process) {
    const auto outcome = process.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.answers, (std::vector<std::string>{"started", "flooded"}));
}

const std::string wholeLine = R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000 Notes\] p\d-\d-\d+;)";

// The longest line there is, with its end.
constexpr std::size_t longestLine = std::string_view("[2026-03-05 14:07:09 +0000 Notes] p0-0-000;\n").size();

void expectEachLineOnce(const std::vector<std::string>& lines, int processes) {
    const std::regex form(wholeLine);
    std::set<std::string> seen;
    for (const auto& line : lines) {
        ASSERT_TRUE(std::regex_match(line, form)) << line;
        seen.insert(line.substr(line.find("] ")));
    }
    const auto expected = static_cast<std::size_t>(processes * threadCount * linesEach);
    EXPECT_EQ(lines.size(), expected);
    EXPECT_EQ(seen.size(), expected);
}

} // namespace

TEST_F(LoggerProcessesTest, LinesOfThreadsAreWholeAndNoneIsLost) {
    Logger::makeLogging(true);
    std::latch start(threadCount);
    std::vector<std::jthread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&start, t] {
            start.arrive_and_wait();
            for (int i = 0; i < linesEach; ++i)
                Logger::log("Notes] p0-" + std::to_string(t) + "-" + std::to_string(i) + ";");
        });
    threads.clear();
    auto lines = linesOf(text());
    // This program has no name; what stands for it is a part of the value.
    for (auto& line : lines)
        if (const auto place = line.find("] Notes]"); place != std::string::npos) line.erase(place, 2);
    expectEachLineOnce(lines, 1);
}

TEST_F(LoggerProcessesTest, LinesOfOneThreadKeepTheirOrder) {
    const auto host = application();
    ASSERT_EQ(host.ask("makeLogging"), "ok");
    auto processes = startFlood(host, "100000000");
    for (auto& process : processes) expectFlooded(process);
    std::map<std::string, int> next;
    for (const auto& line : linesOf(text())) {
        const auto number = line.rfind('-');
        ASSERT_NE(number, std::string::npos) << line;
        const auto writer = line.substr(line.find("] "), number - line.find("] "));
        EXPECT_EQ(line.substr(number + 1), std::to_string(next[writer]++) + ";") << writer;
    }
    EXPECT_EQ(next.size(), static_cast<std::size_t>(processCount * threadCount));
}

TEST_F(LoggerProcessesTest, LinesOfProcessesAreWholeAndNoneIsLost) {
    const auto host = application();
    ASSERT_EQ(host.ask("makeLogging"), "ok");
    auto processes = startFlood(host, "100000000");
    for (auto& process : processes) expectFlooded(process);
    expectEachLineOnce(linesOf(text()), processCount);
}

// Each writer may pass the look at the size before the others' writes: one write each beyond the limit.
TEST_F(LoggerProcessesTest, FileStaysWithinOneWriteOfEachWriterAboveTheLimit) {
    constexpr std::size_t limit = 4096;
    constexpr std::size_t most = limit + processCount * threadCount * longestLine;
    const auto host = application();
    ASSERT_EQ(host.ask("makeLogging"), "ok");
    auto processes = startFlood(host, std::to_string(limit));
    std::uintmax_t largest = 0;
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    const auto hasEnded = [](auto& process) { return process.hasEnded(); };
    while (!std::ranges::all_of(processes, hasEnded) && std::chrono::steady_clock::now() < deadline)
        largest = std::max(largest, size());
    for (auto& process : processes) expectFlooded(process);
    EXPECT_LE(std::max(largest, size()), most);
    EXPECT_GT(size(), 0U);
    // Where a text made the file too large, its end of line is a write of its own, which comes where it may. All
    // else is whole.
    const auto log = text();
    const std::regex whole(wholeLine + "|\n");
    std::size_t end = 0;
    for (std::sregex_iterator part(log.begin(), log.end(), whole), last; part != last; ++part) {
        EXPECT_EQ(static_cast<std::size_t>(part->position()), end) << log;
        end = static_cast<std::size_t>(part->position() + part->length());
    }
    EXPECT_EQ(end, log.size()) << log;
}

TEST_F(LoggerProcessesTest, FileMayBeEmptiedAndRenamedWhileOthersWrite) {
    Logger::makeLogging(true);
    std::atomic<bool> isDone = false;
    std::jthread writer([&] {
        for (int i = 0; i < linesEach; ++i) Logger::log("p0-0-" + std::to_string(i) + ";");
        isDone = true;
    });
    for (int i = 0; !isDone; ++i) {
        if (i % 2 == 0) Logger::clean();
        std::error_code none;
        fs::rename(file(), folder() / "moved", none);
    }
    writer.join();
    Logger::changeFileName("last.log");
    Logger::log("still works");
    EXPECT_EQ(linesOf(tests::textOf(folder() / "last.log")).size(), 1U);
}

TEST_F(LoggerProcessesTest, SettingsMayChangeWhileOthersWrite) {
    Logger::makeLogging(true);
    std::atomic<bool> isDone = false;
    std::vector<std::jthread> writers;
    for (int t = 0; t < 4; ++t)
        writers.emplace_back([&] {
            while (!isDone) Logger::log("text");
        });
    for (int i = 0; i < linesEach; ++i) {
        Logger::makeLogging(i % 2 == 0);
        Logger::changeFileName(i % 3 == 0 ? "a.log" : "b.log");
        Logger::changeFileSizeLimit(i % 5 == 0 ? -1 : 10'000);
        if (i % 7 == 0) Logger::clearDefaults();
    }
    isDone = true;
    writers.clear();
    Logger::makeLogging(false);
    Logger::changeFileName("last.log");
    Logger::changeFileSizeLimit(10'000);
    Logger::log("off");
    EXPECT_FALSE(fs::exists(folder() / "last.log"));
    Logger::makeLogging(true);
    Logger::log("on");
    EXPECT_EQ(linesOf(tests::textOf(folder() / "last.log")).size(), 1U);
}

// Others that look at the switch meanwhile may not leave behind what it was before.
TEST_F(LoggerProcessesTest, ThreadFindsItsOwnSwitchingWhileOthersLook) {
    constexpr int rounds = 4 * linesEach;
    std::atomic<bool> isDone = false;
    std::vector<std::jthread> others;
    for (int t = 0; t < 4; ++t)
        others.emplace_back([&] {
            while (!isDone) Logger::log();
        });
    struct Witness {
        std::string description() const { return ++*asked, ""; }
        int* asked;
    };
    int asked = 0;
    for (int i = 1; i <= rounds && !HasFailure(); ++i) {
        Logger::makeLogging(true);
        Logger::log(Witness{&asked});
        EXPECT_EQ(asked, i) << "it was switched on";
        Logger::makeLogging(false);
        Logger::log(Witness{&asked});
        EXPECT_EQ(asked, i) << "it was switched off";
    }
    isDone = true;
}

TEST_F(LoggerProcessesTest, AnotherProcessSwitchesTheLogOnAndOff) {
    const auto host = application("other");
    const auto setSwitch = [&](const std::string& value) {
        const auto command = {std::string("setInSuite"), UserDefaults::standard().name(),
                              std::string(tests::logSwitchKey), value};
        return host.run(command).only();
    };
    Logger::log("off");
    ASSERT_FALSE(fs::exists(file()));
    ASSERT_EQ(setSwitch("true"), "ok");
    const auto isOn = [&] { return Logger::log("on"), fs::exists(file()); };
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil(isOn, 30s));
    ASSERT_EQ(setSwitch("false"), "ok");
    const auto isOff = [&] {
        Logger::clean();
        Logger::log("off");
        return size() == 0;
    };
    EXPECT_TRUE(vorlan::testing::MainLoop::pumpUntil(isOff, 30s));
}

TEST_F(LoggerProcessesTest, SwitchOutlivesTheProcess) {
    const auto host = application();
    ASSERT_EQ(host.ask("makeLogging"), "ok");
    EXPECT_EQ(host.run({"log", "text"}).only(), "ok");
    EXPECT_TRUE(text().ends_with(" +0000 Notes] text\n")) << text();
}

TEST_F(LoggerProcessesTest, LimitCountsUntilTheProcessEnds) {
    const auto host = application();
    EXPECT_EQ(host.run({"makeLogging", "changeFileSizeLimit", "-1", "log", "first"}).status, 0);
    EXPECT_EQ(text(), "\n");
    EXPECT_EQ(host.run({"log", "second"}).status, 0);
    EXPECT_EQ(linesOf(text()).size(), 2U);
}

TEST_F(LoggerProcessesTest, NameInThePrefixIsTheShortOne) {
    const auto host = application();
    const auto log = [&](const tests::InfoEntries& entries) {
        host.write(entries);
        EXPECT_EQ(host.run({"makeLogging", "log", "text"}).status, 0);
        const auto lines = linesOf(text());
        return lines.empty() || lines.back().size() < 26 ? "no line" : lines.back().substr(26);
    };
    EXPECT_EQ(log({{"CFBundleName", textElement("Notes")}, {"CFBundleDisplayName", textElement("My Notes")}}),
              " Notes] text");
    EXPECT_EQ(log({{"CFBundleDisplayName", textElement("My Notes")}}), " ] text");
    EXPECT_EQ(log({{"CFBundleName", "<integer>5</integer>"}}), " ] text");
    EXPECT_EQ(log({{"CFBundleName", textElement("Заметки] [")}}), " Заметки] [] text");
}
