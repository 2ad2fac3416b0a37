// SPDX-License-Identifier: Apache-2.0
#pragma once

// What stands behind a formatter's handle.

#include "platform/text/CurrentRegion.h"

#include <memory>
#include <mutex>
#include <utility>

namespace vorlan {

/// The settings of a formatter and of its copies, with what was made for them last.
///
/// `Settings` has a constant `make(const CurrentRegion&)`, which gives a `std::shared_ptr<const Made>`: what writes by
/// these settings for that user. It is called again only when either changed.
///
/// Threads: safe from any thread; no change is lost, and what is made is by the settings of one moment.
/// Owns:    the settings, and what was made.
template <class Settings, class Made>
class FormatterState {
public:
    FormatterState() = default;
    explicit FormatterState(Settings settings) : settings_(std::move(settings)) {}

    /// The settings of this moment.
    Settings settings() const {
        const std::lock_guard lock(mutex_);
        return settings_;
    }

    /// Has `by` change the settings.
    template <class Change>
    void change(Change&& by) {
        const std::lock_guard lock(mutex_);
        std::forward<Change>(by)(settings_);
        made_.reset();
    }

    /// What writes by the settings of this moment, for the user as he is now.
    std::shared_ptr<const Made> made() const {
        const auto& user = currentRegion();
        const std::lock_guard lock(mutex_);
        if (!made_ || user_ != &user) made_ = settings_.make(user);
        user_ = &user;
        return made_;
    }

private:
    mutable std::mutex mutex_;
    Settings settings_;
    mutable std::shared_ptr<const Made> made_; // for settings_ and user_; null when not known
    mutable const CurrentRegion* user_ = nullptr;
};

} // namespace vorlan
