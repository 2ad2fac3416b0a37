// SPDX-License-Identifier: Apache-2.0
#include "platform/files/FolderWatch.h"

#include "platform/dispatch/ReadSource.h"

#include <VorlanFoundation/Platform/TimerSource.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

namespace vorlan {

struct FolderWatch::Watched {
    std::filesystem::path folder;
    std::function<void()> handler;
    std::filesystem::path place; ///< What is watched: the folder, or the lowest one above it that is there.
    int number = -1;             ///< The kernel's for `place`.
};

namespace {

constexpr std::uint32_t eventsOfInterest = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO |
                                           IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

// How often to look where the kernel does not tell.
constexpr auto pollInterval = std::chrono::milliseconds(500);

} // namespace

/// One descriptor of the kernel's notifications for all watches: a user may have some 128 of them.
class FolderWatcher {
public:
    // Never destroyed: watches may be dropped at the very end of the process.
    static FolderWatcher& shared() {
        static auto* const watcher = new FolderWatcher;
        return *watcher;
    }

    void add(const std::shared_ptr<FolderWatch::Watched>& watched) {
        const std::lock_guard lock(mutex_);
        watched_.push_back(watched);
        arm(*watched);
    }

    void remove(const std::shared_ptr<FolderWatch::Watched>& watched) {
        const std::lock_guard lock(mutex_);
        std::erase(watched_, watched);
        release(watched->number);
    }

private:
    FolderWatcher() : descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        if (descriptor_ >= 0) source_.emplace(descriptor_, queue_, [this] { onReadable(); });
    }

    void onReadable() {
        std::set<int> numbers;
        alignas(inotify_event) std::array<char, 16'384> buffer{};
        for (;;) {
            const auto count = read(descriptor_, buffer.data(), buffer.size());
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) break;
            collect(buffer.data(), static_cast<std::size_t>(count), numbers);
        }
        tell([&](FolderWatch::Watched& watched) {
            return numbers.contains(watched.number) || numbers.contains(-1);
        });
    }

    static void collect(const char* events, std::size_t size, std::set<int>& numbers) {
        for (std::size_t place = 0; place + sizeof(inotify_event) <= size;) {
            inotify_event event{};
            std::memcpy(&event, events + place, sizeof event);
            numbers.insert(event.wd); // -1 says that there were too many to tell
            place += sizeof event + event.len;
        }
    }

    // Calls the handlers of the watches that were chosen, without the lock.
    template <class Condition>
    void tell(Condition isConcerned) {
        std::vector<std::shared_ptr<FolderWatch::Watched>> concerned;
        {
            const std::lock_guard lock(mutex_);
            for (const auto& watched : watched_) {
                if (!isConcerned(*watched)) continue;
                const auto former = watched->place;
                arm(*watched);
                // Above the folder, all that matters is whether it came or went.
                if (watched->place == watched->folder || former == watched->folder)
                    concerned.push_back(watched);
            }
        }
        for (const auto& watched : concerned) watched->handler();
    }

    // What comes into being between looking and watching is found by looking again.
    void arm(FolderWatch::Watched& watched) {
        if (descriptor_ < 0) {
            poll();
            return;
        }
        const int former = std::exchange(watched.number, -1);
        do {
            release(std::exchange(watched.number, -1));
            watchLowest(watched);
        } while (watched.number >= 0 && watched.place != watched.folder && hasAppeared(watched));
        if (former != watched.number) release(former);
    }

    // Watches the folder, or the lowest one above it that is there.
    void watchLowest(FolderWatch::Watched& watched) {
        for (auto place = watched.folder; watched.number < 0; place = place.parent_path()) {
            watched.number = inotify_add_watch(descriptor_, place.c_str(), eventsOfInterest);
            watched.place = place;
            const bool isMissing = errno == ENOENT || errno == ENOTDIR;
            if (watched.number < 0 && (!isMissing || !place.has_relative_path())) {
                watched.place = watched.folder;
                poll();
                return;
            }
        }
    }

    // Whether the next folder on the way down from what is watched is there by now.
    static bool hasAppeared(const FolderWatch::Watched& watched) {
        std::error_code ignored;
        const auto next = watched.folder.lexically_relative(watched.place);
        return std::filesystem::is_directory(watched.place / *next.begin(), ignored);
    }

    void release(int number) {
        const bool isUsed =
            std::ranges::any_of(watched_, [&](const auto& one) { return one->number == number; });
        if (number >= 0 && !isUsed) inotify_rm_watch(descriptor_, number);
    }

    // Where the kernel does not tell, everybody is asked to look, again and again.
    void poll() {
        if (timer_) return;
        timer_.emplace(queue_);
        timer_->setEventHandler([this] { tell([](FolderWatch::Watched&) { return true; }); });
        timer_->schedule({.deadline = queue_.now() + pollInterval, .repeating = pollInterval});
        timer_->resume();
    }

    const Queue queue_{"VorlanFoundation.FolderWatch", Queue::serial, QualityOfService::utility};
    std::mutex mutex_;
    std::vector<std::shared_ptr<FolderWatch::Watched>> watched_;
    int descriptor_;
    std::optional<ReadSource> source_; ///< Owns the descriptor.
    std::optional<TimerSource> timer_;
};

FolderWatch::FolderWatch(std::filesystem::path folder, std::function<void()> handler)
    : watched_(std::make_shared<Watched>(std::move(folder), std::move(handler))) {
    FolderWatcher::shared().add(watched_);
}

FolderWatch::~FolderWatch() {
    FolderWatcher::shared().remove(watched_);
}

} // namespace vorlan
