// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Problems.h>

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace vorlan {

namespace {

std::mutex handlerMutex;

std::shared_ptr<const ProblemHandler>& handlerInUse() {
    // Problems may come up until the very end of the process, after statics are gone.
    static auto* const handler = new std::shared_ptr<const ProblemHandler>;
    return *handler;
}

void writeToStandardError(std::string_view message, std::string_view where) {
    std::string line(where);
    line.append(": ").append(message).append("\n");
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace

void setProblemHandler(ProblemHandler handler) {
    auto next = handler ? std::make_shared<const ProblemHandler>(std::move(handler)) : nullptr;
    const std::lock_guard lock(handlerMutex);
    handlerInUse().swap(next); // the former one is destroyed after the lock is released
}

void detail::reportProblem(std::string_view message, std::string_view where) noexcept {
    std::shared_ptr<const ProblemHandler> handler;
    {
        const std::lock_guard lock(handlerMutex);
        handler = handlerInUse();
    }
    if (handler) {
        (*handler)(message, where);
    } else {
        writeToStandardError(message, where);
    }
}

} // namespace vorlan
