// SPDX-License-Identifier: Apache-2.0

// What a line of a log costs, and a call while the log is off.

#include "benchmarks/support/DiskHome.h"
#include "benchmarks/support/PlainFile.h"
#include "benchmarks/support/Rows.h"

#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Platform/Bundle.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/FileManager.h>
#include <VorlanFoundation/Platform/UserDefaults.h>

#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QString>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>

namespace vorlan::benchmarks {

namespace {

constexpr auto line = "one line";
constexpr auto off = "call while the log is off";
constexpr auto text = "read 5 files of the folder in 12 ms";

// Of all files, so that all are emptied as often.
constexpr off_t sizeLimit = 10 * 1024 * 1024;

/// Switches the log, and has the library settle: the switch is saved, and known to the calls that follow.
void switchLog(bool isOn) {
    Logger::makeLogging(isOn);
    UserDefaults::standard().synchronize();
    Logger::log(text);
}

/// The bytes of a line of ours.
std::string wholeLine() {
    const auto name = Bundle::main().objectForInfoDictionaryKey("CFBundleName").as<std::string>();
    return "[" + Date().description() + " " + name.value_or("") + "] " + text + "\n";
}

void measureBare(benchmark::State& state, const std::filesystem::path& path) {
    const auto bytes = wholeLine();
    for ([[maybe_unused]] auto _ : state) {
        struct stat status{};
        const bool isThere = stat(path.c_str(), &status) == 0;
        const PlainFile file(path, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
        if (isThere && status.st_size > sizeLimit) file.truncate(0);
        file.write(bytes.data(), bytes.size());
    }
}

// The size asked of the open file: one walk along the path instead of two.
void measureOpenFirst(benchmark::State& state, const std::filesystem::path& path) {
    const auto bytes = wholeLine();
    for ([[maybe_unused]] auto _ : state) {
        const PlainFile file(path, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
        struct stat status{};
        check(fstat(file.descriptor(), &status) == 0);
        if (status.st_size > sizeLimit) file.truncate(0);
        file.write(bytes.data(), bytes.size());
    }
}

void measureOurs(benchmark::State& state) {
    switchLog(true);
    for ([[maybe_unused]] auto _ : state) Logger::log(text);
}

void measureQFile(benchmark::State& state, const std::filesystem::path& path) {
    const auto bytes = QByteArray::fromStdString(wholeLine());
    const auto name = QString::fromStdString(path.string());
    for ([[maybe_unused]] auto _ : state) {
        QFile file(name);
        bool isDone = file.open(QIODevice::WriteOnly | QIODevice::Append);
        if (file.size() > sizeLimit) isDone = isDone && file.resize(0);
        if (!isDone || file.write(bytes) != bytes.size()) state.SkipWithError("cannot write");
    }
}

// Holds the file open, so it neither notices that it was moved nor keeps a limit.
void measureSpdlog(benchmark::State& state, const std::filesystem::path& path) {
    spdlog::logger logger("benchmark", std::make_shared<spdlog::sinks::basic_file_sink_mt>(path, true));
    logger.flush_on(spdlog::level::info);
    for ([[maybe_unused]] auto _ : state) logger.info(text);
}

// All in one folder, with names of one length: the kernel takes its time for each part of a path.
void addLineRows() {
    const std::filesystem::path folder =
        FileManager::defaultManager()
            .URLForDirectory(SearchPathDirectory::documents, {.create = true})
            .path();
    const auto file = [=](char first) { return folder / (first + std::string(35, '0') + ".log"); };
    addRow(line, "floor: stat, open, write, close",
           [=](benchmark::State& state) { measureBare(state, file('B')); });
    addRow(line, "floor: open, fstat, write, close",
           [=](benchmark::State& state) { measureOpenFirst(state, file('F')); });
    addRow(line, "ours: Logger::log", measureOurs);
    addRow(line, "peer: QFile, open, write, close",
           [=](benchmark::State& state) { measureQFile(state, file('Q')); });
    addRow(line, "note: spdlog, file held open, flushed",
           [=](benchmark::State& state) { measureSpdlog(state, file('S')); });
}

std::atomic<char> plainSwitch = 0;

[[gnu::noinline]] void writePlainly(const char* what) {
    benchmark::DoNotOptimize(what);
}

[[gnu::noinline]] void doNothing(const char*) {
    benchmark::ClobberMemory();
}

template <class Call>
void measureOff(benchmark::State& state, const Call& call) {
    switchLog(false);
    for ([[maybe_unused]] auto _ : state) call();
}

void addOffRows() {
    addRow(off, "floor: a relaxed load", [](benchmark::State& state) {
        measureOff(state, [] {
            if (plainSwitch.load(std::memory_order_relaxed) != 0) writePlainly(text);
        });
    });
    addRow(off, "floor: an empty call",
           [](benchmark::State& state) { measureOff(state, [] { doNothing(text); }); });
    addRow(off, "ours: Logger::log",
           [](benchmark::State& state) { measureOff(state, [] { Logger::log(text); }); });
    addRow(off, "ours: Logger::log, five values",
           [](benchmark::State& state) { measureOff(state, [] { Logger::log(text, 5, 2.5, true, text); }); });
    addRow(off, "peer: spdlog, below its level", [](benchmark::State& state) {
        spdlog::logger logger("benchmark", std::make_shared<spdlog::sinks::null_sink_mt>());
        logger.set_level(spdlog::level::warn);
        measureOff(state, [&] { logger.info(text); });
    });
    addRow(off, "peer: qCDebug, category switched off", [](benchmark::State& state) {
        const QLoggingCategory category("benchmark", QtWarningMsg);
        measureOff(state, [&] { qCDebug(category, "%s", text); });
    });
}

} // namespace

} // namespace vorlan::benchmarks

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    const DiskHome home;
    addLineRows();
    addOffRows();
    return runRows(argc, argv);
}
