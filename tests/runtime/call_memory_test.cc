// SPDX-License-Identifier: Apache-2.0
//
// The response size limit bounds the memory that a call takes, whatever the server sends.

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>

#include "support/call_test.h"
#include "support/own_process.h"
#include "wire/varint.h"

namespace hcy::abi {
namespace {

using test::Connection;
using test::readRequest;
using test::ScriptServer;
using test::send;
using test::sendRepeated;
using test::Step;
using test::waitForClose;

constexpr std::size_t kMebibyte = std::size_t{1} << 20;
constexpr std::size_t kEndless = std::size_t{1} << 40;
constexpr std::uint32_t kLimit = 16 * kMebibyte;
constexpr std::size_t kDefaultLimit = 64 * kMebibyte;

// What a call takes besides the reply, and by what the memory of a large one is rounded up.
constexpr std::size_t kSlack = 6 * kMebibyte;

// The resident memory of the process by its name in /proc: VmRSS now, VmHWM at its peak.
std::size_t residentBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    std::size_t kibibytes = 0;
    if (word == name + ":" && status >> kibibytes) return kibibytes * 1024;
  }
  throw std::runtime_error("there is no " + name);
}

// Compresses piece by piece.
class Gzip {
 public:
  Gzip() {
    constexpr int kWindow = 15 + 16;  // the largest one, in the format of gzip
    deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kWindow, 8, Z_DEFAULT_STRATEGY);
  }
  Gzip(const Gzip&) = delete;
  Gzip& operator=(const Gzip&) = delete;
  ~Gzip() { deflateEnd(&stream_); }

  std::string compressed(std::string input, int flush) {
    std::string output(deflateBound(&stream_, input.size()) + 64, '\0');
    stream_.next_in = reinterpret_cast<Bytef*>(input.data());
    stream_.avail_in = static_cast<uInt>(input.size());
    stream_.next_out = reinterpret_cast<Bytef*>(output.data());
    stream_.avail_out = static_cast<uInt>(output.size());
    if (deflate(&stream_, flush) == Z_STREAM_ERROR || stream_.avail_in != 0) {
      throw std::runtime_error("zlib does not compress");
    }
    output.resize(output.size() - stream_.avail_out);
    return output;
  }

 private:
  z_stream stream_{};
};

std::string littleEndian(std::uint64_t value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

// That many MiB of zeros, compressed twice. Behind a full flush a piece is as good in any place, so
// that one of them is compressed once.
std::string bombOf(std::size_t mebibytes) {
  const std::string zeros(kMebibyte, '\0');
  Gzip inner;
  std::string once = inner.compressed("", Z_FULL_FLUSH);
  const std::string piece = inner.compressed(zeros, Z_FULL_FLUSH);
  const auto* const bytes = reinterpret_cast<const Bytef*>(zeros.data());
  const uLong check = crc32(0, bytes, static_cast<uInt>(zeros.size()));
  uLong checks = 0;
  for (std::size_t i = 0; i < mebibytes; ++i) {
    once += piece;
    checks = crc32_combine(checks, check, kMebibyte);
  }
  // An empty last block, and the trailer.
  once += std::string("\3\0", 2) + littleEndian(checks) + littleEndian(mebibytes * kMebibyte);
  return Gzip().compressed(once, Z_FINISH);
}

Step sendHead(const std::string& status, const std::string& encoding = "chunked") {
  return send("HTTP/1.1 " + status + "\r\nTransfer-Encoding: " + encoding + "\r\n\r\n");
}

// Chunks that hold nothing for a reader, of that many bytes with what is around them.
Step sendChunks(std::size_t total) {
  const std::string filler = chunk(std::string(kMebibyte, '\0'));
  return sendRepeated(filler, std::max<std::size_t>(total / filler.size(), 1) * filler.size());
}

class CallMemory : public test::OwnProcess {};

// A context that has made a call, and what its next one takes.
class MeasuredCall {
 public:
  explicit MeasuredCall(std::uint32_t limit = kDefaultLimit, std::uint32_t timeOut = 20) {
    library_->setResponseSizeLimit(config_.get(), limit);
    library_->setTimeOut(config_.get(), timeOut);
    context_.emplace(library_, config_);
    expectUsable(*context_);
    before_ = residentBytes("VmRSS");
  }

  // A call with one output, or none.
  int feval(const ScriptServer& server, std::int32_t outputs) {
    const int status = context_->feval(server.url(), outputs, outputs_.data());
    taken_ = residentBytes("VmHWM") - before_;
    std::printf("%.1f MiB\n", static_cast<double>(taken_) / kMebibyte);
    return status;
  }
  std::size_t taken() const { return taken_; }
  const hcyArray* output() const { return outputs_[0]; }
  Failure failure() const { return context_->lastFailure(); }

 private:
  Library library_;
  Config config_{library_};
  std::optional<Context> context_;
  Outputs outputs_{1};
  std::size_t before_ = 0;
  std::size_t taken_ = 0;
};

// libcurl 7.88 unpacks a transfer encoding, though no request asks for one; 8.14 refuses it.
HCY_TEST_IN_OWN_PROCESS(CallMemory, ofABombIsNoMoreThanTheLimit) {
  const std::string bomb = bombOf(300);
  EXPECT_LT(bomb.size(), 2048U);
  const ScriptServer server({Connection{readRequest(), sendHead("200 OK", "gzip, gzip, chunked"),
                                        send(chunk(bomb) + chunk("")), waitForClose()}});
  MeasuredCall call(kLimit);
  if (call.feval(server, 0) != 0) {
    EXPECT_EQ(call.failure(),
              genericFailure("Unrecognized or bad HTTP Content or Transfer-Encoding"));
  }
  EXPECT_LE(call.taken(), kLimit + kSlack);
}

HCY_TEST_IN_OWN_PROCESS(CallMemory, ofAReplyThatIsTooLargeToCountIsNoMoreThanTheLimit) {
  const ScriptServer server(
      {Connection{readRequest(), sendHead("200 OK"), sendChunks(2049 * kMebibyte), send(chunk("")),
                  waitForClose()}});
  MeasuredCall call(kLimit);
  EXPECT_EQ(call.feval(server, 0), 1);
  EXPECT_EQ(call.failure(), genericFailure("bad numeric conversion: positive overflow"));
  EXPECT_LE(call.taken(), kLimit + kSlack);
}

HCY_TEST_IN_OWN_PROCESS(CallMemory, ofAChunkedReplyIsNoMoreThanTheDefaultLimit) {
  const ScriptServer server(
      {Connection{readRequest(), sendHead("200 OK"), send(chunk(answer())),
                  sendChunks(300 * kMebibyte), send(chunk("")), waitForClose()}});
  MeasuredCall call;
  EXPECT_EQ(call.feval(server, 1), 0) << call.failure().text;
  EXPECT_LE(call.taken(), kDefaultLimit + kSlack);
}

HCY_TEST_IN_OWN_PROCESS(CallMemory, ofAnEndlessReplyIsNoMoreThanTheLimitUntilTheTimeOut) {
  const ScriptServer server({Connection{readRequest(), sendHead("200 OK"), sendChunks(kEndless)}});
  MeasuredCall call(kLimit, 1);
  EXPECT_EQ(call.feval(server, 1), 1);
  EXPECT_EQ(call.failure(), kTimedOut);
  EXPECT_LE(call.taken(), kLimit + kSlack);
}

// An output that is most of a large body stays where it is.
HCY_TEST_IN_OWN_PROCESS(CallMemory, ofALargeOutputIsThatOfTheBody) {
  constexpr std::size_t mebibytes = 24;
  constexpr std::size_t count = mebibytes * kMebibyte / sizeof(double);
  const auto head = [](const std::string& tag, std::size_t size) {
    std::uint8_t bytes[10];
    return tag + std::string(bytes, writeVarint(size, bytes));
  };
  const std::string elements = head("\x0A", count * sizeof(double));
  const std::string part = head("\xCA\x01", elements.size() + count * sizeof(double)) + elements;
  const std::string array = "\x08\x09" + head("\x12", 5) + head("\x01", count) + part;
  const std::string body = head("\x0A", array.size() + count * sizeof(double)) + array;
  std::string piece;
  for (std::size_t i = 0; i < kMebibyte; i += 8) piece += std::string("\0\0\0\0\0\0\x04\x40", 8);
  const std::size_t size = body.size() + mebibytes * kMebibyte;
  const ScriptServer server(
      {Connection{readRequest(),
                  send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n"),
                  send(body), sendRepeated(piece, mebibytes * kMebibyte), waitForClose()}});
  MeasuredCall call;
  EXPECT_EQ(call.feval(server, 1), 0) << call.failure().text;
  EXPECT_LE(call.taken(), size + kSlack);
  const double* const data = hcyGetPr(call.output());
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(std::count(data, data + count, 2.5), static_cast<std::ptrdiff_t>(count));
}

HCY_TEST_IN_OWN_PROCESS(CallMemory, ofTheBodyOfAFailureIsLittle) {
  const ScriptServer server(
      {Connection{readRequest(), sendHead("404 Not Found"), sendChunks(300 * kMebibyte),
                  send(chunk("")), waitForClose()}});
  MeasuredCall call;
  EXPECT_EQ(call.feval(server, 1), 1);
  EXPECT_EQ(call.failure(), httpFailure(404, "Not Found\r\n"));
  EXPECT_LE(call.taken(), kSlack);
}

HCY_TEST_IN_OWN_PROCESS(CallMemory, ofTheEndlessBodyOfAFailureIsLittleUntilTheTimeOut) {
  const ScriptServer server(
      {Connection{readRequest(), sendHead("404 Not Found"), sendChunks(kEndless)}});
  MeasuredCall call(kDefaultLimit, 1);
  EXPECT_EQ(call.feval(server, 1), 1);
  EXPECT_EQ(call.failure(), kTimedOut);
  EXPECT_LE(call.taken(), kSlack);
}

}  // namespace
}  // namespace hcy::abi
