// SPDX-License-Identifier: Apache-2.0
#pragma once

// An embedded keychain in a home of the test's own, used as hosts do, with its files at hand.

#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Platform/Security.h>
#include <VorlanFoundation/Testing/KeychainFault.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <filesystem>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace vorlan::tests {

/// What a read came to.
struct Secret {
    OSStatus status = errSecSuccess;
    std::optional<std::string> text = std::nullopt;

    friend bool operator==(const Secret&, const Secret&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const Secret& secret) {
        return stream << secret.status << " " << secret.text.value_or("without a value");
    }
};

Data dataOf(std::string_view text);

/// A file's bytes; empty where it cannot be read.
std::string contentOf(const std::filesystem::path& file);
/// Writes a file in place, with its mode as it was.
void overwrite(const std::filesystem::path& file, std::string_view content);

/// The keychain's calls for items of one service, over the embedded store, which this process alone is configured for.
///
/// The keychain refuses all calls for a while after some failures: here that while is over as soon as a call has
/// returned, so that each call tells about the store.
///
/// Threads: one thread at a time.
/// Owns:    the home, with the store in it.
class EmbeddedKeychain {
public:
    static constexpr auto service = "com.example.vault";

    explicit EmbeddedKeychain(KeychainOptions::Store store = KeychainOptions::Store::embedded);
    EmbeddedKeychain(const EmbeddedKeychain&) = delete;
    EmbeddedKeychain& operator=(const EmbeddedKeychain&) = delete;
    ~EmbeddedKeychain();

    const std::filesystem::path& home() const noexcept { return home_.path(); }
    std::filesystem::path folder() const;
    std::filesystem::path database() const { return folder() / "keychain.db"; }
    std::filesystem::path key() const { return folder() / "master.key"; }
    std::filesystem::path marker() const { return folder() / "store"; }

    /// Opens everything anew, as another process would.
    void reopen();
    /// Closes the store's files until `reopen`.
    void close();

    OSStatus add(std::string_view account, std::string_view secret, Value::Dictionary extra = {});
    Secret read(std::string_view account);
    OSStatus update(std::string_view account, std::string_view secret);
    OSStatus remove(std::string_view account);

    /// Ends the time in which calls are refused after a failure.
    void endHoldOff();

private:
    OSStatus settle(OSStatus status);

    vorlan::testing::TemporaryHome home_;
    vorlan::testing::KeychainFault clock_;
    KeychainOptions::Store store_;
};

/// The files of a folder as they were, to be put there again.
class FolderCopy {
public:
    explicit FolderCopy(std::filesystem::path folder);
    FolderCopy(const FolderCopy&) = delete;
    FolderCopy& operator=(const FolderCopy&) = delete;
    ~FolderCopy() = default;

    /// Brings the folder back: what is there is overwritten, what came later is deleted.
    void restore() const;

    const std::string& content(const std::string& name) const { return files_.at(name); }

private:
    std::filesystem::path folder_;
    std::map<std::string, std::string> files_;
};

} // namespace vorlan::tests
