// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/Prompt.h"

#include "platform/security/secretservice/Failure.h"
#include "platform/security/secretservice/PrivateContext.h"

#include <chrono>

namespace vorlan::security::secretservice {

namespace {

constexpr char promptInterface[] = "org.freedesktop.Secret.Prompt";
constexpr std::chrono::milliseconds patience = std::chrono::minutes(5);

enum class Outcome { none, done, dismissed, serviceGone };

/// Hears a signal in the context of the thread that made it.
class Subscription {
public:
    struct Signal {
        const char* sender;
        const char* interface;
        const char* name;
        const char* path;
        const char* firstArgument;
    };

    Subscription(GDBusConnection* bus, const Signal& signal, GDBusSignalCallback callback, Outcome& outcome)
        : bus_(bus),
          number_(g_dbus_connection_signal_subscribe(bus, signal.sender, signal.interface, signal.name,
                                                     signal.path, signal.firstArgument,
                                                     G_DBUS_SIGNAL_FLAGS_NONE, callback, &outcome, nullptr)) {
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription() { g_dbus_connection_signal_unsubscribe(bus_, number_); }

private:
    GDBusConnection* bus_;
    guint number_;
};

void hearAnswer(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* arguments,
                gpointer outcome) {
    gboolean isDismissed = TRUE;
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(bv)")) != FALSE)
        g_variant_get_child(arguments, 0, "b", &isDismissed);
    *static_cast<Outcome*>(outcome) = isDismissed != FALSE ? Outcome::dismissed : Outcome::done;
}

void hearEnd(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
             gpointer outcome) {
    *static_cast<Outcome*>(outcome) = Outcome::serviceGone;
}

} // namespace

void ask(const SecretServiceConnection& service, const std::string& prompt, const Deadline& deadline) {
    const PrivateContext context;
    auto outcome = Outcome::none;
    const auto* owner = service.owner().c_str();
    const Subscription end(
        service.bus(),
        {"org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", "/org/freedesktop/DBus", owner},
        hearEnd, outcome);
    const Subscription answer(service.bus(), {owner, promptInterface, "Completed", prompt.c_str(), nullptr},
                              hearAnswer, outcome);
    service.call({prompt.c_str(), promptInterface, "Prompt"}, g_variant_new("(s)", ""), "()", deadline);
    const auto isOver = [&] {
        return outcome != Outcome::none || g_dbus_connection_is_closed(service.bus()) != FALSE;
    };
    if (!context.turnUntil(isOver, static_cast<int>(patience.count()))) {
        dismiss(service, prompt, Deadline(std::chrono::seconds(1)));
        throw Failure(Failure::Kind::locked, errSecInteractionNotAllowed);
    }
    if (outcome == Outcome::dismissed) throw Failure(Failure::Kind::locked, errSecUserCanceled);
    if (outcome != Outcome::done) throw Failure(Failure::Kind::lost, errSecNotAvailable);
}

void dismiss(const SecretServiceConnection& service, const std::string& prompt,
             const Deadline& deadline) noexcept {
    try {
        service.call({prompt.c_str(), promptInterface, "Dismiss"}, nullptr, "()", deadline);
    } catch (const Failure&) {
        // The question is not asked either way.
    }
}

} // namespace vorlan::security::secretservice
