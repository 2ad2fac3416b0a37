// SPDX-License-Identifier: Apache-2.0
#pragma once

// A thousand texts in German, as files of each library.

#include <VorlanFoundation/Platform/Bundle.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

namespace vorlan::benchmarks {

/// The texts as a table of a bundle and as gettext's compiled messages, in files below a folder. The latter also have
/// the sentence "%d files", of which the program's own bundle has the same translation.
///
/// Threads: made first in the process, while no other thread reads the environment; then safe from any thread.
class Translations {
public:
    static constexpr std::size_t count = 1'000;
    static constexpr auto language = "de";

    explicit Translations(const std::filesystem::path& folder);

    /// A text, in an order that no processor guesses, and its translation.
    static std::string key(std::size_t place) { return "menu/item " + std::to_string(place * 619 % count); }
    static std::string text(std::size_t place) {
        return "Menüeintrag " + std::to_string(place * 619 % count);
    }

    const Bundle& bundle() const noexcept { return *bundle_; }
    static constexpr auto domain = "texts"; ///< gettext's

private:
    std::shared_ptr<const Bundle> bundle_;
};

} // namespace vorlan::benchmarks
