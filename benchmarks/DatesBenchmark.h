// SPDX-License-Identifier: Apache-2.0
#pragma once

// The groups of the topic on dates.

namespace vorlan::benchmarks {

/// Dates as text, and back.
void addDateFormattingRows();
/// The same from two threads with one formatter.
void addDateFormattingThreadsRows();
/// Days and their beginnings.
void addCalendarRows();
/// Numbers and spans of time as text.
void addNumberFormattingRows();
/// What it costs to come by a calendar or a formatter.
void addFormatterCopyingRows();

} // namespace vorlan::benchmarks
