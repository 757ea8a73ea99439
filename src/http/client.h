// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "http/request.h"
#include "runtime/client_config.h"

namespace hcy {

// Makes requests; used by one thread at a time, with all its requests.
class QXClient {
 public:
  QXClient() = default;
  QXClient(const QXClient&) = delete;
  QXClient& operator=(const QXClient&) = delete;

  virtual std::unique_ptr<Request> createRequest(std::string url) = 0;
  virtual const QXClientConfig& getConfig() const = 0;
  virtual ~QXClient() = default;
};

}  // namespace hcy
