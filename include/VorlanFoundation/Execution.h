// SPDX-License-Identifier: Apache-2.0
#pragma once

// Execution and scheduling: where and when work runs.

#include <VorlanFoundation/Execution/GlobalFunctions.h>
