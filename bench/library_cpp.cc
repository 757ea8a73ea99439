// SPDX-License-Identifier: Apache-2.0
//
// The library by its C++ face, which is to cost nothing over the C interface: what library.cc does.

#include <hcy/hcyclient.hpp>
#include <limits>
#include <stdexcept>

#include "peer.h"

namespace hcy::bench {
namespace {

using hcyclient::Array;

struct Maker {
  Array operator()(const CellNumbers& cells) const {
    Array array = Array::cells({cells.numbers.size(), 1});
    for (std::size_t i = 0; i < cells.numbers.size(); ++i) array[i] = cells.numbers[i];
    return array;
  }
  Array operator()(const std::u16string& text) const { return std::u16string_view(text); }
  template <class Number>
  Array operator()(const std::vector<Number>& values) const {
    return values;
  }
};

CellNumbers numbersOf(const Array& array) {
  CellNumbers cells;
  cells.numbers.reserve(array.size());
  for (std::size_t i = 0; i < array.size(); ++i) {
    const Array element = array[i];
    if (element.size() != 1) throw std::runtime_error("no 1-by-1 double");
    cells.numbers.push_back(element.span<double>()[0]);
  }
  return cells;
}

template <class Element>
std::span<const Element> elementsOf(const Array& array) {
  const auto elements = array.span<Element>();
  return {elements.data(), elements.size()};
}

Readable::Elements readableElementsOf(const Array& array) {
  if (array.is<double>()) return elementsOf<double>(array);
  if (array.is<std::int16_t>()) return elementsOf<std::int16_t>(array);
  if (array.is<std::uint64_t>()) return elementsOf<std::uint64_t>(array);
  if (array.is<std::int64_t>()) return elementsOf<std::int64_t>(array);
  if (array.isCell()) return numbersOf(array);
  const auto units = elementsOf<char16_t>(array);
  return std::u16string_view(units.data(), units.size());
}

Readable readableOf(const Array& array) {
  return {array.rows(), array.columns(), readableElementsOf(array)};
}

class CppPeer : public ArrayPeer {
 public:
  CppPeer(Port port, const Workload& workload)
      : url_("http://127.0.0.1:" + std::to_string(port) + "/echo"),
        array_(std::visit(Maker(), workload)),
        context_(hcyclient::Config(library_).setResponseSizeLimit(
            std::numeric_limits<std::int32_t>::max())) {
    if (!equals(readableOf(array_), bench::readableOf(workload))) {
      throw std::runtime_error("the array does not hold what was put into it");
    }
  }

 private:
  void callAndUse(const Use& use) override {
    const auto outputs = context_.feval(url_, {array_});
    use(readableOf(outputs[0]));
  }
  void useSent(const Use& use) const override { use(readableOf(array_)); }

  std::string url_;
  hcyclient::Library library_;
  Array array_;
  hcyclient::Context context_;
};

}  // namespace

std::unique_ptr<Peer> makePeer(Port port, Workload workload) {
  return std::make_unique<CppPeer>(port, workload);
}

}  // namespace hcy::bench
