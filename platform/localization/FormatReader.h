// SPDX-License-Identifier: Apache-2.0
#pragma once

// The gaps of printf-style formats, one after the other.

#include <VorlanFoundation/Platform/TextFormat.h>

#include <cstddef>
#include <optional>
#include <string_view>

namespace vorlan {

/// How a gap has its argument written.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct GapForm {
    char conversion = '@';
    int bits = 32; ///< Of the integer that C takes here.
    bool isLeft = false;
    bool hasPlus = false;
    bool hasBlank = false;
    bool isAlternative = false;
    bool hasZeros = false;
    std::size_t width = 0;
    std::optional<std::size_t> precision = {};
};

/// A `*`: a width or a precision that an argument says.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct GapStar {
    std::size_t offset = 0;
    std::size_t length = 0;
    std::size_t argument = 0; ///< Its number, from 1; 0 for the next one.
};

/// A gap in a format.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct FormatGap {
    std::size_t offset = 0; ///< In the format, in bytes.
    std::size_t length = 0;
    FormatDirective::Kind kind = FormatDirective::Kind::unknown;
    std::size_t argument = 0;   ///< Its number, from 1; 0 for the next one.
    std::string_view name = {}; ///< Of a variable; of the format.
    GapForm form = {};          ///< But for what stars say.
    std::optional<GapStar> widthBy = {};
    std::optional<GapStar> precisionBy = {};
};

/// Reads a format gap by gap. Whatever its bytes are, each gap that it finds lies within it, behind the one before.
///
/// Threads: one thread at a time.
class FormatReader {
public:
    /// Widths, precisions and numbers of arguments beyond this are not understood.
    static constexpr std::size_t mostCount = 4096;

    /// Of a format that stays where it is.
    explicit FormatReader(std::string_view format) : format_(format) {}

    /// The next gap; absent at the end.
    std::optional<FormatGap> next();

private:
    char peek() const { return at_ < format_.size() ? format_[at_] : '\0'; }
    bool skip(char character);
    std::optional<std::size_t> count();
    std::size_t argument();
    GapStar star(std::size_t start);
    void readFlags(GapForm& form);
    void readWidth(FormatGap& gap);
    void readPrecision(FormatGap& gap);
    void readLength(GapForm& form);
    void readConversion(FormatGap& gap);
    bool readName(FormatGap& gap);
    void skipCharacter();

    std::string_view format_;
    std::size_t at_ = 0;
    bool isTooMuch_ = false; ///< Whether the gap has a count that is.
};

} // namespace vorlan
