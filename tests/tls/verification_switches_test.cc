// SPDX-License-Identifier: Apache-2.0
//
// The two switches against every fault of a server's certificate. They are independent: the one
// for the peer is about authority, time and revocation, the one for the host about the name alone.

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "tls_test.h"

namespace hcy::abi {
namespace {

enum class Fault { none, unknownAuthority, wrongHost, expired, revoked, unreadableAuthorities };
enum class Peer { on, off };
enum class Host { on, off };

struct Row {
  Fault fault;
  Peer peer;
  Host host;
  std::string details;  // empty: the call succeeds
};

const Row kOutcomes[] = {
    {Fault::none, Peer::on, Host::on, ""},
    {Fault::none, Peer::on, Host::off, ""},
    {Fault::none, Peer::off, Host::on, ""},
    {Fault::none, Peer::off, Host::off, ""},
    {Fault::unknownAuthority, Peer::on, Host::on, kUnverified},
    {Fault::unknownAuthority, Peer::on, Host::off, kUnverified},
    {Fault::unknownAuthority, Peer::off, Host::on, ""},
    {Fault::unknownAuthority, Peer::off, Host::off, ""},
    {Fault::wrongHost, Peer::on, Host::on, kUnverified},
    {Fault::wrongHost, Peer::on, Host::off, ""},
    {Fault::wrongHost, Peer::off, Host::on, kUnverified},
    {Fault::wrongHost, Peer::off, Host::off, ""},
    {Fault::expired, Peer::on, Host::on, kUnverified},
    {Fault::expired, Peer::on, Host::off, kUnverified},
    {Fault::expired, Peer::off, Host::on, ""},
    {Fault::expired, Peer::off, Host::off, ""},
    {Fault::revoked, Peer::on, Host::on, kUnverified},
    {Fault::revoked, Peer::on, Host::off, kUnverified},
    {Fault::revoked, Peer::off, Host::on, ""},
    {Fault::revoked, Peer::off, Host::off, ""},
    {Fault::unreadableAuthorities, Peer::on, Host::on, kBadAuthorityFile},
    {Fault::unreadableAuthorities, Peer::on, Host::off, kBadAuthorityFile},
    {Fault::unreadableAuthorities, Peer::off, Host::on, ""},
    {Fault::unreadableAuthorities, Peer::off, Host::off, ""},
};

class TlsSwitches : public TlsTest, public ::testing::WithParamInterface<Row> {
 protected:
  // Sets up what the fault needs on the side of the client, too.
  Certificate certificateWith(Fault fault) {
    switch (fault) {
      case Fault::unknownAuthority:
        return otherAuthority().issue();
      case Fault::wrongHost:
        return authority().issue({.alternativeNames = "DNS:other.example"});
      case Fault::expired:
        return authority().issue({.validity = test::kExpired});
      case Fault::revoked:
        return revokedCertificate();
      case Fault::unreadableAuthorities:
        library->setCAFile(config.get(), "/nowhere/ca.pem");
        break;
      case Fault::none:
        break;
    }
    return goodCertificate();
  }

 private:
  Certificate revokedCertificate() {
    Certificate certificate = authority().issue();
    authority().revoke(certificate);
    library->setRevocationListFile(config.get(), authority().writeRevocationList().c_str());
    return certificate;
  }
};

std::string nameOf(const ::testing::TestParamInfo<Row>& info) {
  const char* const faults[] = {"none",    "unknownAuthority", "wrongHost",
                                "expired", "revoked",          "unreadableAuthorities"};
  return std::string(faults[static_cast<int>(info.param.fault)]) +
         (info.param.peer == Peer::on ? "_peerOn" : "_peerOff") +
         (info.param.host == Host::on ? "_hostOn" : "_hostOff");
}

TEST_P(TlsSwitches, decideOverTheFault) {
  const auto& [fault, peer, host, details] = GetParam();
  const Certificate certificate = certificateWith(fault);
  library->setPeerVerification(config.get(), peer == Peer::on);
  library->setHostnameVerification(config.get(), host == Host::on);
  for (const char* version : kEachVersion) {
    const Nginx nginx = nginxWith(certificate, version);
    for (int i = 0; i < 2; ++i) {
      if (details.empty()) {
        expectAnswered(nginx.url());
        EXPECT_EQ(lastHeader("X-Tls-Version"), version);
      } else {
        expectRefused(nginx.url(), details);
      }
    }
  }
  expectAnsweredWithoutTls();
}

INSTANTIATE_TEST_SUITE_P(, TlsSwitches, ::testing::ValuesIn(kOutcomes), nameOf);

}  // namespace
}  // namespace hcy::abi
