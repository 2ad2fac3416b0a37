// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/NetworkEars.h"

#include "benchmarks/support/GLibNetworkMonitor.h"
#include "platform/network/PathCenter.h"

#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/NWPathMonitor.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/RunLoop.h>
#include <VorlanFoundation/Reachability/Reachability.h>

#include <utility>

namespace vorlan::benchmarks {

namespace {

class BareEar : public NetworkEar {
public:
    BareEar(const Cable& cable, std::chrono::milliseconds window) : listener_(cable), window_(window) {}

    std::optional<Clock::time_point> waitFor(bool isOnline, Clock::time_point deadline) override {
        if (!listener_.waitFor(isOnline, deadline)) return std::nullopt;
        if (window_.count() > 0) listener_.gather(Clock::now() + window_);
        return Clock::now();
    }

private:
    BareListener listener_;
    const std::chrono::milliseconds window_;
};

/// An ear that is told on the main loop, and turns it meanwhile.
class LoopEar : public NetworkEar {
public:
    std::optional<Clock::time_point> waitFor(bool isOnline, Clock::time_point deadline) override {
        while (isOnline_ != isOnline) {
            const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
            if (left.count() <= 0) return std::nullopt;
            RunLoop::main().runOnce(DispatchTime::now() + left);
        }
        return heard_;
    }

protected:
    void hear(bool isOnline) {
        if (isOnline_ == isOnline) return;
        heard_ = Clock::now();
        isOnline_ = isOnline;
    }

private:
    std::optional<bool> isOnline_;
    Clock::time_point heard_;
};

class ReachabilityEar : public LoopEar {
public:
    ReachabilityEar() {
        monitor_->whenReachable = [this](Reachability&) { hear(true); };
        monitor_->whenUnreachable = [this](Reachability&) { hear(false); };
        monitor_->startNotifier();
    }

private:
    std::shared_ptr<Reachability> monitor_ = std::make_shared<Reachability>();
};

class PathEar : public LoopEar {
public:
    PathEar() {
        monitor_.setPathUpdateHandler(
            [this](const NWPath& path) { hear(path.status() == NWPath::Status::satisfied); });
        monitor_.start(Queue::main());
    }
    ~PathEar() override { monitor_.cancel(); }

private:
    static std::shared_ptr<NWPathSource> impatientSource() {
        auto providers = network::NetworkProviders::ofThisMachine();
        providers.window = std::chrono::milliseconds(0);
        auto center = std::make_shared<network::NetworkCenter>(Queue("benchmark"), std::move(providers));
        return std::make_shared<network::PathCenter>(std::move(center));
    }

    NWPathMonitor monitor_{impatientSource()};
};

class GLibEar : public LoopEar {
public:
    GLibEar() { hear(monitor_.isAvailable()); }

private:
    GLibNetworkMonitor monitor_{[this](bool isAvailable) { hear(isAvailable); }};
};

} // namespace

std::unique_ptr<NetworkEar> bareEar(const Cable& cable, std::chrono::milliseconds window) {
    return std::make_unique<BareEar>(cable, window);
}

std::unique_ptr<NetworkEar> ourEar() {
    return std::make_unique<ReachabilityEar>();
}

std::unique_ptr<NetworkEar> ourImpatientEar() {
    return std::make_unique<PathEar>();
}

std::unique_ptr<NetworkEar> glibEar() {
    return std::make_unique<GLibEar>();
}

} // namespace vorlan::benchmarks
