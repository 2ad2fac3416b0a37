// SPDX-License-Identifier: Apache-2.0
#pragma once

// Whole files at once.

#include "platform/files/Descriptor.h"

#include <VorlanFoundation/Platform/Data.h>

#include <filesystem>
#include <optional>
#include <span>

namespace vorlan {

/// Opens a file to read it; none when there is no such file. Throws std::filesystem::filesystem_error for all else that
/// keeps it from being opened.
Descriptor openFile(const std::filesystem::path& path);

/// All that is in an open file. Throws std::filesystem::filesystem_error, which names the path.
Data readFile(const Descriptor& file, const std::filesystem::path& path);

/// All that is in a file; absent when there is no such file. Throws std::filesystem::filesystem_error for all else
/// that keeps it from being read, and when it is no regular file.
std::optional<Data> readFile(const std::filesystem::path& path);

/// Writes all of `bytes`; false, with errno set, when that failed, and some of them may be written.
bool writeAll(const Descriptor& file, std::span<const std::byte> bytes);

/// Makes a file for the user alone, with that content from its first moment on, durably. False, with errno set, when
/// that failed: EEXIST when there is one already.
bool createFile(const std::filesystem::path& path, std::span<const std::byte> bytes);

/// Makes durable what files a folder has, under what names; false, with errno set, when that failed.
bool syncFolder(const std::filesystem::path& folder);

} // namespace vorlan
