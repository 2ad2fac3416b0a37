// SPDX-License-Identifier: Apache-2.0
#pragma once

// What tests of formats share.

#include <VorlanFoundation/Platform/Problems.h>
#include <VorlanFoundation/Platform/TextFormat.h>

#include <initializer_list>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlan::tests {

/// The problems that formats were told of while it lives.
///
/// Threads: safe from any thread; made and destroyed while no format is filled.
class FormatProblems {
public:
    FormatProblems() {
        setProblemHandler([this](std::string_view message, std::string_view where) {
            const std::lock_guard lock(mutex_);
            problems_.push_back(std::string(where) + ": " + std::string(message));
        });
    }
    FormatProblems(const FormatProblems&) = delete;
    FormatProblems& operator=(const FormatProblems&) = delete;
    ~FormatProblems() { setProblemHandler(nullptr); }

    /// Those since it was asked last.
    std::vector<std::string> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(problems_, {});
    }

private:
    std::mutex mutex_;
    std::vector<std::string> problems_;
};

/// A text in a locale.
inline std::string in(const char* locale, std::string_view format,
                      std::initializer_list<FormatArgument> arguments) {
    return formatText(format, arguments, {.locale = Locale(locale)});
}

} // namespace vorlan::tests
