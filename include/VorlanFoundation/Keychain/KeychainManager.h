// SPDX-License-Identifier: Apache-2.0
#pragma once

// Secrets by key, in the user's keychain.

#include <VorlanFoundation/Keychain/Accessibility.h>
#include <VorlanFoundation/Keychain/KeychainManageable.h>
#include <VorlanFoundation/Keychain/KeychainSettings.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/Value.h>

#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

/// Keeps bytes, texts and Booleans by key in the user's keychain (Security.h), under the name of a service.
///
///     keychain["password"] = "correct horse";
///     std::optional<std::string> password = keychain["password"];
///     keychain["password"] = std::nullopt;
///
/// Reading, updating and `dataRef` see items only that were written with the same accessibility, synchronizable flag
/// and access group; `remove` sees them whatever their accessibility and flag.
///
/// What a store cannot update it deletes and adds anew, and where that fails as well, all items of the service are
/// deleted: what is in the keychain never differs from what the host was told. A failure that may be about to pass,
/// such as a keyring that is locked, does not come to that: the keychain answers the same for some seconds.
///
/// Threads: safe from any thread. Each call asks the keychain, and blocks until that has answered. Nothing is kept in
///          between, and a call that asks several times is not atomic.
/// Owns:    its four settings, which never change; copies are as good as the original.
/// Errors:  by result: false or absent. Settings that lack a service, a synchronizable flag or an accessibility
///          stop the process with a message. Three operations that have no other way print what failed to
///          standard output.
class VORLAN_EXPORT KeychainManager final : public KeychainManageable {
public:
    /// A manager with the settings of the moment; they are not kept.
    explicit KeychainManager(const KeychainSettings& settings);

    /// A manager with new settings that `configure` has filled; it is called once, on the caller's thread.
    static KeychainManager with(FunctionRef<void(KeychainSettings&)> configure);

    /// Prints "Unable to add data to keychain: " and the status when it was not added, also because there is an item of
    /// that name.
    std::optional<Data> insertReference(const NamedString& string) override;
    bool insert(std::string_view forKey, const std::optional<Data>& with) override;
    std::optional<std::string> string(const Data& from) override;
    std::optional<Data> dataRef(std::string_view forKey) override;
    std::optional<Data> data(std::string_view forKey) override;
    std::optional<std::string> string(std::string_view forKey) override;
    std::optional<bool> bool_(std::string_view forKey) override;
    /// When the key cannot be updated it is removed and inserted; when that fails, the service is wiped.
    bool update(std::string_view forKey, const std::optional<Data>& with) override;
    /// Whatever the accessibility and the synchronizable flag of the key's items.
    bool remove(std::string_view forKey) override;
    /// Items of this service and access group; those only that are not synchronizable.
    bool removeAllKeys(SecurityClass securityClass) override;
    /// Those that are generic passwords, as all that this manager writes are.
    bool removeAllKeys() override;
    /// Prints "Failed to remove keys. Reason: " and the reason when the keys cannot be listed.
    void removeAllKeys(const Keeping& keeping) override;
    void wipe() override;
    /// False only when the keychain is certain that there is none: true when it cannot be asked.
    bool verifyReference(const Data& called) override;
    /// Prints "Unable to remove reference from keychain: " and the status when that failed.
    void removeReference(const Data& called) override;

private:
    Value::Dictionary baseQuery(std::optional<std::string_view> forKey, bool anySynchronizable) const;
    Value::Dictionary serviceQuery(std::string_view securityClass) const;
    std::optional<Data> find(std::string_view forKey, const char* returned) const;
    std::vector<std::string> allKeys() const;

    std::string service_;
    std::optional<std::string> accessGroup_;
    bool synchronizable_;
    Accessibility accessibility_;
};

} // namespace vorlan
