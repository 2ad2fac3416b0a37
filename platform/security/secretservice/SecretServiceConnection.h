// SPDX-License-Identifier: Apache-2.0
#pragma once

// A session with a Secret Service on the session's bus.

#include "platform/security/secretservice/Deadline.h"
#include "platform/security/secretservice/GLibOwners.h"

#include <VorlanFoundation/Platform/Data.h>

#include <optional>
#include <string>

// How to code secrets is in the part of the library that asks for this.
#define SECRET_WITH_UNSTABLE 1
#define SECRET_API_SUBJECT_TO_CHANGE 1
#include <libsecret/secret.h>

namespace vorlan::security::secretservice {

/// Where the service itself is.
inline constexpr char servicePath[] = "/org/freedesktop/secrets";
inline constexpr char serviceInterface[] = "org.freedesktop.Secret.Service";
inline constexpr char propertiesInterface[] = "org.freedesktop.DBus.Properties";

/// Which method of which object.
struct Method {
    const char* path;
    const char* interface;
    const char* name;
};

/// One running service, and the key agreed with it, under which secrets travel. When the service ends, calls
/// fail as lost for good, even if there is another one by then: that has no such key.
///
/// Threads: safe from any thread.
/// Errors:  Failure.
class SecretServiceConnection {
public:
    /// Finds the service, starting it where the bus can, and agrees on a key.
    explicit SecretServiceConnection(const Deadline& deadline);
    SecretServiceConnection(const SecretServiceConnection&) = delete;
    SecretServiceConnection& operator=(const SecretServiceConnection&) = delete;
    ~SecretServiceConnection();

    /// Calls a method and returns what it answers, of the type that is given. Takes arguments that nobody
    /// owns yet; null for none.
    VariantOwner call(const Method& method, GVariant* arguments, const char* answerType,
                      const Deadline& deadline) const;

    /// A value on its way to the service.
    VariantOwner seal(const std::optional<Data>& value) const;

    /// The value in a secret that came from it; a Failure when it is damaged.
    std::optional<Data> open(GVariant* secret) const;

    /// The name of the key.
    const char* sessionPath() const { return secret_service_get_session_dbus_path(service_.get()); }

    GDBusConnection* bus() const noexcept { return bus_.get(); }

    /// The service's own name on the bus.
    const std::string& owner() const noexcept { return owner_; }

    /// Takes note of what the service told meanwhile, so that it does not pile up.
    void settle() const;

private:
    bool isWellFormed(GVariant* secret) const;

    // Where the library is told what the service does; kept longest.
    ContextOwner context_;
    ObjectOwner<GDBusConnection> bus_;
    ObjectOwner<SecretService> service_;
    std::string owner_;
};

} // namespace vorlan::security::secretservice
