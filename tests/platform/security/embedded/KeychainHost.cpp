// SPDX-License-Identifier: Apache-2.0

// A process that uses a keychain as a test says: a command a line on standard input, an answer a line on standard
// output. It ends, as programs do, when there is no further command.

#include <VorlanFoundation/Platform/KeychainStore.h>
#include <VorlanFoundation/Platform/Problems.h>
#include <VorlanFoundation/Platform/Security.h>

#include "tests/platform/security/embedded/RawDatabase.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

using namespace vorlan;

namespace {

using Text = const std::string&;

constexpr auto service = "com.example.vault";

Data dataOf(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::byte*>(text.data());
    return {bytes, bytes + text.size()};
}

Value::Dictionary queryFor(Text account) {
    return {{kSecClass, kSecClassGenericPassword}, {kSecAttrService, service}, {kSecAttrAccount, account}};
}

OSStatus add(Text account, Text secret) {
    auto item = queryFor(account);
    item[kSecValueData] = dataOf(secret);
    return SecItemAdd(item);
}

OSStatus update(Text account, Text secret) {
    return SecItemUpdate(queryFor(account), {{kSecValueData, dataOf(secret)}});
}

OSStatus put(Text account, Text secret) {
    const auto status = add(account, secret);
    return status == errSecDuplicateItem ? update(account, secret) : status;
}

OSStatus removeItem(Text account) {
    return SecItemDelete(queryFor(account));
}

// The status, and the secret where there is one.
std::string get(Text account) {
    auto query = queryFor(account);
    query[kSecReturnData] = true;
    Value found;
    const auto status = SecItemCopyMatching(query, &found);
    if (found.data() == nullptr) return std::to_string(status);
    const auto* text = reinterpret_cast<const char*>(found.data()->data());
    return std::to_string(status) + " " + std::string(text, found.data()->size());
}

// How many of `count` items could be added: "p1" to "p<count>", each its own name.
std::string fill(Text prefix, int count) {
    int added = 0;
    for (int i = 1; i <= count; ++i) {
        const auto account = prefix + std::to_string(i);
        added += add(account, account) == errSecSuccess ? 1 : 0;
    }
    return std::to_string(added);
}

// A byte for each operation, once it has returned; it ends when one went wrong.
void acknowledge(bool isDone) {
    if (!isDone || write(STDOUT_FILENO, "+", 1) != 1) _exit(1);
}

// Adds, updates and deletes until somebody kills it: `expectFlood` in the test repeats its steps.
[[noreturn]] void flood(int base) {
    for (int i = 1;; ++i) {
        const auto account = "k" + std::to_string(i % 20);
        const auto status = i % 7 == 0 ? removeItem(account) : put(account, std::to_string(base + i));
        acknowledge(status == errSecSuccess || (i % 7 == 0 && status == errSecItemNotFound));
    }
}

// Sets a passphrase and takes it away until somebody kills it.
[[noreturn]] void changePassphrases() {
    for (;;) {
        acknowledge(KeychainStore::setPassphrase("first") == errSecSuccess);
        acknowledge(KeychainStore::setPassphrase("second") == errSecSuccess);
        acknowledge(KeychainStore::setPassphrase(std::nullopt) == errSecSuccess);
    }
}

// Leaves no room on the disk that a file is on.
std::string occupy(Text path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file < 0) return "cannot open";
    const std::array<char, 512> zeros{};
    for (std::size_t size = zeros.size(); size > 0;)
        if (const auto written = write(file, zeros.data(), size); written <= 0) size /= 2;
    close(file);
    return "ok";
}

KeychainOptions::Store storeNamed(std::string_view name) {
    using enum KeychainOptions::Store;
    return name == "embedded" ? embedded : name == "secretService" ? secretService : automatic;
}

class Host {
public:
    explicit Host(std::string store) : store_(std::move(store)) { configure(); }

    std::string answer(Text line) {
        std::istringstream words(line);
        std::string command;
        std::string first;
        words >> command >> first;
        std::string rest;
        std::getline(words >> std::ws, rest);
        const auto known = commands_.find(command);
        return known != commands_.end() ? known->second(first, rest) : "unknown command";
    }

private:
    void configure() const { KeychainStore::configure({.store = storeNamed(store_)}); }

    std::string configureAnew() {
        configure();
        return "ok";
    }

    // As a program does that was interrupted in the middle of a change.
    std::string hold(Text path) {
        database_.emplace(path);
        return database_->execute("BEGIN IMMEDIATE") ? "ok" : database_->message();
    }

    std::string release() {
        const bool isDone = database_ && database_->execute("ROLLBACK");
        database_.reset();
        return isDone ? "ok" : "not held";
    }

    std::string keys() const {
        std::vector<std::string> found;
        const auto status = KeychainStore::keys(service, found);
        return std::to_string(status) + " " + std::to_string(found.size());
    }

    static std::string number(OSStatus status) { return std::to_string(status); }

    std::string store_;
    std::optional<tests::RawDatabase> database_;
    const std::map<std::string, std::function<std::string(Text, Text)>> commands_{
        {"ready", [](Text, Text) { return "ok"; }},
        {"configure", [this](Text, Text) { return configureAnew(); }},
        {"add", [](Text account, Text secret) { return number(add(account, secret)); }},
        {"add-large",
         [](Text account, Text n) { return number(add(account, std::string(std::stoul(n), 'x'))); }},
        {"update", [](Text account, Text secret) { return number(update(account, secret)); }},
        {"update-large",
         [](Text account, Text n) { return number(update(account, std::string(std::stoul(n), 'x'))); }},
        {"remove", [](Text account, Text) { return number(removeItem(account)); }},
        {"get", [](Text account, Text) { return get(account); }},
        {"keys", [this](Text, Text) { return keys(); }},
        {"fill", [](Text prefix, Text count) { return fill(prefix, std::stoi(count)); }},
        {"flood", [](Text base, Text) -> std::string { flood(std::stoi(base)); }},
        {"change-passphrases", [](Text, Text) -> std::string { changePassphrases(); }},
        {"set-passphrase", [](Text words, Text) { return number(KeychainStore::setPassphrase(words)); }},
        {"unlock", [](Text words, Text) { return number(KeychainStore::unlock(words)); }},
        {"lock", [](Text, Text) { return number(KeychainStore::lock()); }},
        {"where", [](Text, Text) { return KeychainStore::description(); }},
        {"hold", [this](Text path, Text) { return hold(path); }},
        {"release", [this](Text, Text) { return release(); }},
        {"occupy", [](Text path, Text) { return occupy(path); }},
        {"free", [](Text path, Text) { return unlink(path.c_str()) == 0 ? "ok" : "cannot"; }},
    };
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    setProblemHandler([](std::string_view, std::string_view) {}); // what is expected here, the answers tell
    Host host(argv[1]);
    for (std::string line; std::getline(std::cin, line);) std::cout << host.answer(line) << std::endl;
    return 0;
}
