// SPDX-License-Identifier: Apache-2.0
#pragma once

// Execution and scheduling: where and when work runs, and how often.

#include <VorlanFoundation/Execution/AsynchronousOperation.h>
#include <VorlanFoundation/Execution/BatchItemsTrottler.h>
#include <VorlanFoundation/Execution/Debounce.h>
#include <VorlanFoundation/Execution/GlobalFunctions.h>
#include <VorlanFoundation/Execution/InfiniteTimer.h>
#include <VorlanFoundation/Execution/Sampler.h>
#include <VorlanFoundation/Execution/Throttler.h>
#include <VorlanFoundation/Execution/TickTockable.h>
#include <VorlanFoundation/Execution/Worker.h>
#include <VorlanFoundation/Platform/OperationQueue.h>
