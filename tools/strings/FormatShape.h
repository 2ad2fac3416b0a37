// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a text with gaps takes, whichever of its forms a number chooses.

#include <VorlanFoundation/Platform/TextFormat.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// The arguments of a text by their number, each with what it is to be.
using FormatArguments = std::map<std::size_t, vorlan::FormatDirective::Kind>;

/// The kind of misfit that a percent sign is which begins no gap.
inline constexpr std::string_view unknownDirective = "directive";

/// What is wrong with a text by itself.
struct Misfit {
    std::string_view kind; ///< "format" or `unknownDirective`, as findings have it.
    std::string message;

    friend bool operator==(const Misfit&, const Misfit&) = default;
};

struct FormatShape {
    FormatArguments arguments;
    std::vector<Misfit> misfits;
    /// Whether a percent sign begins no gap, or one that may be chance: as in "100%", "50% off" and "a%20day".
    bool mayBeNoFormat = false;
};

/// The arguments that an entry takes; with plural variables, those of the forms `other`, which all others must take
/// too but for the number that chooses them, and for what is taken by number.
FormatShape formatShape(const vorlan::StringTableEntry& entry);

/// What the number of a variable is to be.
vorlan::FormatDirective::Kind kindOf(const vorlan::PluralVariable& variable);

/// For a message, as in "(integer, text)".
std::string describedArguments(const FormatArguments& arguments);

} // namespace tool
