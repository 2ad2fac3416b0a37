// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/Checking.h"

#include "tools/strings/EntryChecking.h"
#include "tools/support/Quoting.h"

#include <VorlanFoundation/Platform/Locale.h>

#include <algorithm>
#include <utility>

namespace tool {

namespace {

constexpr std::string_view nameOfBase = "Base";

const LanguageTables* findLanguage(const BundleTables& bundle, std::string_view name) {
    const auto found = std::ranges::find(bundle.languages, name, &LanguageTables::language);
    return found != bundle.languages.end() ? &*found : nullptr;
}

// Of "pt-BR": the folder of that name, "pt_BR" or "pt".
const LanguageTables* findRegion(const BundleTables& bundle, std::string name) {
    if (const auto* language = findLanguage(bundle, name)) return language;
    std::ranges::replace(name, '-', '_');
    if (const auto* language = findLanguage(bundle, name)) return language;
    auto hyphenated = name;
    std::ranges::replace(hyphenated, '_', '-');
    if (const auto* language = findLanguage(bundle, hyphenated)) return language;
    return findLanguage(bundle, name.substr(0, name.find('_')));
}

// A table of a language, and the language's plural forms, null where it has none of its own.
struct Subject {
    const LanguageTables& language;
    const std::string& name;
    const Table& table;
    const PluralForms* forms;
};

bool hasPlurals(const LanguageTables& language) {
    return std::ranges::any_of(language.tables,
                               [](const auto& named) { return named.second.plurals.has_value(); });
}

class Checker {
public:
    Checker(const BundleTables& bundle, const LanguageTables& base)
        : bundle_(bundle), base_(base), findings_(bundle.findings) {}

    std::vector<Finding> check() {
        for (const auto& language : bundle_.languages) checkLanguage(language);
        return std::move(findings_);
    }

private:
    void checkLanguage(const LanguageTables& language) {
        const auto spoken = spokenIn(language);
        const auto forms = spoken && (hasPlurals(language) || hasPlurals(base_))
                               ? std::optional(pluralForms(*spoken))
                               : std::nullopt;
        for (const auto& [name, table] : language.tables)
            checkTable({language, name, table, forms ? &*forms : nullptr});
        noteMissingTables(language);
    }

    // A "Base" that has none is there for other resources.
    void noteMissingTables(const LanguageTables& language) {
        if (language.language == nameOfBase && !language.hasTables) return;
        for (const auto& [name, table] : base_.tables)
            if (!language.tables.contains(name))
                findings_.push_back({.path = language.path,
                                     .severity = Severity::warning,
                                     .kind = "missing-table",
                                     .language = language.language,
                                     .table = name,
                                     .message = "the table " + quotedText(name) + " of " +
                                                quotedText(base_.language) + " is missing"});
    }

    // The texts of "Base" are in the language that the application is made in. Absent where that is no code of a
    // language, which has two or three letters: as "English".
    std::optional<std::string> spokenIn(const LanguageTables& language) const {
        const auto name = language.language == nameOfBase ? bundle_.developmentRegion : language.language;
        const auto code = name ? vorlan::Locale(*name).languageCode() : std::nullopt;
        return code && code->size() <= 3 ? name : std::nullopt;
    }

    void checkTable(const Subject& subject) {
        for (const auto* file : {&subject.table.strings, &subject.table.plurals})
            if (*file) noteRepetitions(subject, **file);
        const auto original = base_.tables.find(subject.name);
        const auto* const table = original != base_.tables.end() ? &original->second : nullptr;
        for (const auto& key : subject.table.keys()) checkEntry(subject, key, table);
        if (table == nullptr) {
            noteExtraTable(subject);
        } else if (subject.table.isWhole) {
            noteMissingKeys(subject, *table);
        }
    }

    void noteRepetitions(const Subject& subject, const TableFile& file) {
        for (const auto& [key, position] : file.texts.repetitions())
            add(subject, file.path, position, key,
                {Severity::warning, "repeated-key", "is said once more; this text counts"});
    }

    void noteExtraTable(const Subject& subject) {
        const auto& file = subject.table.strings ? subject.table.strings : subject.table.plurals;
        if (!file) return;
        findings_.push_back(
            {.path = file->path,
             .severity = Severity::warning,
             .kind = "extra-table",
             .language = subject.language.language,
             .table = subject.name,
             .message = quotedText(base_.language) + " has no table " + quotedText(subject.name)});
    }

    // It belongs into the file like that which the base has it in.
    void noteMissingKeys(const Subject& subject, const Table& original) {
        const auto& [language, name, table, forms] = subject;
        for (const auto& key : original.keys()) {
            if (table.find(key).entry != nullptr) continue;
            const bool isPlural = !original.find(key).entry->variables.empty();
            const auto& file = table.plurals && (isPlural || !table.strings) ? table.plurals : table.strings;
            add(subject, file->path, {}, key,
                {Severity::warning, "missing-key", "is missing; " + quotedText(base_.language) + " has it"});
        }
    }

    void checkEntry(const Subject& subject, const std::string& key, const Table* original) {
        const auto found = subject.table.find(key);
        const auto& entry = *found.entry;
        const auto* const source = original != nullptr ? original->find(key).entry : nullptr;
        auto remarks = remarksOnGaps(entry, source);
        const auto append = [&remarks](std::vector<Remark> more) {
            std::ranges::move(more, std::back_inserter(remarks));
        };
        // What could not be read may have the plural forms.
        const bool isWhole = subject.table.isWhole;
        if (subject.forms != nullptr)
            append(remarksOnForms(entry, isWhole ? source : nullptr, *subject.forms,
                                  *spokenIn(subject.language)));
        if (source != nullptr) {
            append(remarksOnTranslation(entry, *source, base_.language));
        } else if (original != nullptr && original->isWhole) {
            remarks.push_back({Severity::warning, "extra-key", "is not in " + quotedText(base_.language)});
        }
        for (auto& remark : remarks) add(subject, found.file->path, entry.position, key, std::move(remark));
    }

    void add(const Subject& subject, const std::string& path, vorlan::TextPosition position,
             const std::string& key, Remark remark) {
        findings_.push_back({.path = path,
                             .position = position,
                             .severity = remark.severity,
                             .kind = remark.kind,
                             .language = subject.language.language,
                             .table = subject.name,
                             .key = key,
                             .message = quotedText(key) + ": " + remark.message});
    }

    const BundleTables& bundle_;
    const LanguageTables& base_;
    std::vector<Finding> findings_;
};

} // namespace

const LanguageTables& baseLanguage(const BundleTables& bundle, const std::optional<std::string>& wanted) {
    if (wanted) {
        if (const auto* language = findLanguage(bundle, *wanted)) return *language;
        throw BundleError("there is no folder of the base language " + inQuotes(*wanted));
    }
    const auto* const base = findLanguage(bundle, nameOfBase);
    if (base != nullptr && base->hasTables) return *base;
    if (bundle.developmentRegion)
        if (const auto* language = findRegion(bundle, *bundle.developmentRegion)) return *language;
    if (const auto* language = findLanguage(bundle, "en")) return *language;
    throw BundleError("there is no folder of the base language; name one with --base");
}

std::vector<Finding> checkBundle(const BundleTables& bundle, const LanguageTables& base) {
    return Checker(bundle, base).check();
}

} // namespace tool
