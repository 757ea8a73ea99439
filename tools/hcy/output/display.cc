// SPDX-License-Identifier: Apache-2.0

#include "output/display.h"

#include <algorithm>
#include <complex>
#include <optional>
#include <span>
#include <vector>

#include "notations/element_types.h"
#include "notations/places.h"
#include "notations/sparse_entries.h"
#include "output/number_text.h"
#include "output/table.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using hcyclient::Span;

class Display {
 public:
  // Stops when there are more than `most` lines; 0 for no limit.
  explicit Display(const DisplaySize& size, std::size_t most = 0) : size_(size), most_(most) {}

  std::string take() { return std::move(out_); }
  bool isTooLong() const { return most_ != 0 && lines_ > most_; }

  void show(std::string_view name, const Array& array, std::size_t indent) {
    const Shape shape = shapeOf(array);
    const std::string header = std::string(indent, ' ') + std::string(name) + ": " +
                               (array.isSparse() ? "sparse " : "") +
                               (array.isComplex() ? "complex " : "") +
                               std::string(array.className()) + " " + shapeText(shape);
    if (array.isSparse()) {
      showSparse(header, array, indent);
    } else if (array.isCell()) {
      line(header);
      forEachShown(array.size(), "element", indent,
                   [&](std::size_t i) { show(placeText(i, shape), array[i], indent + 2); });
    } else if (array.isStruct()) {
      showStruct(header, array, shape, indent);
    } else if (array.isText()) {
      showText(header, array, shape, indent);
    } else {
      withElementType(array.classId(), [&](auto type) {
        showNumbers<typename decltype(type)::type>(header, array, shape, indent);
      });
    }
  }

 private:
  void line(const std::string& text) { append(cutToWidth(text, size_.width) + "\n"); }

  void append(const std::string& lines) {
    out_ += lines;
    lines_ += static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
  }

  // Calls use(i) for the elements that are shown, and adds a line for those that are left out.
  template <class Use>
  void forEachShown(std::size_t count, std::string_view what, std::size_t indent, Use use) {
    const Fold fold(count, size_.rows);
    for (std::size_t i = 0; i < count && !isTooLong(); ++i) {
      if (i == fold.gap) {
        line(std::string(indent + 2, ' ') + foldText(fold.left, what));
        i += fold.left;
        if (i == count) return;
      }
      use(i);
    }
  }

  void showStruct(const std::string& header, const Array& array, const Shape& shape,
                  std::size_t indent) {
    const std::vector<std::string> names = array.fieldNames();
    std::string fields;
    for (const std::string& name : names) fields += (fields.empty() ? "" : ", ") + printable(name);
    // Their number costs the server no bytes: it can be as large as it likes.
    if (names.empty() && array.size() > 1) return line(header + " without fields");
    line(array.size() == 0 && !names.empty() ? header + " with fields " + fields : header);
    forEachShown(array.size(), "element", indent, [&](std::size_t i) {
      const std::size_t inner = array.size() == 1 ? indent + 2 : indent + 4;
      if (array.size() != 1) line(std::string(indent + 2, ' ') + placeText(i, shape) + ":");
      forEachShown(names.size(), "field", inner - 2,
                   [&](std::size_t j) { show(printable(names[j]), array(i, names[j]), inner); });
    });
  }

  void showText(const std::string& header, const Array& array, const Shape& shape,
                std::size_t indent) {
    const Span<const char16_t> units = array.span<char16_t>();
    if (units.size() == 0) return line(header);
    if (shape.size() == 2 && shape[0] == 1) {
      return line(header + " = " + quotedForDisplay({units.data(), units.size()}));
    }
    line(header);
    forEachPage(units.size(), shape, indent, [&](std::size_t page) {
      forEachShown(shape[0], "row", indent, [&](std::size_t i) {
        std::u16string row;
        for (std::size_t j = 0; j < shape[1]; ++j) row += units[page + i + j * shape[0]];
        line(std::string(indent + 2, ' ') + quotedForDisplay(row));
      });
    });
  }

  template <class T>
  void showNumbers(const std::string& header, const Array& array, const Shape& shape,
                   std::size_t indent) {
    const Span<const T> real = array.span<T>();
    Span<const T> imaginary;
    if constexpr (isNumber<T>) imaginary = array.imaginary<T>();
    const auto text = [&](std::size_t i) {
      return i < imaginary.size() ? textOf<T>(real[i], imaginary[i]) : textOf<T>(real[i]);
    };
    if (array.size() == 1 && shape.size() == 2) return line(header + " = " + text(0));
    line(header);
    if (real.size() == 0) return;
    forEachPage(real.size(), shape, indent, [&](std::size_t page) {
      append(alignedColumns(
          shape[0], shape[1],
          [&](std::size_t i, std::size_t j) { return text(page + i + j * shape[0]); }, indent + 2,
          size_));
    });
  }

  // Calls use(index) for the first element of each page, after a line with its place if there are
  // more than two dimensions. The array must not be empty.
  template <class Use>
  void forEachPage(std::size_t size, const Shape& shape, std::size_t indent, Use use) {
    const std::size_t pageSize = shape[0] * shape[1];
    forEachShown(size / pageSize, "page", indent, [&](std::size_t page) {
      if (shape.size() > 2) {
        line(std::string(indent + 2, ' ') + "(:, :, " +
             placeText(page, std::span(shape).subspan(2)).substr(1));
      }
      use(page * pageSize);
    });
  }

  void showSparse(const std::string& header, const Array& array, std::size_t indent) {
    if (array.is<bool>()) return showEntries<bool>(header, array, indent);
    if (array.isComplex()) return showEntries<std::complex<double>>(header, array, indent);
    showEntries<double>(header, array, indent);
  }

  template <class T>
  void showEntries(const std::string& header, const Array& array, std::size_t indent) {
    const auto entries = entriesOf<T>(array);
    line(header + ", " + std::to_string(entries.size()) + " stored");
    const auto cell = [&entries](std::size_t i, std::size_t j) {
      const auto& entry = entries[i];
      if (j == 0) {
        return "(" + std::to_string(entry.row) + ", " + std::to_string(entry.column) + ")";
      }
      if constexpr (std::is_same_v<T, std::complex<double>>) {
        return textOf(entry.value.real(), entry.value.imag());
      } else {
        return textOf<T>(entry.value);
      }
    };
    append(alignedColumns(entries.size(), 2, cell, indent + 2, size_));
  }

  DisplaySize size_;
  std::size_t most_;
  std::size_t lines_ = 0;
  std::string out_;
};

// Nothing if there are more than `most` lines; 0 for no limit.
std::optional<std::string> shownWithin(const std::vector<Array>& outputs, const DisplaySize& size,
                                       std::size_t most) {
  Display display(size, most);
  for (std::size_t i = 0; i < outputs.size() && !display.isTooLong(); ++i) {
    display.show(outputName(i, outputs.size()), outputs[i], 0);
  }
  return display.isTooLong() ? std::nullopt : std::optional(display.take());
}

// The first and the last lines, `most` in all with the one that counts the others.
std::string cutToLines(const std::string& text, std::size_t most) {
  std::vector<std::string_view> lines;
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t end = rest.find('\n') + 1;
    lines.push_back(rest.substr(0, end));
    rest.remove_prefix(end);
  }
  const Fold fold(lines.size(), most - 1);
  std::string out;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i == fold.gap) {
      out += foldText(fold.left, "line") + "\n";
      i += fold.left;
      if (i == lines.size()) break;
    }
    out += lines[i];
  }
  return out;
}

}  // namespace

std::string display(std::string_view name, const hcyclient::Array& array, const DisplaySize& size) {
  Display display(size);
  display.show(name, array, 0);
  return display.take();
}

std::string displayAll(const std::vector<hcyclient::Array>& outputs, std::size_t width,
                       std::size_t lines) {
  if (lines == 0) return *shownWithin(outputs, {width, 0}, 0);
  for (std::size_t rows = lines; rows > 0; --rows) {
    if (auto shown = shownWithin(outputs, {width, rows}, lines)) return *std::move(shown);
  }
  return cutToLines(*shownWithin(outputs, {width, 1}, 0), std::max<std::size_t>(lines, 2));
}

}  // namespace hcy::tools
