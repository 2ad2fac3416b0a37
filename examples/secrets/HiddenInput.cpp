// SPDX-License-Identifier: Apache-2.0
#include "examples/secrets/HiddenInput.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iostream>

namespace secrets {

namespace {

constexpr std::array signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

volatile std::sig_atomic_t received = 0;

/// As long as it lives, signals that would end the process only interrupt waiting. The last that came then ends it.
class Interruptible {
public:
    Interruptible() {
        sigset_t blocked;
        sigemptyset(&blocked);
        for (const int signal : signals) sigaddset(&blocked, signal);
        sigprocmask(SIG_BLOCK, &blocked, &mask_);
        for (std::size_t i = 0; i < signals.size(); ++i) interrupt(signals[i], former_[i]);
    }
    Interruptible(const Interruptible&) = delete;
    Interruptible& operator=(const Interruptible&) = delete;
    ~Interruptible() {
        for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &former_[i], nullptr);
        sigprocmask(SIG_SETMASK, &mask_, nullptr);
        if (received != 0) raise(received);
    }

    /// Waits for input; false when a signal came, also one that came before.
    bool wait() const {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        while (ppoll(&input, 1, nullptr, &mask_) < 0)
            if (errno != EINTR || received != 0) return false;
        return true;
    }

private:
    static void interrupt(int signal, struct sigaction& former) {
        struct sigaction interrupting{};
        interrupting.sa_handler = [](int number) { received = number; };
        sigaction(signal, &interrupting, &former);
        if (former.sa_handler == SIG_IGN)
            sigaction(signal, &former, nullptr); // as for a job in the background
    }

    sigset_t mask_{};
    std::array<struct sigaction, signals.size()> former_{};
};

/// A terminal that does not show what is typed, as long as it lives.
class WithoutEcho {
public:
    WithoutEcho() {
        tcgetattr(STDIN_FILENO, &former_);
        auto hiding = former_;
        hiding.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hiding);
    }
    WithoutEcho(const WithoutEcho&) = delete;
    WithoutEcho& operator=(const WithoutEcho&) = delete;
    ~WithoutEcho() {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &former_);
        std::cerr << '\n'; // the one that was typed was not shown either
    }

private:
    struct termios former_{};
};

// A byte at a time: nothing is left in a buffer that nobody clears.
std::optional<std::string> readLine(const Interruptible& interruptible) {
    std::string line;
    while (interruptible.wait()) {
        char byte = 0;
        const auto count = read(STDIN_FILENO, &byte, 1);
        if (count < 0 || (count == 0 && line.empty())) return std::nullopt;
        if (count == 0 || byte == '\n') return line;
        line += byte;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> readHiddenLine(std::string_view prompt) {
    const Interruptible interruptible;
    if (isatty(STDIN_FILENO) == 0) return readLine(interruptible);
    const WithoutEcho withoutEcho; // which throws away what was typed before
    std::cerr << prompt << std::flush;
    return readLine(interruptible);
}

} // namespace secrets
