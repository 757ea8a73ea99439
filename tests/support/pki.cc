// SPDX-License-Identifier: Apache-2.0
#include "pki.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace hcy::test {
namespace {

// For all that is asked of openssl, so that nothing depends on the machine's own settings.
constexpr char kConfiguration[] = R"([req]
distinguished_name = subject
[subject]
[ca]
default_ca = authority
[authority]
database = issued.txt
new_certs_dir = .
certificate = ca.pem
private_key = ca.key
default_md = sha256
default_days = 2
default_crl_days = 2
rand_serial = yes
copy_extensions = copy
unique_subject = no
policy = any
[any]
commonName = supplied
)";

constexpr char kForAuthorities[] = " -nodes -addext basicConstraints=critical,CA:TRUE";

}  // namespace

TestDirectory::TestDirectory()
    : path_((std::filesystem::temp_directory_path() / "hcy-test-XXXXXX").string()) {
  if (::mkdtemp(path_.data()) == nullptr) {
    throw std::system_error(errno, std::system_category(), path_);
  }
}

TestDirectory::~TestDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TestDirectory::write(const std::string& name, const std::string& contents) const {
  std::ofstream(file(name), std::ios::binary) << contents;
  return file(name);
}

std::string contentsOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + file);
  std::ostringstream contents;
  contents << stream.rdbuf();
  return contents.str();
}

CertificateAuthority::CertificateAuthority(const std::string& name) {
  prepare();
  own_ = request("ca", "-x509 -days 2 -subj '/CN=" + name + "'" + kForAuthorities);
}

CertificateAuthority::CertificateAuthority(const std::string& name, CertificateAuthority& issuer) {
  prepare();
  own_ = request("ca", "-subj '/CN=" + name + "'" + kForAuthorities);
  const std::string requestFile = directory_.file("ca.csr");
  std::filesystem::rename(own_.certificateFile, requestFile);
  issuer.sign(requestFile, own_.certificateFile, {});
}

Certificate CertificateAuthority::issue(const Subject& subject) {
  const std::string file = std::to_string(++issued_);
  std::string options = "-subj '/CN=" + subject.name + "' -addext basicConstraints=CA:FALSE";
  if (!subject.alternativeNames.empty()) {
    options += " -addext subjectAltName=" + subject.alternativeNames;
  }
  options += subject.passPhrase.empty() ? " -nodes" : " -passout 'pass:" + subject.passPhrase + "'";
  const Certificate certificate = request(file, options);
  const std::string requestFile = directory_.file(file + ".csr");
  std::filesystem::rename(certificate.certificateFile, requestFile);
  sign(requestFile, certificate.certificateFile, subject.validity);
  return certificate;
}

Certificate CertificateAuthority::issueWithChain(const Subject& subject) {
  const Certificate certificate = issue(subject);
  std::ofstream(certificate.certificateFile, std::ios::app) << contentsOf(certificateFile());
  return certificate;
}

void CertificateAuthority::revoke(const Certificate& certificate) {
  openssl("ca -revoke '" + certificate.certificateFile + "'");
}

std::string CertificateAuthority::writeRevocationList(const Validity& validity) {
  openssl("ca -gencrl -out crl.pem" +
          (validity.from.empty()
               ? std::string()
               : " -crl_lastupdate " + validity.from + " -crl_nextupdate " + validity.to));
  return directory_.file("crl.pem");
}

// A new key and, in the place of the certificate, what openssl's req makes for it.
Certificate CertificateAuthority::request(const std::string& name, const std::string& options) {
  openssl("req -new -newkey ec -pkeyopt ec_paramgen_curve:P-256 -keyout " + name + ".key -out " +
          name + ".pem " + options);
  return {directory_.file(name + ".pem"), directory_.file(name + ".key")};
}

void CertificateAuthority::sign(const std::string& requestFile, const std::string& certificateFile,
                                const Validity& validity) {
  openssl("ca -batch -notext -in '" + requestFile + "' -out '" + certificateFile + "'" +
          (validity.from.empty() ? std::string()
                                 : " -startdate " + validity.from + " -enddate " + validity.to));
}

void CertificateAuthority::openssl(const std::string& arguments) {
  const std::string line = "cd '" + directory_.path() + "' && OPENSSL_CONF=authority.cnf openssl " +
                           arguments + " >openssl.log 2>&1";
  if (std::system(line.c_str()) != 0) {
    throw std::runtime_error("failed: " + line + "\n" + contentsOf(directory_.file("openssl.log")));
  }
}

void CertificateAuthority::prepare() {
  directory_.write("authority.cnf", kConfiguration);
  directory_.write("issued.txt", "");
}

}  // namespace hcy::test
