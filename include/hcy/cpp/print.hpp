/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file print.hpp
 * @brief Prints arrays for people to read. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_PRINT_HPP
#define HCY_CPP_PRINT_HPP

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdio>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/read.hpp>
#include <hcy/cpp/slot.hpp>
#include <hcy/cpp/sparse.hpp>
#include <hcy/cpp/text.hpp>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

/** How much of an array is printed. */
struct PrintLimits {
  std::size_t width = 100; /**< characters per line; longer lines are cut */
  std::size_t rows = 20; /**< rows of a matrix, pages, cells, elements of a struct array, fields and
                              entries of a sparse array */
  std::size_t lines = 200; /**< lines in all */
};

/** The array as text without a final line end: class and shape, then the value of a single number
 *  or string, or the elements on separate lines. What the limits leave out is counted
 *  ("… 5 more rows"). For an empty Array, the text is "(no array)". Throws IncompleteReply if
 *  elements did not arrive. */
inline std::string format(const Array& array, const PrintLimits& limits = {});

/** @} */

namespace detail {

// Six significant digits, or all digits of a whole number below 2^53.
inline std::string numberText(double number) {
  if (std::isnan(number)) return "NaN";
  if (std::isinf(number)) return number < 0 ? "-Inf" : "Inf";
  const bool isWhole = number == std::trunc(number) && std::abs(number) < 9007199254740992.0;
  char digits[32];
  const int length = std::snprintf(digits, sizeof digits, isWhole ? "%.0f" : "%.6g", number);
  return {digits, static_cast<std::size_t>(length)};
}

template <class T>
std::string elementText(T element) {
  if constexpr (Parts<T>::areTwo) {
    const std::string imaginary = elementText(element.imag());
    const bool isNegative = imaginary.front() == '-';
    return elementText(element.real()) + (isNegative ? " - " : " + ") +
           imaginary.substr(isNegative ? 1 : 0) + "i";
  } else if constexpr (std::is_same_v<T, bool>) {
    return element ? "true" : "false";
  } else if constexpr (std::is_floating_point_v<T>) {
    return numberText(static_cast<double>(element));
  } else {
    return std::to_string(element);
  }
}

// Whether a terminal could interpret the unit as a command or show what follows in another order,
// or the unit is an unpaired surrogate.
inline bool needsEscape(char32_t unit) {
  return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || unit == 0x61C || unit == 0x200E ||
         unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069) || (unit >= 0xD800 && unit <= 0xDFFF);
}

inline std::string printable(std::u16string_view units) {
  std::string out;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t unit = units[i];
    const char32_t next = i + 1 < units.size() ? units[i + 1] : char16_t{};
    if (unit >= 0xD800 && unit <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF) {
      unit = 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00);
      ++i;
    }
    if (unit == '"' || unit == '\\') out += '\\';
    if (!needsEscape(unit)) {
      appendUtf8(unit, out);
    } else if (unit == '\n' || unit == '\t' || unit == '\r') {
      out += unit == '\n' ? "\\n" : unit == '\t' ? "\\t" : "\\r";
    } else {
      constexpr std::string_view digits = "0123456789abcdef";
      out += "\\u";
      for (int shift = 12; shift >= 0; shift -= 4) out += digits[unit >> shift & 0xF];
    }
  }
  return out;
}

// A name that may come from a server. Bytes that are not valid UTF-8 are replaced.
inline std::string printable(std::string_view name) {
  std::u16string units;
  const char* const end = name.data() + name.size();
  for (const char* position = name.data(); position != end;) {
    const char* const start = position;
    try {
      const char32_t codePoint = nextCodePoint(position, end);
      char16_t pair[2] = {};
      const std::string_view bytes(start, static_cast<std::size_t>(position - start));
      writeUtf16(bytes, pair, codePoint < 0x10000 ? 1 : 2);
      units.append(pair, codePoint < 0x10000 ? 1 : 2);
    } catch (const UsageError&) {
      units += u'\uFFFD';
      position = start + 1;
    }
  }
  return printable(units);
}

inline bool startsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
}

// The number of characters in UTF-8.
inline std::size_t lengthOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

class Printer {
 public:
  explicit Printer(const PrintLimits& limits) : limits_(limits) {}

  void show(const std::string& name, const Array& array, std::size_t indent) {
    const std::string header = std::string(indent, ' ') + (name.empty() ? "" : name + ": ") +
                               (array.isSparse() ? "sparse " : "") +
                               (array.isComplex() ? "complex " : "") +
                               std::string(array.className()) + " " +
                               shapeText(array.dimensions().data(), array.dimensions().size());
    if (array.isSparse()) {
      showSparse(header, array, indent + 2);
    } else if (array.isCell()) {
      line(header);
      showSome(array.size(), indent + 2, "cell",
               [&](std::size_t i) { show(place(array, i), array[i], indent + 2); });
    } else if (array.isStruct()) {
      showStruct(header, array, indent + 2);
    } else if (array.isText()) {
      showText(header, array, indent + 2);
    } else {
      showNumbers(header, array, indent + 2);
    }
  }

  std::string take() {
    if (out_.size() > 0) out_.pop_back();
    return std::move(out_);
  }

 private:
  void line(std::string text) {
    if (lines_ >= limits_.lines) return;
    if (++lines_ == limits_.lines) text = "…";
    if (lengthOf(text) > limits_.width) {
      std::size_t end = 0;
      for (std::size_t kept = 0; kept < limits_.width; ++end) kept += startsCharacter(text[end]);
      text.resize(end - 1);
      text += "…";
    }
    out_ += text + "\n";
  }

  // Shows as many as the limit allows, and counts the rest.
  template <class Show>
  void showSome(std::size_t count, std::size_t indent, std::string_view what, const Show& show) {
    const std::size_t shown = std::min(count, limits_.rows);
    for (std::size_t i = 0; i < shown && lines_ < limits_.lines; ++i) show(i);
    if (shown < count) line(std::string(indent, ' ') + more(count - shown, what));
  }

  static std::string more(std::size_t count, std::string_view what) {
    if (what == "entry" && count != 1) return more(count, "entrie");
    return "… " + std::to_string(count) + " more " + std::string(what) + (count == 1 ? "" : "s");
  }

  // "(0, 2)"; for an array of very many dimensions, the linear index.
  static std::string place(const Array& array, std::size_t i, std::size_t from = 0) {
    const Span<const std::size_t> dimensions = array.dimensions();
    if (dimensions.size() > 32) return "(" + std::to_string(i) + ")";
    std::string text;
    for (const std::size_t dimension : dimensions.subspan(std::min(from, dimensions.size()))) {
      text += (text.empty() ? "(" : ", ") + std::to_string(i % dimension);
      i /= dimension;
    }
    return dimensions.size() == 1 ? text + ", 0)" : text + ")";
  }

  void showStruct(const std::string& header, const Array& array, std::size_t indent) {
    const std::vector<std::string> names = array.fieldNames();
    line(header);
    const auto showElement = [&](std::size_t i, std::size_t inner) {
      showSome(names.size(), inner, "field", [&](std::size_t field) {
        show(printable(names[field]), array(i, names[field]), inner);
      });
    };
    if (array.size() == 1) return showElement(0, indent);
    if (names.empty()) return;
    showSome(array.size(), indent, "element", [&](std::size_t i) {
      line(std::string(indent, ' ') + place(array, i) + ":");
      showElement(i, indent + 2);
    });
  }

  // Calls `show` with the start of each matrix of an array that is not empty and may have more than
  // two dimensions.
  template <class Show>
  void showPages(const Array& array, std::size_t indent, const Show& show) {
    const std::size_t page =
        array.dimensions().size() == 1 ? array.rows() : array.rows() * array.columns();
    showSome(array.size() / page, indent, "page", [&](std::size_t i) {
      if (array.dimensions().size() > 2) {
        line(std::string(indent, ' ') + "(:, :, " + place(array, i, 2).substr(1));
      }
      show(i * page);
    });
  }

  void showText(const std::string& header, const Array& array, std::size_t indent) {
    const Span<const char16_t> units = array.span<char16_t>();
    const std::size_t columns = array.dimensions().size() == 1 ? 1 : array.columns();
    if (units.empty()) return line(header);
    // Anything beyond the width is cut anyway.
    const std::size_t length = std::min(columns, limits_.width);
    if (array.size() == columns) {
      return line(header + " = \"" + printable(std::u16string_view(units.data(), length)) + "\"");
    }
    line(header);
    showPages(array, indent, [&](std::size_t page) {
      showSome(array.rows(), indent, "row", [&](std::size_t i) {
        std::u16string row;
        for (std::size_t j = 0; j < length; ++j) row += units[page + i + j * array.rows()];
        line(std::string(indent, ' ') + "\"" + printable(row) + "\"");
      });
    });
  }

  void showNumbers(const std::string& header, const Array& array, std::size_t indent) {
    const auto text = [&array](std::size_t i) {
      return array.withElementType([&array, i](auto tag) {
        using T = typename decltype(tag)::Type;
        if constexpr (isNumeric<T>) {
          if (array.isComplex()) {
            const Span<const T> parts = array.imaginary<T>();
            const T imaginary = i < parts.size() ? parts[i] : T{};
            return elementText(std::complex<T>(array.span<T>()[i], imaginary));
          }
        }
        return elementText(array.span<T>()[i]);
      });
    };
    array.requireWhole();
    if (array.size() == 1) return line(header + " = " + text(0));
    line(header);
    if (array.size() == 0) return;
    showPages(array, indent, [&](std::size_t page) {
      const std::size_t rows = array.rows();
      showColumns(rows, array.size() == rows ? 1 : array.columns(), indent,
                  [&](std::size_t i, std::size_t j) { return text(page + i + j * rows); });
    });
  }

  // Right-aligned: as many columns as the width allows, but at least one.
  template <class Text>
  void showColumns(std::size_t rows, std::size_t columns, std::size_t indent, const Text& text) {
    std::vector<std::string> lines(std::min(rows, limits_.rows), std::string(indent, ' '));
    std::size_t used = indent;
    std::size_t shown = 0;
    for (; shown < columns; ++shown) {
      std::vector<std::string> column;
      std::size_t widest = 0;
      for (std::size_t i = 0; i < lines.size(); ++i) {
        column.push_back(text(i, shown));
        widest = std::max(widest, column.back().size());
      }
      used += widest + (shown > 0 ? 2 : 0);
      if (used > limits_.width && shown > 0) break;
      for (std::size_t i = 0; i < lines.size(); ++i) {
        lines[i] += std::string(widest - column[i].size() + (shown > 0 ? 2 : 0), ' ') + column[i];
      }
    }
    showSome(rows, indent, "row", [&](std::size_t i) { line(lines[i]); });
    if (shown < columns) line(std::string(indent, ' ') + more(columns - shown, "column"));
  }

  void showSparse(const std::string& header, const Array& array, std::size_t indent) {
    if (array.is<bool>()) return showEntries<bool>(header, array, indent);
    if (array.isComplex()) return showEntries<std::complex<double>>(header, array, indent);
    showEntries<double>(header, array, indent);
  }

  template <class T>
  void showEntries(const std::string& header, const Array& array, std::size_t indent) {
    const std::vector<Entry<T>> entries = array.entries<T>();
    line(header + ", " + std::to_string(entries.size()) + " stored");
    showSome(entries.size(), indent, "entry", [&](std::size_t i) {
      line(std::string(indent, ' ') + "(" + std::to_string(entries[i].row) + ", " +
           std::to_string(entries[i].column) + ")  " + elementText(entries[i].value));
    });
  }

  PrintLimits limits_;
  std::size_t lines_ = 0;
  std::string out_;
};

}  // namespace detail

inline std::string format(const Array& array, const PrintLimits& limits) {
  if (!array) return "(no array)";
  detail::Printer printer(limits);
  printer.show("", array, 0);
  return printer.take();
}

inline std::ostream& Array::print(std::ostream& out) const { return out << format(*this); }

}  // namespace hcyclient

#endif  // HCY_CPP_PRINT_HPP
