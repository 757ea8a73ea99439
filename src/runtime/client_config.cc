// SPDX-License-Identifier: Apache-2.0

#include "runtime/client_config.h"

namespace hcy {

QXHttpClientConfig::QXHttpClientConfig(const QXClientConfig& other)
    : timeOut_(other.getTimeOut()),
      responseSizeLimit_(other.getResponseSizeLimit()),
      clientCertFile_(other.getClientCertFile()),
      clientPrivateKeyFile_(other.getClientPrivateKeyFile()),
      privateKeyPasswd_(other.getPrivateKeyPasswd()),
      caFile_(other.getCAFile()),
      revocationListFile_(other.getRevocationListFile()),
      hostnameVerification_(other.getHostnameVerification()),
      peerVerification_(other.getPeerVerification()) {}

}  // namespace hcy
