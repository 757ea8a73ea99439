// SPDX-License-Identifier: Apache-2.0

#include "notations/places.h"

#include <algorithm>

namespace hcy::tools {
namespace {

constexpr std::size_t kMostSubscripts = 32;

}  // namespace

std::string outputName(std::size_t index, std::size_t count) {
  return count == 1 ? "ans" : "out " + std::to_string(index + 1);
}

hcyclient::Shape shapeOf(const hcyclient::Array& array) {
  hcyclient::Shape shape = array.shape();
  shape.resize(std::max<std::size_t>(shape.size(), 2), 1);
  return shape;
}

std::string shapeText(std::span<const std::size_t> shape) {
  std::string text;
  for (const std::size_t dimension : shape) {
    text += (text.empty() ? "" : "-by-") + std::to_string(dimension);
  }
  return text;
}

std::string placeText(std::size_t index, std::span<const std::size_t> shape) {
  if (shape.size() > kMostSubscripts) return "(" + std::to_string(index) + ")";
  std::string text;
  for (const std::size_t dimension : shape) {
    text += (text.empty() ? "(" : ", ") + std::to_string(index % dimension);
    index /= dimension;
  }
  return text + ")";
}

}  // namespace hcy::tools
