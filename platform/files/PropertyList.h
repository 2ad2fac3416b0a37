// SPDX-License-Identifier: Apache-2.0
#pragma once

// Property lists, as files hold them.

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Value.h>

#include <span>
#include <stdexcept>

namespace vorlan {

/// Says why bytes are no property list.
class PropertyListError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How deep arrays and dictionaries may be in one another, read or written.
inline constexpr int propertyListDepthLimit = 512;

/// Reads a property list in binary or XML form, whatever wrote it. Throws PropertyListError.
///
/// XML is read by libplist, which keeps dates in 32 bits: those after January 2038 come out wrong.
Value readPropertyList(std::span<const std::byte> bytes);

/// Reads the binary form. Sets become arrays; a reference of an archiver becomes {"CF$UID": number}. Damage
/// to a list that `writeBinaryPropertyList` wrote is noticed, but for one in 2^40. Throws PropertyListError.
///
/// A few bytes can stand for a list of any size, when elements are the same object over and over: what would take
/// many times the size of the bytes is refused.
Value readBinaryPropertyList(std::span<const std::byte> bytes);

/// Writes the binary form: every value comes back as it is, to the last bit.
///
/// Throws std::invalid_argument when `value` is or holds what no property list can: a null, a text or key that is
/// not well-formed UTF-8, or arrays and dictionaries deeper in one another than the limit.
Data writeBinaryPropertyList(const Value& value);

} // namespace vorlan
