// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a registration of an observer is ended by.
//
//     auto token = player->addObserver(badge);
//     token->cancelAndWait();                 // from here on, badge is not called

#include <VorlanFoundation/Platform/Export.h>

#include <mutex>

namespace vorlan {

/// One registration of one observer with one observable object.
///
/// Dropping the token ends nothing but its hold on the observer: the observer then lives as long as its other
/// owners want, and with it the registration.
///
/// Threads:     safe from any thread.
/// Owns:        the observer strongly, until the token is destroyed; the observable object weakly.
/// Re-entrancy: both ways to cancel may be called from a callback, also from that of the very observer.
/// Errors:      cancelling twice, or after the observable object died, does nothing.
class VORLAN_EXPORT ObservationToken {
public:
    ObservationToken(const ObservationToken&) = delete;
    ObservationToken& operator=(const ObservationToken&) = delete;
    virtual ~ObservationToken();

    /// Ends the registration. A notification that is under way on another thread may still reach the
    /// observer.
    void cancel();

    /// Ends the registration, and returns only when no callback to this observer is running or will run.
    ///
    /// Waits for a callback to this observer that is running on another thread, and for no other. When called
    /// from inside a callback to this very observer it does not wait: that callback is the last one on its
    /// thread. Whatever the observer refers to can be destroyed on the next line. The observer itself may be
    /// let go a moment later by a notification that still holds it.
    ///
    /// Two threads deadlock when one waits here while the callback it waits for waits for the first.
    void cancelAndWait();

protected:
    ObservationToken();

    /// Removes the registration. Called once at most.
    virtual void cancellationClosure() = 0;

    /// Returns when no callback to the observer is running or will run. Called after `cancellationClosure`.
    virtual void waitForCallbacks() = 0;

private:
    std::recursive_mutex mutex_; ///< Held while the closure runs, so that a second caller finds it done.
    bool isCancelled_ = false;
};

} // namespace vorlan
