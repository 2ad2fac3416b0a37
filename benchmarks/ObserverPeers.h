// SPDX-License-Identifier: Apache-2.0
#pragma once

// A player that pauses, and badges that count it: the same for each library. What is called is defined in
// another file, so that no compiler looks through a call which a real program would make.

#include "benchmarks/QtPeers.h"

#include <VorlanFoundation/Observation/Observable.h>

#include <Poco/AutoPtr.h>
#include <Poco/Notification.h>

namespace vorlan::benchmarks {

class Player;

/// What observers of ours look like, and those of the floors.
class PlayerObserver {
public:
    PlayerObserver() = default;
    PlayerObserver(const PlayerObserver&) = delete;
    PlayerObserver& operator=(const PlayerObserver&) = delete;
    virtual ~PlayerObserver() = default;

    virtual void player(Player& player, bool didPause) = 0;
};

/// Counts pauses.
class Badge : public PlayerObserver {
public:
    void player(Player& player, bool didPause) override;

private:
    long pauses_ = 0;
};

/// Ours.
class Player : public Observable<PlayerObserver> {
public:
    void pause() {
        notifyObservers([&](PlayerObserver& observer) { observer.player(*this, true); });
    }
};

/// Counts pauses, for libraries that call any function.
class PlainBadge {
public:
    void playerDidPause(bool didPause);

private:
    long pauses_ = 0;
};

/// What Poco tells its observers.
class PocoPause : public Poco::Notification {
public:
    explicit PocoPause(bool didPause) : didPause_(didPause) {}
    bool didPause() const { return didPause_; }

private:
    bool didPause_;
};

/// Counts pauses that Poco tells of.
class PocoBadge {
public:
    void playerDidPause(const Poco::AutoPtr<PocoPause>& pause);

private:
    long pauses_ = 0;
};

} // namespace vorlan::benchmarks
