// SPDX-License-Identifier: Apache-2.0
//
// Very many calls on one context, every thousandth of which fails: what the process takes of the
// machine does not grow.
//
//   soak [--calls N] [--large-calls N] [--large-bytes N] [--fault-every N] [--percent N]

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "hcy/hcyclient.h"
#include "soak/figures.h"
#include "support/libcurl_text.h"
#include "support/local_server.h"
#include "support/loopback.h"

namespace hcy::soak {
namespace {

void require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %.*s\n", static_cast<int>(what.size()), what.data());
  std::exit(EXIT_FAILURE);
}

struct Options {
  std::size_t calls = 1'000'000;
  std::size_t largeCalls = 500;
  std::size_t largeBytes = 32U << 20;
  std::size_t faultEvery = 1000;
  std::size_t percent = 1;  // that memory may grow by
};

Options parsed(int argc, char** argv) {
  Options options;
  const std::map<std::string_view, std::size_t*> numbers = {{"--calls", &options.calls},
                                                            {"--large-calls", &options.largeCalls},
                                                            {"--large-bytes", &options.largeBytes},
                                                            {"--fault-every", &options.faultEvery},
                                                            {"--percent", &options.percent}};
  for (int i = 1; i < argc; i += 2) {
    const auto known = numbers.find(argv[i]);
    char* end = nullptr;
    if (known != numbers.end() && i + 1 < argc) {
      *known->second = std::strtoull(argv[i + 1], &end, 10);
    }
    require(end != nullptr && *end == '\0' && *known->second != 0,
            "an option is --calls, --large-calls, --large-bytes, --fault-every or --percent and a "
            "number");
  }
  return options;
}

class Soak {
 public:
  explicit Soak(const Options& options) : options_(options) {
    require(runtime_ != nullptr, "the library is initialised");
    hcyClientConfig* config = nullptr;
    require(runtime_->createConfig(&config) == 0, "a configuration is made");
    runtime_->setResponseSizeLimit(config, UINT32_MAX);
    require(runtime_->createContext(&context_, config) == 0, "a context is made");
    runtime_->destroyConfig(config);
  }
  Soak(const Soak&) = delete;
  Soak& operator=(const Soak&) = delete;
  ~Soak() {
    runtime_->destroyContext(context_);
    hcyTerminate();
  }

  // Whether nothing has grown.
  bool run() {
    const bool isFlat = phase("small calls", options_.calls, 1);
    return phase("large calls", options_.largeCalls, options_.largeBytes / sizeof(double)) &&
           isFlat;
  }

 private:
  bool phase(const char* name, std::size_t calls, std::size_t elements) {
    Figures figures(name, calls);
    // A short phase meets each kind of fault, too, the warm-up included.
    const std::size_t every = std::min(options_.faultEvery, std::max<std::size_t>(calls / 50, 5));
    for (std::size_t i = 1; i <= calls; ++i) {
      if (i % every == 0) {
        fail(i / every);
      } else {
        echo(elements, static_cast<double>(i));
      }
      figures.count();
    }
    return figures.areFlat(options_.percent);
  }

  int feval(const std::string& url, hcyArray** output, std::vector<const hcyArray*> inputs) {
    return runtime_->feval(context_, url.c_str(), 1, output,
                           static_cast<std::int32_t>(inputs.size()), inputs.data());
  }

  void echo(std::size_t elements, double value) {
    hcyArray* const input = hcyCreateDoubleMatrix(1, elements, hcyREAL);
    hcyGetPr(input)[elements - 1] = value;
    hcyArray* output = nullptr;
    require(feval(server_.url("/echo"), &output, {input}) == 0, "an echo succeeds");
    require(hcyGetNumberOfElements(output) == elements, "an echo has all elements");
    require(hcyGetPr(output)[elements - 1] == value, "an echo has the elements that were sent");
    hcyDestroyArray(output);
    hcyDestroyArray(input);
  }

  void fail(std::size_t which) {
    hcyArray* const text = hcyCreateString("a:b");
    const std::vector<const hcyArray*> inputs = {text, text};
    switch (which % 4) {
      case 0:
        expectFailure(HCY_HTTP_ERROR, "404", server_.url("/no/such/function"), inputs);
        break;
      case 1:
        expectFailure(HCY_VORTEN_ERROR, "a:b", server_.url("/demo/fail"), inputs);
        break;
      case 2:
        expectFailure(HCY_GENERIC_ERROR, test::libcurlText(CURLE_COULDNT_CONNECT), nobody_.url(),
                      inputs);
        break;
      default:
        expectFailure(HCY_GENERIC_ERROR, "Transferred a partial file", cutting_.url("/"), inputs);
    }
    hcyDestroyArray(text);
  }

  void expectFailure(hcyErrorType kind, const std::string& text, const std::string& url,
                     const std::vector<const hcyArray*>& inputs) {
    hcyArray* output = nullptr;
    require(feval(url, &output, inputs) == 1 && output == nullptr, "a fault is a failure");
    hcyErrorInfo info{};
    runtime_->getLastErrorInfo(context_, &info);
    require(info.kind == kind, "a failure is of its kind");
    const std::string told = kind == HCY_HTTP_ERROR ? std::to_string(info.details.http.statusCode)
                             : kind == HCY_VORTEN_ERROR ? info.details.vorten.message
                                                        : info.details.generic.details;
    require(told == text, "a failure tells \"" + text + "\", not \"" + told + '"');
    runtime_->destroyLastErrorInfo(&info);
  }

  const Options options_;
  const test::LocalServer server_;
  const test::ServerProcess cutting_{HCY_CUTTING_SERVER, {}};
  const test::UnlistenedPort nobody_;
  const hcyClientRuntime* const runtime_ = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  hcyClientContext* context_ = nullptr;
};

}  // namespace
}  // namespace hcy::soak

int main(int argc, char** argv) {
  const bool isFlat = hcy::soak::Soak(hcy::soak::parsed(argc, argv)).run();
  if (!isFlat) std::fputs("Memory or descriptors have grown.\n", stderr);
  return isFlat ? EXIT_SUCCESS : EXIT_FAILURE;
}
