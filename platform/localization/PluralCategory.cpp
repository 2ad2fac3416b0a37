// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/PluralCategory.h>

#include "platform/localization/PluralRules.h"
#include "platform/text/CompiledNumbers.h"
#include "platform/text/ICULocale.h"
#include "platform/text/UTF16.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unicode/numberformatter.h>
#include <unicode/plurrule.h>
#include <unicode/strenum.h>

namespace vorlan {

namespace {

using icu::number::LocalizedNumberFormatter;

// What the first who needs it makes, for all who come after.
//
// Threads: safe from any thread.
template <class Made>
class MadeOnce {
public:
    // `make` gives a `std::unique_ptr<const Made>`.
    template <class Make>
    const Made* get(Make&& make) {
        std::call_once(once_, [&] { made_ = make(); });
        return made_.get();
    }

private:
    std::once_flag once_;
    std::unique_ptr<const Made> made_;
};

// Each language that has rules, by ICU's name of it. Pointers into it stay good: it neither grows nor goes away.
using Languages = std::map<std::string, MadeOnce<icu::PluralRules>, std::less<>>;

Languages& languages() {
    static auto& all = *[] { // threads may ask while the process ends
        auto* const made = new Languages;
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<icu::StringEnumeration> known(icu::PluralRules::getAvailableLocales(status));
        if (U_FAILURE(status)) return made;
        while (const char* name = known->next(nullptr, status)) (*made)[name];
        return made;
    }();
    return all;
}

// Those of a locale, null where its language has none. A few regions have rules of their own.
const icu::PluralRules* foundRules(const Locale& locale) {
    if (!locale.languageCode()) return nullptr;
    const auto name = icuLocale(locale);
    const std::string code = name.getLanguage();
    auto& all = languages();
    auto found = all.find(code + "_" + name.getCountry());
    if (found == all.end()) found = all.find(code);
    if (found == all.end()) return nullptr;
    return found->second.get([&] {
        UErrorCode status = U_ZERO_ERROR;
        return std::unique_ptr<const icu::PluralRules>(
            icu::PluralRules::forLocale(icu::Locale(found->first.c_str()), status));
    });
}

// What this thread asked for last. Finding it takes some microseconds, and mostly it is the same again. Without a
// destructor, so that what runs at the end of a thread may ask, too.
struct LastRules {
    std::array<char, 48> identifier;
    std::size_t length;
    bool isKnown;
    const icu::PluralRules* rules;
};
thread_local constinit LastRules last{};

const icu::PluralRules* rulesOf(const Locale& locale) {
    const std::string_view identifier = locale.identifier();
    if (last.isKnown && std::string_view(last.identifier.data(), last.length) == identifier)
        return last.rules;
    const auto* const rules = foundRules(locale);
    if (identifier.size() > last.identifier.size()) return rules;
    std::ranges::copy(identifier, last.identifier.begin());
    last.length = identifier.size();
    last.rules = rules;
    last.isKnown = true;
    return rules;
}

// What has a number written with so many digits behind the decimal point; rules read it from there.
const LocalizedNumberFormatter& withFractionDigits(int digits) {
    constexpr int most = 340; // no number has digits any further
    static auto& all = *new std::array<MadeOnce<LocalizedNumberFormatter>, most + 1>;
    const int count = std::clamp(digits, 0, most);
    return *all[static_cast<std::size_t>(count)].get([count] {
        auto made = std::make_unique<const LocalizedNumberFormatter>(
            icu::number::NumberFormatter::withLocale(icu::Locale::getRoot())
                .precision(icu::number::Precision::fixedFraction(count)));
        compile(*made);
        return made;
    });
}

PluralCategory categoryOf(const icu::UnicodeString& keyword) {
    return fromRawValue<PluralCategory>(utf8FromUTF16(keyword)).value_or(PluralCategory::other);
}

// A number of doubles' with the same last digits, as large as matters. Rules ask for no more of them than these.
double withLastDigits(std::uint64_t number) {
    constexpr std::uint64_t large = 1'000'000'000'000'000;
    return static_cast<double>(number < large ? number : number % large + large);
}

// The same of a double, which is whole where it is large.
double withLastDigits(double number) {
    constexpr double large = 1e15;
    number = std::fabs(number);
    return number < large ? number : std::fmod(number, large) + large;
}

} // namespace

PluralCategory pluralCategory(std::int64_t number, const Locale& locale) {
    const auto bits = static_cast<std::uint64_t>(number);
    return pluralCategoryOfUnsigned(number < 0 ? 0 - bits : bits, locale); // rules know no sign
}

PluralCategory pluralCategoryOfUnsigned(std::uint64_t number, const Locale& locale) {
    const auto* const rules = rulesOf(locale);
    return rules != nullptr ? categoryOf(rules->select(withLastDigits(number))) : PluralCategory::other;
}

PluralCategory pluralCategory(double number, int fractionDigits, const Locale& locale) {
    const auto* const rules = rulesOf(locale);
    if (rules == nullptr || !std::isfinite(number)) return PluralCategory::other;
    UErrorCode status = U_ZERO_ERROR;
    const auto written = withFractionDigits(fractionDigits).formatDouble(withLastDigits(number), status);
    return categoryOf(rules->select(written, status));
}

} // namespace vorlan
