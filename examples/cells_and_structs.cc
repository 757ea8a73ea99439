// SPDX-License-Identifier: Apache-2.0
//
// Cells and structs: the words of a text as a cell array, the description of a matrix as a struct
// array, and a container that is filled, sent and read.
//
// Usage: cells_and_structs SERVER_URL

#include <hcy/hcyclient.hpp>
#include <iostream>
#include <string>

using hcyclient::Array;

namespace {

void printWords(hcyclient::Context& context, const std::string& server) {
  const auto outputs = context.feval(server + "/text/split", {"cells hold arrays"});
  const Array& words = outputs.at(0);
  for (std::size_t i = 0; i < words.size(); ++i) {
    std::cout << "word " << i << ": " << words[i].toString() << '\n';
  }
}

void printColumns(hcyclient::Context& context, const std::string& server) {
  const Array matrix({1.0, 2.0, 6.0, 10.0, 20.0, 30.0}, {3, 2});
  const auto outputs = context.feval(server + "/stats/describe", {matrix});
  const Array& columns = outputs.at(0);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    std::cout << "column " << i << ": mean " << columns(i, "mean").scalar() << ", median "
              << columns(i, "median").scalar() << '\n';
  }
}

void printPeople(hcyclient::Context& context, const std::string& server) {
  Array people = Array::structs({1, 2}, {"name", "born"});
  people("name") = "Ada";  // field of the first element
  people("born") = 1815.0;
  people(1, "name") = "Grace";
  people(1, "born") = 1906.0;
  const auto outputs = context.feval(server + "/echo", {people});
  const Array& echoed = outputs.at(0);
  for (std::size_t i = 0; i < echoed.size(); ++i) {
    std::cout << echoed(i, "name").toString() << " was born in " << echoed(i, "born").scalar()
              << ".\n";
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) throw hcyclient::UsageError("usage: cells_and_structs SERVER_URL");
  const hcyclient::Library library;
  hcyclient::Context context{hcyclient::Config(library)};
  printWords(context, argv[1]);
  printColumns(context, argv[1]);
  printPeople(context, argv[1]);
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
