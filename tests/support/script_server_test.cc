// SPDX-License-Identifier: Apache-2.0
#include "script_server.h"

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace hcy::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// A client that shows what arrives, byte by byte and end by end.
class RawClient {
 public:
  explicit RawClient(const ScriptServer& server) : socket_(connectTo(server.port())) {}

  bool write(std::string_view bytes) {
    return ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
  }

  // What one recv() yields; empty at the end, whose errno is in `endedWith` (0: orderly).
  std::string readSome() {
    std::string bytes(65536, '\0');
    const ssize_t count = ::recv(socket_.get(), bytes.data(), bytes.size(), 0);
    endedWith = count < 0 ? errno : 0;
    bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return bytes;
  }

  std::string readAll() {
    std::string all;
    for (std::string some = readSome(); !some.empty(); some = readSome()) all += some;
    return all;
  }

  std::string readExactly(std::size_t count) {
    std::string bytes(count, '\0');
    const ssize_t received = ::recv(socket_.get(), bytes.data(), count, MSG_WAITALL);
    bytes.resize(received < 0 ? 0 : static_cast<std::size_t>(received));
    return bytes;
  }

  bool hearsSomethingWithin(std::chrono::milliseconds time) {
    pollfd watched{socket_.get(), POLLIN | POLLRDHUP, 0};
    return ::poll(&watched, 1, static_cast<int>(time.count())) != 0;
  }

  void halfClose() { ::shutdown(socket_.get(), SHUT_WR); }

  int endedWith = 0;

 private:
  FileDescriptor socket_;
};

// An HTTP client that keeps its connection for the next request.
class HttpClient {
 public:
  CURLcode get(const std::string& url) { return perform(url, nullptr); }
  CURLcode post(const std::string& url, const std::string& body) { return perform(url, &body); }

  long status() {
    long code = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &code);
    return code;
  }
  std::size_t bytesReceived = 0;

 private:
  CURLcode perform(const std::string& url, const std::string* body) {
    bytesReceived = 0;
    curl_easy_reset(handle_.get());
    curl_easy_setopt(handle_.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle_.get(), CURLOPT_NOPROXY, "*");
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEFUNCTION, &HttpClient::count);
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEDATA, this);
    if (body != nullptr) {
      curl_easy_setopt(handle_.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(body->size()));
      curl_easy_setopt(handle_.get(), CURLOPT_POSTFIELDS, body->c_str());
    }
    return curl_easy_perform(handle_.get());
  }

  static std::size_t count(char*, std::size_t, std::size_t size, void* self) {
    static_cast<HttpClient*>(self)->bytesReceived += size;
    return size;
  }

  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle_{curl_easy_init(), curl_easy_cleanup};
};

const std::string kGet = "GET / HTTP/1.1\r\n\r\n";
const std::string kOk = httpReply(200, "OK", "fine");

TEST(HttpReply, StatesTheLengthAndTheExtraHeaders) {
  EXPECT_EQ(httpReply(404, "Not Found", "gone", {"X-A: 1", "X-B: 2"}),
            "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\nX-A: 1\r\nX-B: 2\r\n\r\ngone");
}

TEST(ScriptServer, AnswersRequestsOfOneConnectionAndRecordsThem) {
  ScriptServer server({Connection{readRequest(), send(kOk), readRequest(),
                                  send(httpReply(503, "Busy", "")), waitForClose()}});
  {
    HttpClient client;
    EXPECT_EQ(client.post(server.url("/f"), "payload"), CURLE_OK);
    EXPECT_EQ(client.status(), 200);
    EXPECT_EQ(client.bytesReceived, 4U);
    EXPECT_EQ(client.get(server.url("/g")), CURLE_OK);
    EXPECT_EQ(client.status(), 503);
  }
  ASSERT_TRUE(server.waitForEnded(1));
  const std::vector<RawRequest> requests = server.requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_TRUE(requests[0].head.starts_with("POST /f HTTP/1.1\r\n"));
  EXPECT_TRUE(requests[0].head.ends_with("\r\n\r\n"));
  EXPECT_EQ(requests[0].header("content-LENGTH"), "7");
  EXPECT_EQ(requests[0].header("Absent"), std::nullopt);
  EXPECT_EQ(requests[0].body, "payload");
  EXPECT_TRUE(requests[1].head.starts_with("GET /g HTTP/1.1\r\n"));
  EXPECT_EQ(requests[1].connection, 0U);
  EXPECT_EQ(server.connections(), 1U);
  EXPECT_EQ(server.problems(), std::vector<std::string>());
}

TEST(ScriptServer, ReadsChunkedAndPipelinedRequests) {
  ScriptServer server({Connection{readRequest(), readRequest(), send(kOk)}});
  RawClient client(server);
  client.write("POST /f HTTP/1.1\r\ntransfer-encoding: Chunked\r\n\r\n");
  client.write("3;x=y\r\nabc\r\nA\r\n0123456789\r\n0\r\nTrailer: t\r\n\r\n" + kGet);
  EXPECT_EQ(client.readAll(), kOk);
  ASSERT_EQ(server.requests().size(), 2U);
  EXPECT_EQ(server.requests()[0].body, "abc0123456789");
  EXPECT_EQ(server.requests()[1].head, kGet);
}

TEST(ScriptServer, SpeaksBetweenHeadAndBody) {
  ScriptServer server({Connection{readRequestHead(), send("HTTP/1.1 100 Continue\r\n\r\n"),
                                  readRequestBody(), send(kOk)}});
  RawClient client(server);
  client.write("PUT / HTTP/1.1\r\nContent-Length: 3\r\n\r\n");
  ASSERT_TRUE(server.waitForRequests(1));
  EXPECT_EQ(server.requests()[0].body, "");
  EXPECT_EQ(client.readExactly(25), "HTTP/1.1 100 Continue\r\n\r\n");
  client.write("abc");
  EXPECT_EQ(client.readAll(), kOk);
  EXPECT_EQ(server.requests()[0].body, "abc");
}

TEST(ScriptServer, RepeatsTheLastScriptOnFurtherConnections) {
  ScriptServer server({Connection{send("first")}, Connection{send("last")}});
  EXPECT_EQ(RawClient(server).readAll(), "first");
  EXPECT_EQ(RawClient(server).readAll(), "last");
  EXPECT_EQ(RawClient(server).readAll(), "last");
  EXPECT_TRUE(server.waitForConnections(3));
  EXPECT_FALSE(server.waitForConnections(4, 1ms));
}

TEST(ScriptServer, RefusesFurtherConnections) {
  ScriptServer server({Connection{send("only")}}, AfterScripts::refuse);
  EXPECT_EQ(RawClient(server).readAll(), "only");
  EXPECT_EQ(HttpClient().get(server.url()), CURLE_COULDNT_CONNECT);
}

TEST(ScriptServer, NeedsAScript) {
  EXPECT_THROW(ScriptServer(std::vector<Connection>()), std::invalid_argument);
}

TEST(ScriptServer, ServesConnectionsSideBySide) {
  ScriptServer server({Connection{stall()}, Connection{replyToEach(kOk)}});
  RawClient silent(server);
  ASSERT_TRUE(server.waitForConnections(1));
  HttpClient one;
  HttpClient other;
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(one.get(server.url()), CURLE_OK);
    EXPECT_EQ(other.get(server.url()), CURLE_OK);
  }
  EXPECT_EQ(server.connections(), 3U);
  EXPECT_EQ(server.requests().size(), 6U);
}

TEST(ScriptServer, ResetsAfterDeliveringWhatWasSent) {
  constexpr std::size_t kMany = 8'000'000;  // more than the socket buffers hold
  ScriptServer server({Connection{send("HTTP/1.1 200"), sendRepeated("ab", kMany), reset()}});
  RawClient client(server);
  EXPECT_EQ(client.readAll().size(), 12 + kMany);
  EXPECT_EQ(client.endedWith, ECONNRESET);
  EXPECT_TRUE(server.waitForEnded(1));
  EXPECT_EQ(server.problems(), std::vector<std::string>());
}

TEST(ScriptServer, ResetsInsteadOfReplying) {
  ScriptServer server({Connection{readRequest(), reset()}});
  EXPECT_EQ(HttpClient().get(server.url()), CURLE_RECV_ERROR);
}

TEST(ScriptServer, ClosesInOrderWithUnreadBytesAtHand) {
  ScriptServer server({Connection{readRequestHead(), send("bye"), close()}});
  RawClient client(server);
  client.write("PUT / HTTP/1.1\r\nContent-Length: 99\r\n\r\npart of the body");
  EXPECT_EQ(client.readAll(), "bye");
  EXPECT_EQ(client.endedWith, 0);
}

TEST(ScriptServer, HearsTheClientAfterAHalfClose) {
  ScriptServer server({Connection{send("bye"), halfClose(), readRequest()}});
  RawClient client(server);
  EXPECT_EQ(client.readAll(), "bye");
  EXPECT_EQ(client.endedWith, 0);
  EXPECT_TRUE(client.write(kGet));
  EXPECT_TRUE(server.waitForRequests(1));
}

TEST(ScriptServer, DripsPieceByPiece) {
  ScriptServer server({Connection{readRequest(), drip("abcdefgh", 3, 30ms)}});
  RawClient client(server);
  const auto start = Clock::now();
  client.write(kGet);
  std::string received = client.readSome();
  EXPECT_TRUE(received == "abc" || received == "abcdef" || received == "abcdefgh") << received;
  EXPECT_EQ(received += client.readAll(), "abcdefgh");
  EXPECT_GE(Clock::now() - start, 60ms);  // an interval between every two pieces
}

TEST(ScriptServer, SendsMoreThanFitsInTheBuffers) {
  constexpr std::size_t kSize = 300'000'001;
  ScriptServer server(
      {Connection{readRequest(),
                  send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(kSize) + "\r\n\r\n"),
                  sendRepeated("abc", kSize), waitForClose()}});
  {
    HttpClient client;
    EXPECT_EQ(client.get(server.url()), CURLE_OK);
    EXPECT_EQ(client.bytesReceived, kSize);
  }
  EXPECT_TRUE(server.waitForEnded(1));
  EXPECT_EQ(server.problems(), std::vector<std::string>());
}

TEST(ScriptServer, RepeatsAPatternWithoutASeam) {
  ScriptServer server({Connection{sendRepeated("0123456", 200'000)}});
  const std::string received = RawClient(server).readAll();
  ASSERT_EQ(received.size(), 200'000U);
  for (std::size_t i = 0; i < received.size(); ++i) {
    ASSERT_EQ(received[i], static_cast<char>('0' + i % 7)) << "at " << i;
  }
}

TEST(ScriptServer, StallsUntilTheClientCloses) {
  ScriptServer server({Connection{readRequest(), stall(), send("too late")}});
  RawClient client(server);
  client.write(kGet + "unread");
  EXPECT_TRUE(server.waitForRequests(1));
  EXPECT_FALSE(client.hearsSomethingWithin(50ms));
  EXPECT_FALSE(server.waitForEnded(1, 1ms));
  client.halfClose();
  EXPECT_EQ(client.readSome(), "too late");
}

TEST(ScriptServer, RecordsWhatCouldNotBeCarriedOut) {
  ScriptServer server({Connection{readRequest(), sendRepeated("x", 1'000'000'000)},
                       Connection{readRequest()}, Connection{close(), send("x")}});
  {
    RawClient client(server);
    client.write(kGet);
    client.readSome();
  }
  ASSERT_TRUE(server.waitForEnded(1));
  RawClient(server).write("GET /");
  ASSERT_TRUE(server.waitForEnded(2));
  RawClient(server).readAll();
  ASSERT_TRUE(server.waitForEnded(3));
  const std::vector<std::string> problems = server.problems();
  ASSERT_EQ(problems.size(), 3U);
  EXPECT_TRUE(problems[0].starts_with("connection 0, step 1 (sendRepeated): ")) << problems[0];
  EXPECT_EQ(problems[1],
            "connection 1, step 0 (readRequest): the peer closed the connection with 5 bytes of "
            "an unfinished read received");
  EXPECT_EQ(problems[2], "connection 2, step 1 (send): an earlier step has closed the connection");
}

TEST(ScriptServer, RecordsMalformedSizes) {
  ScriptServer server({Connection{readRequest()}});
  RawClient client(server);
  client.write("PUT / HTTP/1.1\r\nContent-Length: 3x\r\n\r\nabc");
  ASSERT_TRUE(server.waitForEnded(1));
  ASSERT_EQ(server.problems().size(), 1U);
}

TEST(ScriptServer, EndsAtOnceWhateverItsScriptsAreDoing) {
  const std::vector<Connection> scripts = {
      Connection{readRequest()},
      Connection{readRequestHead(), readRequestBody()},
      Connection{sendRepeated("x", 1'000'000'000)},
      Connection{send("x"), sendRepeated("x", 20'000'000), reset()},
      Connection{drip("abc", 1, 1h)},
      Connection{stall()},
      Connection{waitForClose()},
      Connection{replyToEach(kOk)},
  };
  for (const Connection& script : scripts) {
    std::vector<std::unique_ptr<RawClient>> clients;
    const auto start = Clock::now();
    {
      ScriptServer server({script});
      for (int i = 0; i < 3; ++i) clients.push_back(std::make_unique<RawClient>(server));
      clients.front()->write("PUT / HTTP/1.1\r\nContent-Length: 99\r\n\r\n");
      ASSERT_TRUE(server.waitForConnections(3));
    }
    EXPECT_LT(Clock::now() - start, 5s) << script.steps.front().name;
  }
}

TEST(ScriptServer, EndsAtOnceWhileTheClientKeepsReading) {
  std::thread reader;
  {
    ScriptServer server({Connection{sendRepeated("x", std::size_t{1} << 50)}});
    reader = std::thread([client = RawClient(server)]() mutable {
      while (!client.readSome().empty()) {
      }
    });
    EXPECT_TRUE(server.waitForConnections(1));
  }
  reader.join();
}

}  // namespace
}  // namespace hcy::test
