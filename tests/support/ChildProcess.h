// SPDX-License-Identifier: Apache-2.0
#pragma once

// A process that a test starts, tells what to do, and hears from.

#include <sys/types.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace support {

/// Variables that a process gets in place of the test's own.
using Variables = std::map<std::string, std::string>;

/// A process with its standard input and output, killed when it is dropped.
///
/// Threads: one thread at a time.
/// Errors:  what cannot be done is a failure of the test case. What is waited for has to come within a minute.
class ChildProcess {
public:
    /// Starts a program, looked for as a shell does, in the environment that the test has now.
    explicit ChildProcess(std::vector<std::string> command, const Variables& variables = {});
    ChildProcess(ChildProcess&& other) noexcept
        : id_(std::exchange(other.id_, 0)),
          input_(std::exchange(other.input_, -1)),
          output_(std::exchange(other.output_, -1)),
          isAtEnd_(other.isAtEnd_),
          received_(std::move(other.received_)) {}
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess();

    pid_t id() const noexcept { return id_; }

    /// Writes to its input. To one that is gone nothing can be sent; that shows when its answer is read.
    void send(std::string_view text) const;

    /// Ends its input.
    void closeInput();

    /// Waits for the next line that it writes; "gone" when it has ended without one.
    std::string nextLine();

    /// Waits for more of its output, for at most so long; false when none came.
    bool receive(int milliseconds);

    /// The same, for as long as anything may be waited for.
    bool receive();

    /// Whether it will write no more, as far as that has been noticed.
    bool isAtEnd() const noexcept { return isAtEnd_; }

    /// What it wrote and nobody has taken yet.
    std::string& received() noexcept { return received_; }

    /// Kills it at once.
    void kill() const;

    /// Ends its input and waits for its end; its exit code, or minus the number of the signal that ended it.
    int wait();

private:
    pid_t id_ = 0;
    int input_ = -1;
    int output_ = -1;
    bool isAtEnd_ = false;
    std::string received_;
};

} // namespace support
