// SPDX-License-Identifier: Apache-2.0
//
// Certificate authorities for tests, made by the openssl command line in directories of their own:
//
//   CertificateAuthority authority;
//   const Certificate server = authority.issue({.alternativeNames = "DNS:localhost"});
//   authority.revoke(server);
//   authority.writeRevocationList();
#pragma once

#include <string>

namespace hcy::test {

// A directory that is removed with all that it holds.
class TestDirectory {
 public:
  TestDirectory();
  ~TestDirectory();
  TestDirectory(const TestDirectory&) = delete;
  TestDirectory& operator=(const TestDirectory&) = delete;

  std::string file(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }

  // Writes a file of this name and returns its path.
  std::string write(const std::string& name, const std::string& contents) const;

 private:
  std::string path_;
};

std::string contentsOf(const std::string& file);

struct Certificate {
  std::string certificateFile, keyFile;  // PEM
};

// A span of time, as openssl writes its ends.
struct Validity {
  std::string from, to;
};
inline const Validity kExpired{"20200101000000Z", "20200102000000Z"};
inline const Validity kNotYetValid{"20980101000000Z", "20990101000000Z"};

// What a certificate says of its owner.
struct Subject {
  std::string name = "server";
  std::string alternativeNames = "IP:127.0.0.1,DNS:localhost";
  std::string passPhrase = {};  // of the key; empty for a key in the clear
  Validity validity = {};       // the next two days, if left out
};

// Whatever openssl refuses to do ends in a std::runtime_error.
class CertificateAuthority {
 public:
  explicit CertificateAuthority(const std::string& name = "Test CA");
  // An intermediate authority.
  CertificateAuthority(const std::string& name, CertificateAuthority& issuer);

  const Certificate& certificate() const { return own_; }
  const std::string& certificateFile() const { return own_.certificateFile; }

  Certificate issue(const Subject& subject = {});
  // The file of the certificate holds this authority's own, too, behind it.
  Certificate issueWithChain(const Subject& subject = {});

  void revoke(const Certificate& certificate);
  // Writes the list of what has been revoked so far and returns its file.
  std::string writeRevocationList(const Validity& validity = {});

 private:
  Certificate request(const std::string& name, const std::string& options);
  void sign(const std::string& requestFile, const std::string& certificateFile,
            const Validity& validity);
  void openssl(const std::string& arguments);
  void prepare();

  TestDirectory directory_;
  Certificate own_;
  int issued_ = 0;
};

}  // namespace hcy::test
