// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a test needs around a store: the problems that were reported, and a process that has forgotten everything.

#include <VorlanFoundation/Platform/HomeChange.h>
#include <VorlanFoundation/Platform/Problems.h>

#include "tests/support/Inbox.h"

#include <memory>
#include <string>
#include <string_view>

namespace vorlan::tests {

/// Collects the problems that are reported as long as it lives, "where: message" each.
///
/// Threads: safe from any thread.
class ReportedProblems {
public:
    ReportedProblems() {
        setProblemHandler([inbox = inbox_](std::string_view message, std::string_view where) {
            inbox->put(std::string(where) + ": " + std::string(message));
        });
    }
    ReportedProblems(const ReportedProblems&) = delete;
    ReportedProblems& operator=(const ReportedProblems&) = delete;
    ~ReportedProblems() { setProblemHandler(nullptr); }

    std::size_t count() const { return inbox_->count(); }

    /// The next one; waits for it.
    std::string take() { return inbox_->take().value_or("no problem was reported"); }

private:
    // Shared with the handler, which may be under way still when it is replaced.
    std::shared_ptr<support::Inbox<std::string>> inbox_ = std::make_shared<support::Inbox<std::string>>();
};

/// Has this process save what it has to, and forget what it has read, as a process that starts anew.
inline void forgetEverything() {
    detail::changeHome([] {});
}

} // namespace vorlan::tests
