// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace hcy::tools {

// TLS of the connections to a server. Files are PEM; an empty name is for none.
struct TlsSettings {
  std::string certificateFile, keyFile, authorityFile, revocationListFile;
  // Its first line is the pass phrase of the key.
  std::string passPhraseFile;
  bool verifiesHost = true;
  bool verifiesPeer = true;
};

}  // namespace hcy::tools
