// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation/Observable.h>

namespace vorlan::detail {

const char observerSetKey[] = "com.vorlan.foundation.observerSet";
const char notificationPassesKey[] = "com.vorlan.foundation.notificationPasses";

} // namespace vorlan::detail
