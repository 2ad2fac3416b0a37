// SPDX-License-Identifier: Apache-2.0
#pragma once

// The file that a store is in, as it was last seen.

#include "platform/defaults/Aside.h"
#include "platform/files/Descriptor.h"

#include <VorlanFoundation/Platform/Value.h>

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace vorlan::defaults {

/// A property list with a dictionary, replaced as a whole and never changed in place, so that every reader finds
/// one version or another.
///
/// Threads: one thread at a time.
/// Owns:    the entries of the version that was last read or written, and that version itself, open: as long as it is,
///          no other file gets its inode, so that none is taken for it.
/// Errors:  a damaged file counts as empty, and is to be moved aside as soon as the store's lock is held. One that
///          cannot be read (for want of permission, or of descriptors) is one of the `problems`, once, and must not
///          be replaced. Nothing throws but for want of memory.
class DefaultsFile {
public:
    /// The file of a folder; `problems` must live longer.
    DefaultsFile(const std::filesystem::path& folder, Problems& problems);

    const std::filesystem::path& path() const noexcept { return path_; }

    /// What the file holds.
    const Value::Dictionary& entries() const noexcept { return entries_; }

    /// Reads the file again if it is another than before. True if it was, and if it is to be taken as another.
    bool refresh();

    /// Whether what is there is damaged, and has to be moved aside.
    bool isDamaged() const noexcept { return isDamaged_; }

    /// The reason for which the file, as it is now, could not be read; 0 when it could. The entries are those of the
    /// version before, and the next look tries again.
    int readError() const noexcept { return readError_; }

    /// Moves what is damaged aside; only to be called while the store's lock is held.
    void moveDamagedAside();

    /// Replaces the file by one with these entries, durably; only to be called while the store's lock is held.
    /// False, with errno set, when that failed; the file is then as it was, or, when it is only not sure to survive a
    /// loss of power, the new one.
    bool replace(Value::Dictionary entries);

private:
    /// What a version of the file is recognised by.
    struct Identity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t size = -1; ///< -1: there is no file.
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;

        friend bool operator==(const Identity&, const Identity&) = default;
    };

    struct Damage {};

    static Identity identityOf(const struct ::stat& status);
    static Identity identityOf(const Descriptor& file);
    Identity identityNow() const;
    Value::Dictionary read(const Descriptor& file) const;
    static Descriptor write(const Data& bytes, const std::filesystem::path& path);
    void see(Descriptor version, const Identity& identity);

    std::filesystem::path path_;
    Problems& problems_;
    Descriptor version_;
    Identity seen_{.seconds = -1}; ///< No file has this one, so that the first look is at something new.
    Value::Dictionary entries_;
    bool isDamaged_ = false;
    int readError_ = 0;
};

} // namespace vorlan::defaults
