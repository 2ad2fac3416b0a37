// SPDX-License-Identifier: Apache-2.0

// What a secret costs: to read, to add and to change, in the embedded keychain, beside its engine and beside the
// desktop's keyring.

#include "benchmarks/KeychainReadingBenchmark.h"
#include "benchmarks/KeychainWritingBenchmark.h"
#include "benchmarks/support/DiskHome.h"
#include "benchmarks/support/PrivateKeyring.h"
#include "benchmarks/support/Rows.h"

#include <VorlanFoundation/Platform/KeychainStore.h>

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    const DiskHome home;
    const PrivateKeyring keyring(home.path());
    addKeychainReadingRows(home.path());
    addKeychainWritingRows(home.path());
    const int status = runRows(argc, argv);
    vorlan::KeychainStore::configure(
        {.store = vorlan::KeychainOptions::Store::memory}); // closes files of the home
    return status;
}
