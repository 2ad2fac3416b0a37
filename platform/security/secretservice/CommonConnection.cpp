// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/CommonConnection.h"

#include "platform/security/secretservice/Failure.h"
#include "platform/values/LimitedWait.h"

#include <chrono>
#include <utility>

namespace vorlan::security::secretservice {

using Connection = std::shared_ptr<SecretServiceConnection>;

Connection CommonConnection::get(Deadline& deadline, DispatchTimeInterval wait) {
    const auto end = DispatchTime::now() + wait;
    for (;;) {
        try {
            return find(deadline);
        } catch (const Failure&) {
            if (DispatchTime::now() >= end) throw;
        }
        pause();
        deadline.renew();
    }
}

Connection CommonConnection::find(const Deadline& deadline) {
    Lock lock(mutex_);
    const auto limit = std::chrono::milliseconds(deadline.millisecondsLeft());
    if (!waitUntil(changed_, lock, limit, [this] { return !isConnecting_; }))
        throw Failure(Failure::Kind::other, errSecNotAvailable);
    if (connection_) return connection_;
    isConnecting_ = true;
    lock.unlock();
    try {
        return keep(std::make_shared<SecretServiceConnection>(deadline));
    } catch (...) {
        keep(nullptr);
        throw;
    }
}

Connection CommonConnection::keep(Connection made) {
    const Lock lock(mutex_);
    isConnecting_ = false;
    connection_ = std::move(made);
    changed_.notify_all();
    return connection_;
}

void CommonConnection::drop(const Connection& lost) {
    // Let go of outside the lock: its end talks to the bus.
    Connection dropped;
    const Lock lock(mutex_);
    if (connection_ == lost) dropped.swap(connection_);
}

void CommonConnection::pause() {
    using namespace std::chrono_literals;
    Lock lock(mutex_);
    waitUntil(changed_, lock, 100ms, [this] { return connection_ != nullptr; });
}

} // namespace vorlan::security::secretservice
