// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/ObserverPeers.h"

namespace vorlan::benchmarks {

void Badge::player(Player&, bool didPause) {
    pauses_ += didPause ? 1 : 0;
}

void PlainBadge::playerDidPause(bool didPause) {
    pauses_ += didPause ? 1 : 0;
}

void PocoBadge::playerDidPause(const Poco::AutoPtr<PocoPause>& pause) {
    pauses_ += pause->didPause() ? 1 : 0;
}

void QtBadge::playerDidPause(bool didPause) {
    pauses_ += didPause ? 1 : 0;
}

} // namespace vorlan::benchmarks
