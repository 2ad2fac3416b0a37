// SPDX-License-Identifier: Apache-2.0
#pragma once

// Network reachability: is there a way to the network, or to a host, and over what?

#include <VorlanFoundation/Platform/NWPathMonitor.h>
#include <VorlanFoundation/Reachability/Reachability.h>
#include <VorlanFoundation/Reachability/ReachabilityService.h>
#include <VorlanFoundation/Reachability/ReachabilityStatusReporter.h>
