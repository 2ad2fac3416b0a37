// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/support/Translations.h"

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <libintl.h>
#include <stdexcept>

namespace vorlan::benchmarks {

namespace {

constexpr auto messagesHead = R"(msgid ""
msgstr ""
"Content-Type: text/plain; charset=UTF-8\n"
"Plural-Forms: nplurals=2; plural=(n != 1);\n"

msgid "%d file"
msgid_plural "%d files"
msgstr[0] "%d Datei"
msgstr[1] "%d Dateien"
)";

std::ofstream created(const std::filesystem::path& file) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    return stream;
}

void writeTable(const std::filesystem::path& file) {
    auto stream = created(file);
    for (std::size_t i = 0; i < Translations::count; ++i)
        stream << '"' << Translations::key(i) << "\" = \"" << Translations::text(i) << "\";\n";
}

void writeMessages(const std::filesystem::path& file) {
    const auto source = std::filesystem::path(file).replace_extension(".po");
    auto stream = created(source);
    stream << messagesHead;
    for (std::size_t i = 0; i < Translations::count; ++i)
        stream << "\nmsgid \"" << Translations::key(i) << "\"\nmsgstr \"" << Translations::text(i) << "\"\n";
    stream.close();
    const auto command = "msgfmt -o '" + file.string() + "' '" + source.string() + "'";
    if (std::system(command.c_str()) != 0) // NOLINT(concurrency-mt-unsafe): no other threads yet
        throw std::runtime_error("msgfmt failed");
}

// The C library translates in any locale but "C" itself, into the languages of this variable.
void useMessages(const std::filesystem::path& folder) {
    setenv("LANGUAGE", Translations::language, 1);
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) throw std::runtime_error("no locale C.UTF-8");
    bindtextdomain(Translations::domain, folder.c_str());
}

} // namespace

Translations::Translations(const std::filesystem::path& folder) {
    writeTable(folder / "texts/Resources/de.lproj/Localizable.strings");
    bundle_ = Bundle::atURL(FileURL(folder / "texts"));
    if (!bundle_) throw std::runtime_error("no bundle at " + folder.string());
    writeMessages(folder / "de/LC_MESSAGES" / (std::string(domain) + ".mo"));
    useMessages(folder);
}

} // namespace vorlan::benchmarks
