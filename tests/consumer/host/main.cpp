// SPDX-License-Identifier: Apache-2.0

// The smallest host: works in the background, comes back to the main thread, and leaves.

#include <VorlanFoundation/Execution.h>
#include <VorlanFoundation/Platform/RunLoop.h>

#include <cstdio>

int main() {
    using namespace vorlan;
    inBackground([] {
        const int sum = 40 + 2;
        inForeground([sum] {
            std::printf("%d\n", sum);
            RunLoop::main().stop(sum == 42 ? 0 : 1);
        });
    });
    return RunLoop::main().run();
}
