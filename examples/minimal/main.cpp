// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/VorlanFoundation.h>
#include <iostream>
using namespace vorlan;
int main() {
    inBackground([] {
        const int answer = 6 * 7; // on a background thread
        inForeground([=] { std::cout << answer << "\n", RunLoop::main().stop(); });
    });
    return RunLoop::main().run();
}
