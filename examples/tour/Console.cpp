// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"

#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/RunLoop.h>

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iostream>

namespace tour {

namespace {

// https://no-color.org: a variable of that name, if not empty, asks for none.
bool isColoured() {
    static const bool result = [] {
        const char* noColour = std::getenv("NO_COLOR");
        return isatty(STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == '\0');
    }();
    return result;
}

std::string coloured(std::string_view text, std::string_view code) {
    if (!isColoured()) return std::string(text);
    return std::string("\x1b[").append(code).append("m").append(text).append("\x1b[0m");
}

} // namespace

void title(std::string_view text) {
    std::cout << "\n" << coloured(text, "1;36") << "\n";
}

void line(std::string_view name, std::string_view text) {
    constexpr std::size_t column = 20;
    const std::string padding(name.size() < column ? column - name.size() : 1, ' ');
    std::cout << "  " << coloured(name, "1") << padding << text << std::endl;
}

std::string good(std::string_view text) {
    return coloured(text, "32");
}

std::string bad(std::string_view text) {
    return coloured(text, "31");
}

std::string timeOfDay() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[9]; // NOLINT(*-avoid-c-arrays): what strftime writes to
    return {text, std::strftime(text, sizeof text, "%H:%M:%S", &local)};
}

bool serveMainQueueUntil(vorlan::FunctionRef<bool()> condition) {
    const auto deadline = vorlan::DispatchTime::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (vorlan::DispatchTime::now() >= deadline) {
            line("", bad("nothing came within ten seconds"));
            return false;
        }
        vorlan::RunLoop::main().runOnce(deadline);
    }
    return true;
}

} // namespace tour
