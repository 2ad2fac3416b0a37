// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/DefaultsSavingBenchmark.h"

#include "benchmarks/support/PlainFile.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/SampleEntries.h"
#include "benchmarks/support/WallTimes.h"
#include "platform/files/PropertyList.h"

#include <VorlanFoundation/Platform/UserDefaults.h>

#include <QtCore/QSettings>
#include <QtCore/QString>
#include <glib.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace vorlan::benchmarks {

namespace {

using std::filesystem::path;

constexpr auto group = "set one of 100 and save them";

constexpr std::size_t saves = 25;

template <class Save>
void measure(benchmark::State& state, const Save& save) {
    if (!save(0)) state.SkipWithError("cannot save"); // makes the file
    measureEach(state, saves, [&](std::size_t i) { return save(i + 1); });
}

/// The entry that is set each time.
constexpr std::size_t changing = 1;

void measureBare(benchmark::State& state, const path& folder, bool isFolderSynced) {
    const auto bytes = writeBinaryPropertyList(sampleEntries());
    const auto target = folder / "bare.plist";
    const auto fresh = folder / "bare.plist.new";
    measure(state, [&](std::size_t) {
        {
            const PlainFile file(fresh, O_WRONLY | O_CREAT | O_TRUNC);
            file.write(bytes.data(), bytes.size());
            file.sync();
        }
        check(std::rename(fresh.c_str(), target.c_str()) == 0);
        if (isFolderSynced) PlainFile(folder, O_RDONLY | O_DIRECTORY).sync();
        return true;
    });
}

void measureOurs(benchmark::State& state) {
    UserDefaults store("org.example.saving");
    for (const auto& [key, value] : sampleEntries()) store.setObject(value, key);
    measure(state, [&](std::size_t number) {
        store.setObject(1000 + number, sampleKey(changing));
        return store.synchronize();
    });
}

QVariant variantOf(const Value& value) {
    if (const auto* text = value.text()) return QString::fromStdString(*text);
    if (value.kind() == Value::Kind::boolean) return value.as<bool>().value_or(false);
    if (const auto integer = value.as<qint64>(); integer && value.kind() == Value::Kind::integer)
        return *integer;
    return value.as<double>().value_or(0);
}

void measureQt(benchmark::State& state, const path& folder) {
    QSettings store(QString::fromStdString(folder / "saving.ini"), QSettings::IniFormat);
    for (const auto& [key, value] : sampleEntries())
        store.setValue(QString::fromStdString(key), variantOf(value));
    const auto name = QString::fromStdString(sampleKey(changing));
    measure(state, [&](std::size_t number) {
        store.setValue(name, qulonglong{1000 + number});
        store.sync();
        return store.status() == QSettings::NoError;
    });
}

void setEntry(GKeyFile* file, const std::string& key, const Value& value) {
    constexpr auto section = "settings";
    if (const auto* text = value.text()) {
        g_key_file_set_string(file, section, key.c_str(), text->c_str());
    } else if (value.kind() == Value::Kind::boolean) {
        g_key_file_set_boolean(file, section, key.c_str(), value.as<bool>().value_or(false) ? TRUE : FALSE);
    } else if (value.kind() == Value::Kind::integer) {
        g_key_file_set_int64(file, section, key.c_str(), value.as<gint64>().value_or(0));
    } else {
        g_key_file_set_double(file, section, key.c_str(), value.as<double>().value_or(0));
    }
}

// By itself it does without an fsync where the file system promises order; with these flags it never does.
void measureGLib(benchmark::State& state, const path& folder) {
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(), g_key_file_unref);
    for (const auto& [key, value] : sampleEntries()) setEntry(file.get(), key, value);
    const auto target = folder / "saving.keys";
    measure(state, [&](std::size_t number) {
        setEntry(file.get(), sampleKey(changing), 1000 + number);
        gsize size = 0;
        const std::unique_ptr<char, decltype(&g_free)> text(g_key_file_to_data(file.get(), &size, nullptr),
                                                            g_free);
        constexpr auto flags =
            static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE);
        return g_file_set_contents_full(target.c_str(), text.get(), static_cast<gssize>(size), flags,
                                        S_IRUSR | S_IWUSR, nullptr) == TRUE;
    });
}

} // namespace

void addDefaultsSavingRows(const path& folder) {
    addLatenessRow(group, "floor: write, fsync, rename, fsync of the folder",
                   [=](benchmark::State& state) { measureBare(state, folder, true); });
    addLatenessRow(group, "note: write, fsync, rename",
                   [=](benchmark::State& state) { measureBare(state, folder, false); });
    addLatenessRow(group, "ours: UserDefaults, synchronize", measureOurs);
    addLatenessRow(group, "peer: QSettings::sync",
                   [=](benchmark::State& state) { measureQt(state, folder); });
    addLatenessRow(group, "peer: GKeyFile, set_contents with fsync",
                   [=](benchmark::State& state) { measureGLib(state, folder); });
}

} // namespace vorlan::benchmarks
