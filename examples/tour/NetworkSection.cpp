// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/VorlanFoundation.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

// Hears of updates on the service's monitoring queue and shows them on the main queue.
class Display : public ReachabilityServiceObserver {
public:
    explicit Display(std::function<void(bool, const NWPath&)> show) : show_(std::move(show)) {}

    void reachabilityService(ReachabilityServiceReportable& service, bool didUpdateReachability) override {
        const auto path = dynamic_cast<ReachabilityService&>(service).currentPath();
        ensureMainThread([show = show_, path, didUpdateReachability] { show(didUpdateReachability, path); });
    }

private:
    std::function<void(bool, const NWPath&)> show_;
};

std::string joined(const std::vector<std::string>& texts) {
    std::string result;
    for (const auto& text : texts) result += (result.empty() ? "" : ", ") + text;
    return result.empty() ? "none" : result;
}

std::string typesOf(const NWPath& path) {
    std::vector<std::string> names;
    for (const auto& [type, name] : {std::pair{InterfaceType::wifi, "Wi-Fi"},
                                     {InterfaceType::cellular, "cellular"},
                                     {InterfaceType::wiredEthernet, "wired Ethernet"},
                                     {InterfaceType::other, "other"}})
        if (path.usesInterfaceType(type)) names.emplace_back(name);
    return joined(names);
}

std::string familiesOf(const NWPath& path) {
    std::vector<std::string> names;
    if (path.supportsIPv4()) names.emplace_back("IPv4");
    if (path.supportsIPv6()) names.emplace_back("IPv6");
    return joined(names);
}

std::string reachability(bool isReachable) {
    return isReachable ? tour::good("online") : tour::bad("offline");
}

void showChange(bool isReachable, const NWPath& path) {
    tour::line(tour::timeOfDay(),
               reachability(isReachable) + " over " + typesOf(path) + ": " + path.reason());
}

} // namespace

bool tour::showNetwork() {
    title("Network");
    const auto isShown = std::make_shared<bool>(false); // an update may still be on its way when this returns
    const auto service = std::make_shared<ReachabilityService>();
    const auto token =
        service->addObserver(std::make_shared<Display>([isShown](bool isReachable, const NWPath& path) {
            line("ReachabilityService", reachability(isReachable) +
                                            ", told on the monitoring queue, shown on " +
                                            (Thread::isMainThread() ? "the main thread" : "another thread"));
            line("interfaces", joined(path.availableInterfaces()) + " (" + typesOf(path) + ")");
            line("gateways", joined(path.gateways()));
            line("families", familiesOf(path));
            line("reason", path.reason());
            *isShown = true;
        }));
    service->start();
    return serveMainQueueUntil([&] { return *isShown; });
}

int tour::watchNetwork() {
    title("Watching the network (interrupt to end)");
    const auto service = std::make_shared<ReachabilityService>();
    const auto token = service->addObserver(std::make_shared<Display>(showChange));
    service->start();
    return RunLoop::main().run();
}
