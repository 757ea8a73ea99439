// SPDX-License-Identifier: Apache-2.0
//
// Messages that no honest client sends. Each is answered, and the server lives on: its exit status
// is checked when it stops.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "calls.h"
#include "http_client.h"
#include "support/pki.h"

namespace hcy::test {
namespace {

constexpr std::uint64_t kHuge = std::uint64_t{1} << 63;

TEST(HostileMessages, LieAboutDimensions) {
  const LocalServer server;
  for (const Dimensions& dimensions :
       {Dimensions{kHuge, 2}, Dimensions{kHuge, kHuge},
        Dimensions{std::uint64_t{1} << 32, std::uint64_t{1} << 32}, Dimensions{2, 2}, Dimensions{},
        Dimensions{1}, Dimensions{~std::uint64_t{0}, 1}, Dimensions(1000, kHuge)}) {
    const auto liar = doubles(dimensions, {1});
    for (const char* path : {"/math/plus", "/linalg/solve", "/stats/linear_fit"}) {
      EXPECT_EQ(errorOf(server, path, 1, {liar, liar}), "halcyon:argument:size") << path;
    }
    EXPECT_EQ(errorOf(server, "/stats/describe", 1, {liar}), "halcyon:argument:size");
    auto text = chars(u"a");
    *text.mutable_dimension() = liar.dimension();
    EXPECT_EQ(errorOf(server, "/text/upper", 1, {text}), "halcyon:argument:size");
    EXPECT_EQ(errorOf(server, "/text/split", 1, {text}), "halcyon:argument:size");
  }
}

TEST(HostileMessages, SendElementsBeyondTheDimensions) {
  const LocalServer server;
  const auto longer = doubles({0, 1}, {1});
  const auto sum = outputs(server, "/math/plus", 1, {longer, longer})[0];
  expectWellFormed(sum);
  EXPECT_EQ(dimensionsOf(sum), (Dimensions{0, 1}));
  auto text = chars(u"ab");
  text.set_dimension(1, 1);
  EXPECT_EQ(textOf(outputs(server, "/text/upper", 1, {text})[0]), u"A");
}

TEST(HostileMessages, OverflowTheNumberOfElements) {
  const LocalServer server;
  // Modulo 2^64 the products are 0, the number of elements that are held.
  for (const Dimensions& dimensions : {Dimensions{kHuge, 2}, Dimensions{4, kHuge, 5}}) {
    const auto liar = doubles(dimensions, {});
    EXPECT_EQ(errorOf(server, "/math/plus", 1, {liar, liar}), "halcyon:argument:size");
  }
}

TEST(HostileMessages, HideHugeExtentsBesideAZero) {
  const LocalServer server;
  const auto flat = doubles({0, kHuge}, {}), tall = doubles({kHuge, 0}, {});
  EXPECT_EQ(errorOf(server, "/math/plus", 1, {flat, flat}), "halcyon:argument:size");
  EXPECT_EQ(errorOf(server, "/linalg/svd", 3, {tall}), "halcyon:argument:size");
  EXPECT_EQ(errorOf(server, "/linalg/solve", 1, {flat, tall}), "halcyon:argument:size");
  EXPECT_EQ(errorOf(server, "/stats/describe", 1, {tall}), "halcyon:argument:size");
  EXPECT_EQ(errorOf(server, "/sparse/multiply", 1, {sparse({1, kHuge}, {0}, {}, {}), tall}),
            "halcyon:argument:size");
  // The product of 2^31 - 1 rows and as many columns is too much for any reply.
  const auto wide = doubles({0, 2147483647}, {});
  const auto column = sparse({2147483647, 0}, {0}, {}, {});
  EXPECT_EQ(errorOf(server, "/sparse/multiply", 1, {column, wide}), "halcyon:result:size");
}

TEST(HostileMessages, AskForFarMoreThanTheySend) {
  const LocalServer server;
  const auto product = [&server](std::uint64_t rows) {
    return errorOf(server, "/sparse/multiply", 1,
                   {sparse({rows, 0}, {0}, {}, {}), doubles({0, 1}, {})});
  };
  // 8 bytes each.
  EXPECT_EQ(product(8'000'000), "no error");
  EXPECT_EQ(product(9'000'000), "halcyon:result:size");
  // A long reply to a long request is none.
  const auto result =
      call(server, "/demo/fail", 0, {chars(u"a"), chars(std::u16string(5'000'000, u'\u20ac'))});
  EXPECT_EQ(result.error().message().size(), 15'000'000U);
}

TEST(HostileMessages, LieAboutTheImaginaryPart) {
  const LocalServer server;
  const auto liar = complexDoubles({1, 2}, {1, 2}, {3});
  EXPECT_EQ(errorOf(server, "/math/plus", 1, {liar, scalar(1)}), "halcyon:argument:size");
  EXPECT_EQ(errorOf(server, "/math/plus", 1, {scalar(1), liar}), "halcyon:argument:size");
}

TEST(HostileMessages, LieAboutTheClass) {
  const LocalServer server;
  VORTEN_Array untyped = scalar(1);
  untyped.clear_type();
  EXPECT_EQ(errorOf(server, "/math/plus", 1, {untyped, untyped}), "halcyon:argument:class");
  VORTEN_Array unknown = scalar(1);
  unknown.set_type(static_cast<VORTEN_Array::QXType>(77));
  EXPECT_EQ(errorOf(server, "/math/plus", 1, {unknown, unknown}), "halcyon:argument:class");
  VORTEN_Array other = chars(u"a");
  other.set_type(VORTEN_Array::DOUBLE);
  EXPECT_EQ(errorOf(server, "/math/plus", 1, {other, other}), "halcyon:argument:size");
  VORTEN_Array rows = scalar(1);
  rows.set_memorylayout(VORTEN_Array::ROW_MAJOR);
  EXPECT_EQ(errorOf(server, "/math/plus", 1, {rows, rows}), "halcyon:argument:value");
}

TEST(HostileMessages, NestDeeply) {
  const LocalServer server;
  VORTEN_Array cell;
  for (int depth = 0; depth < 40; ++depth) {
    VORTEN_Array outer;
    outer.mutable_cell()->add_elements()->Swap(&cell);
    cell.Swap(&outer);
  }
  EXPECT_EQ(outputs(server, "/echo", 1, {cell})[0].SerializeAsString(), cell.SerializeAsString());
  // Begins groups of an unknown field, one in another, and ends none.
  EXPECT_EQ(sendRequest(server.url("/echo"), std::string(1'000'000, '\x1b')).status, 400);
}

TEST(HostileMessages, TakeMoreMemoryThanThereIs) {
  const LocalServer server({"--max-body", "2000000"});
  // Each pair of bytes is an array.
  std::string arrays;
  for (int i = 0; i < 1'000'000; ++i) arrays.append("\x12\x00", 2);
  EXPECT_EQ(sendRequest(server.url("/echo"), arrays).status, 503);
  // So is each blank of a text.
  const auto blanks = chars(std::u16string(900'000, u' '));
  EXPECT_EQ(errorOf(server, "/text/split", 1, {blanks}), "halcyon:server:memory");
  EXPECT_EQ(outputs(server, "/echo", 1, {blanks})[0].qxchar().elements_size(), 900'000);
}

TEST(HostileMessages, AreRandom) {
  const LocalServer server;
  std::mt19937 random(1);
  const std::string honest = serializedParams(
      1, {doubles({2, 2}, {1, 2, 3, 4}), sparse({2, 3}, {0, 1, 2, 3}, {1, 0, 1}, {7, 5, 2})});
  const char* paths[] = {"/echo",       "/math/plus",      "/linalg/svd", "/sparse/multiply",
                         "/text/split", "/stats/describe", "/demo/fail"};
  for (int i = 0; i < 300; ++i) {
    std::string body = honest;
    for (int change = 0; change < 4; ++change) {
      body[random() % body.size()] = static_cast<char>(random());
    }
    body.resize(body.size() - random() % 4);
    const HttpReply reply = sendRequest(server.url(paths[random() % std::size(paths)]), body);
    EXPECT_TRUE(reply.status == 200 || reply.status == 400) << reply.status << reply.failure;
  }
}

// All that looks into messages looks into random ones.
TEST(HostileMessages, AreRandomForCommandsRecordingsAndTheLog) {
  const TestDirectory directory;
  const std::string calls = directory.file("calls");
  const std::string command = "f=while read -r line; do echo '{\"outputs\":[1]}'; done";
  const LocalServer server({"--function", command, "--log", directory.file("log"), "--log-values"});
  const LocalServer recorder({"--upstream", server.url(), "--record", calls, "--replay", calls});
  const LocalServer replayer({"--replay", calls});
  std::mt19937 random(2);
  std::vector<std::string> honest;
  for (const auto& entry : std::filesystem::directory_iterator(HCY_GOLDEN_FILES)) {
    if (entry.path().string().ends_with(".request.bin")) {
      honest.push_back(contentsOf(entry.path().string()));
    }
  }
  std::ranges::sort(honest);
  for (int i = 0; i < 300; ++i) {
    std::string body = honest[random() % honest.size()];
    for (int change = 0; change < 3 && !body.empty(); ++change) {
      body[random() % body.size()] = static_cast<char>(random());
    }
    for (const LocalServer* one : {&recorder, &replayer}) {
      const HttpReply reply = sendRequest(one->url(i % 2 == 0 ? "/f" : "/echo"), body);
      EXPECT_NE(reply.status, 0) << reply.failure;
      EXPECT_LT(reply.status, 500) << reply.body;
    }
  }
  EXPECT_EQ(sendRequest(server.url("/echo"), "").status, 200);
}

}  // namespace
}  // namespace hcy::test
