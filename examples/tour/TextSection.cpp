// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/Platform/TextFormat.h>
#include <VorlanFoundation/Platform/TextSearch.h>
#include <VorlanFoundation/Testing.h>
#include <VorlanFoundation/VorlanFoundation.h>

#include <string>
#include <string_view>

using namespace vorlan;

namespace {

// To users of different languages, from the tables beside the program.
bool showTranslations() {
    bool isTranslated = true;
    for (const auto* language : {"en", "de", "ru"}) {
        const vorlan::testing::UserRegion user({.locale = language});
        std::string said = text::localized("Good day");
        for (const int files : {1, 2, 5}) said += ", " + text::localizedPlural("%d files", files);
        tour::line(language, said + "; " + text::localizedFormat("Page %d of %d", {2, 9}));
        isTranslated &= text::localizedPlural("%d files", 1) != "1 files";
    }
    return isTranslated && text::localized("Good day", {.forResource = "de"}) == "Guten Tag";
}

bool showFormats() {
    const auto price = formatText("%.2f", {1234.5}, {.locale = Locale("de")});
    const auto order = formatText("%2$@ before %1$@", {"verse", "chapter"});
    tour::line("formats", price + " in German; " + order);
    return price == "1.234,50" && order == "chapter before verse";
}

bool showSearch() {
    constexpr std::string_view menu = "Tee, CAFE\u0301 au lait, Wasser";
    const auto found = rangeOfText(menu, "café", CompareOptions::caseInsensitive);
    const auto name =
        text::string("/home/ada/notes.txt", {.afterLast = "/", .options = CompareOptions::backwards});
    tour::line("search", "'café' is '" + std::string(found ? menu.substr(found->offset, found->length) : "") +
                             "', and the name of the file " + name.value_or(""));
    return found && found->length == 6 && name == "notes.txt";
}

bool showDigests() {
    const auto digest = text::sha256String("abc");
    tour::line("digests", "SHA-256 of 'abc' begins with " + digest.substr(0, 8) + ", MD5 with " +
                              text::md5String("abc").substr(0, 8));
    return digest.starts_with("ba7816bf");
}

bool showTests() {
    const bool isAddress = text::isEmail("ada@example.org");
    const bool isOther = text::isEmail("ada@localhost");
    tour::line("e-mail", std::string("ada@example.org may be an address, ada@localhost ") +
                             (isOther ? "too" : "is none"));
    return isAddress && !isOther;
}

bool showNumbers() {
    const auto written = number::string(1.005F, {.fractionDigits = 2});
    const auto rounded = number::roundToPlaces(0.3, 2, RoundingRule::toNearestOrAwayFromZero);
    tour::line("numbers",
               "1.005 in single precision is " + written + ", 0.3 in steps of 1/1024 " + describe(rounded));
    return written == "1.00" && rounded == 0.2998046875;
}

} // namespace

bool tour::showTexts() {
    title("Texts and translations");
    bool isComplete = true;
    for (const auto show : {showTranslations, showFormats, showSearch, showDigests, showTests, showNumbers})
        isComplete &= show();
    return isComplete;
}
