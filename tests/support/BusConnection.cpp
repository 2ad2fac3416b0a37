// SPDX-License-Identifier: Apache-2.0
#include "tests/support/BusConnection.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace support {

namespace {

constexpr int tenSeconds = 10'000;

std::string textOf(GError* error) {
    if (error == nullptr) return "no reason given";
    const Reference<GError> owner(error);
    return error->message;
}

/// What a watch over a name has told so far.
struct NameWatch {
    bool isOwned = false;
    bool isKnown = false;
    bool isLate = false;

    static void appeared(GDBusConnection*, const gchar*, const gchar*, gpointer watch) { tell(watch, true); }
    static void vanished(GDBusConnection*, const gchar*, gpointer watch) { tell(watch, false); }
    static gboolean expired(gpointer watch) {
        static_cast<NameWatch*>(watch)->isLate = true;
        return G_SOURCE_REMOVE;
    }

private:
    static void tell(gpointer watch, bool isOwned) {
        static_cast<NameWatch*>(watch)->isOwned = isOwned;
        static_cast<NameWatch*>(watch)->isKnown = true;
    }
};

/// Turns a context until the watch has told what is wanted.
void turn(GMainContext* context, const NameWatch& watch, bool isOwned) {
    while (!watch.isLate && !(watch.isKnown && watch.isOwned == isOwned))
        g_main_context_iteration(context, TRUE);
}

} // namespace

BusConnection::BusConnection(const std::string& address) {
    GError* error = nullptr;
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    connection_.reset(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, &error));
    EXPECT_NE(connection_, nullptr) << textOf(error);
}

BusConnection::~BusConnection() {
    close();
}

Reference<GVariant> BusConnection::call(const Method& method, GVariant* arguments) const {
    GError* error = nullptr;
    Reference<GVariant> answer(g_dbus_connection_call_sync(
        get(), method.destination.c_str(), method.path.c_str(), method.interface.c_str(), method.name.c_str(),
        arguments, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, tenSeconds, nullptr, &error));
    EXPECT_NE(answer, nullptr) << method.interface << "." << method.name << ": " << textOf(error);
    return answer;
}

void BusConnection::waitForName(const std::string& name, bool isOwned) const {
    const Reference<GMainContext> context(g_main_context_new());
    g_main_context_push_thread_default(context.get());
    NameWatch watch;
    const auto id = g_bus_watch_name_on_connection(get(), name.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
                                                   NameWatch::appeared, NameWatch::vanished, &watch, nullptr);
    GSource* limit = g_timeout_source_new(tenSeconds);
    g_source_set_callback(limit, NameWatch::expired, &watch, nullptr);
    g_source_attach(limit, context.get());
    turn(context.get(), watch, isOwned);
    g_source_destroy(limit);
    g_source_unref(limit);
    g_bus_unwatch_name(id);
    g_main_context_pop_thread_default(context.get());
    EXPECT_FALSE(watch.isLate) << name << (isOwned ? " has no owner" : " has an owner still");
}

void BusConnection::close() {
    if (connection_ && !g_dbus_connection_is_closed(get()))
        g_dbus_connection_close_sync(get(), nullptr, nullptr);
}

} // namespace support
