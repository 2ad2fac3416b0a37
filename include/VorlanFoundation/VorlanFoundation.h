// SPDX-License-Identifier: Apache-2.0
#pragma once

// All of VorlanFoundation.

#include <VorlanFoundation/Execution.h>
#include <VorlanFoundation/Extensions.h>
#include <VorlanFoundation/Keychain.h>
#include <VorlanFoundation/Logging.h>
#include <VorlanFoundation/Observation.h>
#include <VorlanFoundation/Persistence.h>
#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/RunLoop.h>
#include <VorlanFoundation/Platform/Thread.h>
#include <VorlanFoundation/Platform/TimerSource.h>
#include <VorlanFoundation/Platform/WorkItem.h>
#include <VorlanFoundation/Reachability.h>
