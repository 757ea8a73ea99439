// SPDX-License-Identifier: Apache-2.0

#include "runtime/client_config_slots.h"

#include <exception>

namespace hcy {
namespace {

int createConfig(hcyClientConfig** config) {
  try {
    *config = new hcyClientConfig{};
    (*config)->config = std::make_unique<QXHttpClientConfig>();
    return 0;
  } catch (const std::exception&) {
    return 1;
  }
}

void destroyConfig(hcyClientConfig* config) { delete config; }

template <auto Operation, class Value>
void set(hcyClientConfig* config, Value value) {
  ((*config->config).*Operation)(value);
}

// If memory runs out, the setting is unchanged.
template <auto Operation>
void setText(hcyClientConfig* config, const char* text) {
  try {
    ((*config->config).*Operation)(text == nullptr ? "" : text);
  } catch (const std::exception&) {
    return;
  }
}

template <auto Operation, class Value>
Value get(const hcyClientConfig* config) {
  return ((*config->config).*Operation)();
}

}  // namespace

void fillConfigSlots_1_0(hcyClientRuntime& runtime) {
  using Config = QXClientConfig;
  runtime.createConfig = createConfig;
  runtime.destroyConfig = destroyConfig;
  runtime.setTimeOut = set<&Config::setTimeOut, std::uint32_t>;
  runtime.getTimeOut = get<&Config::getTimeOut, std::uint32_t>;
  runtime.setResponseSizeLimit = set<&Config::setResponseSizeLimit, std::uint32_t>;
  runtime.getResponseSizeLimit = get<&Config::getResponseSizeLimit, std::uint32_t>;
}

void fillConfigSlots_1_1(hcyClientRuntime& runtime) {
  using Config = QXClientConfig;
  runtime.setClientCertFile = setText<&Config::setClientCertFile>;
  runtime.getClientCertFile = get<&Config::getClientCertFile, const char*>;
  runtime.setClientPrivateKeyFile = setText<&Config::setClientPrivateKeyFile>;
  runtime.getClientPrivateKeyFile = get<&Config::getClientPrivateKeyFile, const char*>;
  runtime.setPrivateKeyPasswd = setText<&Config::setPrivateKeyPasswd>;
  runtime.getPrivateKeyPasswd = get<&Config::getPrivateKeyPasswd, const char*>;
  runtime.setCAFile = setText<&Config::setCAFile>;
  runtime.getCAFile = get<&Config::getCAFile, const char*>;
  runtime.setRevocationListFile = setText<&Config::setRevocationListFile>;
  runtime.getRevocationListFile = get<&Config::getRevocationListFile, const char*>;
  runtime.setHostnameVerification = set<&Config::setHostnameVerification, bool>;
  runtime.getHostnameVerification = get<&Config::getHostnameVerification, bool>;
  runtime.setPeerVerification = set<&Config::setPeerVerification, bool>;
  runtime.getPeerVerification = get<&Config::getPeerVerification, bool>;
}

}  // namespace hcy
