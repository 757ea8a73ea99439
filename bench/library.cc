// SPDX-License-Identifier: Apache-2.0
//
// The library, by its C interface alone. The application holds its data in an array, as the
// interface invites it to; with HCY_BENCH_FILLS it holds them in memory of its own, and
// makes and fills an array for every call.

#include <hcy/hcyclient.h>

#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>

#include "peer.h"

namespace hcy::bench {
namespace {

struct Destroyer {
  void operator()(hcyArray* array) const { hcyDestroyArray(array); }
};
using Array = std::unique_ptr<hcyArray, Destroyer>;

constexpr hcyClassID classOf(std::int16_t) { return hcyINT16_CLASS; }
constexpr hcyClassID classOf(std::uint64_t) { return hcyUINT64_CLASS; }
constexpr hcyClassID classOf(std::int64_t) { return hcyINT64_CLASS; }

struct Maker {
  Array operator()(const std::vector<double>& values) const {
    Array array(hcyCreateDoubleMatrix(values.size(), 1, hcyREAL));
    std::memcpy(hcyGetPr(array.get()), values.data(), values.size() * sizeof(double));
    return array;
  }
  template <class Integer>
  Array operator()(const std::vector<Integer>& values) const {
    Array array(hcyCreateNumericMatrix(values.size(), 1, classOf(Integer{}), hcyREAL));
    std::memcpy(hcyGetData(array.get()), values.data(), values.size() * sizeof(Integer));
    return array;
  }
  Array operator()(const CellNumbers& cells) const {
    Array array(hcyCreateCellMatrix(cells.numbers.size(), 1));
    for (std::size_t i = 0; i < cells.numbers.size(); ++i) {
      hcySetCell(array.get(), i, Array(hcyCreateDoubleScalar(cells.numbers[i])).get());
    }
    return array;
  }
  Array operator()(const std::u16string& text) const {
    const std::size_t shape[] = {1, text.size()};
    Array array(hcyCreateCharArray(2, shape));
    std::memcpy(hcyGetChars(array.get()), text.data(), text.size() * sizeof(char16_t));
    return array;
  }
};

CellNumbers numbersOf(const hcyArray* array, std::size_t count) {
  CellNumbers cells;
  cells.numbers.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const Array element(hcyGetCell(array, i));
    if (!element || hcyGetNumberOfElements(element.get()) != 1) {
      throw std::runtime_error("no 1-by-1 double");
    }
    cells.numbers.push_back(*hcyGetPr(element.get()));
  }
  return cells;
}

template <class Integer>
std::span<const Integer> integersOf(const hcyArray* array) {
  return {static_cast<const Integer*>(hcyGetData(array)), hcyGetNumberOfElements(array)};
}

Readable readableOf(const hcyArray* array) {
  const std::size_t count = hcyGetNumberOfElements(array);
  Readable readable{hcyGetM(array), hcyGetN(array), {}};
  switch (hcyGetClassID(array)) {
    case hcyDOUBLE_CLASS:
      readable.elements = std::span<const double>(hcyGetPr(array), count);
      break;
    case hcyINT16_CLASS:
      readable.elements = integersOf<std::int16_t>(array);
      break;
    case hcyUINT64_CLASS:
      readable.elements = integersOf<std::uint64_t>(array);
      break;
    case hcyINT64_CLASS:
      readable.elements = integersOf<std::int64_t>(array);
      break;
    case hcyCELL_CLASS:
      readable.elements = numbersOf(array, count);
      break;
    case hcyCHAR_CLASS:
      readable.elements =
          std::u16string_view(reinterpret_cast<const char16_t*>(hcyGetChars(array)), count);
      break;
    default:
      throw std::runtime_error("an array of another class came back");
  }
  return readable;
}

// A context of its own, of a runtime that the process starts once and leaves to its end.
class Context {
 public:
  Context() : runtime_(hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1)) {
    if (runtime_ == nullptr) throw std::runtime_error(hcyGetInitializationErrorMessage());
    hcyClientConfig* config = nullptr;
    if (runtime_->createConfig(&config) != 0) throw std::runtime_error("no configuration");
    runtime_->setResponseSizeLimit(config, std::numeric_limits<std::int32_t>::max());
    const int failed = runtime_->createContext(&context_, config);
    runtime_->destroyConfig(config);
    if (failed != 0) throw std::runtime_error("no context");
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context() { runtime_->destroyContext(context_); }

  Array call(const std::string& url, const hcyArray* input) {
    hcyArray* output = nullptr;
    if (runtime_->feval(context_, url.c_str(), 1, &output, 1, &input) != 0) {
      hcyErrorInfo info;
      runtime_->getLastErrorInfo(context_, &info);
      runtime_->destroyLastErrorInfo(&info);
      throw std::runtime_error(info.message);
    }
    return Array(output);
  }

 private:
  hcyClientRuntime* runtime_;
  hcyClientContext* context_ = nullptr;
};

// Data that stand in an array.
class HeldArray {
 public:
  explicit HeldArray(const Workload& workload) : array_(std::visit(Maker(), workload)) {
    if (!equals(readable(), bench::readableOf(workload))) {
      throw std::runtime_error("the array does not hold what was put into it");
    }
  }

  const hcyArray* input() const { return array_.get(); }
  Readable readable() const { return readableOf(array_.get()); }

 private:
  Array array_;
};

// Data that stand elsewhere.
class FilledArray {
 public:
  explicit FilledArray(Workload workload) : workload_(std::move(workload)) {}

  Array input() const { return std::visit(Maker(), workload_); }
  Readable readable() const { return bench::readableOf(workload_); }

 private:
  Workload workload_;
};

template <class Data>
class LibraryPeer : public ArrayPeer {
 public:
  LibraryPeer(Port port, Workload workload)
      : url_("http://127.0.0.1:" + std::to_string(port) + "/echo"), data_(std::move(workload)) {}

 private:
  void callAndUse(const Use& use) override {
    const auto input = data_.input();
    const Array output = context_.call(url_, std::to_address(input));
    use(readableOf(output.get()));
  }
  void useSent(const Use& use) const override { use(data_.readable()); }

  std::string url_;
  Data data_;
  Context context_;
};

}  // namespace

std::unique_ptr<Peer> makePeer(Port port, Workload workload) {
#ifdef HCY_BENCH_FILLS
  using Data = FilledArray;
#else
  using Data = HeldArray;
#endif
  return std::make_unique<LibraryPeer<Data>>(port, std::move(workload));
}

}  // namespace hcy::bench
