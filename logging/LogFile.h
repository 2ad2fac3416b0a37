// SPDX-License-Identifier: Apache-2.0
#pragma once

// The file behind the logger.

#include <VorlanFoundation/Platform/FileURL.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

/// A file that texts are appended to, and that is emptied when it is too large.
///
/// Nothing is held open, and nothing remembered of the file, from one write to the next.
///
/// Threads: safe from any thread; files are touched without a lock.
/// Errors:  everything that fails is passed over.
class LogFile {
public:
    /// The process's only one, made when it is asked for first.
    static LogFile& shared();

    /// Writes a text, and then the end of the line. Together where the text leaves the file within its limit, so
    /// that no other line comes between them. Else one after the other, and the end of the line, a write like any
    /// other, finds the file too large.
    void writeLine(std::string_view text);

    /// Empties the file, or makes an empty one.
    void clean();

    void setName(std::string name);
    void setSizeLimit(std::int64_t limit) noexcept { sizeLimit_ = limit; }

private:
    LogFile();

    using Path = std::shared_ptr<const std::filesystem::path>;

    Path path();
    void findPath();
    std::optional<std::uint64_t> makeRoom(const std::filesystem::path& path);
    bool isWithinLimit(std::uint64_t size) const noexcept;

    std::mutex mutex_; ///< Of the next four.
    std::optional<FileURL> directory_;
    std::uint64_t homeGeneration_;
    std::string name_ = "0475148A-4EE3-4F85-A54C-D3A15BADD933.log";
    Path path_; ///< The two in one; null without a directory.

    std::atomic<std::int64_t> sizeLimit_ = 10 * 1024 * 1024;
};

} // namespace vorlan
