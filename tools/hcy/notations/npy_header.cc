// SPDX-License-Identifier: Apache-2.0

#include "notations/npy_header.h"

#include <bit>
#include <charconv>
#include <optional>

#include "notations/json_elements.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

constexpr std::string_view kMagic = "\x93NUMPY";
constexpr bool kIsBigEndian = std::endian::native == std::endian::big;

[[noreturn]] void refuseHeader() { throw BadInput("the header of this .npy file is damaged"); }

// Reads the header, which is a dictionary as Python writes it.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  void read(NpyHeader& header) {
    require("{");
    while (!takes("}")) {
      const std::string_view key = quoted();
      require(":");
      if (key == "descr") {
        readType(header);
      } else if (key == "fortran_order") {
        header.isByColumns = truth();
      } else if (key == "shape") {
        header.shape = tuple();
      } else {
        refuseHeader();
      }
      ++entries_;
      if (!takes(",") && !text_.starts_with('}')) refuseHeader();
    }
    skipBlanks();
    if (entries_ != 3 || header.kind == 0 || !text_.empty()) refuseHeader();
  }

 private:
  void skipBlanks() {
    text_.remove_prefix(std::min(text_.find_first_not_of(" \t\r\n"), text_.size()));
  }
  bool takes(std::string_view token) {
    skipBlanks();
    if (!text_.starts_with(token)) return false;
    text_.remove_prefix(token.size());
    skipBlanks();
    return true;
  }
  void require(std::string_view token) {
    if (!takes(token)) refuseHeader();
  }

  std::string_view quoted() {
    const char quote = text_.empty() ? '\0' : text_.front();
    const std::size_t end = text_.find(quote, 1);
    if ((quote != '\'' && quote != '"') || end == std::string_view::npos) refuseHeader();
    const std::string_view inside = text_.substr(1, end - 1);
    text_.remove_prefix(end + 1);
    return inside;
  }
  bool truth() {
    if (takes("True")) return true;
    require("False");
    return false;
  }
  Shape tuple() {
    Shape shape;
    require("(");
    while (!takes(")")) {
      shape.push_back(number());
      if (!takes(",") && !text_.starts_with(')')) refuseHeader();
      if (shape.size() > kMostNpyDimensions) refuseHeader();
    }
    return shape;
  }
  std::size_t number() {
    std::size_t value = 0;
    const auto read = std::from_chars(text_.data(), text_.data() + text_.size(), value);
    if (read.ec != std::errc() || value > kLargestSize) refuseHeader();
    text_.remove_prefix(static_cast<std::size_t>(read.ptr - text_.data()));
    return value;
  }

  void readType(NpyHeader& header) {
    if (text_.starts_with('[')) throw BadInput("structured NumPy types are not supported");
    const std::string_view type = quoted();
    std::string_view rest = type;
    header.isBigEndian = rest.starts_with('>') || (rest.starts_with('=') && kIsBigEndian);
    if (rest.find_first_of("<>=|") == 0) rest.remove_prefix(1);
    if (rest.empty()) refuseHeader();
    header.kind = rest.front();
    rest.remove_prefix(1);
    const char* const end = rest.data() + rest.size();
    const auto read = std::from_chars(rest.data(), end, header.itemSize);
    if (read.ec != std::errc() || read.ptr != end || !isSupported(header)) {
      throw BadInput("the NumPy type " + printable(type) + nameOf(header) + " is not supported");
    }
  }

  // The extended type of the machine, whose bytes mean something else on another one.
  static std::string nameOf(const NpyHeader& header) {
    const std::size_t size = header.itemSize;
    if (header.kind == 'f' && size > 8) return " (longdouble)";
    return header.kind == 'c' && size > 16 ? " (clongdouble)" : "";
  }

  static bool isSupported(const NpyHeader& header) {
    const std::size_t size = header.itemSize;
    switch (header.kind) {
      case 'f':
        return size == 2 || size == 4 || size == 8;
      case 'c':
        return size == 8 || size == 16;
      case 'i':
      case 'u':
        return size == 1 || size == 2 || size == 4 || size == 8;
      case 'b':
        return size == 1;
      case 'S':
      case 'U':
        return size <= kLargestSize;
      default:
        return false;
    }
  }

  std::string_view text_;
  int entries_ = 0;
};

// A number of `count` bytes, the lowest first.
std::size_t littleEndian(std::string_view bytes, std::size_t count) {
  std::size_t value = 0;
  for (std::size_t i = count; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

}  // namespace

NpyHeader npyHeaderOf(std::string_view bytes) {
  constexpr std::size_t versionEnd = kMagic.size() + 2;
  if (!bytes.starts_with(kMagic)) throw BadInput("this is not a .npy file");
  if (bytes.size() < versionEnd) refuseHeader();
  const int version = static_cast<unsigned char>(bytes[kMagic.size()]);
  if (version < 1 || version > 3) {
    throw BadInput("version " + std::to_string(version) + " of the .npy format is not supported");
  }
  const std::size_t lengthSize = version == 1 ? 2 : 4;
  const std::size_t start = versionEnd + lengthSize;
  if (bytes.size() < start) refuseHeader();
  const std::size_t length = littleEndian(bytes.substr(versionEnd), lengthSize);
  if (bytes.size() - start < length) refuseHeader();
  NpyHeader header;
  Reader(bytes.substr(start, length)).read(header);
  header.length = start + length;
  return header;
}

std::string npyHeader(std::string_view type, const Shape& shape) {
  std::string dictionary = "{'descr': '";
  dictionary.append(kIsBigEndian ? ">" : "<").append(type);
  dictionary += "', 'fortran_order': True, 'shape': (";
  for (const std::size_t dimension : shape) dictionary += std::to_string(dimension) + ", ";
  dictionary += "), }";
  // The elements begin at a multiple of 64.
  constexpr std::size_t alignment = 64;
  const std::size_t before = kMagic.size() + 4;
  const std::size_t end = before + dictionary.size() + 1;
  dictionary.append((alignment - end % alignment) % alignment, ' ').append("\n");
  std::string header(kMagic);
  header += {'\1', '\0', static_cast<char>(dictionary.size() & 0xFF),
             static_cast<char>(dictionary.size() >> 8)};
  return header + dictionary;
}

}  // namespace hcy::tools
