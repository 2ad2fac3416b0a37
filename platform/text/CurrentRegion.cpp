// SPDX-License-Identifier: Apache-2.0
#include "platform/text/CurrentRegion.h"

#include "platform/dates/ZoneRules.h"
#include "platform/text/ICULocale.h"

#include <VorlanFoundation/Platform/Region.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace vorlan {

namespace {

using detail::ZoneRules;

std::string_view environment(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr ? value : std::string_view();
}

// The locale of a category, as setlocale finds it.
Locale localeOf(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"})
        if (const auto identifier = environment(variable); !identifier.empty())
            return Locale(std::string(identifier));
    return Locale("C");
}

// The language of the messages with the customs of the dates.
Locale systemLocale() {
    const auto messages = localeOf("LC_MESSAGES");
    const auto dates = localeOf("LC_TIME");
    if (!dates.languageCode()) return messages;
    return messages.languageCode() ? inRegionOf(messages, dates) : dates;
}

std::vector<Locale> systemLanguages() {
    std::vector<Locale> languages;
    const auto messages = localeOf("LC_MESSAGES");
    if (!messages.languageCode()) return languages; // as gettext: "C" is a wish for no translation at all
    for (auto rest = environment("LANGUAGE"); !rest.empty();) {
        const auto identifier = rest.substr(0, rest.find(':'));
        if (!identifier.empty()) languages.emplace_back(std::string(identifier));
        rest.remove_prefix(std::min(identifier.size() + 1, rest.size()));
    }
    languages.push_back(messages);
    return languages;
}

// "de_CH.UTF-8" is served by "de_CH", "de-CH" and "de".
std::vector<std::string> folderNamesFor(const Locale& locale) {
    std::vector<std::string> names;
    auto name = locale.identifier().substr(0, locale.identifier().find_first_of(".@"));
    names.push_back(name);
    std::ranges::replace(name, '_', '-');
    names.push_back(name);
    if (auto code = locale.languageCode()) names.push_back(*std::move(code));
    return names;
}

std::vector<std::string> folderNamesFor(const std::vector<Locale>& languages) {
    std::vector<std::string> all;
    for (const auto& language : languages)
        for (auto& name : folderNamesFor(language))
            if (!name.empty() && std::ranges::find(all, name) == all.end()) all.push_back(std::move(name));
    return all;
}

// What was read of the system, what a test put in its place, and what follows from both.
class Regions {
public:
    const CurrentRegion& current() {
        const auto* region = current_.load(std::memory_order_acquire);
        return region != nullptr ? *region : renewed();
    }

    void forgetLocale() {
        change([this] { locale_.reset(); });
    }
    void forgetTimeZone() {
        change([this] { timeZone_.reset(); });
    }

    detail::RegionOverride given() {
        const std::lock_guard lock(mutex_);
        return override_;
    }

    void setOverride(detail::RegionOverride region) {
        change([&] { std::swap(override_, region); });
    }

private:
    template <class Change>
    void change(Change&& by) {
        const std::lock_guard lock(mutex_);
        by();
        current_.store(nullptr, std::memory_order_release);
    }

    const CurrentRegion& renewed() {
        const std::lock_guard lock(mutex_);
        if (const auto* region = current_.load(std::memory_order_relaxed)) return *region;
        readSystem();
        const auto locale = override_.locale.value_or(*locale_);
        const auto timeZone = override_.timeZone.value_or(*timeZone_);
        const auto calendar = override_.calendar ? *override_.calendar : usualCalendar(locale);
        const auto preferred = languages();
        const auto& region =
            all_.emplace_back(CurrentRegion{.locale = locale,
                                            .languageCode = locale.languageCode(),
                                            .preferredLanguages = preferred,
                                            .languageFolders = folderNamesFor(preferred),
                                            .timeZone = timeZone,
                                            .calendar = Calendar(calendar, locale, timeZone)});
        current_.store(&region, std::memory_order_release);
        return region;
    }

    std::vector<Locale> languages() const {
        if (!override_.locale) return languages_;
        return override_.locale->languageCode() ? std::vector{*override_.locale} : std::vector<Locale>();
    }

    void readSystem() {
        if (!timeZone_) timeZone_ = ZoneRules::ofSystem().zone();
        if (locale_) return;
        locale_ = systemLocale();
        languages_ = systemLanguages();
    }

    std::mutex mutex_;
    std::atomic<const CurrentRegion*> current_ = nullptr;
    std::deque<CurrentRegion> all_; // whose addresses stay
    std::optional<Locale> locale_;
    std::vector<Locale> languages_;
    std::optional<TimeZone> timeZone_;
    detail::RegionOverride override_;
};

// Stays until the process ends: threads that still run then may ask for it.
Regions& regions() {
    static auto& instance = *new Regions;
    return instance;
}

} // namespace

const CurrentRegion& currentRegion() {
    return regions().current();
}

void Locale::resetCurrent() {
    regions().forgetLocale();
}

void TimeZone::resetSystemTimeZone() {
    regions().forgetTimeZone();
}

detail::RegionOverride detail::regionOverride() {
    return regions().given();
}

void detail::setRegionOverride(RegionOverride region) {
    regions().setOverride(std::move(region));
}

} // namespace vorlan
