// SPDX-License-Identifier: Apache-2.0
#pragma once

// Files by bare system calls, for the floors. Whatever fails throws: a floor that wrote nothing would be a low one.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <system_error>

namespace vorlan::benchmarks {

/// Throws errno unless `isDone`.
inline void check(bool isDone) {
    if (!isDone) throw std::system_error(errno, std::generic_category(), "a file of a benchmark");
}

/// Owns a descriptor.
class PlainFile {
public:
    PlainFile(const std::filesystem::path& path, int flags)
        : descriptor_(open(path.c_str(), flags | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
        check(descriptor_ >= 0);
    }
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;
    ~PlainFile() { close(descriptor_); }

    int descriptor() const noexcept { return descriptor_; }

    void write(const void* bytes, std::size_t size) const {
        check(::write(descriptor_, bytes, size) == static_cast<ssize_t>(size));
    }
    void writeAt(off_t place, const void* bytes, std::size_t size) const {
        check(pwrite(descriptor_, bytes, size, place) == static_cast<ssize_t>(size));
    }
    void truncate(off_t length) const { check(ftruncate(descriptor_, length) == 0); }
    void sync() const { check(fsync(descriptor_) == 0); }

private:
    int descriptor_;
};

} // namespace vorlan::benchmarks
