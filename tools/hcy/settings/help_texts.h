// SPDX-License-Identifier: Apache-2.0
//
// The text below the options in each help page. A test runs every example.

#pragma once

namespace hcy::tools {

inline constexpr const char* kArgumentHelp = R"(An ARG is one of:
  5  true  '"text"'  '{"a":1}'                         JSON
  [1,2]  [[1],[2]]  [[1,2],[3,4]]                      a row, a column, rows
  int16:[1,2]  float32:0.5                             JSON with a class
  text:hello  text:@notes.txt  text:-                  text
  @data.json  @table.csv  @table.tsv  @a.npy           a file
  @~/data.json                                         a file in the home directory
  -  csv:-  tsv:-                                      standard input
  '@table.csv[x,y]'  '@table.csv[x;y]'                 columns, as one ARG or as two
The shell removes double quotes, and zsh reads brackets as patterns: put such an ARG in single
quotes. In zsh, alias hcy='noglob hcy' passes brackets on unquoted. See hcy(1) for more.
)";

inline constexpr const char* kGeneralFooter =
    R"(Run "hcy help COMMAND" for the options of a command.

Examples:
  hcy call http://127.0.0.1:8080/math/plus 2 3
  HCY_SERVER=http://127.0.0.1:8080 hcy call math/plus 2 3
)";

inline constexpr const char* kCallExamples = R"(
Examples:
  hcy call http://127.0.0.1:8080/linalg/solve '[[2,0],[1,4]]' '[[1],[2]]'
  hcy call http://127.0.0.1:8080/stats/describe @examples/data/norris.csv --csv
  hcy call http://127.0.0.1:8080/text/upper text:hello --raw
  printf '[1,2]\n[3,4]\n' | hcy call http://127.0.0.1:8080/math/plus --each --jobs 2
)";

inline constexpr const char* kBenchExamples = R"(
Examples:
  hcy bench http://127.0.0.1:8080/echo '[1,2,3]' --calls 1000 --threads 2
  hcy bench http://127.0.0.1:8080/echo 1 --rate 200 --duration 1 --threads 4 --histogram
  hcy bench http://127.0.0.1:8080/linalg/svd '[[3,0],[0,4]]' --against http://127.0.0.1:8080/echo
)";

inline constexpr const char* kListExamples = R"(
Examples:
  hcy list http://127.0.0.1:8080
  HCY_SERVER=http://127.0.0.1:8080 hcy list --raw
)";

inline constexpr const char* kEncodeExamples = R"(
Examples:
  hcy encode 2 3 | hcy show -
  hcy encode 2 3 | curl -s --data-binary @- http://127.0.0.1:8080/math/plus | hcy show -
)";

inline constexpr const char* kShowExamples = R"(
Examples:
  hcy show bodies/char.request.bin
  hcy show --schema - < bodies/char.reply.bin
)";

}  // namespace hcy::tools
