// SPDX-License-Identifier: Apache-2.0
#pragma once

// A Secret Service that does what a test says, right or wrong.

#include "tests/platform/security/secretservice/FakeKeyring.h"
#include "tests/support/PrivateBus.h"

#include <cstddef>
#include <limits>
#include <map>
#include <memory>
#include <string>

namespace vorlan::tests {

/// Owns org.freedesktop.secrets on the test's bus, on a connection and a thread of its own, and keeps items in memory as
/// the real ones do: two with the same attributes are two items, and search is by subset of the attributes.
///
/// Threads: safe from any thread.
/// Owns:    its thread and its items.
class FakeSecretService {
public:
    /// What becomes of a question that the service would put to the user.
    using Prompts = FakePrompts;

    /// For calls without number.
    static constexpr std::size_t always = std::numeric_limits<std::size_t>::max();

    /// A service that answers as soon as this is made, with one collection, unlocked, which is the default.
    explicit FakeSecretService(const support::PrivateBus& bus);
    FakeSecretService(const FakeSecretService&) = delete;
    FakeSecretService& operator=(const FakeSecretService&) = delete;
    ~FakeSecretService();

    /// Locks or unlocks the collection. A locked one is unlocked by `Unlock` silently, or only after a prompt.
    void setLocked(bool isLocked, bool needsPrompt = true);
    /// At first they are not answered.
    void setPrompts(Prompts prompts);
    /// Takes the default collection away: the alias "default" is "/".
    void setHasDefault(bool hasDefault);
    /// Whether a locked collection's items are missing from a search, as in some services, instead of among the locked.
    void setHidesLocked(bool hidesLocked);

    /// Has the next `count` calls of a method ("SearchItems", "CreateItem", "GetSecrets", "SetSecret", "Delete",
    /// "OpenSession", "ReadAlias", "Get", ...) never be answered, nor done.
    void ignore(const std::string& method, std::size_t count = 1);
    /// Has the next `count` calls of a method do their work and never be answered.
    void loseReply(const std::string& method, std::size_t count = 1);
    /// Has the next `count` calls of a method fail with a D-Bus error name.
    void fail(const std::string& method, const std::string& error, std::size_t count = 1);
    /// Has the service leave the bus when that method is called next: before or after it has done its work.
    void dieAt(const std::string& method, bool afterwards);
    /// Takes back what it was told by the four above.
    void behave();
    /// Locks the collection and unlocks it in turn, the first time after `first` calls from now and then after every
    /// `calls`; never again with 0.
    void turnLockEvery(std::size_t calls, std::size_t first = 0);
    /// Has it answer with secrets that are not what was stored.
    void setWrongSecrets(bool areWrong);

    /// Adds a second item with the attributes and the secret of every item that there is, but for those attributes
    /// that are to be other ones.
    void duplicateItems(const std::map<std::string, std::string>& changes = {});
    std::size_t itemCount() const;
    /// How often a method was called.
    std::size_t callCount(const std::string& method) const;
    /// Waits until a method was called so often; a failure of the test case when that takes longer than ten seconds.
    void waitForCalls(const std::string& method, std::size_t count) const;

    /// Leaves the bus, and comes back to it with what it keeps; sessions end.
    void disconnect();
    void connect();

private:
    class Service;

    std::unique_ptr<Service> service_;
};

} // namespace vorlan::tests
