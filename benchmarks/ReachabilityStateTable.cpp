// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/ReachabilityStateTable.h"

#include "benchmarks/ReachabilityStates.h"
#include "benchmarks/support/Connections.h"
#include "benchmarks/support/GLibNetworkMonitor.h"
#include "benchmarks/support/PrivateNetwork.h"

#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Platform/RunLoop.h>
#include <VorlanFoundation/Reachability/Reachability.h>

#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vorlan::benchmarks {

namespace {

using namespace std::chrono_literals;

/// How often each state is made.
constexpr int times = 5;

/// The bit of an exit status that says that the others are answers.
constexpr int isComplete = 8;

constexpr auto hostsOfEveryState = "127.0.0.1 localhost\n::1 localhost\n";

/// The machine that asks, with a router and a server beyond it; all three work.
///
/// Threads: made while the process has one thread, in a private network.
class Surroundings {
public:
    Surroundings() {
        ip("link set lo up\nlink add veth0 type veth peer name vpeer netns " + router_.name() + "\n");
        router_.ip("link set lo up\nlink add rout type veth peer name sout netns " + server_.name() + "\n");
        server_.ip("link set lo up\n"
                   "addr add 198.51.100.7/24 dev sout\naddr add 203.0.113.7/24 dev sout\n"
                   "addr add 2001:db8:1::7/64 dev sout nodad\nlink set sout up\n");
        router_.ip("link set vpeer addrgenmode none\nlink set rout addrgenmode none\n"
                   "addr add 10.9.0.2/24 dev vpeer\naddr add fd00:9::2/64 dev vpeer nodad\n"
                   "addr add fe80::2/64 dev vpeer nodad\n"
                   "addr add 198.51.100.1/24 dev rout\naddr add 203.0.113.1/24 dev rout\n"
                   "addr add 2001:db8:1::1/64 dev rout nodad\naddr add fe80::3/64 dev rout nodad\nlink set "
                   "vpeer up\nlink set rout up\n");
        server_.ip("route add default via 198.51.100.1\nroute add default via 2001:db8:1::1\n");
        ip("link set veth0 addrgenmode none\naddr add 10.9.0.1/24 dev veth0\nlink set veth0 up\n"
           "route add default via 10.9.0.2\n");
    }

    /// Changes the state to that.
    void become(const NetworkState& state) const {
        if (!state.setting.empty())
            writeSetting("/proc/sys/net/ipv6/conf/veth0/" + state.setting, state.settingValue);
        if (!state.changes.empty()) ip(state.changes);
        if (!state.changesAtRouter.empty()) router_.ip(state.changesAtRouter);
    }

private:
    static void forwardPackets() {
        writeSetting("/proc/sys/net/ipv4/ip_forward", "1");
        writeSetting("/proc/sys/net/ipv6/conf/all/forwarding", "1");
    }

    Machine router_{forwardPackets};
    Machine server_{[] {}};
};

/// What each says to: can it be reached?
struct Answers {
    bool truth = false;
    bool ours = false;
    bool glib = false;
};

bool isTrue(const NetworkState& state) {
    return isAnswered(state.host.empty() ? std::vector<std::string>{"198.51.100.7", "2001:db8:1::7"}
                                         : std::vector<std::string>{state.host});
}

/// Has the main loop turn for that long.
void serve(std::chrono::milliseconds time) {
    const auto deadline = DispatchTime::now() + time;
    while (DispatchTime::now() < deadline) RunLoop::main().runOnce(deadline);
}

/// Both monitors watch while the state comes about, as those of an application do.
Answers ask(const NetworkState& state) {
    enterPrivateNetwork();
    replaceFile("/etc/hosts", hostsOfEveryState + state.hosts);
    replaceFile("/etc/resolv.conf", "nameserver 127.0.0.1\n"); // where no server is: that is answered at once
    replaceFile("/etc/nsswitch.conf", "hosts: files dns\n");
    const Surroundings surroundings;
    const GLibNetworkMonitor theirs;
    const auto ours =
        state.host.empty() ? std::make_shared<Reachability>() : std::make_shared<Reachability>(state.host);
    ours->startNotifier();
    serve(200ms);
    surroundings.become(state);
    serve(1500ms); // the kernel may take a second to tell of a bridge
    return {.truth = isTrue(state),
            .ours = ours->isReachable(),
            .glib = state.host.empty() ? theirs.isAvailable() : theirs.canReach(state.host)};
}

/// Asks in a process of its own, whose exit status carries the answers; returns its number.
pid_t askElsewhere(const NetworkState& state) {
    std::fflush(stdout);
    const pid_t process = fork();
    if (process != 0) return process;
    try {
        const auto answers = ask(state);
        _exit(isComplete | (answers.truth ? 4 : 0) | (answers.ours ? 2 : 0) | (answers.glib ? 1 : 0));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", state.name.c_str(), error.what());
        _exit(0);
    }
}

/// How many of some times each said yes.
struct Tally {
    int truth = 0;
    int ours = 0;
    int glib = 0;
};

/// Asks some times, at the same time: what depends on luck comes out differently.
///
/// Errors: nothing where it could not be asked; a process has said why.
std::optional<Tally> askOften(const NetworkState& state) {
    std::array<pid_t, times> processes{};
    std::ranges::generate(processes, [&] { return askElsewhere(state); });
    Tally tally;
    bool isAnswered = true;
    for (const pid_t process : processes) {
        int status = 0;
        isAnswered = waitpid(process, &status, 0) == process && WIFEXITED(status) && isAnswered;
        const int bits = WEXITSTATUS(status);
        isAnswered = isAnswered && (bits & isComplete) != 0;
        tally.truth += (bits & 4) != 0 ? 1 : 0;
        tally.ours += (bits & 2) != 0 ? 1 : 0;
        tally.glib += (bits & 1) != 0 ? 1 : 0;
    }
    return isAnswered ? std::optional(tally) : std::nullopt;
}

std::string word(int count) {
    if (count == 0) return "no";
    return count == times ? "yes" : "yes or no";
}

std::string verdict(int said, int truth) {
    return said == truth ? word(said) : "**" + word(said) + "**";
}

/// How many were right.
struct Score {
    int asked = 0;
    int ours = 0;
    int glib = 0;

    void count(const Tally& tally) {
        ++asked;
        ours += tally.ours == tally.truth ? 1 : 0;
        glib += tally.glib == tally.truth ? 1 : 0;
    }
};

void printHead() {
    utsname system{};
    uname(&system);
    const std::string release(system.release);
    std::printf(
        "Linux %s, GLib %u.%u.%u\n\n"
        "| State | A connection is answered | `Reachability` | `GNetworkMonitor` |\n|---|---|---|---|\n",
        release.substr(0, release.find('-')).c_str(), glib_major_version, glib_minor_version,
        glib_micro_version);
}

} // namespace

int printReachabilityStates(std::string_view part) {
    printHead();
    Score score;
    bool isWhole = true;
    for (const auto& state : networkStates()) {
        if (state.name.find(part) == std::string::npos) continue;
        const auto tally = askOften(state);
        isWhole = isWhole && tally;
        if (!tally) continue;
        score.count(*tally);
        const auto title = state.host.empty() ? state.name : state.name + " (`" + state.host + "`)";
        std::printf("| %s | %s | %s | %s |\n", title.c_str(), word(tally->truth).c_str(),
                    verdict(tally->ours, tally->truth).c_str(), verdict(tally->glib, tally->truth).c_str());
    }
    std::printf("| **right** | %d states | %d | %d |\n", score.asked, score.ours, score.glib);
    return isWhole ? 0 : 1;
}

} // namespace vorlan::benchmarks
