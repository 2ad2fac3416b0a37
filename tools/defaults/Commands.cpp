// SPDX-License-Identifier: Apache-2.0
#include "tools/defaults/Commands.h"

#include "tools/defaults/Printing.h"
#include "tools/support/Program.h"
#include "tools/support/Quoting.h"

#include <VorlanFoundation/Platform/UserDefaults.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace tool {

using vorlan::UserDefaults;
using vorlan::Value;

namespace {

ExitStatus show(std::string_view text) {
    return print(text) && !hasProblem() ? done : failed;
}

// What could not be read is not known to be absent.
ExitStatus missing(std::string_view message) {
    if (hasProblem()) return failed;
    complain(message);
    return notFound;
}

UserDefaults storeOf(const std::string& domain) try {
    return UserDefaults(domain);
} catch (const std::invalid_argument&) {
    throw UsageError(inQuotes(domain) + " is no name of a domain");
}

// A domain may have no file yet when its entries are known already, and may be empty when it has one. One that could
// not be read only looks empty.
bool isThere(const UserDefaults& store, const Value::Dictionary& entries) {
    std::error_code ignored;
    return !entries.empty() || (!hasProblem() && std::filesystem::exists(store.fileURL().path(), ignored));
}

ExitStatus missingDomain(const UserDefaults& store) {
    return missing("there is no domain " + inQuotes(store.name()));
}

ExitStatus missingKey(const UserDefaults& store, std::string_view key) {
    return missing("the domain " + inQuotes(store.name()) + " has no key " + inQuotes(key));
}

ExitStatus read(const Arguments& arguments) {
    const auto store = storeOf(arguments.domain);
    const auto entries = store.storedEntries();
    if (!isThere(store, entries)) return missingDomain(store);
    const auto text = arguments.asJSON ? jsonText : plainText;
    if (!arguments.key) return show(text(entries) + "\n");
    const auto entry = entries.find(*arguments.key);
    if (entry == entries.end()) return missingKey(store, *arguments.key);
    return show(text(entry->second) + "\n");
}

// The store has said why not.
ExitStatus save(const UserDefaults& store) {
    return store.synchronize() ? done : failed;
}

ExitStatus write(const Arguments& arguments) {
    auto store = storeOf(arguments.domain);
    store.setObject(arguments.value, *arguments.key);
    return save(store);
}

ExitStatus remove(const Arguments& arguments) {
    auto store = storeOf(arguments.domain);
    const auto entries = store.storedEntries();
    if (!isThere(store, entries)) return missingDomain(store);
    if (arguments.key && !entries.contains(*arguments.key)) return missingKey(store, *arguments.key);
    for (const auto& [key, value] : entries)
        if (!arguments.key || key == *arguments.key) store.removeObjectForKey(key);
    return save(store);
}

ExitStatus list(const Arguments& arguments) {
    const auto store = storeOf(arguments.domain);
    const auto entries = store.storedEntries();
    if (!isThere(store, entries)) return missingDomain(store);
    std::string lines;
    for (const auto& [key, value] : entries) lines += key + "\n";
    return show(lines);
}

ExitStatus domains() {
    std::string lines;
    for (const auto& name : UserDefaults::suiteNames()) lines += name + "\n";
    return show(lines);
}

} // namespace

ExitStatus run(const Arguments& arguments) {
    listenToProblems();
    switch (arguments.command) {
    case Command::help: return show(usage);
    case Command::version: return show("vorlan-defaults " VORLAN_VERSION "\n");
    case Command::read: return read(arguments);
    case Command::write: return write(arguments);
    case Command::remove: return remove(arguments);
    case Command::list: return list(arguments);
    case Command::domains: return domains();
    }
    return failed;
}

} // namespace tool
