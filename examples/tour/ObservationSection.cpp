// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/VorlanFoundation.h>

#include <memory>
#include <string>

using namespace vorlan;

namespace {

class Player;

struct PlayerObserver {
    virtual ~PlayerObserver() = default;
    virtual void player(Player& player, bool didPause) = 0;
};

class Player : public Observable<PlayerObserver> {
public:
    void pause() {
        notifyObservers([&](PlayerObserver& observer) { observer.player(*this, true); });
    }
};

struct Badge : PlayerObserver {
    void player(Player&, bool) override { ++calls; }
    int calls = 0;
};

} // namespace

bool tour::showObservation() {
    title("Observation");

    const auto player = std::make_shared<Player>();
    const auto badge = std::make_shared<Badge>();
    const auto token = player->addObserver(badge);
    player->pause();
    token->cancelAndWait();
    player->pause();
    line("Observable",
         "paused twice, told " + std::to_string(badge->calls) + " time: the token was cancelled between");

    WeakSet<Badge> badges{badge};
    badges.insert(std::make_shared<Badge>());
    const auto before = badges.count();
    const auto alive = badges.allObjects().size();
    line("WeakSet", std::to_string(before) + " members, of which " + std::to_string(alive) + " is alive");

    return badge->calls == 1 && before == 2 && alive == 1;
}
