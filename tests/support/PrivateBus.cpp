// SPDX-License-Identifier: Apache-2.0
#include "tests/support/PrivateBus.h"

#include "tests/support/BusConnection.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <system_error>
#include <vector>

namespace support {

namespace {

constexpr char variable[] = "DBUS_SESSION_BUS_ADDRESS";

std::filesystem::path makeFolder() {
    auto pattern = (std::filesystem::temp_directory_path() / "vorlan-bus-XXXXXX").string();
    EXPECT_NE(mkdtemp(pattern.data()), nullptr) << pattern;
    return pattern;
}

/// A bus without folders of services: with the machine's own a call would start what is installed there.
std::filesystem::path writeConfiguration(const std::filesystem::path& folder) {
    auto file = folder / "bus.conf";
    std::ofstream(file) << "<busconfig><type>session</type><listen>unix:path=" << (folder / "socket").string()
                        << "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                           "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow own=\"*\"/>"
                           "</policy></busconfig>";
    return file;
}

} // namespace

PrivateBus::PrivateBus() : folder_(makeFolder()) {
    const auto configuration = writeConfiguration(folder_).string();
    const auto log = (folder_ / "log").string();
    // It ends with a test that crashes. What it says goes to a file: it complains about limits wherever a process
    // may not raise them.
    daemon_.emplace(std::vector<std::string>{
        "setpriv", "--pdeathsig", "KILL", "sh", "-c",
        R"(exec dbus-daemon --config-file="$0" --nofork --nopidfile --print-address 2>"$1")", configuration,
        log});
    address_ = daemon_->nextLine();
    EXPECT_TRUE(address_.starts_with("unix:")) << address_ << std::ifstream(log).rdbuf();
    if (const char* value = std::getenv(variable)) former_ = value; // NOLINT(concurrency-mt-unsafe)
    setenv(variable, address_.c_str(), 1);                          // NOLINT(concurrency-mt-unsafe)
}

PrivateBus::~PrivateBus() {
    if (former_)
        setenv(variable, former_->c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    else
        unsetenv(variable); // NOLINT(concurrency-mt-unsafe)
    daemon_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void PrivateBus::kill() {
    daemon_.reset();
}

void PrivateBus::waitForName(const std::string& name) const {
    BusConnection(address_).waitForName(name, true);
}

} // namespace support
