// SPDX-License-Identifier: Apache-2.0
#pragma once

// How long a keyring is waited for.

#include <VorlanFoundation/Platform/DispatchTime.h>

namespace vorlan::security::secretservice {

/// The end of the patience with a service: one for a whole operation, however many calls that is made of.
///
/// Threads: one thread at a time.
class Deadline {
public:
    explicit Deadline(DispatchTimeInterval limit) noexcept
        : limit_(limit), end_(DispatchTime::now() + limit) {}

    /// Starts again: the service answered, and there is more to do than one could expect of it in that time.
    void renew() noexcept { end_ = DispatchTime::now() + limit_; }

    /// What is left, in milliseconds, as GLib's calls take it; at least one: a Failure when it is over.
    int millisecondsLeft() const;

private:
    DispatchTimeInterval limit_;
    DispatchTime end_;
};

} // namespace vorlan::security::secretservice
