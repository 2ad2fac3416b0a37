// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/ScriptedNetwork.h>

#include <VorlanFoundation/Platform/Queue.h>

#include <cstdint>
#include <map>

namespace vorlan::testing {

/// The path and its subscribers.
///
/// Threads: safe from any thread: everything happens on one serial queue, which also keeps the order in which
///          subscribers are told; no lock is held while they are.
class ScriptedNetwork::Source final : public NWPathSource, public std::enable_shared_from_this<Source> {
public:
    explicit Source(NWPath path) : path_(std::move(path)) {}

    NWPath currentPath() override {
        return queue_.sync([this] { return path_; });
    }

    std::shared_ptr<void> subscribe(Subscriber subscriber) override {
        const auto id = queue_.sync([&] {
            subscriber(path_);
            subscribers_.emplace(++lastID_, std::move(subscriber));
            return lastID_;
        });
        auto drop = [self = shared_from_this(), id](void*) { self->unsubscribe(id); };
        return std::shared_ptr<void>(this, std::move(drop));
    }

    void set(const NWPath& path, bool always) {
        queue_.sync([&] {
            if (!always && path == path_) return;
            path_ = path;
            for (const auto& [id, subscriber] : subscribers_) subscriber(path_);
        });
    }

    std::size_t subscriberCount() {
        return queue_.sync([this] { return subscribers_.size(); });
    }

private:
    void unsubscribe(std::uint64_t id) {
        queue_.sync([&] { subscribers_.erase(id); });
    }

    const Queue queue_{"com.vorlan.testing.scripted-network"};
    NWPath path_;
    std::map<std::uint64_t, Subscriber> subscribers_;
    std::uint64_t lastID_ = 0;
};

ScriptedNetwork::ScriptedNetwork() : ScriptedNetwork(NWPath()) {}

ScriptedNetwork::ScriptedNetwork(NWPath path) : source_(std::make_shared<Source>(std::move(path))) {}

std::shared_ptr<NWPathSource> ScriptedNetwork::source() const {
    return source_;
}

void ScriptedNetwork::setPath(NWPath path) {
    source_->set(path, false);
}

void ScriptedNetwork::deliver(NWPath path) {
    source_->set(path, true);
}

std::size_t ScriptedNetwork::subscriberCount() const {
    return source_->subscriberCount();
}

} // namespace vorlan::testing
