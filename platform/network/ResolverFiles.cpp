// SPDX-License-Identifier: Apache-2.0
#include "platform/network/ResolverFiles.h"

#include "platform/files/FolderWatch.h"

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

namespace vorlan::network {

namespace {

constexpr std::array names{"resolv.conf", "hosts", "nsswitch.conf"};
constexpr int longestChain = 8;

/// What tells one version of a file from another; all zero when there is none.
struct Version {
    dev_t device = 0;
    ino_t file = 0;
    off_t size = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;

    friend bool operator==(const Version&, const Version&) = default;
};

using Versions = std::array<Version, names.size()>;

Version versionOf(const std::filesystem::path& path) {
    struct stat status{};
    if (stat(path.c_str(), &status) != 0) return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

Versions versionsIn(const std::filesystem::path& folder) {
    Versions versions;
    for (std::size_t i = 0; i < names.size(); ++i) versions[i] = versionOf(folder / names[i]);
    return versions;
}

// A folder by its own path: one that was reached over a link to it would go on to be watched when that link is laid
// elsewhere, and the way up from it would lead back along the link.
std::filesystem::path withoutLinks(const std::filesystem::path& folder) {
    std::error_code isUnknown;
    auto path = std::filesystem::weakly_canonical(folder, isUnknown);
    return isUnknown ? folder.lexically_normal() : path;
}

// The folder itself, and those of all that the files are links to.
std::set<std::filesystem::path> foldersOf(const std::filesystem::path& folder) {
    std::set<std::filesystem::path> folders{folder};
    for (const char* name : names) {
        auto path = folder / name;
        for (int step = 0; step < longestChain; ++step) {
            std::error_code isNoLink;
            const auto target = std::filesystem::read_symlink(path, isNoLink);
            if (isNoLink) break;
            const auto next = path.parent_path() / target;
            path = withoutLinks(next.parent_path()) / next.filename();
            folders.insert(path.parent_path());
        }
    }
    return folders;
}

} // namespace

/// Threads: safe from any thread.
class ResolverFiles::Watch : public std::enable_shared_from_this<Watch> {
public:
    Watch(std::filesystem::path folder, std::function<void()> changed)
        : folder_(std::move(folder)), changed_(std::move(changed)) {}

    void begin() {
        const std::lock_guard lock(mutex_);
        watchFolders();
        versions_ = versionsIn(folder_);
    }

private:
    void look() {
        {
            const std::lock_guard lock(mutex_);
            watchFolders();
            const auto versions = versionsIn(folder_);
            if (std::exchange(versions_, versions) == versions) return;
        }
        changed_();
    }

    void watchFolders() {
        const auto folders = foldersOf(folder_);
        std::erase_if(watches_, [&](const auto& watched) { return !folders.contains(watched.first); });
        for (const auto& folder : folders)
            if (!watches_.contains(folder))
                watches_.try_emplace(folder, folder, [weak = weak_from_this()] {
                    if (const auto self = weak.lock()) self->look();
                });
    }

    const std::filesystem::path folder_;
    const std::function<void()> changed_;
    std::mutex mutex_; // guards what follows
    std::map<std::filesystem::path, FolderWatch> watches_;
    Versions versions_{};
};

ResolverFiles::ResolverFiles(std::filesystem::path folder, std::function<void()> changed)
    : watch_(std::make_shared<Watch>(std::move(folder), std::move(changed))) {
    watch_->begin();
}

} // namespace vorlan::network
