// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NWPathSource.h>

#include "platform/network/PathCenter.h"

#include <mutex>

namespace vorlan {

namespace {

/// The one source of the process.
///
/// Threads: safe from any thread.
/// Owns:    the source weakly, so that it goes with its last user.
class SystemSource {
public:
    std::shared_ptr<NWPathSource> get() {
        const std::lock_guard lock(mutex_);
        if (auto center = center_.lock()) return center;
        const auto center = std::make_shared<network::PathCenter>(network::NetworkCenter::shared());
        center_ = center;
        return center;
    }

private:
    std::mutex mutex_;
    std::weak_ptr<network::PathCenter> center_;
};

} // namespace

NWPathSource::~NWPathSource() = default;

std::shared_ptr<NWPathSource> NWPathSource::system() {
    // Never destroyed: monitors that are static objects may be used, and end, after any static object of
    // ours.
    static auto& source = *new SystemSource;
    return source.get();
}

} // namespace vorlan
