// SPDX-License-Identifier: Apache-2.0
#pragma once

// GLib's monitor of the network as a C++ user wraps it.

#include <gio/gio.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace vorlan::benchmarks {

/// The monitor that applications get from GLib where no daemon looks after the network: it listens to netlink. It
/// is one of its own, which is gone at the end, where GLib's default lives as long as the process.
///
/// Threads: one thread, which also turns the default main context: that is where it hears.
/// Errors:  the constructor throws where GLib has no such monitor.
class GLibNetworkMonitor {
public:
    /// A monitor that calls `changed` at each of its signals; null for nothing.
    explicit GLibNetworkMonitor(std::function<void(bool isAvailable)> changed = nullptr)
        : changed_(std::move(changed)), monitor_(make()) {
        g_signal_connect(monitor_.get(), "network-changed", G_CALLBACK(tell), this);
    }
    GLibNetworkMonitor(const GLibNetworkMonitor&) = delete;
    GLibNetworkMonitor& operator=(const GLibNetworkMonitor&) = delete;
    ~GLibNetworkMonitor() { g_signal_handlers_disconnect_by_data(monitor_.get(), this); }

    bool isAvailable() const { return g_network_monitor_get_network_available(monitor_.get()) == TRUE; }

    /// Whether a host can be reached, by name or address. Waits for the look-up of a name.
    bool canReach(const std::string& host) const {
        const std::unique_ptr<GSocketConnectable, Unreference> target(
            g_network_address_new(host.c_str(), port));
        return g_network_monitor_can_reach(monitor_.get(), target.get(), nullptr, nullptr) == TRUE;
    }

private:
    struct Unreference {
        void operator()(gpointer object) const { g_object_unref(object); }
    };
    using Monitor = std::unique_ptr<GNetworkMonitor, Unreference>;

    static constexpr guint16 port = 7;

    static Monitor make() {
        // One that hears nothing, for the extension point to be there; it lives on.
        setenv("GIO_USE_NETWORK_MONITOR", "base", 1);
        g_network_monitor_get_default();
        auto* point = g_io_extension_point_lookup(G_NETWORK_MONITOR_EXTENSION_POINT_NAME);
        auto* extension =
            point == nullptr ? nullptr : g_io_extension_point_get_extension_by_name(point, "netlink");
        if (extension == nullptr) throw std::runtime_error("this GLib has no monitor of netlink");
        auto* made = g_initable_new(g_io_extension_get_type(extension), nullptr, nullptr, nullptr);
        if (made == nullptr) throw std::runtime_error("GLib's monitor of the network cannot be made");
        return Monitor(G_NETWORK_MONITOR(made));
    }

    static void tell(GNetworkMonitor* /*monitor*/, gboolean isAvailable, gpointer self) {
        const auto& changed = static_cast<GLibNetworkMonitor*>(self)->changed_;
        if (changed) changed(isAvailable == TRUE);
    }

    std::function<void(bool)> changed_;
    Monitor monitor_;
};

} // namespace vorlan::benchmarks
