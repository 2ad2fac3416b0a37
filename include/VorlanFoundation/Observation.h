// SPDX-License-Identifier: Apache-2.0
#pragma once

// Observing objects without owning them.

#include <VorlanFoundation/Observation/Observable.h>
#include <VorlanFoundation/Observation/ObservationToken.h>
#include <VorlanFoundation/Observation/WeakBox.h>
#include <VorlanFoundation/Observation/WeakSet.h>
