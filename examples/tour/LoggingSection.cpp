// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/Testing.h>
#include <VorlanFoundation/VorlanFoundation.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using namespace vorlan;

namespace {

struct Importer : Loggable<Importer> {
    void run() const { log("read 5 files"); }
};

std::vector<std::string> linesOfLog() {
    std::vector<std::string> lines;
    std::ifstream file((*Folder::documentsDirectory() / "tour.log").path());
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

bool showLogger() {
    Logger::changeFileName("tour.log");
    Logger::log("nobody reads this");
    const auto before = linesOfLog();
    Logger::makeLogging(true);
    Logger::log("started", 2.5);
    Importer().run();
    const auto after = linesOfLog();
    tour::line("Logger", "switched off: " + std::to_string(before.size()) +
                             " lines; switched on: " + std::to_string(after.size()) + " lines:");
    for (const auto& line : after) tour::line("", line);
    return before.empty() && after.size() == 3 && after.back().ends_with("[Importer]: read 5 files");
}

bool showStopwatch() {
    constexpr int count = 1000;
    const AbsoluteStopwatch watch;
    for (int i = 0; i < count; ++i) Logger::log("a line like any other");
    const double on = watch.milliseconds() / count;
    Logger::clearDefaults();
    AbsoluteStopwatch again;
    for (int i = 0; i < count; ++i) Logger::log("a line like any other");
    const auto off = again.nanoseconds() / count;
    std::ostringstream text;
    text << "a line takes " << on * 1000 << " us, and " << off << " ns while the log is switched off";
    tour::line("AbsoluteStopwatch", text.str());
    return true;
}

} // namespace

bool tour::showLogging() {
    title("Logging and timing");
    const vorlan::testing::TemporaryHome home; // the user's own log is left alone
    const bool isComplete = showLogger();
    return showStopwatch() && isComplete;
}
