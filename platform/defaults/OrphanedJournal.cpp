// SPDX-License-Identifier: Apache-2.0
#include "platform/defaults/OrphanedJournal.h"

#include "platform/files/BinaryPropertyList.h"
#include "platform/files/FileBytes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace vorlan::defaults {

namespace {

// Where after the first change there is something that begins like one.
std::optional<std::size_t> placeOfNextChange(std::span<const std::byte> bytes) {
    const auto mark = std::as_bytes(std::span(bplist::magic));
    if (bytes.size() < sizeof(ChangeLength) + 1) return std::nullopt;
    const auto found =
        std::search(bytes.begin() + sizeof(ChangeLength) + 1, bytes.end(), mark.begin(), mark.end());
    if (found == bytes.end()) return std::nullopt;
    return static_cast<std::size_t>(found - bytes.begin()) - sizeof(ChangeLength);
}

std::vector<std::filesystem::path> journalsIn(const std::filesystem::path& folder, std::string_view ownName) {
    std::vector<std::filesystem::path> paths;
    std::error_code failed;
    for (std::filesystem::directory_iterator entry(folder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const auto name = entry->path().filename().native();
        if (name.starts_with("defaults.") && name.ends_with(".journal") && name != ownName)
            paths.push_back(entry->path());
    }
    return paths;
}

// Whether the process that made a journal is there. One of another namespace looks as if it were not.
bool isMakerThere(const std::filesystem::path& path) {
    const auto name = path.filename().native();
    const auto number = std::string_view(name).substr(std::string_view("defaults.").size());
    pid_t process = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), process);
    if (error != std::errc() || process <= 0) return true;
    return kill(process, 0) == 0 || errno != ESRCH;
}

// Journals that stay locked though their makers are not there: by a child that was forked, or in another namespace.
class KeptJournals {
public:
    bool contains(const std::filesystem::path& path) {
        const std::lock_guard lock(mutex_);
        return paths_.contains(path);
    }

    void insert(const std::filesystem::path& path) {
        const std::lock_guard lock(mutex_);
        paths_.insert(path);
    }

private:
    std::mutex mutex_;
    std::set<std::filesystem::path> paths_;
};

// The kernel may let go of a lock some milliseconds after others see that its process has ended. Who looks in between
// waits; in vain but once for each journal.
bool lockOrphan(const Descriptor& file, const std::filesystem::path& path) {
    static auto* const kept = new KeptJournals; // never destroyed: stores are used until the very end
    constexpr int mostMilliseconds = 200;
    for (int waited = 0;; ++waited) {
        if (flock(file.number(), LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK || isMakerThere(path) || kept->contains(path)) return false;
        if (waited == mostMilliseconds) break;
        poll(nullptr, 0, 1);
    }
    kept->insert(path);
    return false;
}

} // namespace

OrphanedJournal::OrphanedJournal(Descriptor file, std::filesystem::path path, std::int64_t modified)
    : file_(std::move(file)), path_(std::move(path)), modified_(modified) {}

bool OrphanedJournal::mayBeIn(const std::filesystem::path& folder, std::string_view ownName) {
    return !journalsIn(folder, ownName).empty();
}

std::vector<OrphanedJournal> OrphanedJournal::allIn(const std::filesystem::path& folder,
                                                    std::string_view ownName) {
    std::vector<OrphanedJournal> orphans;
    for (const auto& path : journalsIn(folder, ownName)) {
        Descriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        struct stat status{};
        if (!file || !lockOrphan(file, path) || fstat(file.number(), &status) != 0 || status.st_nlink == 0)
            continue;
        orphans.push_back(OrphanedJournal(std::move(file), path,
                                          status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec));
    }
    std::ranges::sort(orphans, {}, &OrphanedJournal::modified_);
    return orphans;
}

std::vector<Change> OrphanedJournal::changes() {
    std::vector<Change> found;
    Data bytes;
    try {
        bytes = readFile(file_, path_);
    } catch (const std::filesystem::filesystem_error&) {
        isDamaged_ = true; // it stays, under another name
        return found;
    }
    if (bytes.empty()) return found; // the machine went down before anything was on its disk
    JournalHeader header;
    const auto mark = header.mark;
    if (bytes.size() >= sizeof header) std::memcpy(&header, bytes.data(), sizeof header);
    const bool isJournal = bytes.size() >= sizeof header && header.mark == mark;
    const bool isSound = isJournal && header.inverse == ~header.start;
    isDamaged_ = !isSound;
    if (!isJournal) return found;
    // Where the start is unknown, rather too much is taken over than too little.
    const std::uint64_t start = isSound ? header.start : sizeof header;
    readChanges(std::span<const std::byte>(bytes).subspan(std::min<std::uint64_t>(start, bytes.size())),
                found);
    return found;
}

void OrphanedJournal::readChanges(std::span<const std::byte> bytes, std::vector<Change>& found) {
    while (!bytes.empty()) {
        ChangeLength length = 0;
        if (bytes.size() >= sizeof length) std::memcpy(&length, bytes.data(), sizeof length);
        const auto rest = bytes.subspan(std::min(sizeof length, bytes.size()));
        const bool isWhole = length > 0 && length <= rest.size();
        // A length that is too large may be the damage itself, and the change behind it whole.
        const auto content = isWhole ? rest.first(length) : rest;
        if (auto change = decodeChange(content)) {
            isDamaged_ |= !isWhole;
            found.push_back(*std::move(change));
            bytes = rest.subspan(content.size());
            continue;
        }
        // The last change is cut short when the process was killed while it wrote. Anything else is damage, and
        // reading goes on where the next change seems to begin.
        const auto next = placeOfNextChange(bytes);
        isDamaged_ |= isWhole || next.has_value();
        if (!next) return;
        bytes = bytes.subspan(*next);
    }
}

void OrphanedJournal::discard(Problems& problems) const {
    if (isDamaged_) {
        moveAside(path_, problems);
    } else {
        unlink(path_.c_str());
    }
}

} // namespace vorlan::defaults
