// SPDX-License-Identifier: Apache-2.0

// Texts in a host, in its user's language: what docs/texts.md shows.

#include <VorlanFoundation/Platform/Problems.h>
#include <VorlanFoundation/Testing.h>
#include <VorlanFoundation/VorlanFoundation.h>

#include <iostream>
#include <string>
#include <string_view>

using namespace vorlan;

namespace app {

void say(std::string_view what) {
    std::cout << what << "\n";
}

// How many of a user's files are where.
std::string summary(int files, int folders) {
    return text::localizedFormat("%d files in %d folders", {files, folders});
}

void translate() {
    say(text::localized("Open"));                             // Öffnen
    say(text::localized("Open", {.forResource = "ru"}));      // Открыть
    say(text::localized("menu.quit"));                        // Beenden
    say(text::localized("Nobody has translated this"));       // itself
    say(text::localized("Say \"hello\""));                    // „Hallo“ sagen
    say(text::localizedFormat("Page %d of %d", {2, 9}));      // Seite 2 von 9
    say(text::localizedFormat("Moved %@ to %@", {"a", "b"})); // Nach b verschoben: a
}

void count() {
    say(text::localizedPlural("%d files", 1));    // 1 Datei
    say(text::localizedPlural("%d files", 5000)); // 5.000 Dateien
    say(text::localizedPlural("%d files", 0));    // keine Dateien
    say(summary(3, 1));                           // 3 Dateien in 1 Ordner
}

void speakOtherLanguages() {
    for (const auto* locale : {"ru", "it"}) {
        const vorlan::testing::UserRegion user({.locale = locale});
        say(text::localized("menu.quit"));
        for (const int files : {1, 3, 5}) say(text::localizedPlural("%d files", files));
        say(summary(21, 2));
    }
}

void fillGaps() {
    say(formatText("%d of %@", {3, "nine"}));
    say(formatText("%2$@, %1$@", {"Ada", "Lovelace"}));
    say(formatText("%-8s|%8.3f|%#06x", {"name", 3.14159, 255}));
    say(formatText("%.2f", {1234.5}, {.locale = Locale("de")})); // 1.234,50
}

void doNoHarm() {
    setProblemHandler(
        [](std::string_view message, std::string_view) { std::cout << "! " << message << "\n"; });
    say(formatText("%d files", {"three"}));
    say(formatText("%d of %d", {1}));
    say(formatText("100 % done", {}));
    setProblemHandler(nullptr);
}

void search() {
    constexpr std::string_view menu = "Tee, CAFÉ au lait, Wasser";
    const auto anyCafe = CompareOptions::caseInsensitive | CompareOptions::diacriticInsensitive;
    if (const auto found = rangeOfText(menu, "cafe", anyCafe)) say(menu.substr(found->offset, found->length));

    const std::string path = "/home/ada/notes.txt";
    const auto name = text::string(path, {.afterLast = "/", .options = CompareOptions::backwards});
    say(name.value_or(""));                                   // notes.txt
    say(text::string(path, {.afterLast = "/"}).value_or("")); // home/ada/notes.txt: after the first one
    say(text::contains(path, "Notes") ? "found" : "not found");
}

void digest() {
    say(text::md5String("abc"));
    say(text::sha256String("abc").substr(0, 16));
    say(text::isEmail("ada@example.org") ? "an address" : "no address");
}

bool countsInRussian() {
    const vorlan::testing::UserRegion user({.locale = "ru_RU"});
    return summary(1, 1) == "1 файл в 1 папке" && summary(5, 2) == "5 файлов в 2 папках";
}

} // namespace app

int main() {
    // A user at a time, so that all that is shown is always the same.
    const vorlan::testing::UserRegion user({.locale = "de_DE"});
    app::translate();
    app::count();
    app::speakOtherLanguages();
    app::fillGaps();
    app::doNoHarm();
    app::search();
    app::digest();
    app::say(app::countsInRussian() ? "the test passed" : "the test failed");
}
