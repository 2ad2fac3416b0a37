// SPDX-License-Identifier: Apache-2.0
#pragma once

// A log file that the user can switch on.
//
//     Logger::makeLogging(true);              // kept: on until it is switched off, also in the next run
//     Logger::log("started", 5, 2.5);         // a line each
//     // [2026-03-05 14:07:09 +0000 Notes] started

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/Export.h>

#include <atomic>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

namespace vorlan {

/// What a log does; all operations belong to the type.
template <class T>
concept Logging = requires(bool active, std::string on, std::int64_t limit) {
    T::makeLogging(active);
    T::log("a text", 5);
    T::clearDefaults();
    T::changeFileName(on);
    T::changeFileSizeLimit(limit);
    T::clean();
};

namespace detail {

/// Whether the log is switched on, as far as it is known without asking.
enum class LogSwitch : char { unknown, off, on };
VORLAN_EXPORT extern std::atomic<LogSwitch> logSwitch;

/// Whether something may have to be logged: the whole cost of a call while the log is off.
inline bool mayLog() noexcept {
    return logSwitch.load(std::memory_order_relaxed) != LogSwitch::off;
}

VORLAN_EXPORT void writeLog(std::string_view text);
VORLAN_EXPORT bool isLogging();

} // namespace detail

/// The application's log file.
///
/// It is in the user's documents folder, "0475148A-4EE3-4F85-A54C-D3A15BADD933.log" unless the host names it, and
/// nothing is written while the entry "com.vorlan.foundation.shouldUseLogger" of the standard defaults store is
/// not true. A change of that entry counts from the next call on, also one that another process made.
///
/// A file that is larger than the limit is emptied before the next text is written to it. The end of a line is a text
/// of its own in this: a line that takes the file over the limit goes as soon as it is complete. The file is opened for
/// each line and closed again, so it may be moved or deleted at any time. Only the user may read it. A symbolic link in
/// its place is not followed.
///
/// Threads: safe from any thread and from several processes: each line is one write at the end of the file.
///          Which of two lines that are logged at once comes first is open, and one may fall victim to the other
///          where that finds the file too large.
/// Errors:  none is reported: what cannot be written is dropped.
class VORLAN_EXPORT Logger {
public:
    Logger() = delete;

    /// Switches the log on or off, for this and all later runs.
    static void makeLogging(bool active);

    /// Logs the description of each value as a line of its own, after "[" + date + " " + application + "] ". A
    /// value whose text is blank becomes that text and an end of line.
    template <class... Values>
    static void log(const Values&... values) {
        if (!detail::mayLog() || !detail::isLogging()) return;
        (detail::writeLog(describe(values)), ...);
    }

    /// Removes the entry that switches the log on, which is then off.
    static void clearDefaults();

    /// The file's name from the next line on, one path component; the old file is left where it is. Counts until
    /// the process ends.
    static void changeFileName(std::string on);

    /// The size in bytes that the file may have before it is emptied; 10485760 (10 MiB) at first. Below zero, it
    /// is emptied before every write. Counts until the process ends.
    static void changeFileSizeLimit(std::int64_t on);

    /// Empties the file; makes an empty one where there was none.
    static void clean();
};

static_assert(Logging<Logger>);

} // namespace vorlan
