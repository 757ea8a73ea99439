// SPDX-License-Identifier: Apache-2.0
//
// Every class: sends an array of each class to the server's echo and prints the result.
//
// Usage: classes SERVER_URL

#include <complex>
#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

using hcyclient::Array;

namespace {

// The smallest and the largest number of a type, in a row.
template <class T>
Array limits() {
  return Array({std::numeric_limits<T>::min(), std::numeric_limits<T>::max()}, {1, 2});
}

std::vector<Array> makeArrays() {
  std::vector<Array> arrays;
  arrays.push_back(limits<std::uint8_t>());
  arrays.push_back(limits<std::int8_t>());
  arrays.push_back(limits<std::uint16_t>());
  arrays.push_back(limits<std::int16_t>());
  arrays.push_back(limits<std::uint32_t>());
  arrays.push_back(limits<std::int32_t>());
  arrays.push_back(limits<std::uint64_t>());
  arrays.push_back(limits<std::int64_t>());
  arrays.push_back(Array({0.5F, -1.25F}, {1, 2}));
  using Complex = std::complex<double>;
  arrays.push_back(Array({Complex(1, 2), Complex(3, -4)}, {1, 2}));
  // Filled in the order of the storage: the row index changes fastest.
  arrays.push_back(Array({0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0}, {2, 2, 2}));
  arrays.push_back(Array({true, false}, {1, 2}));
  arrays.push_back("Z\u00fcrich");
  arrays.push_back(Array::sparse<double>(3, 3, {{0, 0, 1.5}, {2, 2, -2.5}}));
  arrays.push_back(Array::sparse<bool>(2, 2, {{1, 0, true}}));
  Array cell = Array::cells({1, 2});
  cell[0] = 1.0;
  cell[1] = "two";
  arrays.push_back(std::move(cell));
  arrays.push_back(Array::structOf({{"name", "box"}, {"size", 3.0}}));
  return arrays;
}

template <class T>
void printElements(const Array& array) {
  for (const T value : array.toVector<T>()) std::cout << ' ' << +value;
  if (!array.isComplex()) return;
  std::cout << " and";
  for (const T value : array.imaginary<T>()) std::cout << ' ' << +value;
}

template <class T>
void printEntries(const Array& array) {
  for (const hcyclient::Entry<T>& entry : array.entries<T>()) {
    std::cout << " (" << entry.row << ", " << entry.column << ") " << entry.value;
  }
}

void print(const Array& array);

void printStruct(const Array& array) {
  for (const std::string& field : array.fieldNames()) {
    std::cout << ' ' << field << " = ";
    print(array(field));
    std::cout << ';';
  }
}

void printCell(const Array& array) {
  for (std::size_t i = 0; i < array.size(); ++i) {
    std::cout << ' ';
    print(array[i]);
    std::cout << ';';
  }
}

void printHead(const Array& array) {
  std::cout << (array.isSparse() ? "sparse " : "") << array.className();
  const char* between = " ";
  for (const std::size_t dimension : array.shape()) {
    std::cout << between << dimension;
    between = "-by-";
  }
  std::cout << (array.isComplex() ? " complex:" : ":");
}

void printContents(const Array& array) {
  if (array.isSparse()) {
    return array.is<bool>() ? printEntries<bool>(array) : printEntries<double>(array);
  }
  switch (array.classId()) {
    case hcyUINT8_CLASS:
      return printElements<std::uint8_t>(array);
    case hcyINT8_CLASS:
      return printElements<std::int8_t>(array);
    case hcyUINT16_CLASS:
      return printElements<std::uint16_t>(array);
    case hcyINT16_CLASS:
      return printElements<std::int16_t>(array);
    case hcyUINT32_CLASS:
      return printElements<std::uint32_t>(array);
    case hcyINT32_CLASS:
      return printElements<std::int32_t>(array);
    case hcyUINT64_CLASS:
      return printElements<std::uint64_t>(array);
    case hcyINT64_CLASS:
      return printElements<std::int64_t>(array);
    case hcySINGLE_CLASS:
      return printElements<float>(array);
    case hcyDOUBLE_CLASS:
      return printElements<double>(array);
    case hcyCELL_CLASS:
      return printCell(array);
    case hcySTRUCT_CLASS:
      return printStruct(array);
    case hcyCHAR_CLASS:
      std::cout << ' ' << array.toString();
      return;
    default:
      for (const bool value : array.span<bool>()) std::cout << ' ' << value;
  }
}

void print(const Array& array) {
  printHead(array);
  printContents(array);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) throw hcyclient::UsageError("usage: classes SERVER_URL");
  std::cout << std::boolalpha;
  const hcyclient::Library library;
  hcyclient::Context context{hcyclient::Config(library)};
  const std::vector<Array> arrays = makeArrays();
  const int count = static_cast<int>(arrays.size());
  for (const Array& array : context.feval(std::string(argv[1]) + "/echo", arrays, count)) {
    print(array);
    std::cout << '\n';
  }
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
