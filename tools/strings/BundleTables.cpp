// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/BundleTables.h"

#include "tools/support/Quoting.h"

#include <VorlanFoundation/Platform/Bundle.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <system_error>

namespace tool {

namespace fs = std::filesystem;

using vorlan::Bundle;
using vorlan::FileURL;
using vorlan::StringTable;
using vorlan::StringTableError;

namespace {

constexpr std::string_view pluralsExtension = ".stringsdict";

std::vector<char> readFile(const fs::path& path) {
    std::error_code error;
    const auto status = fs::status(path, error);
    if (error) throw std::system_error(error);
    // A pipe would be waited for.
    if (!fs::is_regular_file(status)) throw std::runtime_error("it is no regular file");
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::system_error(errno, std::generic_category());
    return {std::istreambuf_iterator(file), {}};
}

// As the caller wrote the bundle's path, so that what is told can be opened from where the caller is.
fs::path resourcesAsGiven(const fs::path& given, const Bundle& bundle) {
    const auto way = bundle.resourceURL()->path().lexically_relative(bundle.bundleURL()->path());
    return way == "." ? given : given / way;
}

void requireReadable(const fs::path& folder) {
    const fs::directory_iterator entries(folder); // which says why not
}

class BundleReader {
public:
    BundleReader(fs::path given, const std::optional<std::string>& onlyTable)
        : given_(std::move(given)), onlyTable_(onlyTable) {}

    BundleTables read() {
        const auto bundle = Bundle::atURL(FileURL(given_));
        if (!bundle) throw BundleError("there is no folder " + inQuotes(given_.native()));
        const auto resources = resourcesAsGiven(given_, *bundle);
        requireReadable(resources);
        tables_.developmentRegion =
            bundle->objectForInfoDictionaryKey("CFBundleDevelopmentRegion").as<std::string>();
        for (const auto& language : bundle->localizations())
            readLanguage(language, resources / (language + ".lproj"));
        if (tables_.languages.empty())
            throw BundleError("the bundle " + inQuotes(given_.native()) + " has no folder of a language");
        if (onlyTable_ && !isTableThere())
            throw BundleError("the bundle " + inQuotes(given_.native()) + " has no table " +
                              inQuotes(*onlyTable_));
        return std::move(tables_);
    }

private:
    bool isTableThere() const {
        return std::ranges::any_of(tables_.languages,
                                   [](const auto& language) { return !language.tables.empty(); });
    }

    void readLanguage(const std::string& language, const fs::path& folder) {
        tables_.languages.push_back({language, folder.native(), {}});
        for (const auto& entry : fs::directory_iterator(folder)) {
            const auto extension = entry.path().extension();
            if ((extension == ".strings" || extension == pluralsExtension) && !isHidden(entry.path()))
                readFileOf(tables_.languages.back(), entry.path());
        }
    }

    // As what editors and other systems leave beside a table.
    static bool isHidden(const fs::path& path) { return path.filename().native().starts_with('.'); }

    void readFileOf(LanguageTables& language, const fs::path& path) {
        const auto name = path.stem().native();
        language.hasTables = true;
        if (onlyTable_ && name != *onlyTable_) return;
        auto& table = language.tables[name];
        auto& file = path.extension() == pluralsExtension ? table.plurals : table.strings;
        Finding finding{.path = path.native(), .language = language.language, .table = name};
        try {
            file = TableFile{path.native(), readTable(path)};
            return;
        } catch (const StringTableError& error) {
            finding.kind = "syntax";
            finding.position = error.position();
            finding.message = error.what();
        } catch (const std::exception& error) {
            finding.kind = "unreadable";
            finding.message = std::string("cannot be read: ") + error.what();
        }
        table.isWhole = false;
        tables_.findings.push_back(std::move(finding));
    }

    const fs::path given_;
    const std::optional<std::string>& onlyTable_;
    BundleTables tables_;
};

} // namespace

std::set<std::string> Table::keys() const {
    std::set<std::string> keys;
    for (const auto* file : {&strings, &plurals})
        if (*file)
            for (auto& key : (*file)->texts.keys()) keys.insert(std::move(key));
    return keys;
}

FoundEntry Table::find(const std::string& key) const {
    for (const auto* file : {&plurals, &strings})
        if (*file)
            if (const auto* entry = (*file)->texts.find(key)) return {entry, &**file};
    return {};
}

StringTable readTable(const fs::path& path) {
    const auto content = readFile(path);
    const auto bytes = std::as_bytes(std::span(content));
    return path.extension() == pluralsExtension ? StringTable::readPlurals(bytes) : StringTable::read(bytes);
}

BundleTables readBundle(const std::string& path, const std::optional<std::string>& onlyTable) try {
    return BundleReader(path, onlyTable).read();
} catch (const fs::filesystem_error& error) {
    throw BundleError("cannot read " + inQuotes(error.path1().native()) + ": " + error.code().message());
}

} // namespace tool
