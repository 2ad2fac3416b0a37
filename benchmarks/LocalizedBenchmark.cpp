// SPDX-License-Identifier: Apache-2.0

// The translations of a thousand texts, looked up by one thread and by 24, and of a sentence with a count.

#include "benchmarks/TextBenchmark.h"
#include "benchmarks/support/ICUPeers.h"
#include "benchmarks/support/InTurn.h"
#include "benchmarks/support/Translations.h"

#include <VorlanFoundation/Extensions/LocalizedText.h>

#include <unicode/numberformatter.h>
#include <unicode/plurrule.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <libintl.h>
#include <memory>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace vorlan::benchmarks {

namespace {

constexpr int threads = 24;

const std::vector<std::string>& keys() {
    static const auto made = [] {
        std::vector<std::string> list;
        for (std::size_t i = 0; i < Translations::count; ++i) list.push_back(Translations::key(i));
        return list;
    }();
    return made;
}

/// The texts in a map that nobody changes.
const std::string& mapped(const std::string& key) {
    static const auto map = [] {
        std::unordered_map<std::string, std::string> made;
        for (std::size_t i = 0; i < Translations::count; ++i)
            made.emplace(Translations::key(i), Translations::text(i));
        return made;
    }();
    return map.find(key)->second;
}

/// Adds a look-up by one thread, and by many at once.
class LookUps {
public:
    template <class LookUp>
    void add(const char* name, const LookUp& lookUp) {
        const auto call = [=](std::size_t place) { return std::string(lookUp(keys()[place])); };
        alone_.add(name, call);
        atOnce_.addThreads(name, threads, call);
    }

private:
    GroupInTurn<std::string> alone_{"translation of one of 1000 texts", Translations::count};
    GroupInTurn<std::string> atOnce_{"translation of one of 1000 texts, 24 threads", Translations::count};
};

/// A sentence with a count, by hand for one language.
auto sentenceByICU() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale locale(Translations::language);
    const std::shared_ptr<const icu::PluralRules> rules(icu::PluralRules::forLocale(locale, status));
    checkICU(status);
    return [rules, numbers = icu::number::NumberFormatter::withLocale(locale)](std::size_t count) {
        UErrorCode failure = U_ZERO_ERROR;
        const auto number = static_cast<std::int32_t>(count);
        const auto text = utf8(numbers.formatInt(number, failure).toString(failure));
        return text + (rules->select(number) == icu::UnicodeString("one") ? " Datei" : " Dateien");
    };
}

std::string sentenceByGettext(std::size_t count) {
    std::array<char, 64> text{};
    const int size =
        std::snprintf(text.data(), text.size(), // NOLINT(*-vararg)
                      dngettext(Translations::domain, "%d file", "%d files", count), static_cast<int>(count));
    return {text.data(), static_cast<std::size_t>(size)};
}

} // namespace

void addLocalizedRows(const Translations& translations) {
    const auto* bundle = &translations.bundle();
    LookUps group;
    group.add("floor: unordered_map, never changed", mapped);
    group.add("ours: text::localized",
              [=](const std::string& key) { return text::localized(key, {.in = bundle}); });
    group.add("ours: text::localized, in a named language", [=](const std::string& key) {
        return text::localized(key, {.forResource = Translations::language, .in = bundle});
    });
    group.add("peer: dgettext",
              [](const std::string& key) { return dgettext(Translations::domain, key.c_str()); });
    const auto mutex = std::make_shared<std::shared_mutex>();
    group.add("note: unordered_map, std::shared_mutex", [=](const std::string& key) {
        const std::shared_lock lock(*mutex);
        return mapped(key);
    });
}

void addPluralRows() {
    GroupInTurn<std::string> group("sentence with a count, German", Translations::count);
    group.add("floor: PluralRules, LocalizedNumberFormatter", sentenceByICU());
    group.add("ours: text::localizedPlural", [](std::size_t count) {
        return text::localizedPlural("%d files", static_cast<std::int64_t>(count));
    });
    group.add("ours: text::localizedFormat",
              [](std::size_t count) { return text::localizedFormat("%d files", {count}); });
    group.add("peer: dngettext, snprintf", sentenceByGettext);
}

} // namespace vorlan::benchmarks
