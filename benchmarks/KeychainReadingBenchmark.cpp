// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/KeychainReadingBenchmark.h"

#include "benchmarks/support/Rows.h"
#include "benchmarks/support/SampleKeychain.h"
#include "benchmarks/support/SealedTable.h"
#include "benchmarks/support/SecretPeer.h"
#include "benchmarks/support/WallTimes.h"

#include <VorlanFoundation/Keychain.h>

#include <cstddef>
#include <string>

namespace vorlan::benchmarks {

namespace {

using std::filesystem::path;

constexpr std::size_t reads = 2000;
constexpr std::size_t lookUps = 40;
constexpr std::size_t itemsOfKeyring = 100;

std::string nameOf(const path& folder, const std::string& what, std::size_t count) {
    return folder / (what + "-" + std::to_string(count));
}

void measureTable(benchmark::State& state, const path& folder, std::size_t count) {
    SealedTable table(nameOf(folder, "read", count), SealedTable::Journal::ahead);
    table.fill(count, sampleSecret());
    measureEach(state, reads,
                [&](std::size_t i) { return table.read(tableName(i % count), sampleSecret().size()); });
}

void measureItems(benchmark::State& state, const path& folder, std::size_t count) {
    openSampleKeychain(nameOf(folder, "vault", count), count);
    measureEach(state, reads, [&](std::size_t i) {
        auto query = sampleQuery(sampleAccount(i % count));
        query[kSecReturnData] = true;
        Value found;
        return SecItemCopyMatching(query, &found) == errSecSuccess && found.data() != nullptr;
    });
}

void measureManager(benchmark::State& state, const path& folder, std::size_t count) {
    openSampleKeychain(nameOf(folder, "managed", count), 0);
    auto keychain = KeychainManager::with([](KeychainSettings& settings) {
        settings.service = "org.example.vault";
        settings.synchronizable = false;
        settings.accessibility = Accessibility::unlocked({.thisDeviceOnly = false});
    });
    if (!keychain.data(sampleAccount(0)))
        for (std::size_t i = 0; i < count; ++i) keychain.insert(sampleAccount(i), sampleData());
    measureEach(state, reads,
                [&](std::size_t i) { return keychain.data(sampleAccount(i % count)).has_value(); });
}

void measureKeyring(benchmark::State& state) {
    const SecretPeer peer;
    for (std::size_t i = 0; i < itemsOfKeyring; ++i)
        if (!peer.lookUp(sampleAccount(i), sampleSecret().size()))
            peer.store(sampleAccount(i), sampleSecret());
    measureEach(state, lookUps,
                [&](std::size_t i) { return peer.lookUp(sampleAccount(i), sampleSecret().size()); });
}

} // namespace

void addKeychainReadingRows(const path& folder) {
    for (const std::size_t count : {1, 100, 1000}) {
        const auto group = "read one of " + std::to_string(count) + " secrets";
        addLatenessRow(group, "floor: SQLite's select and one AES-256-GCM",
                       [=](benchmark::State& state) { measureTable(state, folder, count); });
        addLatenessRow(group, "ours: SecItemCopyMatching",
                       [=](benchmark::State& state) { measureItems(state, folder, count); });
        addLatenessRow(group, "ours: KeychainManager::data",
                       [=](benchmark::State& state) { measureManager(state, folder, count); });
        if (count == itemsOfKeyring)
            addLatenessRow(group, "peer: libsecret, gnome-keyring",
                           [](benchmark::State& state) { measureKeyring(state); });
    }
}

} // namespace vorlan::benchmarks
