// SPDX-License-Identifier: Apache-2.0
#pragma once

// Marks what the shared library exports; everything else is built with hidden visibility.
#define VORLAN_EXPORT __attribute__((visibility("default")))
