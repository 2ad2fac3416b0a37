// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/Failure.h"

#include "platform/security/secretservice/GLibOwners.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vorlan::security::secretservice {

namespace {

struct Meaning {
    std::string_view name;
    Failure::Kind kind;
    OSStatus status;
};

// Not found is none of these: whether a missing item means that is for those to say who know what was asked.
constexpr std::array meanings = {
    Meaning{"org.freedesktop.Secret.Error.IsLocked", Failure::Kind::locked, errSecInteractionNotAllowed},
    Meaning{"org.freedesktop.Secret.Error.NoSuchObject", Failure::Kind::gone, errSecNotAvailable},
    Meaning{"org.freedesktop.DBus.Error.UnknownMethod", Failure::Kind::gone, errSecNotAvailable},
    Meaning{"org.freedesktop.DBus.Error.UnknownObject", Failure::Kind::gone, errSecNotAvailable},
    Meaning{"org.freedesktop.DBus.Error.UnknownInterface", Failure::Kind::gone, errSecNotAvailable},
    Meaning{"org.freedesktop.Secret.Error.NoSession", Failure::Kind::lost, errSecNotAvailable},
    Meaning{"org.freedesktop.DBus.Error.ServiceUnknown", Failure::Kind::lost, errSecNotAvailable},
    Meaning{"org.freedesktop.DBus.Error.NameHasNoOwner", Failure::Kind::lost, errSecNotAvailable},
    Meaning{"org.freedesktop.DBus.Error.NoReply", Failure::Kind::lost, errSecNotAvailable},
    Meaning{"org.freedesktop.DBus.Error.Disconnected", Failure::Kind::lost, errSecNotAvailable},
    Meaning{"org.freedesktop.DBus.Error.NoMemory", Failure::Kind::other, errSecAllocate},
    Meaning{"org.freedesktop.DBus.Error.IOError", Failure::Kind::other, errSecIO},
};

bool saysThatTheBusIsGone(const GError& error) {
    return g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CLOSED) ||
           g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CONNECTION_CLOSED);
}

} // namespace

Failure::Failure(const GError& error) {
    const TextOwner name(g_dbus_error_get_remote_error(&error));
    if (!name) {
        if (saysThatTheBusIsGone(error)) kind_ = Kind::lost;
        return;
    }
    const auto* meaning = std::ranges::find(meanings, std::string_view(name.get()), &Meaning::name);
    if (meaning == meanings.end()) return;
    kind_ = meaning->kind;
    status_ = meaning->status;
}

} // namespace vorlan::security::secretservice
