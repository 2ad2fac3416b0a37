// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tells a host when the way to the network changes.
//
//     NWPathMonitor monitor;
//     monitor.setPathUpdateHandler([](const NWPath& path) { show(path.status()); });
//     monitor.start(Queue("com.example.network"));

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/NWPath.h>
#include <VorlanFoundation/Platform/NWPathSource.h>
#include <VorlanFoundation/Platform/Queue.h>

#include <functional>
#include <memory>

namespace vorlan {

/// Watches the network over all interface types and hands every change of the path to a handler on a queue.
///
/// Created, then `start()`, then `cancel()`: a cancelled monitor stays cancelled.
///
/// Threads:     safe from any thread; destroying it is for one thread, once no other uses it.
/// Owns:        the handler, until it is replaced or the monitor destroyed; the queue, once started. A
///              handler that keeps the monitor's owner alive keeps it for ever: let it hold the owner weakly.
/// Re-entrancy: the handler may do anything with the monitor: replace the handler, cancel, destroy it.
/// Time:        the first delivery after `start()` is the path at that moment. Changes are gathered for 20
///              ms, and a path equal to the last one is not delivered. Deliveries to a serial queue come in
///              order, and the last one is how things stand. The handler is read when it is due, not when the
///              path was found. After `cancel()`, or destruction, on the monitor's serial queue nothing is
///              delivered; from another thread, at most the delivery that is running goes on.
/// Errors:      none; see `NWPathSource::system()` for a system that does not let itself be asked.
class VORLAN_EXPORT NWPathMonitor {
public:
    /// What is called with each path.
    using PathUpdateHandler = std::function<void(const NWPath&)>;

    /// A monitor of this machine's network, over all interface types.
    NWPathMonitor();

    /// A monitor of another source's paths, which must not be null.
    explicit NWPathMonitor(std::shared_ptr<NWPathSource> source);

    NWPathMonitor(const NWPathMonitor&) = delete;
    NWPathMonitor& operator=(const NWPathMonitor&) = delete;

    /// Cancels.
    ~NWPathMonitor();

    /// What is called with each path; empty for nothing.
    PathUpdateHandler pathUpdateHandler() const;

    /// Sets what is called with each path, from the next delivery on; empty for nothing.
    void setPathUpdateHandler(PathUpdateHandler handler);

    /// Begins to deliver paths on `queue`, the present one first.
    ///
    /// While the monitor runs, a second start changes nothing: it keeps its queue. After `cancel()` it is
    /// ignored.
    void start(Queue queue);

    /// Ends the deliveries for good.
    void cancel();

    /// The path at this moment; also before `start()`, after `cancel()`, and ahead of a delivery that is
    /// still due.
    NWPath currentPath() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace vorlan
