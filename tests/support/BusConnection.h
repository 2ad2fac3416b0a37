// SPDX-License-Identifier: Apache-2.0
#pragma once

// A test's own way to a message bus, beside the one that the library uses.

#include "tests/support/Variants.h"

#include <gio/gio.h>

#include <string>

namespace support {

/// A connection that is shared with no one.
///
/// Threads: safe from any thread.
/// Errors:  what cannot be done is a failure of the test case.
class BusConnection {
public:
    explicit BusConnection(const std::string& address);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection();

    /// What is called, and with which arguments: a tuple, or null for none.
    struct Method {
        std::string destination;
        std::string path;
        std::string interface;
        std::string name;
    };

    /// Calls a method and waits for what it answers; null, and a failure, when that is an error. Takes the arguments over.
    Reference<GVariant> call(const Method& method, GVariant* arguments) const;

    /// Waits until a name has an owner, or has none; a failure when that takes longer than ten seconds.
    void waitForName(const std::string& name, bool isOwned) const;

    /// Ends it before its time. Whoever waits for an answer of ours hears that there will be none.
    void close();

    GDBusConnection* get() const noexcept { return connection_.get(); }

private:
    Reference<GDBusConnection> connection_;
};

} // namespace support
