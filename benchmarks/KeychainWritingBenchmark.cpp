// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/KeychainWritingBenchmark.h"

#include "benchmarks/support/PlainFile.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/SampleKeychain.h"
#include "benchmarks/support/SealedTable.h"
#include "benchmarks/support/SecretPeer.h"
#include "benchmarks/support/WallTimes.h"

#include <unistd.h>

#include <cstddef>
#include <string>

namespace vorlan::benchmarks {

namespace {

using std::filesystem::path;
using Journal = SealedTable::Journal;

constexpr std::size_t writes = 40;
constexpr std::size_t writesToKeyring = 12;
constexpr std::size_t itemsOfKeyring = 100;
/// An account that no store has before.
constexpr std::size_t fresh = 100'000;

path fileFor(const path& folder, Journal journal, const std::string& what) {
    return folder / (what + (journal == Journal::ahead ? ", ahead" : ", back"));
}

void measureTableAdding(benchmark::State& state, const path& folder, Journal journal, std::size_t count) {
    SealedTable table(fileFor(folder, journal, "adding to " + std::to_string(count)), journal);
    table.fill(count, sampleSecret());
    measureEach(
        state, writes, [&](std::size_t i) { return table.insert(tableName(fresh + i), sampleSecret()); },
        [&](std::size_t i) { table.remove(tableName(fresh + i)); });
}

void measureTableChanging(benchmark::State& state, const path& folder, Journal journal, std::size_t count) {
    SealedTable table(fileFor(folder, journal, "changing one of " + std::to_string(count)), journal);
    table.fill(count, sampleSecret());
    measureEach(state, writes,
                [&](std::size_t i) { return table.update(tableName(i % count), sampleSecret()); });
}

// What a commit brings to the journal, as one piece at the end of a file.
void measureAppending(benchmark::State& state, const path& folder) {
    const PlainFile file(folder / "appended", O_WRONLY | O_CREAT | O_APPEND | O_TRUNC);
    constexpr std::size_t pageAndHeader = 4096 + 24;
    const std::string bytes(2 * pageAndHeader, 'x');
    measureEach(state, writes, [&](std::size_t) {
        file.write(bytes.data(), bytes.size());
        return fdatasync(file.descriptor()) == 0;
    });
}

path vault(const path& folder, std::size_t count) {
    return folder / ("written-" + std::to_string(count));
}

void measureAdding(benchmark::State& state, const path& folder, std::size_t count) {
    openSampleKeychain(vault(folder, count), count);
    measureEach(
        state, writes, [](std::size_t i) { return addSample(sampleAccount(fresh + i)) == errSecSuccess; },
        [](std::size_t i) { SecItemDelete(sampleQuery(sampleAccount(fresh + i))); });
}

void measureChanging(benchmark::State& state, const path& folder, std::size_t count) {
    openSampleKeychain(vault(folder, count), count);
    measureEach(state, writes, [=](std::size_t i) {
        return SecItemUpdate(sampleQuery(sampleAccount(i % count)), {{kSecValueData, sampleData()}}) ==
               errSecSuccess;
    });
}

void fillKeyring(const SecretPeer& peer) {
    if (peer.lookUp(sampleAccount(itemsOfKeyring - 1), sampleSecret().size())) return;
    for (std::size_t i = 0; i < itemsOfKeyring; ++i) peer.store(sampleAccount(i), sampleSecret());
}

void measureKeyringAdding(benchmark::State& state) {
    const SecretPeer peer;
    fillKeyring(peer);
    measureEach(
        state, writesToKeyring,
        [&](std::size_t i) { return peer.store(sampleAccount(fresh + i), sampleSecret()); },
        [&](std::size_t i) { peer.remove(sampleAccount(fresh + i)); });
}

void measureKeyringChanging(benchmark::State& state) {
    const SecretPeer peer;
    fillKeyring(peer);
    measureEach(state, writesToKeyring,
                [&](std::size_t i) { return peer.store(sampleAccount(i), sampleSecret()); });
}

using MeasureTable = void (*)(benchmark::State&, const path&, Journal, std::size_t);

void addTableRows(const std::string& group, const path& folder, std::size_t count, MeasureTable measure) {
    addLatenessRow(group, "floor: SQLite, journal written ahead",
                   [=](benchmark::State& state) { measure(state, folder, Journal::ahead, count); });
    addLatenessRow(group, "note: append and fdatasync",
                   [=](benchmark::State& state) { measureAppending(state, folder); });
    addLatenessRow(group, "peer: SQLite, journal to go back",
                   [=](benchmark::State& state) { measure(state, folder, Journal::rollback, count); });
}

} // namespace

void addKeychainWritingRows(const path& folder) {
    for (const std::size_t count : {1, 100, 1000}) {
        const auto adding = "add a secret to " + std::to_string(count);
        addTableRows(adding, folder, count, measureTableAdding);
        addLatenessRow(adding, "ours: SecItemAdd",
                       [=](benchmark::State& state) { measureAdding(state, folder, count); });
        const auto changing = "change one of " + std::to_string(count) + " secrets";
        addTableRows(changing, folder, count, measureTableChanging);
        addLatenessRow(changing, "ours: SecItemUpdate",
                       [=](benchmark::State& state) { measureChanging(state, folder, count); });
        if (count != itemsOfKeyring) continue;
        addLatenessRow(adding, "peer: libsecret, gnome-keyring", measureKeyringAdding);
        addLatenessRow(changing, "peer: libsecret, gnome-keyring", measureKeyringChanging);
    }
}

} // namespace vorlan::benchmarks
