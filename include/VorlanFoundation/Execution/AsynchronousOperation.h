// SPDX-License-Identifier: Apache-2.0
#pragma once

// Operations whose work ends later than their start returns.
//
//     class Download : public AsynchronousOperation {
//         void main() override {
//             AsynchronousOperation::main();                  // executing, unless cancelled
//             if (!isCancelled()) fetch(url_, [self = shared(this)] { self->finish(); });
//         }
//     };

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Operation.h>
#include <VorlanFoundation/Platform/RawValues.h>

#include <array>
#include <atomic>
#include <string_view>
#include <utility>

namespace vorlan {

/// An operation that keeps its own state and publishes every change of it.
///
/// | From        | Event                          | To          | Keys announced and reported   |
/// |-------------|--------------------------------|-------------|-------------------------------|
/// | `ready`     | `start()`                      | `ready`     | "isReady" twice               |
/// | `ready`     | then `main()`                  | `executing` | "isReady", "isExecuting"      |
/// | `ready`     | `start()` or `main()`, cancelled | `finished` | "isReady", "isFinished"      |
/// | `executing` | `finish()`                     | `finished`  | "isExecuting", "isFinished"   |
/// | `ready`     | `finish()`                     | `finished`  | "isReady", "isFinished"       |
/// | `finished`  | `finish()`                     | `finished`  | none                          |
///
/// Threads: safe from any thread; observers are told on the thread that sets the state, usually the one that
///          completes the work.
class VORLAN_EXPORT AsynchronousOperation : public Operation {
public:
    /// Where the operation is. Each case stands for the key of the matching property of `Operation`.
    enum class State { ready, executing, finished };

    AsynchronousOperation();
    ~AsynchronousOperation() override;

    /// Where the operation is; `ready` at first.
    State state() const;

    /// Moves the operation to `state`, also when it is there already: announces a change for the key of the
    /// old state, then for that of the new; changes it; reports the change for the key of the new state, then
    /// for that of the old.
    void setState(State state);

    /// True at every state.
    bool isAsynchronous() const override;

    /// Whether the state is `executing`.
    bool isExecuting() const override;

    /// Whether the state is `finished`.
    bool isFinished() const override;

    /// Calls `main()`, or, when the operation was cancelled, finishes it.
    void start() override;

    /// Enters `executing`, or, when the operation was cancelled, `finished`. To be overridden by what begins
    /// the work, which calls this first.
    void main() override;

    /// Enters `finished`, unless it is there already; to be called when the work is over.
    void finish();

private:
    std::atomic<State> state_ = State::ready;
};

/// The keys of the states.
template <>
struct RawValues<AsynchronousOperation::State> {
    static constexpr std::array cases{
        std::pair(AsynchronousOperation::State::ready, std::string_view("isReady")),
        std::pair(AsynchronousOperation::State::executing, std::string_view("isExecuting")),
        std::pair(AsynchronousOperation::State::finished, std::string_view("isFinished"))};
};

} // namespace vorlan
