// SPDX-License-Identifier: Apache-2.0
#pragma once

// The desktop's keyring on a bus of its own: the peer, without the user's secrets.

#include <gio/gio.h>

#include <filesystem>
#include <memory>

namespace vorlan::benchmarks {

/// A session bus with an unlocked gnome-keyring daemon on it, which keeps its files in the home of the moment. What this
/// process asks of the session bus goes there.
///
/// Threads: made first in the process, while no other thread reads the environment.
/// Owns:    both processes.
/// Errors:  throws std::runtime_error when the keyring does not come up.
class PrivateKeyring {
public:
    explicit PrivateKeyring(const std::filesystem::path& home);
    PrivateKeyring(const PrivateKeyring&) = delete;
    PrivateKeyring& operator=(const PrivateKeyring&) = delete;
    ~PrivateKeyring();

private:
    template <class Object>
    struct Unref {
        void operator()(Object* object) const { g_object_unref(object); }
    };
    template <class Object>
    using Owner = std::unique_ptr<Object, Unref<Object>>;

    static bool isOnBus(GDBusConnection* connection);
    void waitUntilItAnswers() const;

    GTestDBus* bus_;
    Owner<GSubprocess> daemon_;
};

} // namespace vorlan::benchmarks
