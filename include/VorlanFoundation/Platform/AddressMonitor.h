// SPDX-License-Identifier: Apache-2.0
#pragma once

// Recursive locks for things that carry none: one per address, kept only while it is used.

#include <VorlanFoundation/Platform/Export.h>

namespace vorlan {

/// Holds the recursive lock that belongs to an address, from construction to destruction.
///
/// Threads: one thread at a time per holder; the locks themselves are safe from any thread.
/// Owns:    nothing; the object at the address is never looked at, but has to stay in place meanwhile.
class VORLAN_EXPORT AddressMonitor {
public:
    /// Waits for the lock of `address`; a thread that holds it already gets it again.
    explicit AddressMonitor(const void* address);
    AddressMonitor(const AddressMonitor&) = delete;
    AddressMonitor& operator=(const AddressMonitor&) = delete;
    /// Gives the lock back.
    ~AddressMonitor();

private:
    struct Entry;
    struct Table;
    static Table& table();

    const void* address_;
    Entry* entry_;
};

} // namespace vorlan
