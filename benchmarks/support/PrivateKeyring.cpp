// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/PrivateKeyring.h"

#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

namespace vorlan::benchmarks {

namespace {

constexpr auto password = "of no consequence";

} // namespace

PrivateKeyring::PrivateKeyring(const std::filesystem::path& home) : bus_(g_test_dbus_new(G_TEST_DBUS_NONE)) {
    g_test_dbus_up(bus_);
    const auto control = "--control-directory=" + (home / ".keyring").string();
    constexpr auto flags =
        static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_SILENCE |
                                      G_SUBPROCESS_FLAGS_STDERR_SILENCE);
    daemon_.reset(g_subprocess_new(flags, nullptr, "gnome-keyring-daemon", "--unlock", "--components=secrets",
                                   "--foreground", control.c_str(), nullptr));
    if (!daemon_) throw std::runtime_error("the benchmarks need gnome-keyring-daemon");
    auto* input = g_subprocess_get_stdin_pipe(daemon_.get());
    g_output_stream_write_all(input, password, std::strlen(password), nullptr, nullptr, nullptr);
    g_output_stream_close(input, nullptr, nullptr);
    waitUntilItAnswers();
}

PrivateKeyring::~PrivateKeyring() {
    g_subprocess_force_exit(daemon_.get());
    g_subprocess_wait(daemon_.get(), nullptr, nullptr);
    // Neither taken down nor unreferenced, which would wait half a minute for libsecret to let go of its connection.
    g_test_dbus_stop(bus_);
}

bool PrivateKeyring::isOnBus(GDBusConnection* connection) {
    GVariant* answer = g_dbus_connection_call_sync(
        connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
        g_variant_new("(s)", "org.freedesktop.secrets"), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE, -1,
        nullptr, nullptr);
    if (answer == nullptr) return false;
    gboolean isOwned = FALSE;
    g_variant_get(answer, "(b)", &isOwned);
    g_variant_unref(answer);
    return isOwned == TRUE;
}

void PrivateKeyring::waitUntilItAnswers() const {
    const Owner<GDBusConnection> connection(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!connection) throw std::runtime_error("the bus of the benchmarks does not answer");
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!isOnBus(connection.get())) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("the keyring of the benchmarks does not come up");
        std::this_thread::yield();
    }
}

} // namespace vorlan::benchmarks
