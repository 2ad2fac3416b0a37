// SPDX-License-Identifier: Apache-2.0
#pragma once

// A keychain for tests: empty, in memory, gone at the end.
//
//     const testing::InMemoryKeychain keychain;     // from here on, every secret is kept in memory
//     signIn("anna", "correct horse");
//     EXPECT_TRUE(isSignedIn());

namespace vorlan::testing {

/// Has the process use a keychain of its own in memory, and the store of before again when it is destroyed
/// (KeychainOptions in their defaults: what a host configured before has to be configured anew).
///
/// Threads: one thread at a time; make it before those threads that use the keychain.
/// Owns:    the items, which go with it.
class InMemoryKeychain {
public:
    InMemoryKeychain();
    InMemoryKeychain(const InMemoryKeychain&) = delete;
    InMemoryKeychain& operator=(const InMemoryKeychain&) = delete;
    ~InMemoryKeychain();
};

} // namespace vorlan::testing
