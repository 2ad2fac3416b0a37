// SPDX-License-Identifier: Apache-2.0
// All languages by the samples that their own rules give.

#include "platform/text/UTF16.h"

#include <VorlanFoundation/Platform/PluralCategory.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unicode/locid.h>
#include <unicode/plurrule.h>
#include <unicode/ures.h>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

constexpr std::array<std::string_view, pluralCategoryCount> names{"zero", "one",  "two",
                                                                  "few",  "many", "other"};

struct CloseResource {
    void operator()(UResourceBundle* resource) const { ures_close(resource); }
};
using Resource = std::unique_ptr<UResourceBundle, CloseResource>;

Resource child(const UResourceBundle* parent, const char* key) {
    UErrorCode status = U_ZERO_ERROR;
    Resource found(ures_getByKey(parent, key, nullptr, &status));
    return U_SUCCESS(status) ? std::move(found) : nullptr;
}

Resource child(const UResourceBundle* parent, std::int32_t index) {
    UErrorCode status = U_ZERO_ERROR;
    return Resource(ures_getByIndex(parent, index, nullptr, &status));
}

std::string textOf(const UResourceBundle* resource) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    const UChar* text = ures_getString(resource, &length, &status);
    return U_SUCCESS(status) ? utf8FromUTF16(icu::UnicodeString(text, length)) : std::string();
}

// A number as a sample writes it.
struct Sample {
    double number = 0;
    int fractionDigits = 0;

    static Sample of(const std::string& text) {
        const auto point = text.find('.');
        const auto digits = point == std::string::npos ? 0 : text.size() - point - 1;
        return {std::strtod(text.c_str(), nullptr), static_cast<int>(digits)};
    }
};

// The parts of a list as in "0, 2~16, 100, 1c6, …".
std::vector<std::string> partsOf(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const auto end = std::min(list.find(','), list.size());
        std::string part(list.substr(0, end));
        std::erase(part, ' ');
        parts.push_back(std::move(part));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

// What follows "@integer" or "@decimal" in a rule.
std::string_view samplesIn(std::string_view rule, std::string_view kind) {
    const auto at = rule.find(kind);
    if (at == std::string_view::npos) return {};
    const auto list = rule.substr(at + kind.size());
    return list.substr(0, list.find('@'));
}

std::vector<Sample> samplesOf(std::string_view rule) {
    std::vector<Sample> samples;
    for (const std::string_view kind : {"@integer", "@decimal"})
        for (const auto& part : partsOf(samplesIn(rule, kind))) {
            // Numbers such as 1c6 are "1 million": which form goes with those is not asked here.
            if (part.empty() || part == "…" || part.find('c') != std::string::npos) continue;
            const auto until = part.find('~');
            samples.push_back(Sample::of(part.substr(0, until)));
            if (until != std::string::npos) samples.push_back(Sample::of(part.substr(until + 1)));
        }
    return samples;
}

// All languages' samples, by category, as ICU's data have them.
class Rules {
public:
    Rules() {
        UErrorCode status = U_ZERO_ERROR;
        plurals_.reset(ures_openDirect(nullptr, "plurals", &status));
        EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
        locales_ = child(plurals_.get(), "locales");
        rules_ = child(plurals_.get(), "rules");
    }

    // Absent where the language has no rules.
    Resource ofLocale(const icu::Locale& locale) const {
        const std::string language = locale.getLanguage();
        for (const auto& name : {language + "_" + locale.getCountry(), language})
            if (const auto set = child(locales_.get(), name.c_str()))
                return child(rules_.get(), textOf(set.get()).c_str());
        return nullptr;
    }

    // Calls `use` with each rule of each language.
    template <class Use>
    void forEachRule(Use&& use) const {
        for (std::int32_t set = 0; set < ures_getSize(rules_.get()); ++set) {
            const auto rules = child(rules_.get(), set);
            for (std::int32_t rule = 0; rule < ures_getSize(rules.get()); ++rule)
                use(textOf(child(rules.get(), rule).get()));
        }
    }

private:
    Resource plurals_, locales_, rules_;
};

// How many samples there were.
std::size_t check(const icu::Locale& name, const UResourceBundle* rules) {
    const Locale locale(name.getName());
    std::size_t count = 0;
    for (std::size_t category = 0; category < names.size(); ++category) {
        const auto rule = child(rules, names.at(category).data());
        if (!rule) continue;
        for (const auto& sample : samplesOf(textOf(rule.get()))) {
            ++count;
            const auto expected = static_cast<PluralCategory>(category);
            EXPECT_EQ(pluralCategory(sample.number, sample.fractionDigits, locale), expected)
                << sample.number << " with " << sample.fractionDigits << " digits";
            if (sample.fractionDigits > 0) continue;
            EXPECT_EQ(pluralCategory(static_cast<std::int64_t>(sample.number), locale), expected)
                << sample.number;
        }
    }
    return count;
}

} // namespace

TEST(PluralCategoryReferenceTest, SamplesOfAllLanguagesAreOfTheirForm) {
    const Rules rules;
    std::set<std::string> languages;
    std::int32_t count = 0;
    const auto* const all = icu::Locale::getAvailableLocales(count);
    for (std::int32_t i = 0; i < count; ++i) {
        SCOPED_TRACE(all[i].getName());
        const auto own = rules.ofLocale(all[i]);
        if (!own) continue;
        EXPECT_GT(check(all[i], own.get()), 0U);
        languages.insert(all[i].getLanguage());
    }
    EXPECT_GT(languages.size(), 100U) << "as many as ICU has texts of";
}

TEST(PluralCategoryReferenceTest, LocalesChooseAsTheirRulesInICU) {
    std::int32_t count = 0;
    const auto* const all = icu::Locale::getAvailableLocales(count);
    ASSERT_GT(count, 500);
    for (std::int32_t i = 0; i < count; ++i) {
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<icu::PluralRules> rules(icu::PluralRules::forLocale(all[i], status));
        ASSERT_TRUE(U_SUCCESS(status));
        const Locale locale(all[i].getName());
        for (const int number :
             {0, 1, 2, 3, 5, 6, 7, 10, 11, 12, 19, 20, 21, 100, 101, 111, 1000, 1'000'000}) {
            const auto category = static_cast<std::size_t>(pluralCategory(number, locale));
            ASSERT_EQ(names.at(category), utf8FromUTF16(rules->select(number)))
                << number << " in " << all[i].getName();
        }
    }
}

// On which the forms of numbers that no double holds are based.
TEST(PluralCategoryReferenceTest, RulesAskForTheLastFifteenDigitsAtMost) {
    int divisors = 0;
    Rules().forEachRule([&](const std::string& rule) {
        for (auto at = rule.find('%'); at != std::string::npos; at = rule.find('%', at + 1), ++divisors) {
            const auto divisor = std::strtoll(rule.c_str() + at + 1, nullptr, 10);
            ASSERT_GT(divisor, 0) << rule;
            EXPECT_EQ(1'000'000'000'000'000 % divisor, 0) << rule;
        }
    });
    EXPECT_GT(divisors, 50);
}
