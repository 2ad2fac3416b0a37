// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/VorlanFoundation.h>

#include <iostream>
#include <memory>
#include <string>
#include <string_view>

using namespace vorlan;

namespace {

std::string stateOf(const Reachability& monitor) {
    const auto connection = description(monitor.connection());
    return (monitor.isReachable() ? tour::good(connection) : tour::bad(connection)) + ", flags \"" +
           monitor.description() + "\"";
}

void showGeneral() {
    const auto network = std::make_shared<Reachability>();
    tour::line("Reachability", "the network in general: " + stateOf(*network));
}

bool showHost() {
    // A delivery may still be on its way when this returns.
    const auto told = std::make_shared<int>(0);
    const auto host = std::make_shared<Reachability>("localhost");
    const auto show = [told](Reachability& monitor) {
        tour::line("localhost", stateOf(monitor) + ", told on " +
                                    (Thread::isMainThread() ? "the main thread" : "another thread"));
        ++*told;
    };
    host->whenReachable = show;
    host->whenUnreachable = show;
    const auto observation = NotificationCenter::default_().addObserver(
        {.name = notificationName::reachabilityChanged(), .object = host}, [told](const Notification& note) {
            tour::line("NotificationCenter", "\"" + note.name.rawValue() + "\" was posted");
            ++*told;
        });
    host->startNotifier();
    return tour::serveMainQueueUntil([&] { return *told == 2; });
}

bool showRefusal() {
    try {
        const auto nobody = std::make_shared<Reachability>("");
        return false;
    } catch (const ReachabilityError& error) {
        tour::line("ReachabilityError",
                   std::string("of a name that is empty: ") + SCErrorString(error.status()));
        return error.kind() == ReachabilityError::Case::failedToCreateWithHostname;
    }
}

void follow(Reachability& monitor) {
    const auto show = [](Reachability& changed) { tour::line(tour::timeOfDay(), stateOf(changed)); };
    monitor.whenReachable = show;
    monitor.whenUnreachable = show;
}

} // namespace

bool tour::showReachability() {
    title("Reachability of a host");
    try {
        showGeneral();
        const bool isHostShown = showHost();
        return showRefusal() && isHostShown;
    } catch (const ReachabilityError& error) {
        line("ReachabilityError", bad(error.what()));
        return false;
    }
}

int tour::watchHost(std::string_view name) {
    try {
        const auto host = std::make_shared<Reachability>(name);
        title("Following the way to " + std::string(name) + " (interrupt to end)");
        follow(*host);
        const auto observation = NotificationCenter::default_().addObserver(
            {.name = notificationName::reachabilityChanged(), .object = host},
            [](const Notification& note) { line("", "\"" + note.name.rawValue() + "\" was posted"); });
        host->startNotifier();
        return RunLoop::main().run();
    } catch (const ReachabilityError& error) {
        std::cerr << "vorlan-tour: " << error.what() << "\n";
        return 1;
    }
}
