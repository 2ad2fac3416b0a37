// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a fake Secret Service keeps, and how it answers, apart from the bus.

#include "tests/support/Variants.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vorlan::tests {

/// An answer that is an error of the bus.
struct BusError {
    std::string name;
    std::string message;
};

/// A method that was called. The arguments are a tuple.
struct FakeCall {
    std::string path;
    std::string interface;
    std::string member;
    GVariant* arguments;
};

/// What is sent back, and the end of a prompt that it brings about.
struct FakeReply {
    support::Reference<GVariant> body;
    std::string promptPath = {};
    support::Reference<GVariant> completed = {};
};

/// What becomes of a question that the service would put to the user.
enum class FakePrompts { granted, dismissed, unanswered };

/// One collection of items, its sessions and its prompts.
///
/// Threads: one thread at a time.
/// Errors:  throws BusError.
class FakeKeyring {
public:
    static constexpr char servicePath[] = "/org/freedesktop/secrets";

    FakeReply answer(const FakeCall& call);

    /// What ends with a connection to the bus.
    void forgetSessions();

    /// Doubles every item, with some of the attributes changed.
    void duplicateItems(const std::map<std::string, std::string>& changes);
    std::size_t itemCount() const noexcept { return items_.size(); }

    bool isLocked = false;
    bool needsPrompt = true;
    bool hasDefault = true;
    bool hidesLocked = false;
    bool hasWrongSecrets = false;
    FakePrompts prompts = FakePrompts::unanswered;

private:
    using Attributes = std::map<std::string, std::string>;
    using Number = unsigned;

    struct Item {
        std::string label;
        Attributes attributes;
        std::string secret;
        std::string contentType;
        std::uint64_t created = 0;
        std::uint64_t modified = 0;
    };

    struct Method {
        const char* arguments;
        FakeReply (FakeKeyring::*answer)(const FakeCall&);
    };

    static const std::map<std::string, Method>& methods();

    FakeReply openSession(const FakeCall& call);
    FakeReply closeSession(const FakeCall& call);
    FakeReply readAlias(const FakeCall& call);
    FakeReply searchService(const FakeCall& call);
    FakeReply searchCollection(const FakeCall& call);
    FakeReply lock(const FakeCall& call);
    FakeReply unlock(const FakeCall& call);
    FakeReply getSecrets(const FakeCall& call);
    FakeReply createItem(const FakeCall& call);
    FakeReply deleteItem(const FakeCall& call);
    FakeReply getSecret(const FakeCall& call);
    FakeReply setSecret(const FakeCall& call);
    FakeReply prompt(const FakeCall& call);
    FakeReply dismiss(const FakeCall& call);
    FakeReply get(const FakeCall& call);
    FakeReply getAll(const FakeCall& call);
    FakeReply set(const FakeCall& call);

    FakeReply endPrompt(const std::string& path, bool isGranted);
    void requireUnlocked() const;
    void requireSession(const std::string& path) const;
    void requireCollection(const std::string& path) const;
    static std::string pathOf(Number number);
    static std::optional<Number> numberOf(const std::string& path);
    std::string pathFor(const Attributes& attributes, bool isReplaced);
    Item& itemAt(const std::string& path);
    std::vector<std::string> pathsOf(const Attributes& attributes) const;
    GVariant* secretOf(const Item& item, const std::string& session) const;
    void store(Item& item, GVariant* secret) const;
    support::Reference<GVariant> properties(const std::string& path, const std::string& interface);
    support::Reference<GVariant> collectionProperties() const;
    support::Reference<GVariant> itemProperties(const Item& item) const;

    std::map<Number, Item> items_;
    std::set<std::string> sessions_;
    std::set<std::string> openPrompts_;
    Number lastNumber_ = 0;
    std::uint64_t time_ = 1'700'000'000;
};

} // namespace vorlan::tests
