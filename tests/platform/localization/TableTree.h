// SPDX-License-Identifier: Apache-2.0
#pragma once

// The translations of a bundle, as a test writes them.

#include "tests/logging/LogCase.h"

#include <VorlanFoundation/Platform/FileURL.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace vorlan::tests {

/// A bundle's folder, in a home of its own.
///
/// Threads: one thread at a time.
class TableTree {
public:
    TableTree() { std::filesystem::create_directories(resources()); }

    const std::filesystem::path& home() const { return home_.path(); }
    std::filesystem::path bundle() const { return home_.path() / "Notes.bundle"; }
    std::filesystem::path resources() const { return bundle() / "Resources"; }

    /// The folder of a language; that of the resources where it is empty.
    std::filesystem::path folder(const std::string& language) const {
        return language.empty() ? resources() : resources() / (language + ".lproj");
    }

    /// Puts a file there as a whole, as installers do: written beside its place and renamed.
    void put(const std::string& language, const std::string& file, std::string_view content) const {
        std::filesystem::create_directories(folder(language));
        const auto path = folder(language) / file;
        auto beside = path;
        beside += ".new";
        writeText(beside, content);
        std::filesystem::rename(beside, path);
    }

private:
    vorlan::testing::TemporaryHome home_;
};

} // namespace vorlan::tests
