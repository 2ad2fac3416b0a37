// SPDX-License-Identifier: Apache-2.0
#pragma once

// Networks that exist for the length of a program, and of which the machine sees nothing.

#include <sys/types.h>

#include <functional>
#include <string>

namespace vorlan::benchmarks {

/// Puts the process into network and mount namespaces of its own, with a sysfs that shows them; for who is not root, into
/// a user namespace as well. Nothing but the loopback link is there then, and that is down.
///
/// Threads: called while the process has one thread: a namespace belongs to a thread and to those it makes.
/// Errors:  throws std::system_error where the machine forbids it.
void enterPrivateNetwork();

/// Has every program of the private namespaces find `text` in a file below /etc.
///
/// Errors:  throws std::system_error, also when there is no such file.
void replaceFile(const std::string& path, const std::string& text);

/// Writes a setting below /proc/sys, of the calling thread's network.
///
/// Errors:  throws std::system_error.
void writeSetting(const std::string& path, const std::string& text);

/// Runs ip(8) once with these lines, which stops at the first that fails.
///
/// Errors:  throws std::runtime_error when one failed; ip has said why.
void ip(const std::string& lines);

/// A child process in a network of its own: another machine, as far as can be told from here.
///
/// Threads: made while the process has one thread.
/// Owns:    the process, which ends with this or with its parent's thread.
/// Errors:  the constructor throws where it could not be made, `ip` as the function does.
class Machine {
public:
    /// A machine that calls `prepare` in its own process and network, and does nothing more.
    explicit Machine(const std::function<void()>& prepare);
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    ~Machine();

    /// Whom ip(8) is to give a link to: "netns" and this.
    std::string name() const { return std::to_string(process_); }

    /// Runs ip(8) there.
    void ip(const std::string& lines) const;

private:
    pid_t process_ = -1;
};

} // namespace vorlan::benchmarks
