// SPDX-License-Identifier: Apache-2.0
#pragma once

// Logging and timing: a log file that the user can switch on, and stopwatches.

#include <VorlanFoundation/Logging/Loggable.h>
#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Logging/Stopwatch.h>
