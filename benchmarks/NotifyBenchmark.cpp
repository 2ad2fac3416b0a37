// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/NotifyBenchmark.h"

#include "benchmarks/ObserverPeers.h"
#include "benchmarks/support/Rows.h"

#include <Poco/NObserver.h>
#include <Poco/NotificationCenter.h>
#include <boost/signals2/signal.hpp>
#include <sigc++/sigc++.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace vorlan::benchmarks {

namespace {

template <class Observer>
std::vector<std::shared_ptr<Observer>> makeObservers(std::size_t count) {
    std::vector<std::shared_ptr<Observer>> observers;
    for (std::size_t i = 0; i < count; ++i) observers.push_back(std::make_shared<Observer>());
    return observers;
}

// The least that calling observers takes which may die at any time: a reference taken and dropped, and a call.
void measureFloor(benchmark::State& state, std::size_t count) {
    Player player;
    const auto badges = makeObservers<Badge>(count);
    const std::vector<std::weak_ptr<PlayerObserver>> observers(badges.begin(), badges.end());
    for ([[maybe_unused]] auto _ : state) {
        for (const auto& observer : observers)
            if (const auto alive = observer.lock()) alive->player(player, true);
        benchmark::ClobberMemory();
    }
}

void measureOurs(benchmark::State& state, std::size_t count) {
    const auto player = std::make_shared<Player>();
    const auto badges = makeObservers<Badge>(count);
    for (const auto& badge : badges) player->addObserver(badge);
    for ([[maybe_unused]] auto _ : state) player->pause();
}

void measureSignals2(benchmark::State& state, std::size_t count) {
    using Signal = boost::signals2::signal<void(bool)>;
    Signal didPause;
    const auto badges = makeObservers<PlainBadge>(count);
    for (const auto& badge : badges) {
        const auto slot = [raw = badge.get()](bool paused) { raw->playerDidPause(paused); };
        didPause.connect(Signal::slot_type(slot).track_foreign(badge));
    }
    for ([[maybe_unused]] auto _ : state) didPause(true);
}

void measurePoco(benchmark::State& state, std::size_t count) {
    using Observer = Poco::NObserver<PocoBadge, PocoPause>;
    Poco::NotificationCenter center;
    const auto badges = makeObservers<PocoBadge>(count);
    for (const auto& badge : badges) center.addObserver(Observer(*badge, &PocoBadge::playerDidPause));
    for ([[maybe_unused]] auto _ : state) center.postNotification(new PocoPause(true));
}

void measureQtMember(benchmark::State& state, std::size_t count) {
    QtPlayer player;
    const auto badges = makeObservers<QtBadge>(count);
    for (const auto& badge : badges)
        QObject::connect(&player, &QtPlayer::didPause, badge.get(), &QtBadge::playerDidPause,
                         Qt::DirectConnection);
    for ([[maybe_unused]] auto _ : state) player.pause();
}

void measureQtFunctor(benchmark::State& state, std::size_t count) {
    QtPlayer player;
    const auto badges = makeObservers<QtBadge>(count);
    for (const auto& badge : badges) {
        const auto slot = [raw = badge.get()](bool paused) { raw->playerDidPause(paused); };
        QObject::connect(&player, &QtPlayer::didPause, badge.get(), slot, Qt::DirectConnection);
    }
    for ([[maybe_unused]] auto _ : state) player.pause();
}

void measureSigc(benchmark::State& state, std::size_t count) {
    sigc::signal<void(bool)> didPause;
    const auto badges = makeObservers<PlainBadge>(count);
    for (const auto& badge : badges) didPause.connect(sigc::mem_fun(*badge, &PlainBadge::playerDidPause));
    for ([[maybe_unused]] auto _ : state) didPause.emit(true);
}

void addNotifyRow(std::size_t count, const std::string& name,
                  void (*measure)(benchmark::State&, std::size_t)) {
    const std::string group = "notify, " + std::to_string(count) + (count == 1 ? " observer" : " observers");
    addRow(group, name, [=](benchmark::State& state) { measure(state, count); });
}

} // namespace

void addNotifyRows() {
    for (const std::size_t count : {1, 10, 100, 1000}) {
        addNotifyRow(count, "floor: weak_ptr::lock and a virtual call", measureFloor);
        addNotifyRow(count, "ours: Observable::notifyObservers", measureOurs);
        addNotifyRow(count, "peer: boost::signals2, tracked", measureSignals2);
        addNotifyRow(count, "peer: Poco::NotificationCenter", measurePoco);
        addNotifyRow(count, "peer: Qt signal, member function", measureQtMember);
        addNotifyRow(count, "peer: Qt signal, functor", measureQtFunctor);
        addNotifyRow(count, "note: sigc::signal, untracked and for one thread", measureSigc);
    }
}

} // namespace vorlan::benchmarks
