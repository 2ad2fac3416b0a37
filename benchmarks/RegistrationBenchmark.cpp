// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/RegistrationBenchmark.h"

#include "benchmarks/ObserverPeers.h"
#include "benchmarks/support/Rows.h"

#include <Poco/NObserver.h>
#include <Poco/NotificationCenter.h>
#include <boost/signals2/signal.hpp>
#include <sigc++/sigc++.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace vorlan::benchmarks {

namespace {

/// Registers a number of observers, and then measures what another one costs to come and go.
template <class Observer, class Add, class ComeAndGo>
void measure(benchmark::State& state, std::size_t others, const Add& add, const ComeAndGo& comeAndGo) {
    std::vector<std::shared_ptr<Observer>> observers;
    for (std::size_t i = 0; i < others; ++i) {
        observers.push_back(std::make_shared<Observer>());
        add(observers.back());
    }
    const auto observer = std::make_shared<Observer>();
    for ([[maybe_unused]] auto _ : state) comeAndGo(observer);
}

/// The plainest registry that several threads may use.
class Registry {
public:
    void add(const std::shared_ptr<Badge>& badge) {
        const std::lock_guard lock(mutex_);
        observers_.emplace(badge.get(), badge);
    }
    void remove(const Badge* badge) {
        const std::lock_guard lock(mutex_);
        observers_.erase(badge);
    }

private:
    std::mutex mutex_;
    std::unordered_map<const Badge*, std::weak_ptr<Badge>> observers_;
};

void measureFloor(benchmark::State& state, std::size_t others) {
    Registry registry;
    const auto add = [&](const std::shared_ptr<Badge>& badge) { registry.add(badge); };
    measure<Badge>(state, others, add, [&](const std::shared_ptr<Badge>& badge) {
        add(badge);
        registry.remove(badge.get());
    });
}

/// The plainest token that holds what ours hold: the observer, and the registry weakly.
struct PlainToken {
    std::weak_ptr<Registry> registry;
    std::shared_ptr<Badge> badge;

    void cancel() const {
        if (const auto alive = registry.lock()) alive->remove(badge.get());
    }
};

void measureFloorWithToken(benchmark::State& state, std::size_t others) {
    const auto registry = std::make_shared<Registry>();
    const auto add = [&](const std::shared_ptr<Badge>& badge) {
        registry->add(badge);
        return std::make_shared<PlainToken>(registry, badge);
    };
    measure<Badge>(state, others, add, [&](const std::shared_ptr<Badge>& badge) { add(badge)->cancel(); });
}

void measureToken(benchmark::State& state, std::size_t others) {
    const auto player = std::make_shared<Player>();
    const auto add = [&](const std::shared_ptr<Badge>& badge) { return player->addObserver(badge); };
    measure<Badge>(state, others, add, [&](const std::shared_ptr<Badge>& badge) { add(badge)->cancel(); });
}

void measureRemove(benchmark::State& state, std::size_t others) {
    const auto player = std::make_shared<Player>();
    const auto add = [&](const std::shared_ptr<Badge>& badge) { return player->addObserver(badge); };
    measure<Badge>(state, others, add, [&](const std::shared_ptr<Badge>& badge) {
        add(badge);
        player->removeObserver(badge);
    });
}

void measureQt(benchmark::State& state, std::size_t others) {
    QtPlayer player;
    const auto add = [&](const std::shared_ptr<QtBadge>& badge) {
        return QObject::connect(&player, &QtPlayer::didPause, badge.get(), &QtBadge::playerDidPause,
                                Qt::DirectConnection);
    };
    measure<QtBadge>(state, others, add,
                     [&](const std::shared_ptr<QtBadge>& badge) { QObject::disconnect(add(badge)); });
}

void measureSignals2(benchmark::State& state, std::size_t others) {
    using Signal = boost::signals2::signal<void(bool)>;
    Signal didPause;
    const auto add = [&](const std::shared_ptr<PlainBadge>& badge) {
        const auto slot = [raw = badge.get()](bool paused) { raw->playerDidPause(paused); };
        return didPause.connect(Signal::slot_type(slot).track_foreign(badge));
    };
    measure<PlainBadge>(state, others, add,
                        [&](const std::shared_ptr<PlainBadge>& badge) { add(badge).disconnect(); });
}

void measurePoco(benchmark::State& state, std::size_t others) {
    using Observer = Poco::NObserver<PocoBadge, PocoPause>;
    Poco::NotificationCenter center;
    const auto add = [&](const std::shared_ptr<PocoBadge>& badge) {
        center.addObserver(Observer(*badge, &PocoBadge::playerDidPause));
    };
    measure<PocoBadge>(state, others, add, [&](const std::shared_ptr<PocoBadge>& badge) {
        add(badge);
        center.removeObserver(Observer(*badge, &PocoBadge::playerDidPause));
    });
}

void measureSigc(benchmark::State& state, std::size_t others) {
    sigc::signal<void(bool)> didPause;
    const auto add = [&](const std::shared_ptr<PlainBadge>& badge) {
        return didPause.connect(sigc::mem_fun(*badge, &PlainBadge::playerDidPause));
    };
    measure<PlainBadge>(state, others, add,
                        [&](const std::shared_ptr<PlainBadge>& badge) { add(badge).disconnect(); });
}

void addRegistrationRow(std::size_t others, const std::string& name,
                        void (*measure)(benchmark::State&, std::size_t)) {
    const std::string group = "add and remove one observer, " + std::to_string(others) + " others";
    addRow(group, name, [=](benchmark::State& state) { measure(state, others); });
}

} // namespace

void addRegistrationRows() {
    for (const std::size_t others : {0, 10, 1000}) {
        addRegistrationRow(others, "floor: mutex and unordered_map", measureFloor);
        addRegistrationRow(others, "floor: the same with a token", measureFloorWithToken);
        addRegistrationRow(others, "ours: addObserver, token->cancel", measureToken);
        addRegistrationRow(others, "ours: addObserver, removeObserver", measureRemove);
        addRegistrationRow(others, "peer: Qt connect, disconnect", measureQt);
        addRegistrationRow(others, "peer: boost::signals2, tracked", measureSignals2);
        addRegistrationRow(others, "peer: Poco::NotificationCenter", measurePoco);
        addRegistrationRow(others, "note: sigc::signal, untracked and for one thread", measureSigc);
    }
}

} // namespace vorlan::benchmarks
