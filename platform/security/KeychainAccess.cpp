// SPDX-License-Identifier: Apache-2.0
#include "platform/security/KeychainAccess.h"

#include <VorlanFoundation/Platform/HomeChange.h>

#include <pthread.h>

#include <atomic>
#include <utility>

namespace vorlan {

namespace security {

namespace {

std::atomic<bool> isForkedChild = false;

KeychainSession::Access accessOf(detail::KeychainOperation operation) {
    switch (operation) {
    case detail::KeychainOperation::add: return KeychainSession::Access::adding;
    case detail::KeychainOperation::copyMatching: return KeychainSession::Access::reading;
    default: return KeychainSession::Access::changing;
    }
}

} // namespace

KeychainAccess::KeychainAccess() {
    pthread_atfork(nullptr, nullptr, [] { isForkedChild = true; });
}

KeychainAccess& KeychainAccess::shared() {
    static auto* access = new KeychainAccess; // never destroyed: threads may use it until the process ends
    return *access;
}

std::shared_ptr<KeychainSession> KeychainAccess::session() {
    if (isForkedChild) return nullptr;
    const auto generation = detail::homeGeneration();
    const std::lock_guard lock(mutex_);
    if (!session_ || generation != generation_) {
        session_ = std::make_shared<KeychainSession>(session_ ? session_->options() : KeychainOptions());
        generation_ = generation;
        holdOff_.end();
    }
    return session_;
}

void KeychainAccess::configure(KeychainOptions options) {
    if (isForkedChild) return;
    auto session = std::make_shared<KeychainSession>(std::move(options));
    const std::lock_guard lock(mutex_);
    session_.swap(session);
    generation_ = detail::homeGeneration();
    holdOff_.end();
}

std::shared_ptr<detail::KeychainFaults> KeychainAccess::faults() const {
    const std::lock_guard lock(mutex_);
    return faults_;
}

void KeychainAccess::setFaults(std::shared_ptr<detail::KeychainFaults> faults) {
    if (isForkedChild) return;
    const std::lock_guard lock(mutex_);
    faults_.swap(faults);
    holdOff_.end();
}

OSStatus KeychainAccess::perform(detail::KeychainOperation operation, OSStatus check,
                                 KeychainSession::Body body) {
    const auto session = this->session();
    if (!session) return errSecNotAvailable;
    const auto faults = this->faults();
    const auto now = [&] {
        return faults ? faults->now() : std::chrono::steady_clock::now().time_since_epoch();
    };
    if (const auto status = holdOff_.answer(now())) return *status;
    auto status = check;
    if (const auto fault = faults ? faults->answer(operation) : std::nullopt) {
        status = *fault;
    } else if (check == errSecSuccess) {
        status = session->perform(accessOf(operation), body);
    }
    holdOff_.note(operation, status, now());
    return status;
}

OSStatus KeychainAccess::manage(KeychainSession::Access access, KeychainSession::Body body) {
    const auto session = this->session();
    return session ? session->perform(access, body) : errSecNotAvailable;
}

} // namespace security

void detail::setKeychainFaults(std::shared_ptr<KeychainFaults> faults) {
    security::KeychainAccess::shared().setFaults(std::move(faults));
}

} // namespace vorlan
