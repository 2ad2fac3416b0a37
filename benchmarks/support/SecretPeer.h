// SPDX-License-Identifier: Apache-2.0
#pragma once

// The desktop's keyring as applications use it: libsecret's simple calls.

#include <libsecret/secret.h>

#include <cstddef>
#include <memory>
#include <string>

namespace vorlan::benchmarks {

/// Secrets by account, in the session's keyring. Calls tell whether they were done.
///
/// Threads: one thread at a time.
class SecretPeer {
public:
    bool store(const std::string& account, const std::string& secret) const {
        return secret_password_store_sync(schema(), SECRET_COLLECTION_DEFAULT, account.c_str(),
                                          secret.c_str(), nullptr, nullptr, "service", service, "account",
                                          account.c_str(), nullptr) == TRUE;
    }

    bool lookUp(const std::string& account, std::size_t length) const {
        const std::unique_ptr<char, decltype(&secret_password_free)> found(
            secret_password_lookup_sync(schema(), nullptr, nullptr, "service", service, "account",
                                        account.c_str(), nullptr),
            secret_password_free);
        return found && std::char_traits<char>::length(found.get()) == length;
    }

    bool remove(const std::string& account) const {
        return secret_password_clear_sync(schema(), nullptr, nullptr, "service", service, "account",
                                          account.c_str(), nullptr) == TRUE;
    }

private:
    static constexpr auto service = "org.example.vault";

    static const SecretSchema* schema() {
        static const SecretSchema only{.name = "org.example.Vault",
                                       .flags = SECRET_SCHEMA_NONE,
                                       .attributes = {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                                      {"account", SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                       .reserved = 0,
                                       .reserved1 = nullptr,
                                       .reserved2 = nullptr,
                                       .reserved3 = nullptr,
                                       .reserved4 = nullptr,
                                       .reserved5 = nullptr,
                                       .reserved6 = nullptr,
                                       .reserved7 = nullptr};
        return &only;
    }
};

} // namespace vorlan::benchmarks
