// SPDX-License-Identifier: Apache-2.0

#include "settings/settings.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>

#include "settings/file_access.h"
#include "settings/pass_phrase.h"

namespace hcy::tools {

void requireReadableFiles(const Settings& settings) {
  for (const std::string& file : {settings.certificateFile, settings.keyFile,
                                  settings.authorityFile, settings.revocationListFile}) {
    if (!file.empty()) requireReadable(file);
  }
}

hcyclient::Config configFrom(const hcyclient::Library& library, const Settings& settings) {
  hcyclient::Config config(library);
  if (settings.timeout) {
    config.setTimeout(
        std::chrono::seconds(static_cast<std::int64_t>(std::ceil(*settings.timeout))));
  }
  if (settings.largestReply) config.setResponseSizeLimit(*settings.largestReply);
  config.setClientCertificateFile(settings.certificateFile)
      .setClientPrivateKeyFile(settings.keyFile)
      .setAuthorityFile(settings.authorityFile)
      .setRevocationListFile(settings.revocationListFile)
      .setHostnameVerification(settings.verifiesHost)
      .setPeerVerification(settings.verifiesPeer);
  if (!settings.keyFile.empty()) requirePrivateFile(settings.keyFile);
  if (!settings.passPhraseFile.empty()) {
    config.setPrivateKeyPassPhrase(
        passPhraseOfFile(settings.passPhraseFile, requirePrivate).text());
  } else if (settings.asksPassPhrase) {
    config.setPrivateKeyPassPhrase(passPhraseOfTerminal().text());
  } else if (!mayPrompt() && !(settings.keyFile + settings.certificateFile).empty()) {
    // Without a pass phrase, OpenSSL would ask for that of an encrypted key. It ignores this one if
    // the key is not encrypted.
    config.setPrivateKeyPassPhrase("-");
  }
  return config;
}

}  // namespace hcy::tools
