// SPDX-License-Identifier: Apache-2.0

#include "settings/tls_options.h"

namespace hcy::tools {
namespace {

std::string nameOf(const TlsOptionNames& names, const std::string& name,
                   const std::string& others = {}) {
  return "--" + names.prefix + name + (names.prefix.empty() ? others : "");
}

}  // namespace

std::vector<CLI::Option*> addTlsFiles(CLI::App& app, TlsSettings& settings,
                                      const TlsOptionNames& names) {
  std::vector<CLI::Option*> all;
  const auto add = [&](const std::string& name, std::string& file, const char* help) {
    all.push_back(app.add_option(name, file, help)
                      ->type_name("FILE")
                      ->check(CLI::Validator(CLI::ExistingFile).description(""))
                      ->group(names.group));
    return all.back();
  };
  add(nameOf(names, "ca", ",--cacert"), settings.authorityFile,
      "CA certificates to verify the server with (PEM)");
  add(nameOf(names, "crl", ",--crlfile"), settings.revocationListFile,
      "Certificate revocation lists (PEM)");
  add(nameOf(names, "cert", ",-E"), settings.certificateFile, "Client certificate (PEM)");
  CLI::Option* const key =
      add(nameOf(names, "key"), settings.keyFile, "Private key of the client certificate (PEM)");
  add(nameOf(names, "key-pass-file"), settings.passPhraseFile,
      "File whose first line is the pass phrase of the key")
      ->needs(key);
  return all;
}

std::vector<CLI::Option*> addTlsVerification(CLI::App& app, TlsSettings& settings,
                                             const TlsOptionNames& names) {
  return {app.add_flag_callback(
                 nameOf(names, "no-verify-host"), [&settings] { settings.verifiesHost = false; },
                 "Accept a certificate for another host")
              ->group(names.group),
          app.add_flag_callback(
                 nameOf(names, "no-verify-peer"), [&settings] { settings.verifiesPeer = false; },
                 "Accept a certificate that no trusted CA has signed")
              ->group(names.group)};
}

}  // namespace hcy::tools
