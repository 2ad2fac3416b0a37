// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vorlan {

/// Lets the default GLib main context serve the main queue from now on; once per process is enough.
void attachMainQueueToDefaultContext();

} // namespace vorlan
