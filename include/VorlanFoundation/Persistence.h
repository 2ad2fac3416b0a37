// SPDX-License-Identifier: Apache-2.0
#pragma once

// Local persistence: the in-memory cache, the defaults store, values as JSON, and the application's folders.

#include <VorlanFoundation/Persistence/Cacher.h>
#include <VorlanFoundation/Persistence/Folder.h>
#include <VorlanFoundation/Persistence/JSONCoding.h>
#include <VorlanFoundation/Platform/JSONSerialization.h>
#include <VorlanFoundation/Platform/UserDefaults.h>
