// SPDX-License-Identifier: Apache-2.0
//
// A client that answers every request with the same reply, without a network.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "http/client.h"
#include "runtime/client_context.h"

namespace hcy::fuzz {

struct CannedResponse : Response {
  explicit CannedResponse(std::string reply) : body(std::move(reply)) {}
  const char* bodyData() const override { return body.data(); }
  std::uint64_t bodySize() const override { return body.size(); }
  std::uint32_t statusCode() const override { return 200; }
  std::string statusMessage() const override { return "OK\r\n"; }
  std::string body;
};

// Remembers the last body that was sent.
struct CannedClient : QXClient {
  struct CannedRequest : Request {
    explicit CannedRequest(CannedClient& owner) : client(owner) {}
    void setBody(const void* data, std::uint64_t size) override {
      client.sent.assign(static_cast<const char*>(data), size);
    }
    std::unique_ptr<Response> perform() override {
      return std::make_unique<CannedResponse>(client.reply);
    }
    CannedClient& client;
  };

  std::unique_ptr<Request> createRequest(std::string /*url*/) override {
    return std::make_unique<CannedRequest>(*this);
  }
  const QXClientConfig& getConfig() const override { return config; }

  QXHttpClientConfig config;
  std::string reply;
  std::string sent;
};

}  // namespace hcy::fuzz
