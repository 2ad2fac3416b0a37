// SPDX-License-Identifier: Apache-2.0
#pragma once

// Everyday questions about texts.
//
//     text::sha256String("abc");                                        // "ba7816bf…15ad", 64 digits
//     text::string("a/b/c", {.afterLast = "/"});                        // "b/c": after the first, in spite of its name
//     text::string("a/b/c", {.afterLast = "/", .options = CompareOptions::backwards});    // "c"
//     text::isEmail("anna@example.org");                                // true
//     text::contains("a/b/c", "b");                                     // true

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/TextSearch.h>

#include <optional>
#include <string>
#include <string_view>

/// What texts can tell. Safe from any thread.
namespace vorlan::text {

/// Digests of a text's bytes, in small hexadecimal digits, two for each byte of the digest; the empty text where the
/// text is ill-formed UTF-8. MD5 and SHA-1 tell what changed by chance, and keep nobody from forging a text. Where OpenSSL
/// is set up to have approved algorithms only (FIPS), asking for MD5 stops the process.
VORLAN_EXPORT std::string md5String(std::string_view text);
VORLAN_EXPORT std::string sha1String(std::string_view text);
VORLAN_EXPORT std::string sha224String(std::string_view text);
VORLAN_EXPORT std::string sha256String(std::string_view text);
VORLAN_EXPORT std::string sha384String(std::string_view text);
VORLAN_EXPORT std::string sha512String(std::string_view text);

/// What a part of a text comes after.
struct AfterLast {
    std::string_view afterLast = {}; ///< what is looked for
    CompareOptions options = CompareOptions::none;
};

/// The part of a text behind what is looked for; absent where that is not found. It is looked for with the given options
/// and no others: without `backwards` it is the first that counts, and not the last.
VORLAN_EXPORT std::optional<std::string> string(std::string_view text, AfterLast part);

/// Whether the whole text has the form of a usual e-mail address: letters, digits and `._%+-` of ASCII, an at sign, and
/// a domain of letters, digits, `.` and `-` that ends in a dot and 2 to 64 letters. Some addresses that mail knows are
/// not of this form ("user@localhost", "bücher@example.org"), and not all that are of it exist. False for ill-formed text.
VORLAN_EXPORT bool isEmail(std::string_view text);

/// Whether the other text is in this one, as `rangeOfText` finds it without options; false where the other is empty.
VORLAN_EXPORT bool contains(std::string_view text, std::string_view other);

/// Whether the replacement text that an input field is about to insert comes from the backspace key, which inserts
/// nothing. It is told by comparing the text, up to its first NUL, to a backslash and a "b" byte by byte: true where the
/// first difference is -92, as it is for the empty text and for a backslash before U+0006. False for ill-formed text.
VORLAN_EXPORT bool containsBackspace(std::string_view text);

} // namespace vorlan::text
