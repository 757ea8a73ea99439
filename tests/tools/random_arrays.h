// SPDX-License-Identifier: Apache-2.0
//
// Arrays of every class and many shapes, for properties that hold of all arrays.

#pragma once

#include <hcy/hcyclient.hpp>
#include <random>

namespace hcy::test {

// The same arrays for the same seed.
class RandomArrays {
 public:
  explicit RandomArrays(unsigned seed) : random_(seed) {}

  // Of any class; containers hold arrays down to `depth`.
  hcyclient::Array next(int depth = 3);

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }
  bool oneIn(std::size_t n) { return below(n) == 0; }

  hcyclient::Shape shape();
  hcyclient::Array full(hcyClassID classId);
  template <class T>
  hcyclient::Array elements();
  template <class T>
  T element();
  hcyclient::Array sparse();
  hcyclient::Array cell(int depth);
  hcyclient::Array structure(int depth);

  std::mt19937_64 random_;
};

}  // namespace hcy::test
