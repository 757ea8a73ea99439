// SPDX-License-Identifier: Apache-2.0
//
// The configuration of examples/scale-out passes on what the response size limit needs.

#include <gtest/gtest.h>

#include <string>

#include "support/client.h"
#include "support/haproxy.h"
#include "support/local_server.h"

namespace hcy::abi {
namespace {

class ScaleOut : public testing::Test {
 protected:
  // Echoes this many doubles through the proxy, with a limit of 1000 bytes; the text of the
  // failure, or none.
  std::string echo(std::size_t count) {
    library_->setResponseSizeLimit(config_.get(), 1000);
    const Context context(library_, config_);
    const OwnedArray input(hcyCreateDoubleMatrix(count, 1, hcyREAL));
    Outputs outputs(1);
    if (context.feval(proxy_.url("/echo"), 1, outputs.data(), {input.get()}) != 0) {
      return context.lastFailure().text;
    }
    EXPECT_EQ(hcyGetNumberOfElements(outputs[0]), count);
    EXPECT_NE(hcyGetPr(outputs[0]), nullptr);
    return "";
  }

 private:
  const Library library_;
  const Config config_{library_};
  const test::LocalServer first_, second_;
  const test::HAProxy proxy_{HCY_EXAMPLES "/scale-out/haproxy.cfg", first_.port(), second_.port()};
};

TEST_F(ScaleOut, aReplyWithinTheSizeLimitArrives) { EXPECT_EQ(echo(100), ""); }

TEST_F(ScaleOut, aReplyOverTheSizeLimitIsRefused) {
  EXPECT_NE(echo(200).find("This might happen if response content size is larger than the response "
                           "size limit."),
            std::string::npos);
}

}  // namespace
}  // namespace hcy::abi
