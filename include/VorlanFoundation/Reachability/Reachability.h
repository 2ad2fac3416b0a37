// SPDX-License-Identifier: Apache-2.0
#pragma once

// Watches whether a host, or the network in general, can be reached.
//
//     auto host = std::make_shared<Reachability>("example.org");   // throws ReachabilityError
//     host->whenReachable = [](Reachability& r) { Logger::log(r.description()); };
//     host->startNotifier();                                       // throws ReachabilityError

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/NotificationCenter.h>
#include <VorlanFoundation/Platform/Object.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/SynchronizedProperty.h>
#include <VorlanFoundation/Platform/SystemConfiguration.h>
#include <VorlanFoundation/Reachability/ReachabilityError.h>
#include <VorlanFoundation/Reachability/ReachabilityStatusReporter.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

/// The queues that a `Reachability` works with.
struct ReachabilityQueues {
    /// The quality of service of the monitor's own serial queue.
    QualityOfService queueQoS = QualityOfService::default_;
    /// What that queue's blocks run as blocks of; absent for the global queue of that quality of service.
    std::optional<Queue> targetQueue{};
    /// Where callbacks are called and the notification is posted; absent for nowhere: nothing is then delivered.
    std::optional<Queue> notificationQueue = Queue::main();
};

/// Watches the way to a host, or to the network in general, and tells when it changes.
///
/// Stopped, then `startNotifier()`, then `stopNotifier()`, as often as wanted. A monitor that is stopped still answers
/// `connection()`, `isReachable()` and `description()` by the flags that were found last. The first two find them if
/// there are none yet, and that is delivered as a change, also before the first start.
///
/// Whether a host can be reached is what this machine knows by itself: the host's name has an address, and there
/// is a route to it over a link that works. No packet is sent to the host. Hosts should try all the same, and use this
/// to time their tries.
///
/// Threads:     safe from any thread. Callbacks are called on the notification queue, by default the main queue.
/// Owns:        the system's object, its serial queue and the callbacks; what the system keeps holds the monitor weakly,
///              so that dropping it ends the deliveries. The monitor has to live in a `std::shared_ptr`; a callback
///              that keeps its owner alive keeps it for ever: let it hold the owner weakly.
/// Re-entrancy: callbacks may do anything with the monitor: replace callbacks, stop, start, drop it. A host
///              that gives the serial queue a target must not start the monitor in a block of it, nor ask there for the
///              connection before the flags are known: it would wait for its own turn.
/// Time:        the first delivery after the first start is the state at that moment, unless it was found before; then
///              each change of the flags (gathered for 20 ms). Flags that are equal to the last ones are not delivered.
///              What is delivered is the state when the notification queue gets to it, so that two quick changes may
///              show the latter twice. For the blocking on the look-up of a name see SCNetworkReachabilityGetFlags.
/// Errors:      constructors and `startNotifier()` throw `ReachabilityError`; nothing stays registered then. A monitor
///              whose flags cannot be found is stopped.
class VORLAN_EXPORT Reachability : public virtual Object, public ReachabilityStatusReporter {
public:
    /// What a destination can be reached over.
    enum class Connection {
        unavailable, ///< Nothing.
        wifi,        ///< Whatever there is; the name is history.
        cellular,    ///< A mobile network. Never found on this platform.
    };

    /// What is called when the way changed.
    using Callback = std::function<void(Reachability&)>;

    /// A monitor of the network in general. Throws `failedToCreateWithAddress`.
    explicit Reachability(const ReachabilityQueues& queues = ReachabilityQueues());

    /// A monitor of a host by name, or by its address as text. Throws `failedToCreateWithHostname` for what can be no
    /// name (see SCNetworkReachabilityCreateWithName); that there is no host of that name is no failure.
    explicit Reachability(std::string_view hostname, const ReachabilityQueues& queues = ReachabilityQueues());

    /// A monitor of a system object, which it keeps. Never fails.
    ///
    /// The object should be this monitor's alone: starting sets its callback and its queue, and a start that fails, a
    /// stop and the end of the monitor clear them, whoever set them.
    explicit Reachability(SCNetworkReachabilityRef reachabilityRef,
                          const ReachabilityQueues& queues = ReachabilityQueues());

    /// Stops.
    ~Reachability() override;

    /// Called when a change leaves a connection other than `unavailable`; null for nothing.
    SynchronizedProperty<Callback> whenReachable;

    /// Called when a change leaves `unavailable`; null for nothing.
    SynchronizedProperty<Callback> whenUnreachable;

    /// Kept for hosts; nothing here consults it.
    SynchronizedProperty<bool> allowsCellularConnection{true};

    /// Where `notificationName::reachabilityChanged()` is posted, with the monitor as object.
    SynchronizedProperty<NotificationCenter> notificationCenter{NotificationCenter::default_()};

    /// Begins to deliver changes; does nothing while it does already, or while another thread is starting it.
    ///
    /// Throws `unableToSetCallback`, `unableToSetDispatchQueue` or `unableToGetFlags`, and is stopped then.
    void startNotifier();

    /// Ends the deliveries. One that is due on the notification queue already still comes.
    void stopNotifier();

    /// What the destination can be reached over now; `unavailable` when that cannot be found out.
    Connection connection() const;

    /// Whether the connection is other than `unavailable`.
    bool isReachable() const override;

    /// The flags in ten characters, a dash for each that is not set: "-R ------d"; "unavailable flags" while there are
    /// none.
    std::string description() const;

private:
    using Flags = SCNetworkReachabilityFlags;
    enum class Notifier { stopped, starting, running };

    static void callout(const SCNetworkReachabilityRef& target, Flags flags, void* info);

    void registerWithSystem();
    void clearRegistration();
    void findFlagsIfUnknown() const;
    void refreshFlags();
    void store(Flags flags);
    void notifyReachabilityChanged();
    void deliver();

    static constexpr bool isRunningOnDevice = true;

    const SCNetworkReachabilityRef reachabilityRef_;
    const Queue reachabilitySerialQueue_;
    const std::optional<Queue> notificationQueue_;
    std::atomic<std::optional<Flags>> flags_{};
    std::mutex mutex_; ///< Guards the next two, and what is registered with the system.
    Notifier notifier_ = Notifier::stopped;
    std::uint64_t stops_ = 0; ///< Tells a start that it was overtaken by a stop.
};

/// The connection in words: "No Connection", "WiFi", "Cellular".
VORLAN_EXPORT std::string description(Reachability::Connection connection);

namespace notificationName {

/// Posted by a `Reachability` when its flags changed, after its callbacks. Its object is the monitor, and it carries no
/// user information.
VORLAN_EXPORT const NotificationName& reachabilityChanged();

} // namespace notificationName

} // namespace vorlan
