// SPDX-License-Identifier: Apache-2.0
//
// A ByteBuffer as the body of a Beast message, received or sent.

#pragma once

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/beast/core/buffers_range.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/optional.hpp>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "byte_buffer.h"

namespace hcy::server {

struct ByteBody {
  using value_type = ByteBuffer;
  using error_code = boost::beast::error_code;

  static std::uint64_t size(const ByteBuffer& body) { return body.size(); }

  // Running out of memory is an error of the one message.
  class reader {
   public:
    template <bool isRequest, class Fields>
    reader(boost::beast::http::header<isRequest, Fields>&, ByteBuffer& body) : body_(body) {}

    void init(const boost::optional<std::uint64_t>& declaredLength, error_code& ec) try {
      ec = {};
      // A client that declares much may send little.
      if (declaredLength) body_.reserve(std::min(*declaredLength, kMostReserved));
    } catch (const std::bad_alloc&) {
      ec = make_error_code(boost::system::errc::not_enough_memory);
    }

    template <class ConstBufferSequence>
    std::size_t put(const ConstBufferSequence& buffers, error_code& ec) try {
      ec = {};
      std::size_t count = 0;
      for (auto buffer : boost::beast::buffers_range_ref(buffers)) {
        body_.append(buffer.data(), buffer.size());
        count += buffer.size();
      }
      return count;
    } catch (const std::bad_alloc&) {
      ec = make_error_code(boost::system::errc::not_enough_memory);
      return 0;
    }

    void finish(error_code& ec) { ec = {}; }

   private:
    static constexpr std::uint64_t kMostReserved = std::uint64_t{1} << 20;

    ByteBuffer& body_;
  };

  class writer {
   public:
    using const_buffers_type = boost::asio::const_buffer;

    template <bool isRequest, class Fields>
    writer(const boost::beast::http::header<isRequest, Fields>&, const ByteBuffer& body)
        : body_(body) {}

    void init(error_code& ec) { ec = {}; }

    boost::optional<std::pair<const_buffers_type, bool>> get(error_code& ec) {
      ec = {};
      return {{const_buffers_type(body_.data(), body_.size()), false}};
    }

   private:
    const ByteBuffer& body_;
  };
};

}  // namespace hcy::server
