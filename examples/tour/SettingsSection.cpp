// SPDX-License-Identifier: Apache-2.0
#include "examples/tour/Console.h"
#include "examples/tour/Sections.h"

#include <VorlanFoundation/Testing.h>
#include <VorlanFoundation/VorlanFoundation.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using namespace vorlan;

namespace {

enum class Theme { light, dark };
enum class Setting { theme };

} // namespace

template <>
struct vorlan::RawValues<Theme> {
    static constexpr std::array cases{std::pair(Theme::light, std::string_view("light")),
                                      std::pair(Theme::dark, std::string_view("dark"))};
};

template <>
struct vorlan::RawValues<Setting> {
    static constexpr std::array cases{std::pair(Setting::theme, std::string_view("theme"))};
};

namespace {

bool showEntries() {
    auto& defaults = UserDefaults::standard();
    defaults.registerDefaults({{"volume", 0.5}});
    defaults["volume"] = 0.8;
    const std::optional<double> volume = defaults["volume"];
    defaults["volume"] = std::nullopt;
    const std::optional<double> registered = defaults["volume"];
    tour::line("UserDefaults", "volume set to " + describe(volume) + ", and without it " +
                                   describe(registered) + " as registered");
    return volume == 0.8 && registered == 0.5;
}

bool showEnumerations() {
    auto& defaults = UserDefaults::standard();
    defaults[Setting::theme] = Theme::dark;
    const std::optional<Theme> theme = defaults[Setting::theme];
    const bool isSaved = defaults.synchronize();
    tour::line("raw values", "kept in " + defaults.fileURL().lastPathComponent() + " of " + defaults.name() +
                                 ": " + Value(defaults.storedEntries()).description());
    return theme == Theme::dark && isSaved;
}

bool showChanges() {
    auto& defaults = UserDefaults::standard();
    int changes = 0;
    const auto observation = defaults.observe("theme", [&] { ++changes; });
    defaults[Setting::theme] = Theme::light;
    defaults[Setting::theme] = Theme::light; // no change
    tour::line("observe", "told of " + std::to_string(changes) + " change, the second was none");
    return changes == 1;
}

bool showFolders() {
    tour::line("Bundle", bundle::applicationName() + ", version number " +
                             std::to_string(bundle::appVersion()) + ", identifier " +
                             describe(bundle::appIdentifier()));
    const auto folder = Folder::applicationDataDirectory();
    tour::line("Folder", folder ? "its data: " + folder->description() : "no folder for its data");
    tour::line("Locale", "the user's language is '" + locale::currentLanguageCode() + "'");
    return folder.has_value() && bundle::appVersion() == 100;
}

} // namespace

bool tour::showSettings() {
    title("Settings, folders and the bundle");
    const vorlan::testing::TemporaryHome home; // the user's own settings are left alone
    bool isComplete = true;
    for (const auto show : {showEntries, showEnumerations, showChanges, showFolders}) isComplete &= show();
    return isComplete;
}
