// SPDX-License-Identifier: Apache-2.0
#include "tools/support/Program.h"

namespace tool {

const std::string_view programName = "vorlan-defaults";

const std::string_view usage = R"(Usage: vorlan-defaults COMMAND [OPTION...] [ARGUMENT...]

Reads and changes the settings of applications, also while they run.

  read DOMAIN [KEY] [--json]   print a value, or all entries of a domain
  write DOMAIN KEY VALUE       set a value
  delete DOMAIN [KEY]          remove an entry, or without KEY all entries, unasked
  list DOMAIN                  print the keys of a domain, one a line
  domains                      print the domains of the user, one a line

  VALUE is one of
    -bool true|false|yes|no|1|0
    -int N                     from -9223372036854775808 to 18446744073709551615
    -float X                   also inf, -inf and nan
    -string TEXT
    -date DATE                 2026-03-05, which is midnight in UTC, 2026-03-05T14:07:09Z,
                               2026-03-05T14:07:09.25+01:00
    -data HEX                  two digits a byte
    -array ELEMENT...
    -dict KEY ELEMENT KEY ELEMENT...
    TEXT
  An ELEMENT is a text, or -bool and so on up to -data with what belongs to it.

  --json      print JSON: dates as ISO 8601 texts, data as base64 texts, and numbers
              that JSON does not have as the texts "inf", "-inf" and "nan"
  --help      print this text
  --version   print the version
  --          what follows is no option, so that keys and texts may begin with a dash:
              vorlan-defaults write com.example.notes -bool true -- -key

Exit status: 0 when it is done; 1 when there is no such domain or key; 2 when the call is
wrong; 3 when the settings could not be read or saved.
)";

} // namespace tool
