// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/AsynchronousOperation.h>

namespace vorlan {

AsynchronousOperation::AsynchronousOperation() = default;
AsynchronousOperation::~AsynchronousOperation() = default;

AsynchronousOperation::State AsynchronousOperation::state() const {
    return state_;
}

void AsynchronousOperation::setState(State state) {
    const auto oldKey = rawValue(state_.load());
    const auto newKey = rawValue(state);
    willChangeValueForKey(oldKey);
    willChangeValueForKey(newKey);
    state_ = state;
    didChangeValueForKey(newKey);
    didChangeValueForKey(oldKey);
}

bool AsynchronousOperation::isAsynchronous() const {
    return true;
}

bool AsynchronousOperation::isExecuting() const {
    return state_ == State::executing;
}

bool AsynchronousOperation::isFinished() const {
    return state_ == State::finished;
}

void AsynchronousOperation::start() {
    if (isCancelled()) return setState(State::finished);
    setState(State::ready);
    main();
}

void AsynchronousOperation::main() {
    setState(isCancelled() ? State::finished : State::executing);
}

void AsynchronousOperation::finish() {
    if (state_ != State::finished) setState(State::finished);
}

} // namespace vorlan
