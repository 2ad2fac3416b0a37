// SPDX-License-Identifier: Apache-2.0
#pragma once

// Extensions of platform and standard types: free functions in a namespace named for the type.

#include <VorlanFoundation/Extensions/Bundles.h>
#include <VorlanFoundation/Extensions/Dates.h>
