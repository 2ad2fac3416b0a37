// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Logging/Logger.h>

#include "logging/LogFile.h"

#include <VorlanFoundation/Platform/Bundle.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/Text.h>
#include <VorlanFoundation/Platform/UserDefaults.h>

#include <mutex>
#include <utility>

namespace vorlan {

namespace {

constexpr std::string_view switchKey = "com.vorlan.foundation.shouldUseLogger";

// Follows the entry that switches the log on, so that a call of `log` need not ask the store.
class SwitchWatch {
public:
    static SwitchWatch& shared() {
        // Opens the store before anything is made here: a problem that it reports then may be logged by who is told.
        UserDefaults::standard().boolForKey(switchKey);
        static auto* const watch = new SwitchWatch;
        return *watch;
    }

    // A change while the store is being asked makes the answer worthless: it is asked again, and nobody sees the former
    // answer, least of all who made the change.
    bool ask() {
        for (;;) {
            const auto before = changes_.load();
            const bool isOn = UserDefaults::standard().boolForKey(switchKey);
            const std::lock_guard lock(mutex_);
            if (changes_ != before) continue;
            detail::logSwitch = isOn ? detail::LogSwitch::on : detail::LogSwitch::off;
            return isOn;
        }
    }

private:
    SwitchWatch()
        : observation_(UserDefaults::standard().observe(switchKey, [this] {
              const std::lock_guard lock(mutex_);
              ++changes_;
              detail::logSwitch = detail::LogSwitch::unknown;
          })) {}

    std::mutex mutex_; ///< Held to change the next, or what `mayLog` sees.
    std::atomic<int> changes_ = 0;
    KeyValueObservation observation_;
};

std::string prefix() {
    const auto name = Bundle::main().objectForInfoDictionaryKey("CFBundleName").as<std::string>();
    return "[" + Date().description() + " " + name.value_or("") + "] ";
}

} // namespace

constinit std::atomic<detail::LogSwitch> detail::logSwitch = LogSwitch::unknown;

bool detail::isLogging() {
    if (logSwitch == LogSwitch::on) return true;
    LogFile::shared();
    return SwitchWatch::shared().ask();
}

void detail::writeLog(std::string_view text) {
    if (!isLogging()) return; // switched off after the value before
    LogFile::shared().writeLine(isBlankText(text) ? std::string(text) : prefix().append(text));
}

void Logger::makeLogging(bool active) {
    LogFile::shared();
    auto& defaults = UserDefaults::standard();
    if (defaults.boolForKey(switchKey) != active) defaults.setObject(active, switchKey);
}

void Logger::clearDefaults() {
    LogFile::shared();
    UserDefaults::standard().removeObjectForKey(switchKey);
}

void Logger::changeFileName(std::string on) {
    LogFile::shared().setName(std::move(on));
}

void Logger::changeFileSizeLimit(std::int64_t on) {
    LogFile::shared().setSizeLimit(on);
}

void Logger::clean() {
    LogFile::shared().clean();
}

} // namespace vorlan
