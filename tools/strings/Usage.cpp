// SPDX-License-Identifier: Apache-2.0
#include "tools/strings/Usage.h"

#include "tools/support/Program.h"

namespace tool {

const std::string_view programName = "vorlan-strings";

const std::string_view usage = R"(Usage: vorlan-strings COMMAND [OPTION...] ARGUMENT...

Checks and shows the translations of applications: the .strings and .stringsdict files in
the .lproj folders of bundles.

  check BUNDLE...   compare the languages, and say what is wrong
  print FILE        print the entries of a table
  list BUNDLE       print the languages with their tables

  --help            print this text, or behind a command more about it
  --version         print the version
  --                what follows is no option
)";

namespace {

constexpr std::string_view checkUsage = R"(Usage: vorlan-strings check BUNDLE... [OPTION...]

Reads all .strings and .stringsdict files of all languages of each bundle (an application
folder, a folder with Resources, or one with .lproj folders), compares each language with
the base language, and prints what is wrong, a line each:

  PATH:LINE:COLUMN: error|warning: MESSAGE

without LINE and COLUMN where they are not known, as in property lists.

  Errors are    files that cannot be read or have bad syntax; formats whose arguments are
                not those of the base language, in number or kind; percent signs that
                begin no gap where the base language has none
  Warnings are  tables and keys that a language lacks, or that only it has; repeated keys;
                other variables than in the base language; plural forms that the language
                needs for numbers below a million and that are missing, and forms that it
                never uses; percent signs that begin no gap, as in 100%, which only a
                format has as 100%%; other arguments than in the base language where that
                may have none, as in 50% off and a%20day

  --base LANGUAGE   what to compare with, instead of Base, if that has tables, or else the
                    bundle's CFBundleDevelopmentRegion, or else en
  --table NAME      check only the table of this name
  --strict          let warnings count for the exit status too
  --json            print an array of objects with path, line, column, severity, kind,
                    language, table, key and message; null is what is not known. The
                    kinds are unreadable, syntax, format, directive, missing-table,
                    extra-table, missing-key, extra-key, repeated-key, variables,
                    missing-form and unused-form

Exit status: 0 when nothing is wrong; 1 when there are errors; 2 when the call is wrong or
a bundle cannot be read.
)";

constexpr std::string_view printUsage = R"(Usage: vorlan-strings print FILE [--json]

Prints the entries of a .strings or .stringsdict file, sorted by key, as they are written
in .strings files. The forms of plural variables are in comments.

  --json   print an object with the text of each key, or where it has plural variables an
           object with "text" and "variables"; of each variable "valueType" and its forms

Exit status: 0 when it is done; 1 when the file has bad syntax; 2 when the call is wrong or
the file cannot be read.
)";

constexpr std::string_view listUsage = R"(Usage: vorlan-strings list BUNDLE

Prints the languages of a bundle (see check), in each line with a tab between them a
language, one of its tables and how many entries that has; only the language where it has
no tables.

Exit status: 0 when it is done; 1 when a table has bad syntax or cannot be read; 2 when the
call is wrong or the bundle cannot be read.
)";

} // namespace

std::string_view usageOf(Command command) {
    switch (command) {
    case Command::none: return usage;
    case Command::check: return checkUsage;
    case Command::print: return printUsage;
    case Command::list: return listUsage;
    }
    return usage;
}

} // namespace tool
