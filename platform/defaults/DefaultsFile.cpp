// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/DefaultsFile.h"

#include "platform/files/FileBytes.h"
#include "platform/files/PropertyList.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace vorlan::defaults {

namespace {

// Gives errno back as it was when something failed, whatever tidying up did to it.
class KeepErrno {
public:
    KeepErrno() = default;
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;
    ~KeepErrno() { errno = kept_; }

private:
    int kept_ = errno;
};

} // namespace

DefaultsFile::DefaultsFile(const std::filesystem::path& folder, Problems& problems)
    : path_(folder / "defaults.plist"), problems_(problems) {}

DefaultsFile::Identity DefaultsFile::identityOf(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

DefaultsFile::Identity DefaultsFile::identityOf(const Descriptor& file) {
    struct stat status{};
    return file && fstat(file.number(), &status) == 0 ? identityOf(status) : Identity();
}

DefaultsFile::Identity DefaultsFile::identityNow() const {
    struct stat status{};
    return stat(path_.c_str(), &status) == 0 ? identityOf(status) : Identity();
}

bool DefaultsFile::refresh() {
    auto identity = identityNow();
    if (identity == seen_) return false;
    Descriptor version;
    try {
        if (identity != Identity()) version = openFile(path_);
        // Taken before it is read: if it is changed meanwhile, the next look finds that.
        identity = identityOf(version);
        entries_ = version ? read(version) : Value::Dictionary();
        isDamaged_ = false;
    } catch (const Damage&) {
        entries_.clear();
        isDamaged_ = true;
    } catch (const std::filesystem::filesystem_error& error) {
        if (std::exchange(readError_, error.code().value()) == 0)
            problems_.push_back("cannot read " + path_.native() + ": " + error.code().message());
        return false;
    }
    readError_ = 0;
    see(std::move(version), identity);
    return true;
}

void DefaultsFile::see(Descriptor version, const Identity& identity) {
    version_ = std::move(version);
    seen_ = identity;
}

Value::Dictionary DefaultsFile::read(const Descriptor& file) const try {
    auto list = readPropertyList(readFile(file, path_));
    auto* dictionary = list.dictionary();
    if (dictionary == nullptr) throw Damage();
    return std::move(*dictionary);
} catch (const PropertyListError&) {
    throw Damage();
} catch (const std::filesystem::filesystem_error& error) {
    // A folder, or what else is no file.
    if (error.code() == std::errc::is_a_directory || error.code() == std::errc::invalid_argument)
        throw Damage();
    throw;
}

void DefaultsFile::moveDamagedAside() {
    if (!isDamaged_) return;
    isDamaged_ = false;
    moveAside(path_, problems_);
    see(Descriptor(), Identity());
}

bool DefaultsFile::replace(Value::Dictionary entries) {
    Value list(std::move(entries));
    const auto temporary = path_.native() + ".new";
    auto version = write(writeBinaryPropertyList(list), temporary);
    const auto identity = identityOf(version);
    if (identity == Identity() || std::rename(temporary.c_str(), path_.c_str()) != 0) {
        const KeepErrno keeper;
        unlink(temporary.c_str());
        return false;
    }
    see(std::move(version), identity);
    entries_ = std::move(*list.dictionary());
    return syncFolder(path_.parent_path());
}

// The file, open; none, with errno set, when it could not be written.
Descriptor DefaultsFile::write(const Data& bytes, const std::filesystem::path& path) {
    Descriptor file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (file && (!writeAll(file, bytes) || fsync(file.number()) != 0)) file = Descriptor();
    return file;
}

} // namespace vorlan::defaults
