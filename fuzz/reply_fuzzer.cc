// SPDX-License-Identifier: Apache-2.0
//
// Any bytes as the body of a reply: the call ends as documented, and whatever its outputs are,
// every function can be called on them and they can be sent again.

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "array_walk.h"
#include "canned_client.h"
#include "hcy.client.VORTENResult.pb.h"
#include "runtime/error_info.h"
#include "runtime/feval.h"

namespace {

constexpr int levels = 4;

void readError(const hcyClientContext& context) {
  hcyErrorInfo info;
  hcy::getLastErrorInfo(&context, &info);
  if (info.kind == HCY_HTTP_ERROR) std::abort();  // the status is always 200
  hcy::destroyLastErrorInfo(&info);
  hcy::destroyLastErrorInfo(&info);
}

void send(hcyClientContext& context, const std::vector<hcyArray*>& arrays) {
  const std::vector<const hcyArray*> inputs(arrays.begin(), arrays.end());
  hcy::feval(&context, "", 0, nullptr, static_cast<std::int32_t>(inputs.size()), inputs.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto client = std::make_unique<hcy::fuzz::CannedClient>();
  client->reply.assign(reinterpret_cast<const char*>(data), size);
  hcy::client::VORTEN_Result expected;
  static_cast<void>(expected.ParsePartialFromString(client->reply));

  hcyClientContext context;
  context.client = std::move(client);
  std::vector<hcyArray*> outputs(static_cast<std::size_t>(expected.lhs_size()), nullptr);
  if (hcy::feval(&context, "", expected.lhs_size(), outputs.data(), 0, nullptr) != 0) {
    readError(context);
  }
  std::erase(outputs, nullptr);

  for (const hcyArray* output : outputs) hcy::fuzz::readEverything(output, levels);
  send(context, outputs);
  for (hcyArray* output : outputs) {
    hcyArray* const copy = hcyDuplicateArray(output);
    hcy::fuzz::changeEverything(copy);
    hcy::fuzz::readEverything(copy, levels);
    hcyDestroyArray(copy);
    hcy::fuzz::changeEverything(output);
    hcy::fuzz::readEverything(output, levels);
  }
  send(context, outputs);
  for (hcyArray* output : outputs) hcyDestroyArray(output);
  return 0;
}
