// SPDX-License-Identifier: Apache-2.0
#pragma once

// One file with a table, read again when it changed.

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/StringTable.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace vorlan {

/// What tells a version of a file from another.
struct FileVersion {
    int error = 0; ///< Why nothing more is known; ENOENT for a file that is not there.
    dev_t device = {};
    ino_t inode = {};
    off_t size = {};
    std::int64_t modified = {}; ///< In nanoseconds, as the next.
    std::int64_t changed =
        {}; ///< Also tells of other permissions, and of a time of modification that was set.

    static FileVersion ofPath(const char* path) noexcept;
    static FileVersion ofDescriptor(int descriptor) noexcept;

    /// Whether no such file is there, for whatever reason, as a name that is too long.
    bool isAbsent() const noexcept;

    /// Whether the file could change once more without another version: its times only tell ticks of the clock apart.
    bool isYoung() const noexcept;

    friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

/// A `.strings` or `.stringsdict` file.
///
/// Threads: one thread at a time.
/// Owns:    the texts of the last version that could be read, shared with those that asked for them.
class TableFile {
public:
    using Reader = StringTable (*)(std::span<const std::byte>);

    /// One that is never there.
    TableFile() = default;

    TableFile(std::filesystem::path path, Reader reader) : path_(std::move(path)), reader_(reader) {}

    /// Reads it if it changed; returns whether anything is different now. What is wrong with it is added to `problems`,
    /// once per version.
    bool refresh(std::vector<std::string>& problems);

    /// Whether it is there, readable or not.
    bool isThere() const noexcept { return version_ && !version_->isAbsent(); }

    /// Its texts; null when it is not there, or could never be read.
    const std::shared_ptr<const StringTable>& texts() const noexcept { return texts_; }

private:
    std::optional<Data> readWhole();

    std::filesystem::path path_;
    Reader reader_ = nullptr;
    std::optional<FileVersion> version_; ///< Absent before the first refresh.
    bool isSettled_ = false;             ///< Whether the same version has the same bytes.
    std::shared_ptr<const StringTable> texts_;
};

} // namespace vorlan
