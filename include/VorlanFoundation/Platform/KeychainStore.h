// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where the user's secrets are kept, for hosts that want to choose, to lock, to list or to move them.
//
// Most hosts need nothing of this: the first item that is added decides, once for each user.
//
//     KeychainStore::configure({.store = KeychainOptions::Store::embedded});   // first thing in main()
//     std::cout << KeychainStore::description();

#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Security.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

/// How a process uses the keychain.
struct KeychainOptions {
    /// Who keeps the items.
    enum class Store {
        /// As recorded for the user; where nothing is yet, the first item that is added decides: for the desktop's
        /// keyring if that answers and is unlocked, else for the embedded store.
        automatic,
        /// The desktop's keyring: any freedesktop Secret Service on the session's bus.
        secretService,
        /// A file in the user's data folder, sealed by a key in another file.
        embedded,
        /// The memory of this process; gone with it. For tests.
        memory,
    };

    /// Which store. Anything but `automatic` wins over what is recorded: where that says otherwise, every call answers
    /// errSecNotAvailable, and the contradiction is reported once. While it is `automatic`, the environment's
    /// VORLAN_KEYCHAIN_STORE ("secretService", "embedded", "memory" or "automatic") chooses in its place.
    Store store = Store::automatic;

    /// The folder of the record and of the embedded store; by default `$XDG_DATA_HOME/vorlan/keychain`.
    std::filesystem::path folder = {};

    /// The file with the key of the embedded store; by default the environment's VORLAN_KEY_FILE, else `master.key`
    /// in the folder. Keep it apart from the folder and a copy of the latter tells nothing.
    std::filesystem::path keyFile = {};

    /// Whether the desktop's keyring may ask the user, in a window of its own, to unlock it.
    bool allowsPrompts = false;

    /// Whether items in the desktop's keyring go without the label "service: account", which its programs show.
    bool hidesLabels = false;

    /// How long a call waits for a keyring that is not there yet, as just after login.
    DispatchTimeInterval waitForKeyring = std::chrono::seconds(0);

    /// The access groups that the host may use; empty for any.
    std::vector<std::string> accessGroups = {};
};

/// The store that the keychain's functions work on, in this process.
///
/// What accessibility means: in the embedded store with a passphrase (`setPassphrase`), items that are accessible
/// "when unlocked" can be read and written between `unlock` and `lock`, those "after first unlock" from the first
/// `unlock` on, those "always" at any time. Without a passphrase, and in the desktop's keyring, which is open or
/// closed as a whole, it is recorded and takes part in matching.
///
/// Threads: safe from any thread.
/// Errors:  as those of Security.h, with a status.
class VORLAN_EXPORT KeychainStore {
public:
    KeychainStore() = delete;

    /// How this process uses the keychain from now on. Calls that are under way end as they began. A memory store
    /// starts empty, and a hold-off after a failure ends.
    static void configure(KeychainOptions options);

    /// Which store answers: `automatic` as long as nothing is recorded.
    static KeychainOptions::Store current();

    /// The same for logs: "the embedded keychain in /home/anna/.local/share/vorlan/keychain".
    static std::string description();

    /// The accounts of all items of a service, oldest first, in all access groups, synchronizable or not. Those that
    /// are no UTF-8 text are left out.
    ///
    /// errSecItemNotFound, and no keys, when there are none.
    static OSStatus keys(std::string_view service, std::vector<std::string>& keys);

    /// Moves all items of the user from one store to another: copies them, reads the copies back, records the new
    /// store, and only then deletes the old ones. References stay valid. Both must be of the user: `secretService`
    /// and `embedded`, in either direction.
    ///
    /// On failure the old store stays the recorded one, with all items in it; to be tried again. errSecParam when
    /// `from` is not the one that is recorded. Old items that cannot be deleted after the move are reported
    /// (`setProblemHandler`).
    static OSStatus migrate(KeychainOptions::Store from, KeychainOptions::Store to);

    /// Forgets the keys of the embedded store, of items that are to be accessible when unlocked only; or closes the
    /// desktop's keyring. errSecUnimplemented where there is nothing to close: no passphrase was set.
    static OSStatus lock();

    /// Opens the embedded store by its passphrase (takes some 0.2 s, by design); or the desktop's keyring, which takes
    /// none from us: it asks the user, where KeychainOptions::allowsPrompts. errSecAuthFailed for a wrong one.
    static OSStatus unlock(std::string_view passphrase = {});

    /// Has the embedded store ask for a passphrase from now on, after this process too (`lock`), or for none again.
    /// It must be unlocked. errSecParam for an empty one; errSecUnimplemented for other stores.
    static OSStatus setPassphrase(std::optional<std::string_view> passphrase);
};

} // namespace vorlan
