// SPDX-License-Identifier: Apache-2.0
#pragma once

// The desktop's own keyring daemon, on the test's bus.

#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateBus.h"

#include <filesystem>
#include <optional>

namespace vorlan::tests {

/// A gnome-keyring daemon with folders of its own, which owns org.freedesktop.secrets once this is made.
///
/// Threads: one thread at a time.
/// Owns:    the daemon's process, and the folders of its keyrings.
class GnomeKeyring {
public:
    /// Whether there is a keyring, unlocked, as after a login, or none at all yet.
    enum class Login { unlocked, none };

    explicit GnomeKeyring(const support::PrivateBus& bus, Login login = Login::unlocked);
    GnomeKeyring(const GnomeKeyring&) = delete;
    GnomeKeyring& operator=(const GnomeKeyring&) = delete;
    ~GnomeKeyring();

    /// Whether the daemon is installed; where it is not, tests that need it are skipped.
    static bool isInstalled();

    /// Locks the keyring, as a user may.
    void lock() const;
    /// Opens it again, without a question.
    void unlock() const;

    /// Where its files are.
    const std::filesystem::path& folder() const noexcept { return folder_; }

    /// Kills the daemon at once.
    void kill();
    /// Starts it again over the same folders, unlocked.
    void restart();

    /// Has it hang, and go on.
    void hang() const;
    void goOn() const;

private:
    void start();

    const support::PrivateBus& bus_;
    std::filesystem::path folder_;
    Login login_;
    std::optional<support::ChildProcess> daemon_;
};

} // namespace vorlan::tests
