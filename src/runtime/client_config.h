// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

#include "runtime/secret_text.h"

namespace hcy {

// The settings with which a context talks to a server. A text getter's result stays valid until
// the same setting is set again or the configuration is destroyed.
class QXClientConfig {
 public:
  QXClientConfig() = default;
  QXClientConfig(const QXClientConfig&) = delete;
  QXClientConfig& operator=(const QXClientConfig&) = delete;

  virtual void setTimeOut(std::uint32_t seconds) = 0;
  virtual std::uint32_t getTimeOut() const = 0;
  virtual void setResponseSizeLimit(std::uint32_t bytes) = 0;
  virtual std::uint32_t getResponseSizeLimit() const = 0;
  virtual void setClientCertFile(const char* file) = 0;
  virtual const char* getClientCertFile() const = 0;
  virtual void setClientPrivateKeyFile(const char* file) = 0;
  virtual const char* getClientPrivateKeyFile() const = 0;
  virtual void setPrivateKeyPasswd(const char* passPhrase) = 0;
  virtual const char* getPrivateKeyPasswd() const = 0;
  virtual void setCAFile(const char* file) = 0;
  virtual const char* getCAFile() const = 0;
  virtual void setRevocationListFile(const char* file) = 0;
  virtual const char* getRevocationListFile() const = 0;
  virtual void setHostnameVerification(bool verify) = 0;
  virtual bool getHostnameVerification() const = 0;
  virtual void setPeerVerification(bool verify) = 0;
  virtual bool getPeerVerification() const = 0;
  virtual ~QXClientConfig() = default;
};

// Stores what it is given, unchanged and unchecked.
class QXHttpClientConfig : public QXClientConfig {
 public:
  QXHttpClientConfig() = default;

  // A copy of another configuration's settings.
  explicit QXHttpClientConfig(const QXClientConfig& other);

  void setTimeOut(std::uint32_t seconds) override { timeOut_ = seconds; }
  std::uint32_t getTimeOut() const override { return timeOut_; }
  void setResponseSizeLimit(std::uint32_t bytes) override { responseSizeLimit_ = bytes; }
  std::uint32_t getResponseSizeLimit() const override { return responseSizeLimit_; }
  void setClientCertFile(const char* file) override { clientCertFile_ = file; }
  const char* getClientCertFile() const override { return clientCertFile_.c_str(); }
  void setClientPrivateKeyFile(const char* file) override { clientPrivateKeyFile_ = file; }
  const char* getClientPrivateKeyFile() const override { return clientPrivateKeyFile_.c_str(); }
  void setPrivateKeyPasswd(const char* passPhrase) override {
    privateKeyPasswd_ = SecretText(passPhrase);
  }
  const char* getPrivateKeyPasswd() const override { return privateKeyPasswd_.c_str(); }
  void setCAFile(const char* file) override { caFile_ = file; }
  const char* getCAFile() const override { return caFile_.c_str(); }
  void setRevocationListFile(const char* file) override { revocationListFile_ = file; }
  const char* getRevocationListFile() const override { return revocationListFile_.c_str(); }
  void setHostnameVerification(bool verify) override { hostnameVerification_ = verify; }
  bool getHostnameVerification() const override { return hostnameVerification_; }
  void setPeerVerification(bool verify) override { peerVerification_ = verify; }
  bool getPeerVerification() const override { return peerVerification_; }

 private:
  std::uint32_t timeOut_ = 120;                  // seconds
  std::uint32_t responseSizeLimit_ = 64U << 20;  // bytes
  std::string clientCertFile_;
  std::string clientPrivateKeyFile_;
  SecretText privateKeyPasswd_;
  std::string caFile_;
  std::string revocationListFile_;
  bool hostnameVerification_ = true;
  bool peerVerification_ = true;
};

}  // namespace hcy
