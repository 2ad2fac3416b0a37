// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/secretservice/GnomeKeyring.h"

#include "tests/support/BusConnection.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace vorlan::tests {

namespace {

constexpr char program[] = "gnome-keyring-daemon";
constexpr char busName[] = "org.freedesktop.secrets";
constexpr char servicePath[] = "/org/freedesktop/secrets";
constexpr char serviceInterface[] = "org.freedesktop.Secret.Service";
constexpr char keyringPath[] = "/org/freedesktop/secrets/collection/login";
constexpr std::string_view password = "test-password";

std::filesystem::path makeFolder() {
    auto pattern = (std::filesystem::temp_directory_path() / "vorlan-keyring-XXXXXX").string();
    EXPECT_NE(mkdtemp(pattern.data()), nullptr) << pattern;
    for (const char* name : {"home", "data", "config", "cache", "run"})
        std::filesystem::create_directory(std::filesystem::path(pattern) / name);
    // The daemon refuses a folder for its sockets that others can look into.
    std::filesystem::permissions(std::filesystem::path(pattern) / "run", std::filesystem::perms::owner_all);
    return pattern;
}

/// Without a display it cannot ask anyone anything.
support::Variables variables(const std::filesystem::path& folder, const std::string& address) {
    return {{"HOME", folder / "home"},
            {"XDG_DATA_HOME", folder / "data"},
            {"XDG_CONFIG_HOME", folder / "config"},
            {"XDG_CACHE_HOME", folder / "cache"},
            {"XDG_RUNTIME_DIR", folder / "run"},
            {"DBUS_SESSION_BUS_ADDRESS", address},
            {"DISPLAY", ""},
            {"WAYLAND_DISPLAY", ""},
            {"GNOME_KEYRING_CONTROL", ""}};
}

/// Waits until a child of ours has stopped or gone on.
void waitForChange(pid_t id, int option) {
    siginfo_t change{};
    EXPECT_EQ(waitid(P_PID, static_cast<id_t>(id), &change, option), 0);
}

} // namespace

GnomeKeyring::GnomeKeyring(const support::PrivateBus& bus, Login login)
    : bus_(bus), folder_(makeFolder()), login_(login) {
    start();
}

GnomeKeyring::~GnomeKeyring() {
    daemon_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

bool GnomeKeyring::isInstalled() {
    const char* path = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe)
    std::string_view rest = path != nullptr ? path : "";
    while (!rest.empty()) {
        const auto folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
        if (access((std::filesystem::path(folder) / program).c_str(), X_OK) == 0) return true;
    }
    return false;
}

void GnomeKeyring::start() {
    // In the foreground, and with a wait for its name: a daemon that goes to the background may not have it yet.
    std::vector<std::string> command{program, "--foreground", "--components=secrets"};
    if (login_ == Login::unlocked) command.emplace_back("--unlock");
    daemon_.emplace(std::move(command), variables(folder_, bus_.address()));
    if (login_ == Login::unlocked) daemon_->send(password);
    daemon_->closeInput();
    bus_.waitForName(busName);
}

void GnomeKeyring::lock() const {
    const support::BusConnection connection(bus_.address());
    connection.call({busName, servicePath, serviceInterface, "Lock"},
                    g_variant_new("(@ao)", support::objectPaths({keyringPath})));
}

void GnomeKeyring::unlock() const {
    const support::BusConnection connection(bus_.address());
    const auto session = connection.call({busName, servicePath, serviceInterface, "OpenSession"},
                                         g_variant_new("(sv)", "plain", g_variant_new_string("")));
    if (!session) return;
    const auto path = support::textOf(session.get(), 1);
    // The daemon's own way for the login's programs: the public one would put a question to the user.
    connection.call({busName, servicePath, "org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface",
                     "UnlockWithMasterPassword"},
                    g_variant_new("(o(o@ay@ays))", keyringPath, path.c_str(), support::byteArray(""),
                                  support::byteArray(password), "text/plain"));
}

void GnomeKeyring::kill() {
    daemon_.reset();
    support::BusConnection(bus_.address()).waitForName(busName, false);
}

void GnomeKeyring::restart() {
    if (daemon_) kill();
    start();
}

void GnomeKeyring::hang() const {
    EXPECT_EQ(::kill(daemon_->id(), SIGSTOP), 0);
    waitForChange(daemon_->id(), WSTOPPED);
}

void GnomeKeyring::goOn() const {
    EXPECT_EQ(::kill(daemon_->id(), SIGCONT), 0);
    waitForChange(daemon_->id(), WCONTINUED);
}

} // namespace vorlan::tests
