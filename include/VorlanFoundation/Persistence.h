// SPDX-License-Identifier: Apache-2.0
#pragma once

// Local persistence: the defaults store and the application's folders.

#include <VorlanFoundation/Persistence/Folder.h>
#include <VorlanFoundation/Platform/UserDefaults.h>
