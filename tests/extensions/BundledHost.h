// SPDX-License-Identifier: Apache-2.0
#pragma once

// An application of the test's own: a program (BundleHost.cpp) with an Info.plist that the test writes.

#include "tests/support/ChildProcess.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vorlan::tests {

/// Where an application keeps its Info.plist.
enum class Layout {
    application, ///< `notes.app/Contents/Info.plist`, the program in `notes.app/Contents/bin`.
    beside,      ///< `notes.resources/Info.plist`, beside the program.
    prefix,      ///< `share/notes/Info.plist`, the program in `bin`.
};

/// What a process did.
struct Outcome {
    int status = 0;                   ///< Its exit code, or minus the number of the signal that ended it.
    std::vector<std::string> answers; ///< The lines that it wrote.

    /// The only line of one that ended well, else what went wrong.
    std::string only() const;
};

/// An information dictionary as text: for each key an element of a property list, as in "<string>1.0</string>".
using InfoEntries = std::map<std::string, std::string>;

/// The element of a text.
std::string textElement(const std::string& text);

/// Writes an Info.plist, with the folders that it is in.
void writeInfo(const std::filesystem::path& file, const InfoEntries& entries);

using support::Variables;

/// A process of an application, while it runs.
///
/// Threads: one thread at a time.
class RunningHost : public support::ChildProcess {
public:
    using ChildProcess::ChildProcess;

    /// Whether it has ended, or will write no more.
    bool hasEnded();

    /// Waits for its end, and kills it when that does not come. Lines that were taken already are not in the outcome.
    Outcome finish();
};

/// The program, copied to where the test wants it.
///
/// Threads: one thread at a time.
class BundledHost {
public:
    /// Puts the program into a folder in one of the layouts, still without Info.plist.
    BundledHost(const std::filesystem::path& folder, Layout layout, const std::string& name = "notes");

    const std::filesystem::path& program() const noexcept { return program_; }

    /// The folder that is the bundle, and that of its Info.plist and resources.
    const std::filesystem::path& bundle() const noexcept { return bundle_; }
    const std::filesystem::path& contents() const noexcept { return contents_; }

    /// Writes its Info.plist.
    void write(const InfoEntries& entries) const { writeInfo(contents_ / "Info.plist", entries); }

    /// Starts it with commands; see BundleHost.cpp.
    RunningHost start(const std::vector<std::string>& commands, const Variables& variables = {}) const;

    /// The same, and waits for its end.
    Outcome run(const std::vector<std::string>& commands, const Variables& variables = {}) const {
        return start(commands, variables).finish();
    }

    /// The answer to one command.
    std::string ask(const std::string& command, const Variables& variables = {}) const {
        return run({command}, variables).only();
    }

private:
    std::filesystem::path program_;
    std::filesystem::path bundle_;
    std::filesystem::path contents_;
};

} // namespace vorlan::tests
