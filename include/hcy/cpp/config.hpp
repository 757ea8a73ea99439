/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file config.hpp
 * @brief The settings of contexts. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_CONFIG_HPP
#define HCY_CPP_CONFIG_HPP

#include <hcy/hcyclient.h>

#include <chrono>
#include <cstdint>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/library.hpp>
#include <hcy/cpp/text.hpp>
#include <limits>
#include <memory>
#include <new>
#include <string>

namespace hcyclient {

/** @addtogroup cpp_runtime
 *  @{ */

/** The settings of contexts that are made from it afterwards. The setters return the
 *  configuration; they throw UsageError for a value that the library cannot hold, std::bad_alloc
 *  when memory is exhausted. The comments of hcyClientRuntime say what each setting means. */
class Config {
 public:
  /** A configuration with the defaults of the library. */
  explicit Config(const Library& library)
      : runtime_(library.runtime()), config_(create(runtime_), {runtime_}) {}

  /** How long one call may take, connection and transfer together; 0 for no limit. */
  Config& setTimeout(std::chrono::seconds timeout) {
    if (timeout.count() < 0 || timeout.count() > std::numeric_limits<std::uint32_t>::max()) {
      throw UsageError("the time-out is out of range");
    }
    runtime_->setTimeOut(settings(), static_cast<std::uint32_t>(timeout.count()));
    return *this;
  }
  /** The size in bytes of the largest reply body that is accepted. A larger one fails the call if
   *  its length is declared. Otherwise it is cut there, and what is incomplete then throws
   *  IncompleteReply. */
  Config& setResponseSizeLimit(std::uint32_t bytes) {
    runtime_->setResponseSizeLimit(settings(), bytes);
    return *this;
  }
  /** The file (PEM) of the client's certificate. */
  Config& setClientCertificateFile(const std::string& file) {
    return setText(runtime_->setClientCertFile, runtime_->getClientCertFile, file);
  }
  /** The file (PEM) of the private key of the client's certificate. */
  Config& setClientPrivateKeyFile(const std::string& file) {
    return setText(runtime_->setClientPrivateKeyFile, runtime_->getClientPrivateKeyFile, file);
  }
  /** The pass phrase of the private key. */
  Config& setPrivateKeyPassPhrase(const std::string& passPhrase) {
    return setText(runtime_->setPrivateKeyPasswd, runtime_->getPrivateKeyPasswd, passPhrase);
  }
  /** The file (PEM) of the authorities that the server's certificate is checked against. */
  Config& setAuthorityFile(const std::string& file) {
    return setText(runtime_->setCAFile, runtime_->getCAFile, file);
  }
  /** The file (PEM) of certificate revocation lists. */
  Config& setRevocationListFile(const std::string& file) {
    return setText(runtime_->setRevocationListFile, runtime_->getRevocationListFile, file);
  }
  /** Whether the server's certificate must name the host of the URL. */
  Config& setHostnameVerification(bool verify) {
    runtime_->setHostnameVerification(settings(), verify);
    return *this;
  }
  /** Whether the server's certificate chain is verified. */
  Config& setPeerVerification(bool verify) {
    runtime_->setPeerVerification(settings(), verify);
    return *this;
  }

  /** The table of the C interface, by which get() may be asked for its settings. Throws UsageError
   *  when the Config has been moved from. */
  const hcyClientRuntime* runtime() const {
    static_cast<void>(settings());
    return runtime_;
  }
  /** The configuration in the C interface, which stays owned here; null if moved from. */
  hcyClientConfig* get() const noexcept { return config_.get(); }

 private:
  struct Destroyer {
    const hcyClientRuntime* runtime;
    void operator()(hcyClientConfig* config) const noexcept { runtime->destroyConfig(config); }
  };

  static hcyClientConfig* create(const hcyClientRuntime* runtime) {
    hcyClientConfig* config = nullptr;
    if (runtime->createConfig(&config) == 0) return config;
    if (config != nullptr) runtime->destroyConfig(config);
    throw std::bad_alloc();
  }

  hcyClientConfig* settings() const {
    if (!config_) throw UsageError("the Config has been moved from");
    return get();
  }

  // The library leaves a setting as it was when it cannot store the text.
  Config& setText(void (*set)(hcyClientConfig*, const char*),
                  const char* (*stored)(const hcyClientConfig*), const std::string& text) {
    set(settings(), CString(text).c_str());
    if (stored(settings()) != text) throw std::bad_alloc();
    return *this;
  }

  const hcyClientRuntime* runtime_;
  std::unique_ptr<hcyClientConfig, Destroyer> config_;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_CONFIG_HPP
