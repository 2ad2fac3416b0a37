// SPDX-License-Identifier: Apache-2.0
#pragma once

// Extensions of platform and standard types: free functions in a namespace named for the type.

#include <VorlanFoundation/Extensions/Bundles.h>
#include <VorlanFoundation/Extensions/CircleMath.h>
#include <VorlanFoundation/Extensions/Collections.h>
#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Extensions/LocalizedText.h>
#include <VorlanFoundation/Extensions/Numbers.h>
#include <VorlanFoundation/Extensions/Occupiable.h>
#include <VorlanFoundation/Extensions/Pager.h>
#include <VorlanFoundation/Extensions/Text.h>
#include <VorlanFoundation/Extensions/Then.h>
