// SPDX-License-Identifier: Apache-2.0
#include "platform/security/HoldOff.h"

namespace vorlan::security {

namespace {

using namespace std::chrono_literals;
using detail::KeychainOperation;

// Whether an answer tells the host what is there, or what it did wrong, rather than that it could not be done.
bool isAnswer(KeychainOperation operation, OSStatus status) {
    if (status == errSecSuccess || status == errSecItemNotFound) return true;
    // An update that fails in whatever way is what hosts clear up after.
    if (operation == KeychainOperation::update) return false;
    return status == errSecDuplicateItem || status == errSecParam || status == errSecMissingEntitlement;
}

// A user who unlocks the keyring does not want to wait.
std::chrono::nanoseconds duration(OSStatus status) {
    return status == errSecInteractionNotAllowed || status == errSecUserCanceled ? 1s : 5s;
}

} // namespace

std::optional<OSStatus> HoldOff::answer(std::chrono::nanoseconds now) const {
    const std::lock_guard lock(mutex_);
    return status_ != errSecSuccess && now < until_ ? std::optional(status_) : std::nullopt;
}

void HoldOff::note(KeychainOperation operation, OSStatus status, std::chrono::nanoseconds now) {
    if (isAnswer(operation, status)) return;
    const std::lock_guard lock(mutex_);
    status_ = status;
    until_ = now + duration(status);
}

void HoldOff::end() {
    const std::lock_guard lock(mutex_);
    status_ = errSecSuccess;
}

} // namespace vorlan::security
