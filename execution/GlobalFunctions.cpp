// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/GlobalFunctions.h>

#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Thread.h>

#include <chrono>
#include <cstdint>

namespace vorlan {

void ensureMainThread(Work execute) {
    if (Thread::isMainThread()) {
        execute();
    } else {
        Queue::main().async(std::move(execute));
    }
}

void inForeground(Work work) {
    ensureMainThread(std::move(work));
}

void inBackground(Work work) {
    Queue::global(QualityOfService::default_).async(std::move(work));
}

void delay(double seconds, Work work) {
    const auto nanoseconds = checked::truncate<std::int64_t>(seconds * 1'000'000'000.0);
    delayOnMainThread(std::chrono::nanoseconds(nanoseconds), std::move(work));
}

void delayOnMainThread(DispatchTimeInterval delay, Work work) {
    Queue::main().asyncAfter(delay, std::move(work));
}

void detail::stopForDifferentKind(const void* key, const AssociatedValue& found) {
    fatalError("Unexpected: different kind of value already exists for key '" + describeAddress(key) +
                   "': " + found.description(),
               "VorlanFoundation/GlobalFunctions:10");
}

} // namespace vorlan
