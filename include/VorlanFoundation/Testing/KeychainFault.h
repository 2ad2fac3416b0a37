// SPDX-License-Identifier: Apache-2.0
#pragma once

// A keychain that fails when a test says so.
//
//     const testing::InMemoryKeychain keychain;
//     testing::KeychainFault fault;
//     fault.answer(testing::KeychainFault::Operation::update, errSecNotAvailable);   // the next one, and only that
//     EXPECT_FALSE(manager.update("password", secret));
//     fault.advance(5s);                                    // the hold-off after a failure is over

#include <VorlanFoundation/Platform/KeychainFaults.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

namespace vorlan::testing {

/// Stands before the store while it lives, and answers in its place where it was told to.
///
/// The library's hold-off after failures is on top, as always; its clock is the fault's, which stands still unless it
/// is advanced.
///
/// Threads: safe from any thread; one at a time exists.
/// Owns:    what it was told.
class KeychainFault {
public:
    /// The four functions that a fault can be about.
    using Operation = vorlan::detail::KeychainOperation;

    KeychainFault();
    KeychainFault(const KeychainFault&) = delete;
    KeychainFault& operator=(const KeychainFault&) = delete;
    ~KeychainFault();

    /// Has `count` more calls of an operation that reach the store answer `status`, without their being done, after
    /// those that were told before.
    void answer(Operation operation, OSStatus status, std::size_t count = 1);

    /// Has every call of every operation answer `status`, for as long on the fault's clock.
    void answerAll(OSStatus status, std::chrono::nanoseconds duration);

    /// Lets time go by.
    void advance(std::chrono::nanoseconds duration);

    /// The operations that reached this place so far, in their order, whether or not they were answered here.
    std::vector<Operation> operations() const;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace vorlan::testing
