// SPDX-License-Identifier: Apache-2.0
//
// The client runtime as tests use it: everything that it hands out has an owner here, and an
// error record becomes a value that can be compared.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/abi.h"

namespace hcy::abi {

// Keeps the library initialised.
class Library {
 public:
  explicit Library(int version = HCY_CLIENT_RUNTIME_1_1) : runtime_(hcyInitializeEx(version)) {}
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() { hcyTerminate(); }

  const hcyClientRuntime* operator->() const { return runtime_; }

 private:
  hcyClientRuntime* runtime_;
};

struct HandleDestroyer {
  void operator()(hcyArray* array) const { hcyDestroyArray(array); }
};
using OwnedArray = std::unique_ptr<hcyArray, HandleDestroyer>;

// Room for the outputs of a call; destroys what a call has stored in it.
class Outputs {
 public:
  explicit Outputs(std::size_t count) : handles_(count, nullptr) {}
  Outputs(const Outputs&) = delete;
  Outputs& operator=(const Outputs&) = delete;
  ~Outputs() {
    for (hcyArray* handle : handles_) hcyDestroyArray(handle);
  }

  hcyArray** data() { return handles_.data(); }
  hcyArray* operator[](std::size_t i) const { return handles_[i]; }

 private:
  std::vector<hcyArray*> handles_;
};

struct Frame {
  std::string file;
  std::string name;
  std::int32_t line = 0;
  bool operator==(const Frame&) const = default;
};

// What an error record says.
struct Failure {
  hcyErrorType kind = HCY_HTTP_ERROR;
  std::string message;
  std::uint32_t status = 0;
  std::string text;  // the status message, the server's message, or the details
  std::string identifier;
  std::vector<Frame> stack;
  bool operator==(const Failure&) const = default;
};

inline void PrintTo(const Failure& failure, std::ostream* out) {
  *out << "kind " << failure.kind << ", message " << ::testing::PrintToString(failure.message)
       << ", status " << failure.status << ", text " << ::testing::PrintToString(failure.text)
       << ", identifier " << ::testing::PrintToString(failure.identifier) << ", "
       << failure.stack.size() << " frames";
}

inline Failure httpFailure(std::uint32_t status, std::string statusMessage) {
  return {HCY_HTTP_ERROR,
          "A non-200 HTTP response was received",
          status,
          std::move(statusMessage),
          {},
          {}};
}

inline Failure vortenFailure(std::string message, std::string identifier,
                             std::vector<Frame> stack = {}) {
  return {HCY_VORTEN_ERROR,
          "Error was thrown while executing VORTEN code",
          0,
          std::move(message),
          std::move(identifier),
          std::move(stack)};
}

inline Failure genericFailure(std::string details) {
  return {HCY_GENERIC_ERROR, "A generic error was thrown", 0, std::move(details), {}, {}};
}

class Config {
 public:
  explicit Config(const Library& library) : library_(library) {
    EXPECT_EQ(library_->createConfig(&config_), 0);
  }
  Config(const Config&) = delete;
  Config& operator=(const Config&) = delete;
  ~Config() { library_->destroyConfig(config_); }

  hcyClientConfig* get() const { return config_; }

 private:
  const Library& library_;
  hcyClientConfig* config_ = nullptr;
};

// An error record of a context, given back at the end.
class ErrorRecord {
 public:
  ErrorRecord(const Library& library, const hcyClientContext* context) : library_(library) {
    library_->getLastErrorInfo(context, &info_);
  }
  ErrorRecord(const ErrorRecord&) = delete;
  ErrorRecord& operator=(const ErrorRecord&) = delete;
  ~ErrorRecord() { library_->destroyLastErrorInfo(&info_); }

  hcyErrorInfo* operator->() { return &info_; }
  hcyErrorInfo* get() { return &info_; }

 private:
  const Library& library_;
  hcyErrorInfo info_{};
};

class Context {
 public:
  Context(const Library& library, const Config& config) : library_(library) {
    EXPECT_EQ(library_->createContext(&context_, config.get()), 0);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context() { library_->destroyContext(context_); }

  hcyClientContext* get() const { return context_; }

  int feval(const std::string& url, std::int32_t nargout, hcyArray** outputs,
            const std::vector<const hcyArray*>& inputs = {}) const {
    return library_->feval(context_, url.c_str(), nargout, outputs,
                           static_cast<std::int32_t>(inputs.size()), inputs.data());
  }

  Failure lastFailure() const {
    ErrorRecord info(library_, context_);
    Failure failure{info->kind, info->message, 0, {}, {}, {}};
    if (info->kind == HCY_HTTP_ERROR) {
      failure.status = info->details.http.statusCode;
      failure.text = info->details.http.statusMessage;
    } else if (info->kind == HCY_VORTEN_ERROR) {
      const auto& error = info->details.vorten;
      failure.text = error.message;
      failure.identifier = error.identifier;
      for (std::size_t i = 0; i < error.stackDepth; ++i) {
        failure.stack.push_back({error.stack[i].file, error.stack[i].name, error.stack[i].line});
      }
    } else {
      failure.text = info->details.generic.details;
    }
    return failure;
  }

 private:
  const Library& library_;
  hcyClientContext* context_ = nullptr;
};

}  // namespace hcy::abi
