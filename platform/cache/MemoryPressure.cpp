// SPDX-License-Identifier: Apache-2.0
#include "platform/cache/MemoryPressure.h"

#include "platform/cache/CacheContents.h"
#include "platform/cache/PressureFile.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <malloc.h>
#include <sys/epoll.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

namespace vorlan {

namespace {

using namespace std::chrono_literals;

constexpr auto leastInterval = 1s;   // between two times at which caches give back
constexpr auto lookInterval = 5s;    // where the kernel does not tell
constexpr double muchPressure = 10.; // in percent of the last ten seconds
constexpr std::size_t leastCaches = 16;

// 150 ms in 2 s, in microseconds. Processes without privileges may only ask for multiples of 2 s.
constexpr std::string_view trigger = "some 150000 2000000";
constexpr auto window = 2s;

// Asked for when the library is loaded: whoever has another number later is a fork of the process that loaded it.
const pid_t processThatLoaded = getpid();

// What is written to other files would be kept, and not understood.
bool isOfKernel(const Descriptor& file) {
    struct statfs about{};
    if (fstatfs(file.number(), &about) != 0) return false;
    return about.f_type == PROC_SUPER_MAGIC || about.f_type == CGROUP2_SUPER_MAGIC;
}

bool write(const Descriptor& file, std::string_view text) {
    const auto size = text.size() + 1; // with the zero at the end, which the kernel's examples have
    return ::write(file.number(), text.data(), size) == static_cast<ssize_t>(size);
}

} // namespace

MemoryPressure& MemoryPressure::shared() {
    // Never destroyed: caches may be used at the very end of the process.
    static const auto& pressure = *new std::shared_ptr<MemoryPressure>(std::make_shared<MemoryPressure>(
        pressureFileOfProcess(),
        Queue("VorlanFoundation.MemoryPressure", Queue::serial, QualityOfService::utility)));
    return *pressure;
}

MemoryPressure::MemoryPressure(std::filesystem::path file, const Queue& queue)
    : path_(std::move(file)), queue_(queue), roomUntilSweep_(leastCaches) {}

MemoryPressure::~MemoryPressure() = default;

void MemoryPressure::add(std::weak_ptr<detail::CacheContents> cache) {
    const std::lock_guard lock(mutex_);
    if (caches_.size() >= roomUntilSweep_) {
        std::erase_if(caches_, [](const auto& known) { return known.expired(); });
        roomUntilSweep_ = std::max(leastCaches, 2 * caches_.size());
    }
    caches_.push_back(std::move(cache));
    watch();
}

void MemoryPressure::watch() {
    if (getpid() != processThatLoaded) return;
    if (way_ == Way::notYet) {
        if (askToBeTold())
            way_ = Way::told;
        else
            way_ = memoryPressure(path_) ? Way::looking : Way::none;
    }
    if (way_ == Way::looking && !timer_) startLooking();
}

// The engine watches for what can be read only. A set of descriptors can be read when one of them has what it is watched
// for, be that what it may.
bool MemoryPressure::askToBeTold() {
    Descriptor file(open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    if (!file || !isOfKernel(file) || !write(file, trigger)) return false;
    Descriptor nest(epoll_create1(EPOLL_CLOEXEC));
    epoll_event wanted{.events = EPOLLPRI, .data = {}};
    if (!nest || epoll_ctl(nest.number(), EPOLL_CTL_ADD, file.number(), &wanted) != 0) return false;
    file_ = std::move(file);
    beginning_ = queue_.now();
    const int number = nest.release();
    source_.emplace(number, queue_, [weak = weak_from_this(), number] {
        if (const auto self = weak.lock()) self->onTold(number);
    });
    return true;
}

// The kernel tells a thing once, and has told it when the engine asked whether the set can be read: mostly nothing is
// left in it. An error is, and means that the group is gone.
void MemoryPressure::onTold(int nest) {
    epoll_event event{};
    const bool isLeft = epoll_wait(nest, &event, 1, 0) == 1;
    if (isLeft && (event.events & EPOLLERR) != 0) return end();
    if (!isEarly()) relieve();
}

// The kernel adds up every two seconds, so that what it tells at first may be of the time before it was asked.
bool MemoryPressure::isEarly() const {
    const std::lock_guard lock(mutex_);
    return queue_.now() < beginning_ + window;
}

void MemoryPressure::startLooking() {
    timer_.emplace(queue_);
    timer_->setEventHandler([weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->look();
    });
    timer_->schedule({.deadline = queue_.now() + lookInterval, .repeating = lookInterval, .leeway = 1s});
    timer_->resume();
}

void MemoryPressure::look() {
    const auto pressure = memoryPressure(path_);
    if (!pressure) return end();
    if (*pressure > muchPressure) relieve();
    std::optional<TimerSource> idle; // dropped after the lock, and before it what else is dropped
    Caches caches;
    const std::lock_guard lock(mutex_);
    caches = cachesWithEntries();
    if (caches_.empty()) idle = std::exchange(timer_, std::nullopt);
}

void MemoryPressure::end() {
    std::optional<TimerSource> timer; // dropped after the lock
    const std::lock_guard lock(mutex_);
    way_ = Way::none;
    source_.reset();
    file_ = Descriptor();
    timer = std::exchange(timer_, std::nullopt);
}

// Forgets the caches that are gone or empty: those come again with their next entry. The caller drops what it gets
// without the lock, as it may be the last to hold a cache.
MemoryPressure::Caches MemoryPressure::cachesWithEntries() {
    Caches found;
    std::erase_if(caches_, [&](const auto& known) {
        const auto& cache = found.emplace_back(known.lock());
        return !cache || cache->leaveWhenEmpty();
    });
    std::erase(found, nullptr);
    return found;
}

void MemoryPressure::relieve() {
    Caches caches;
    {
        const std::lock_guard lock(mutex_);
        const auto now = queue_.now();
        if (lastRelief_ && now < *lastRelief_ + leastInterval) return;
        lastRelief_ = now;
        caches = cachesWithEntries();
    }
    for (const auto& cache : caches) cache->giveBackHalf();
    caches.clear();
#if defined(__GLIBC__)
    malloc_trim(0); // the heap keeps for itself what is freed, and the kernel would get nothing
#endif
}

MemoryPressure::Way MemoryPressure::way() const {
    const std::lock_guard lock(mutex_);
    return way_;
}

std::size_t MemoryPressure::cacheCount() const {
    const std::lock_guard lock(mutex_);
    return caches_.size();
}

} // namespace vorlan
