/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file config.hpp
 * @brief The settings of contexts. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_CONFIG_HPP
#define HCY_CPP_CONFIG_HPP

#include <hcy/hcyclient.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/library.hpp>
#include <hcy/cpp/text.hpp>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

namespace hcyclient {

/** @addtogroup cpp_runtime
 *  @{ */

/** The settings for contexts that are made from it afterwards. It can be copied and read. Each
 *  setter returns the configuration, and throws UsageError if the library cannot hold the value,
 *  std::bad_alloc if memory is exhausted. The comments of hcyClientRuntime describe each setting.
 */
class Config {
 public:
  /** A configuration with the defaults of the library. */
  explicit Config(const Library& library)
      : runtime_(library.runtime()), config_(create(runtime_), {runtime_}) {}
  /** A configuration with the same settings. Throws UsageError if the other one has been moved
   *  from. */
  Config(const Config& other) : runtime_(other.runtime()), config_(create(runtime_), {runtime_}) {
    runtime_->setTimeOut(get(), runtime_->getTimeOut(other.get()));
    runtime_->setResponseSizeLimit(get(), other.responseSizeLimit());
    setText(runtime_->setClientCertFile, runtime_->getClientCertFile,
            other.clientCertificateFile());
    setText(runtime_->setClientPrivateKeyFile, runtime_->getClientPrivateKeyFile,
            other.clientPrivateKeyFile());
    setText(runtime_->setPrivateKeyPasswd, runtime_->getPrivateKeyPasswd,
            other.privateKeyPassPhrase());
    setText(runtime_->setCAFile, runtime_->getCAFile, other.authorityFile());
    setText(runtime_->setRevocationListFile, runtime_->getRevocationListFile,
            other.revocationListFile());
    setHostnameVerification(other.hostnameVerification());
    setPeerVerification(other.peerVerification());
  }
  /** Copies the settings; throws like the copy constructor, and is unchanged then. */
  Config& operator=(const Config& other) { return *this = Config(other); }
  /** Takes over the configuration. */
  Config(Config&&) noexcept = default;
  /** Takes over the configuration. */
  Config& operator=(Config&&) noexcept = default;
  ~Config() = default;

  /** Sets how long one call may take, connection and transfer together, rounded up to whole
   *  seconds; 0 for no limit. */
  template <class Number, class Period>
  Config& setTimeout(std::chrono::duration<Number, Period> timeout) {
    const double seconds = std::ceil(std::chrono::duration<double>(timeout).count());
    // This form also refuses NaN.
    if (!(seconds >= 0 && seconds <= std::numeric_limits<std::uint32_t>::max())) {
      throw UsageError("the timeout is out of range");
    }
    runtime_->setTimeOut(settings(), static_cast<std::uint32_t>(seconds));
    return *this;
  }
  template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  Config& setTimeout(Number) = delete; /**< Write setTimeout(std::chrono::seconds(30)). */
  /** Returns the timeout. */
  std::chrono::seconds timeout() const {
    return std::chrono::seconds(runtime_->getTimeOut(settings()));
  }
  /** Sets the size in bytes of the largest reply body that is accepted. If a reply declares a
   *  longer body, the call fails. A longer body whose length is not declared is cut at the limit;
   *  if that makes an array incomplete, IncompleteReply is thrown. Throws UsageError unless the
   *  size is between 0 and 4294967295; 0 refuses every body whose length is declared. */
  Config& setResponseSizeLimit(std::uint64_t bytes) {
    if (bytes > UINT32_MAX) throw UsageError("the response size limit is out of range");
    runtime_->setResponseSizeLimit(settings(), static_cast<std::uint32_t>(bytes));
    return *this;
  }
  /** Returns the response size limit in bytes. */
  std::uint32_t responseSizeLimit() const { return runtime_->getResponseSizeLimit(settings()); }
  /** Sets the file (PEM) of the client's certificate: a string or a std::filesystem::path. */
  Config& setClientCertificateFile(const CString& file) {
    return setText(runtime_->setClientCertFile, runtime_->getClientCertFile, file);
  }
  /** Returns the file of the client's certificate; empty for none. */
  std::string clientCertificateFile() const { return runtime_->getClientCertFile(settings()); }
  /** Sets the file (PEM) of the private key of the client's certificate. */
  Config& setClientPrivateKeyFile(const CString& file) {
    return setText(runtime_->setClientPrivateKeyFile, runtime_->getClientPrivateKeyFile, file);
  }
  /** Returns the file of the private key; empty for none. */
  std::string clientPrivateKeyFile() const { return runtime_->getClientPrivateKeyFile(settings()); }
  /** Sets the pass phrase of the private key. */
  Config& setPrivateKeyPassPhrase(const CString& passPhrase) {
    return setText(runtime_->setPrivateKeyPasswd, runtime_->getPrivateKeyPasswd, passPhrase);
  }
  /** Returns the pass phrase; empty for none. */
  std::string privateKeyPassPhrase() const { return runtime_->getPrivateKeyPasswd(settings()); }
  /** Sets the file (PEM) of the certificate authorities to check the server's certificate against.
   */
  Config& setAuthorityFile(const CString& file) {
    return setText(runtime_->setCAFile, runtime_->getCAFile, file);
  }
  /** Returns the file of the authorities; empty for those of the system. */
  std::string authorityFile() const { return runtime_->getCAFile(settings()); }
  /** Sets the file (PEM) of certificate revocation lists. */
  Config& setRevocationListFile(const CString& file) {
    return setText(runtime_->setRevocationListFile, runtime_->getRevocationListFile, file);
  }
  /** Returns the file of the revocation lists; empty for none. */
  std::string revocationListFile() const { return runtime_->getRevocationListFile(settings()); }
  /** Sets whether the server's certificate must name the host of the URL. */
  Config& setHostnameVerification(bool verify) {
    runtime_->setHostnameVerification(settings(), verify);
    return *this;
  }
  /** Returns whether the host name is verified. */
  bool hostnameVerification() const { return runtime_->getHostnameVerification(settings()); }
  /** Sets whether the server's certificate chain is verified. */
  Config& setPeerVerification(bool verify) {
    runtime_->setPeerVerification(settings(), verify);
    return *this;
  }
  /** Returns whether the certificate chain is verified. */
  bool peerVerification() const { return runtime_->getPeerVerification(settings()); }

  /** The runtime table of the C interface, for use with get(). Throws UsageError if the Config has
   *  been moved from. */
  const hcyClientRuntime* runtime() const {
    static_cast<void>(settings());
    return runtime_;
  }
  /** The configuration in the C interface, which the Config still owns; null if moved from. */
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

  // The library leaves a setting unchanged if it cannot store the string.
  Config& setText(void (*set)(hcyClientConfig*, const char*),
                  const char* (*stored)(const hcyClientConfig*), const CString& text) {
    set(settings(), text.c_str());
    if (std::string_view(stored(get())) != text.c_str()) throw std::bad_alloc();
    return *this;
  }

  const hcyClientRuntime* runtime_;
  std::unique_ptr<hcyClientConfig, Destroyer> config_;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_CONFIG_HPP
