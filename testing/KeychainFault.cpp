// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/KeychainFault.h>

#include <deque>
#include <map>
#include <mutex>
#include <optional>

namespace vorlan::testing {

struct KeychainFault::State final : vorlan::detail::KeychainFaults {
    std::optional<OSStatus> answer(Operation operation) override {
        const std::lock_guard lock(mutex);
        operations.push_back(operation);
        if (auto& waiting = next[operation]; !waiting.empty()) {
            const auto status = waiting.front();
            waiting.pop_front();
            return status;
        }
        return time < until ? std::optional(statusForAll) : std::nullopt;
    }

    std::chrono::nanoseconds now() override {
        const std::lock_guard lock(mutex);
        return time;
    }

    std::mutex mutex; ///< Of all that follows.
    std::vector<Operation> operations;
    std::map<Operation, std::deque<OSStatus>> next;
    OSStatus statusForAll = errSecSuccess;
    std::chrono::nanoseconds until{};
    std::chrono::nanoseconds time{};
};

KeychainFault::KeychainFault() : state_(std::make_shared<State>()) {
    vorlan::detail::setKeychainFaults(state_);
}

KeychainFault::~KeychainFault() {
    vorlan::detail::setKeychainFaults(nullptr);
}

void KeychainFault::answer(Operation operation, OSStatus status, std::size_t count) {
    const std::lock_guard lock(state_->mutex);
    auto& waiting = state_->next[operation];
    waiting.insert(waiting.end(), count, status);
}

void KeychainFault::answerAll(OSStatus status, std::chrono::nanoseconds duration) {
    const std::lock_guard lock(state_->mutex);
    state_->statusForAll = status;
    state_->until = state_->time + duration;
}

void KeychainFault::advance(std::chrono::nanoseconds duration) {
    const std::lock_guard lock(state_->mutex);
    state_->time += duration;
}

std::vector<KeychainFault::Operation> KeychainFault::operations() const {
    const std::lock_guard lock(state_->mutex);
    return state_->operations;
}

} // namespace vorlan::testing
