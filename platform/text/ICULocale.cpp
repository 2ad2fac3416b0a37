// SPDX-License-Identifier: Apache-2.0
#include "platform/text/ICULocale.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <unicode/calendar.h>
#include <unicode/numsys.h>
#include <utility>

namespace vorlan {

namespace {

using Identifier = Calendar::Identifier;

constexpr std::array<std::pair<Identifier, std::string_view>, 16> names{{
    {Identifier::gregorian, "gregorian"},
    {Identifier::iso8601, "iso8601"},
    {Identifier::buddhist, "buddhist"},
    {Identifier::chinese, "chinese"},
    {Identifier::coptic, "coptic"},
    {Identifier::ethiopicAmeteAlem, "ethiopic-amete-alem"},
    {Identifier::ethiopicAmeteMihret, "ethiopic"},
    {Identifier::hebrew, "hebrew"},
    {Identifier::indian, "indian"},
    {Identifier::islamic, "islamic"},
    {Identifier::islamicCivil, "islamic-civil"},
    {Identifier::islamicTabular, "islamic-tbla"},
    {Identifier::islamicUmmAlQura, "islamic-umalqura"},
    {Identifier::japanese, "japanese"},
    {Identifier::persian, "persian"},
    {Identifier::republicOfChina, "roc"},
}};

const char* nameOf(Identifier calendar) {
    return std::ranges::find(names, calendar, &std::pair<Identifier, std::string_view>::first)->second.data();
}

constexpr std::array<std::pair<std::string_view, std::string_view>, 3> scripts{
    {{"@latin", "_Latn"}, {"@cyrillic", "_Cyrl"}, {"@devanagari", "_Deva"}}};

// The C library's names say the script in the modifier ("sr_RS.UTF-8@latin"), ICU's behind the language. Its other
// modifiers ("@euro") mean nothing any more, but "@valencia", which ICU understands.
std::string icuName(const std::string& identifier) {
    const auto modifier = identifier.find('@');
    if (modifier == std::string::npos || identifier.find('=', modifier) != std::string::npos)
        return identifier;
    const auto script = std::ranges::find(scripts, std::string_view(identifier).substr(modifier),
                                          [](auto& pair) { return pair.first; });
    if (script == scripts.end()) return identifier;
    const auto language = identifier.find_first_of("_-.@");
    return identifier.substr(0, language).append(script->second) +
           identifier.substr(language, identifier.find_first_of(".@") - language);
}

// ICU writes nothing at all in digits that it does not know.
void dropUnknownDigits(icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    if (locale.getKeywordValue<std::string>("numbers", status).empty()) return;
    status = U_ZERO_ERROR;
    const std::unique_ptr<icu::NumberingSystem> digits(icu::NumberingSystem::createInstance(locale, status));
    if (U_SUCCESS(status)) return;
    status = U_ZERO_ERROR;
    locale.setKeywordValue("numbers", "", status);
}

// The script that it names, or else the one that the language is written in there.
std::string scriptOf(icu::Locale locale) {
    UErrorCode status = U_ZERO_ERROR;
    locale.addLikelySubtags(status);
    return locale.getScript();
}

} // namespace

icu::Locale icuLocale(const Locale& locale) {
    const auto language = locale.languageCode();
    if (!language) return icu::Locale("en_US_POSIX");
    auto result = icu::Locale::createCanonical(icuName(locale.identifier()).c_str());
    // Of a name that is no name beyond the language and the region, these two are left.
    if (result.isBogus()) result = icu::Locale(language->c_str(), locale.regionCode().value_or("").c_str());
    dropUnknownDigits(result);
    return result;
}

icu::Locale icuLocale(const Locale& locale, Calendar::Identifier calendar) {
    auto result = icuLocale(locale);
    UErrorCode status = U_ZERO_ERROR;
    result.setKeywordValue("calendar", nameOf(calendar), status); // fails for want of memory alone
    return result;
}

Locale inRegionOf(const Locale& language, const Locale& other) {
    const auto script = scriptOf(icuLocale(language));
    if (language.languageCode() == other.languageCode() && script == scriptOf(icuLocale(other))) return other;
    const auto region = other.regionCode();
    if (!region || region == language.regionCode()) return language;
    const auto code = language.languageCode().value_or("");
    const auto isUsualScript = script == scriptOf(icu::Locale(code.c_str(), region->c_str()));
    return Locale(code + (isUsualScript ? "" : "_" + script) + "_" + *region);
}

Calendar::Identifier usualCalendar(const Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const auto name = icuLocale(locale);
    // ICU counts it among the Gregorian ones.
    if (name.getKeywordValue<std::string>("calendar", status) == nameOf(Identifier::iso8601))
        return Identifier::iso8601;
    const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(name, status));
    if (U_FAILURE(status)) return Identifier::gregorian;
    const std::string_view type = calendar->getType();
    const auto found = std::ranges::find(names, type, &std::pair<Identifier, std::string_view>::second);
    return found != names.end() ? found->first : Identifier::gregorian;
}

} // namespace vorlan
