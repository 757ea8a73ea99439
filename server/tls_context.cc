// SPDX-License-Identifier: Apache-2.0

#include "tls_context.h"

#include <openssl/ssl.h>

#include <boost/system/system_error.hpp>
#include <stdexcept>
#include <string>

namespace hcy::server {
namespace {

namespace ssl = boost::asio::ssl;

void demandClientCertificates(ssl::context& context, const std::string& authorityFile) {
  context.load_verify_file(authorityFile);
  // The client is told which authorities are meant.
  SSL_CTX_set_client_CA_list(context.native_handle(),
                             SSL_load_client_CA_file(authorityFile.c_str()));
  context.set_verify_mode(ssl::verify_peer | ssl::verify_fail_if_no_peer_cert);
}

}  // namespace

ssl::context makeTlsContext(const Options& options) try {
  ssl::context context(ssl::context::tls_server);
  SSL_CTX_set_min_proto_version(context.native_handle(), TLS1_2_VERSION);
  // Without a name, sessions that clients resume would be refused as soon as certificates of
  // clients are verified.
  constexpr unsigned char name[] = "hcy-local-server";
  SSL_CTX_set_session_id_context(context.native_handle(), name, sizeof name - 1);
  context.use_certificate_chain_file(options.certificateFile);
  context.use_private_key_file(options.keyFile, ssl::context::pem);
  if (!options.clientCaFile.empty()) {
    demandClientCertificates(context, options.clientCaFile);
  }
  return context;
} catch (const boost::system::system_error& error) {
  throw std::runtime_error(std::string("the TLS files are of no use: ") + error.what());
}

}  // namespace hcy::server
