// SPDX-License-Identifier: Apache-2.0
#pragma once

// Says how names are looked up in a case that runs in namespaces of its own.

#include <string>

namespace vorlan::tests {

/// An /etc of the case's own, in memory: only the case and its children see it, and it goes with them.
///
/// All of the folder, as what is mounted over a single file could not be replaced, nor would a watch of the folder
/// tell of its changes. Names are looked up in `hosts`, which knows this machine, and then in the DNS of
/// 127.0.0.1 ("files dns").
///
/// Threads: one thread at a time. Make it first of all: it changes the process's root folder (for one that looks
///          the same), and what was read of the machine's own /etc before stays as it was.
/// Errors:  what cannot be mounted ends the case by an exception; what cannot be written is a failure of it.
class PrivateEtc {
public:
    PrivateEtc();
    PrivateEtc(const PrivateEtc&) = delete;
    PrivateEtc& operator=(const PrivateEtc&) = delete;

    /// Replaces a file by another one at once, as network managers do: readers see either.
    void replace(const std::string& name, const std::string& text) const;

    /// Writes into a file that is there, as most editors do not, but shells.
    void rewrite(const std::string& name, const std::string& text) const;

    /// Has resolv.conf replaced by one that names this server. It is asked five times, with a pause of so many
    /// seconds (30 at most) each time that no answer comes.
    void useServer(const std::string& address, int pause = 2) const;

    /// Has hosts replaced by one that knows this machine and these lines ("10.9.0.77 box.test").
    void useHosts(const std::string& lines) const;
};

} // namespace vorlan::tests
