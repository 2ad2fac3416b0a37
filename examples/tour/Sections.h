// SPDX-License-Identifier: Apache-2.0
#pragma once

// The sections of the tour, one per area of the library. Each returns whether all that it shows happened.

#include <string_view>

namespace tour {

bool showExecution();
bool showPacing();
bool showOperations();
bool showObservation();
bool showLogging();
bool showSettings();
bool showPersistence();
bool showDates();
bool showTexts();
bool showGeometry();
bool showKeychain();
bool showNetwork();
bool showReachability();

/// Prints each change of the network until the process is interrupted; returns its exit status.
int watchNetwork();

/// Prints each change of the way to a host until the process is interrupted; returns its exit status.
int watchHost(std::string_view name);

} // namespace tour
