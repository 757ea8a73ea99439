// SPDX-License-Identifier: Apache-2.0

#include "session.h"

#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/serializer.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "http_replies.h"
#include "partial_reply.h"
#include "transfer_deadline.h"

namespace hcy::server {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using beast::error_code;

using PlainStream = beast::tcp_stream;
using TlsStream = beast::ssl_stream<beast::tcp_stream>;

// How much is read at once; Beast reads as much as the buffer has room for. A line of a request
// that does not fit is too long.
constexpr std::size_t kReadSize = std::size_t{64} << 10;
constexpr std::size_t kLongestHeader = std::size_t{16} << 10;
// The size of a chunk, in hexadecimal digits, and the two line ends of a chunk.
constexpr std::size_t kFrameOfChunk = 16 + 4;
constexpr std::chrono::seconds kFarewellTime{5};
constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";

template <class Stream>
class Session : public std::enable_shared_from_this<Session<Stream>> {
 public:
  template <class... StreamArguments>
  explicit Session(const SessionSurroundings& surroundings, StreamArguments&&... streamArguments)
      : stream_(std::forward<StreamArguments>(streamArguments)...),
        replyTimer_(stream_.get_executor()),
        deadline_(stream_.get_executor()),
        surroundings_(surroundings) {}

  void start() {
    const auto close = [executor = stream_.get_executor(), session = this->weak_from_this()] {
      asio::post(executor, [session] {
        if (const auto self = session.lock()) self->tcp().close();
      });
    };
    place_.emplace(surroundings_.connections, close);
    deadline_.watch(this->weak_from_this(), [this] { tcp().close(); });
    asio::dispatch(stream_.get_executor(), [self = this->shared_from_this()] { self->begin(); });
  }

 private:
  void begin() {
    buffer_.reserve(kReadSize);
    beginTransfer(surroundings_.options.requestSeconds);
    if constexpr (std::is_same_v<Stream, TlsStream>) {
      stream_.async_handshake(asio::ssl::stream_base::server,
                              [self = this->shared_from_this()](error_code ec) {
                                if (!ec) self->readFirstHeader();
                              });
    } else {
      readFirstHeader();
    }
  }

  void readFirstHeader() {
    beginTransfer(surroundings_.options.requestSeconds);
    readHeader();
  }

  // Between requests a client may take its time.
  void awaitNextRequest() {
    deadline_.clear();
    place_->awaitClient();
    if (buffer_.size() > 0) return readFirstHeader();
    stream_.async_read_some(buffer_.prepare(kReadSize),
                            [self = this->shared_from_this()](error_code ec, std::size_t count) {
                              if (ec) return self->sayFarewell();
                              self->buffer_.commit(count);
                              self->readFirstHeader();
                            });
  }

  void readHeader() {
    parser_.emplace();
    parser_->header_limit(kLongestHeader);
    parser_->body_limit(surroundings_.options.maxBody);
    chunks_ = 0;
    bodyBytes_ = 0;
    parser_->on_chunk_header(countChunk_);
    http::async_read_header(stream_, buffer_, *parser_,
                            [self = this->shared_from_this()](error_code ec, std::size_t count) {
                              if (!ec && count > kLongestHeader) ec = http::error::header_limit;
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
    if (parser_->is_done()) return answer();
    http::async_read_some(stream_, buffer_, *parser_,
                          [self = this->shared_from_this()](error_code ec, std::size_t count) {
                            self->bodyBytes_ += count;
                            if (!ec && self->isMostlyFrame()) ec = http::error::header_limit;
                            if (ec) return self->refuse(ec);
                            self->continueTransfer(count);
                            self->readBody();
                          });
  }

  // Whether extensions of chunks and trailers take more than a header may.
  bool isMostlyFrame() const {
    const std::size_t frame = bodyBytes_ - parser_->get().body().size();
    return frame > kLongestHeader + kFrameOfChunk * chunks_;
  }

  void answer() {
    deadline_.clear();
    place_->keepClientWaiting();
    surroundings_.callThreads.answer(
        parser_->get(), [self = this->shared_from_this()](Reply reply) {
          self->reply_.emplace(std::move(reply));
          asio::dispatch(self->stream_.get_executor(), [self] { self->deliver(); });
        });
  }

  void deliver() {
    if (reply_->delay == decltype(reply_->delay)::zero()) return writeReply();
    replyTimer_.expires_after(reply_->delay);
    replyTimer_.async_wait([self = this->shared_from_this()](error_code ec) {
      if (!ec) self->writeReply();
    });
  }

  void refuse(error_code ec) {
    if (ec == http::error::end_of_stream) return sayFarewell();
    if (std::optional<Reply> reply = refusalOf(ec)) return write(std::move(*reply));
    // Else the connection is lost, and there is nobody to tell.
  }

  // A refusal, for which the request may not have been read.
  void write(Reply reply) {
    surroundings_.callThreads.noteRefusal(parser_->get(), reply);
    reply_.emplace(std::move(reply));
    writeReply();
  }

  void writeReply() {
    // Nothing of the request is needed while the reply waits to be read.
    parser_.reset();
    reply_->place.reset();
    beginTransfer(surroundings_.options.replySeconds);
    switch (reply_->delivery.way) {
      case Delivery::Way::kWhole:
        break;
      case Delivery::Way::kReset:
        return reset();
      case Delivery::Way::kClosed:
        return sayFarewell();
      case Delivery::Way::kTruncated:
      case Delivery::Way::kDripped:
        return writeHead();
    }
    serializer_.emplace(reply_->message);
    writeSome();
  }

  void reset() {
    error_code ignored;
    tcp().socket().set_option(asio::socket_base::linger(true, 0), ignored);
    tcp().close();
  }

  void writeHead() {
    partial_.emplace(*reply_);
    asio::async_write(stream_, asio::buffer(partial_->head()),
                      [self = this->shared_from_this()](error_code ec, std::size_t) {
                        if (!ec) self->writePartOfBody();
                      });
  }

  void writePartOfBody() {
    if (partial_->isWhole()) return endReply();
    if (partial_->isCut()) return sayFarewell();
    const std::string_view due = partial_->due();
    if (due.empty()) return awaitDrop();
    asio::async_write(stream_, asio::buffer(due.data(), due.size()),
                      [self = this->shared_from_this()](error_code ec, std::size_t count) {
                        if (ec) return;
                        self->partial_->countSent(count);
                        self->writePartOfBody();
                      });
  }

  // The server is slow here, not the client.
  void awaitDrop() {
    deadline_.clear();
    replyTimer_.expires_at(partial_->nextTime());
    replyTimer_.async_wait([self = this->shared_from_this()](error_code ec) {
      if (ec) return;
      self->beginTransfer(self->surroundings_.options.replySeconds);
      self->writePartOfBody();
    });
  }

  void writeSome() {
    http::async_write_some(stream_, *serializer_,
                           [self = this->shared_from_this()](error_code ec, std::size_t count) {
                             if (ec) return;
                             self->continueTransfer(count);
                             self->serializer_->is_done() ? self->endReply() : self->writeSome();
                           });
  }

  void endReply() {
    const bool keepAlive =
        reply_->message.keep_alive() && reply_->delivery.way != Delivery::Way::kTruncated;
    serializer_.reset();
    partial_.reset();
    reply_.reset();
    keepAlive ? awaitNextRequest() : sayFarewell();
  }

  void sayFarewell() {
    deadline_.setIn(kFarewellTime);
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

  void beginTransfer(double patience) {
    place_->awaitClient();
    deadline_.beginTransfer(patience);
  }

  void continueTransfer(std::size_t count) {
    place_->awaitClient();
    deadline_.continueTransfer(count);
  }

  beast::tcp_stream& tcp() { return beast::get_lowest_layer(stream_); }

  Stream stream_;
  asio::steady_timer replyTimer_;
  TransferDeadline deadline_;
  const SessionSurroundings surroundings_;
  std::optional<Connections::Place> place_;
  beast::flat_buffer buffer_{kReadSize};
  std::optional<http::request_parser<ByteBody>> parser_;
  std::size_t bodyBytes_ = 0;
  std::size_t chunks_ = 0;
  std::function<void(std::uint64_t, beast::string_view, error_code&)> countChunk_ =
      [this](std::uint64_t, beast::string_view, error_code&) { ++chunks_; };
  std::optional<Reply> reply_;
  std::optional<http::response_serializer<ByteBody>> serializer_;
  std::optional<PartialReply> partial_;
};

}  // namespace

void startSession(asio::ip::tcp::socket socket, const SessionSurroundings& surroundings) {
  std::make_shared<Session<PlainStream>>(surroundings, std::move(socket))->start();
}

void startTlsSession(asio::ip::tcp::socket socket, asio::ssl::context& tls,
                     const SessionSurroundings& surroundings) {
  std::make_shared<Session<TlsStream>>(surroundings, std::move(socket), tls)->start();
}

}  // namespace hcy::server
