// SPDX-License-Identifier: Apache-2.0
//
// Calls a server that requires a client certificate: with a certificate, without one, and without
// trusting the server's authority.
//
// Usage: tls SERVER_URL AUTHORITY_FILE CERTIFICATE_FILE KEY_FILE PASS_PHRASE

#include <hcy/hcyclient.hpp>
#include <iostream>
#include <string>

namespace {

// A context copies the current settings of the configuration, and connects at its first
// call.
void call(const hcyclient::Config& config, const std::string& server) try {
  hcyclient::Context context(config);
  std::cout << context.feval(server + "/echo", {42.0}).at(0).scalar() << '\n';
} catch (const hcyclient::TransportError& error) {
  std::cout << error.what() << '\n';
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 6) throw hcyclient::UsageError("usage: tls URL AUTHORITY CERTIFICATE KEY PHRASE");
  const hcyclient::Library library;
  hcyclient::Config config(library);

  config.setAuthorityFile(argv[2])
      .setClientCertificateFile(argv[3])
      .setClientPrivateKeyFile(argv[4])
      .setPrivateKeyPassPhrase(argv[5]);
  std::cout << "with a certificate: ";
  call(config, argv[1]);

  config.setClientCertificateFile("").setClientPrivateKeyFile("");
  std::cout << "without a certificate: ";
  call(config, argv[1]);

  config.setAuthorityFile("");
  std::cout << "without the authority: ";
  call(config, argv[1]);
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
