// SPDX-License-Identifier: Apache-2.0
#pragma once

// Property lists as another implementation of the form reads and writes them, and the files that they are in.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan::tests {

/// All that is in a file; empty when there is none.
std::string contentOf(const std::filesystem::path& path);

/// Puts a file in another one's place by a rename, as editors do. Makes its folder too.
void replaceFile(const std::filesystem::path& path, std::string_view content);

/// A property list in XML, around the inner part of its root dictionary.
std::string xmlList(std::string_view entries);

/// The binary form of a list in XML, as another program writes it.
std::string foreignBinary(const std::string& xml);

/// A binary list in XML without blanks between its elements; absent when it cannot be read.
std::optional<std::string> foreignXML(const std::string& binary);

/// The integer under a key of a binary list, no value when there is none; the outer one is absent when the list
/// cannot be read.
std::optional<std::optional<std::uint64_t>> foreignInteger(const std::string& binary, const std::string& key);

} // namespace vorlan::tests
