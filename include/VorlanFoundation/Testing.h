// SPDX-License-Identifier: Apache-2.0
#pragma once

// The test kit: what a host's tests need to drive the library by hand. Link VorlanFoundation::Testing.

#include <VorlanFoundation/Testing/InMemoryKeychain.h>
#include <VorlanFoundation/Testing/KeychainFault.h>
#include <VorlanFoundation/Testing/MainLoop.h>
#include <VorlanFoundation/Testing/ManualQueue.h>
#include <VorlanFoundation/Testing/ScriptedNetwork.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>
#include <VorlanFoundation/Testing/UserRegion.h>
#include <VorlanFoundation/Testing/WallClock.h>
