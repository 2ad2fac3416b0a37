// SPDX-License-Identifier: Apache-2.0
#pragma once

// Observing objects without owning them.

#include <VorlanFoundation/Observation/Actionable.h>
#include <VorlanFoundation/Observation/CallbackTable.h>
#include <VorlanFoundation/Observation/Callbackable.h>
#include <VorlanFoundation/Observation/Observable.h>
#include <VorlanFoundation/Observation/ObservationToken.h>
#include <VorlanFoundation/Observation/WeakBox.h>
#include <VorlanFoundation/Observation/WeakSet.h>
