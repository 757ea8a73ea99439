// SPDX-License-Identifier: Apache-2.0

#include "session.h"

#include <boost/asio/dispatch.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "http_replies.h"

namespace hcy::server {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using beast::error_code;
using std::chrono::seconds;

using PlainStream = beast::tcp_stream;
using TlsStream = beast::ssl_stream<beast::tcp_stream>;

// How much is read at once; Beast reads as much as the buffer has room for.
constexpr std::size_t kReadSize = std::size_t{64} << 10;
constexpr std::size_t kLongestHeader = std::size_t{16} << 10;
constexpr seconds kHandshakeTime{30};
constexpr seconds kFarewellTime{5};
constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";

template <class Stream>
class Session : public std::enable_shared_from_this<Session<Stream>> {
 public:
  template <class... StreamArguments>
  explicit Session(std::uint64_t maxBody, StreamArguments&&... streamArguments)
      : stream_(std::forward<StreamArguments>(streamArguments)...),
        replyTimer_(stream_.get_executor()),
        maxBody_(maxBody) {}

  void start() {
    asio::dispatch(stream_.get_executor(), [self = this->shared_from_this()] { self->begin(); });
  }

 private:
  void begin() {
    buffer_.reserve(kReadSize);
    if constexpr (std::is_same_v<Stream, TlsStream>) {
      tcp().expires_after(kHandshakeTime);
      stream_.async_handshake(asio::ssl::stream_base::server,
                              [self = this->shared_from_this()](error_code ec) {
                                if (ec) return;
                                self->tcp().expires_never();
                                self->readHeader();
                              });
    } else {
      readHeader();
    }
  }

  void readHeader() {
    parser_.emplace();
    parser_->header_limit(kLongestHeader);
    parser_->body_limit(maxBody_);
    http::async_read_header(stream_, buffer_, *parser_,
                            [self = this->shared_from_this()](error_code ec, std::size_t) {
                              ec ? self->refuse(ec) : self->beginBody();
                            });
  }

  void beginBody() {
    if (std::optional<Reply> refusal = refusalOfHeader(parser_->get())) {
      return write(std::move(*refusal));
    }
    const bool waits = beast::iequals(parser_->get()[http::field::expect], "100-continue");
    if (!waits || parser_->is_done()) return readBody();
    asio::async_write(stream_, asio::buffer(kContinue),
                      [self = this->shared_from_this()](error_code ec, std::size_t) {
                        if (!ec) self->readBody();
                      });
  }

  void readBody() {
    http::async_read(stream_, buffer_, *parser_,
                     [self = this->shared_from_this()](error_code ec, std::size_t) {
                       ec ? self->refuse(ec) : self->answer();
                     });
  }

  void answer() {
    Reply reply = replyTo(parser_->get());
    if (reply.delay == decltype(reply.delay)::zero()) return write(std::move(reply));
    replyTimer_.expires_after(reply.delay);
    reply_.emplace(std::move(reply));
    replyTimer_.async_wait([self = this->shared_from_this()](error_code ec) {
      if (!ec) self->writeReply();
    });
  }

  void refuse(error_code ec) {
    using http::status;
    if (ec == http::error::end_of_stream) return sayFarewell();
    if (ec == http::error::body_limit) {
      return write(refusal(status::payload_too_large, "The body is too long.\n"));
    }
    if (ec == http::error::header_limit) {
      return write(refusal(status::request_header_fields_too_large, "The header is too long.\n"));
    }
    if (ec == boost::system::errc::not_enough_memory) {
      return write(refusal(status::internal_server_error, "Not enough memory.\n"));
    }
    if (ec.category() == make_error_code(http::error::bad_method).category()) {
      return write(
          refusal(status::bad_request, "The request is malformed: " + ec.message() + "\n"));
    }
    // Else the connection is lost, and there is nobody to tell.
  }

  void write(Reply reply) {
    reply_.emplace(std::move(reply));
    writeReply();
  }

  void writeReply() {
    http::async_write(stream_, reply_->message,
                      [self = this->shared_from_this()](error_code ec, std::size_t) {
                        if (ec) return;
                        const bool keepAlive = self->reply_->message.keep_alive();
                        self->reply_.reset();
                        keepAlive ? self->readHeader() : self->sayFarewell();
                      });
  }

  void sayFarewell() {
    tcp().expires_after(kFarewellTime);
    if constexpr (std::is_same_v<Stream, TlsStream>) {
      stream_.async_shutdown([self = this->shared_from_this()](error_code) { self->endSending(); });
    } else {
      endSending();
    }
  }

  // Closing a socket with unread input resets the connection, and the client may lose the reply
  // before it has read it. So what still comes is read, until the client ends or time is up.
  void endSending() {
    error_code ignored;
    tcp().socket().shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
    discardInput();
  }

  void discardInput() {
    buffer_.clear();
    tcp().async_read_some(buffer_.prepare(kReadSize),
                          [self = this->shared_from_this()](error_code ec, std::size_t) {
                            if (!ec) self->discardInput();
                          });
  }

  beast::tcp_stream& tcp() { return beast::get_lowest_layer(stream_); }

  Stream stream_;
  asio::steady_timer replyTimer_;
  const std::uint64_t maxBody_;
  beast::flat_buffer buffer_;
  std::optional<http::request_parser<ByteBody>> parser_;
  std::optional<Reply> reply_;
};

}  // namespace

void startSession(asio::ip::tcp::socket socket, std::uint64_t maxBody) {
  std::make_shared<Session<PlainStream>>(maxBody, std::move(socket))->start();
}

void startTlsSession(asio::ip::tcp::socket socket, asio::ssl::context& tls, std::uint64_t maxBody) {
  std::make_shared<Session<TlsStream>>(maxBody, std::move(socket), tls)->start();
}

}  // namespace hcy::server
