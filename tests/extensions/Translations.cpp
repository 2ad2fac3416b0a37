// SPDX-License-Identifier: Apache-2.0
#include "tests/extensions/Translations.h"

#include "tests/platform/localization/TableBytes.h"

#include <VorlanFoundation/Platform/UserDefaults.h>

#include <map>

namespace vorlan::tests {

namespace {

namespace fs = std::filesystem;

using Texts = std::map<std::string, std::string>;

std::string inTextForm(const Texts& texts) {
    std::string file = "/* Written by hand. */\n";
    for (const auto& [key, text] : texts) file.append("\"" + key + "\" = \"" + text + "\";\n");
    return file;
}

// Texts of the basic plane, in UTF-16 with its mark.
std::string inUTF16(const std::string& text) {
    std::string bytes = "\xFF\xFE";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
        unsigned unit = byte(i);
        if (unit >= 0xE0) {
            unit = (unit & 0xFU) << 12U | (byte(i + 1) & 0x3FU) << 6U | (byte(i + 2) & 0x3FU);
            i += 2;
        } else if (unit >= 0x80) {
            unit = (unit & 0x1FU) << 6U | (byte(i + 1) & 0x3FU);
            i += 1;
        }
        bytes += {static_cast<char>(unit & 0xFFU), static_cast<char>(unit >> 8U)};
    }
    return bytes;
}

std::string inXML(const Texts& texts) {
    std::vector<std::pair<std::string, std::string>> entries;
    for (const auto& [key, text] : texts) entries.emplace_back(key, xmlText(text));
    return xmlList(xmlDictionary(entries));
}

// A defaults store writes the binary form.
std::string inBinaryForm(const Texts& texts) {
    UserDefaults store("com.example.template");
    for (const auto& [key, text] : texts) store.setObject(text, key);
    store.synchronize();
    return textOf(store.fileURL());
}

std::string inForm(TableForm form, const Texts& texts) {
    switch (form) {
    case TableForm::text: return inTextForm(texts);
    case TableForm::utf16: return inUTF16(inTextForm(texts));
    case TableForm::xml: return inXML(texts);
    case TableForm::binary: return inBinaryForm(texts);
    }
    return {};
}

std::string pluralForms() {
    std::vector<std::pair<std::string, std::string>> forms;
    for (const auto* category : {"zero", "one", "two", "few", "many", "other"})
        forms.emplace_back(category, std::string(category) + " %d");
    return xmlList(xmlDictionary({{"%d files", xmlPlural("%#@files@", {{"files", xmlVariable(forms)}})}}));
}

} // namespace

const std::vector<Translation>& translations() {
    static const std::vector<Translation> all = {
        {"en", "Open it", TableForm::text}, {"de", "Öffnen", TableForm::utf16},
        {"fr", "Ouvrir", TableForm::xml},   {"es", "Abrir", TableForm::binary},
        {"it", "Apri", TableForm::text},    {"nl", "Openen", TableForm::utf16},
        {"pl", "Otwórz", TableForm::xml},   {"ru", "Открыть", TableForm::text},
        {"ar", "فتح", TableForm::utf16},    {"he", "פתיחה", TableForm::binary},
        {"ja", "開く", TableForm::utf16},   {"cs", "Otevřít", TableForm::binary},
    };
    return all;
}

void writeTranslations(const fs::path& resources) {
    auto all = translations();
    all.push_back({"Base", "Base open", TableForm::text});
    for (const auto& [language, open, form] : all) {
        const auto folder = resources / (language + ".lproj");
        fs::create_directories(folder);
        writeText(folder / "Localizable.strings",
                  inForm(form, {{"Open", open}, {"Page %d of %d", language + " %2$d/%1$d"}}));
        writeText(folder / "Localizable.stringsdict", pluralForms());
    }
}

} // namespace vorlan::tests
