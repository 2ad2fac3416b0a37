// SPDX-License-Identifier: Apache-2.0
#pragma once

// The one connection that a store's calls share.

#include "platform/security/secretservice/SecretServiceConnection.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace vorlan::security::secretservice {

/// Connects on first use, and again after the connection was lost.
///
/// Threads: safe from any thread; one connects, the others wait for it.
/// Errors:  Failure.
class CommonConnection {
public:
    /// The connection. Where the service cannot be found, it is looked for again until `wait` has gone by,
    /// and the deadline starts again.
    std::shared_ptr<SecretServiceConnection> get(Deadline& deadline, DispatchTimeInterval wait);

    /// Makes the next `get` connect anew, unless another thread did already.
    void drop(const std::shared_ptr<SecretServiceConnection>& lost);

private:
    using Lock = std::unique_lock<std::mutex>;

    std::shared_ptr<SecretServiceConnection> find(const Deadline& deadline);
    std::shared_ptr<SecretServiceConnection> keep(std::shared_ptr<SecretServiceConnection> made);
    void pause();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::shared_ptr<SecretServiceConnection> connection_;
    bool isConnecting_ = false;
};

} // namespace vorlan::security::secretservice
