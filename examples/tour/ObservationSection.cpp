// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/VorlanFoundation.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using namespace vorlan;

namespace {

enum class TrackEvent { loaded };

} // namespace

template <>
struct vorlan::RawValues<TrackEvent> {
    static constexpr std::array cases{std::pair(TrackEvent::loaded, std::string_view("loaded"))};
};

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

bool showObservers() {
    const auto player = std::make_shared<Player>();
    const auto badge = std::make_shared<Badge>();
    const auto token = player->addObserver(badge);
    player->pause();
    token->cancelAndWait();
    player->pause();
    tour::line("Observable", "paused twice, told " + std::to_string(badge->calls) +
                                 " time: the token was cancelled between");
    return badge->calls == 1;
}

bool showWeakSets() {
    const auto badge = std::make_shared<Badge>();
    WeakSet<Badge> badges{badge};
    badges.insert(std::make_shared<Badge>());
    const auto before = badges.count();
    const auto alive = badges.allObjects().size();
    tour::line("WeakSet",
               std::to_string(before) + " members, of which " + std::to_string(alive) + " is alive");
    return before == 2 && alive == 1;
}

enum class PanelAction { close };

struct Panel : Actionable<Panel, PanelAction> {
    Actions actions;
};

bool showActions() {
    Panel panel;
    std::string done;
    panel.on(PanelAction::close, [&] { done += "asked"; });
    panel.on(PanelAction::close, [&] { done += "closed"; });
    const auto run = panel.actions.at(PanelAction::close);
    run();
    tour::line("Actionable", "the second action took the first one's place: " + done);
    return done == "closed";
}

struct Track : Callbackable<Track, TrackEvent> {
    Callbacks callbacks;
    std::optional<Queue> callbackQueue = Queue("com.vorlan.tour.callbacks", Queue::concurrent);
};

bool showCallbacks() {
    Track track;
    std::string done;
    track.on(TrackEvent::loaded, [&] { done += " title"; });
    track.on(TrackEvent::loaded, [&] { done += " cover"; });
    track.callbackOnce(TrackEvent::loaded);
    track.callbackOnce(TrackEvent::loaded);
    tour::line("Callbackable", "loaded twice, shown once:" + done);
    return done == " title cover";
}

} // namespace

bool tour::showObservation() {
    title("Observation");
    bool isComplete = true;
    for (const auto show : {showObservers, showWeakSets, showActions, showCallbacks}) isComplete &= show();
    return isComplete;
}
