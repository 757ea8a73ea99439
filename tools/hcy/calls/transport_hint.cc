// SPDX-License-Identifier: Apache-2.0

#include "calls/transport_hint.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <memory>
#include <sstream>

#include "settings/curl_url.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

struct TextDeleter {
  void operator()(char* text) const noexcept { curl_free(text); }
};

std::string partOf(CURLU* url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) return {};
  const std::unique_ptr<char, TextDeleter> owner(text);
  return printable(text);
}

struct Endpoint {
  explicit Endpoint(const std::string& text) {
    const CurlUrl url(curl_url());
    if (!url || curl_url_set(url.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK) return;
    scheme = partOf(url.get(), CURLUPART_SCHEME);
    host = partOf(url.get(), CURLUPART_HOST);
    port = partOf(url.get(), CURLUPART_PORT);
  }
  std::string place() const { return scheme + "://" + host + ":" + port; }

  std::string scheme, host, port;
};

// The first line of the message is the text of libcurl: the library does not tell its code.
CURLcode codeOf(std::string_view message) {
  constexpr std::array known = {CURLE_COULDNT_RESOLVE_HOST, CURLE_COULDNT_CONNECT,
                                CURLE_OPERATION_TIMEDOUT,   CURLE_GOT_NOTHING,
                                CURLE_RECV_ERROR,           CURLE_SSL_CONNECT_ERROR,
                                CURLE_SSL_CERTPROBLEM,      CURLE_PEER_FAILED_VERIFICATION,
                                CURLE_SSL_CACERT_BADFILE,   CURLE_SSL_CRL_BADFILE,
                                CURLE_BAD_FUNCTION_ARGUMENT};
  const std::string_view line = message.substr(0, message.find('\n'));
  const auto* const found = std::find_if(known.begin(), known.end(), [line](CURLcode code) {
    return line == curl_easy_strerror(code);
  });
  return found == known.end() ? CURLE_OK : *found;
}

std::string secondsText(double seconds) {
  std::ostringstream text;
  text << seconds << " s";
  return text.str();
}

std::string timeoutHint(const Settings& settings, const Endpoint& to) {
  const std::string limit = settings.timeout ? secondsText(*settings.timeout) : "the usual 120 s";
  return "no reply from " + to.place() + " within " + limit + "; --timeout sets another limit";
}

std::string clientCertificateHint(const Settings& settings) {
  if (settings.certificateFile.empty()) return "name the client certificate with --cert FILE";
  const std::string certificate = printable(settings.certificateFile);
  if (settings.keyFile.empty()) {
    return "name the private key of " + certificate +
           " with --key FILE, unless the same file contains it";
  }
  const std::string key = printable(settings.keyFile);
  const bool hasPassPhrase = !settings.passPhraseFile.empty() || settings.asksPassPhrase;
  return (hasPassPhrase
              ? "check the pass phrase of " + key
              : "if " + key + " is encrypted, use --key-pass-file FILE or --ask-key-pass") +
         "; otherwise, check that it is the key of " + certificate + ", and that both are PEM";
}

std::string verificationHint(const Options& options, const Endpoint& to) {
  const std::string reason = options.isVerbose ? "" : " (hcy call -v shows the reason)";
  return "the certificate of " + to.host + " was not accepted" + reason +
         "\nname its CA with --cacert FILE, or accept any certificate with -k, which is not safe";
}

// Whether the URL may have the wrong scheme for the port.
std::string schemeHint(const Endpoint& to) {
  const bool isPlain = to.scheme == "http";
  return "if " + to.place() + " expects " + (isPlain ? "TLS" : "no TLS") + ", begin the URL with " +
         (isPlain ? "https://" : "http://");
}

std::string hintFor(CURLcode code, const Options& options, const Endpoint& to) {
  switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
      return "no address is known for the host " + to.host;
    case CURLE_COULDNT_CONNECT:
      return "no connection to " + to.place() + "; check that the server runs there";
    case CURLE_OPERATION_TIMEDOUT:
      return timeoutHint(options.settings, to);
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
      return to.scheme == "http" ? schemeHint(to) : "";
    case CURLE_SSL_CONNECT_ERROR:
      return schemeHint(to);
    case CURLE_SSL_CERTPROBLEM:
      return clientCertificateHint(options.settings);
    case CURLE_BAD_FUNCTION_ARGUMENT:
      // What newer versions of libcurl report for a client certificate.
      return options.settings.certificateFile.empty() ? ""
                                                      : clientCertificateHint(options.settings);
    case CURLE_PEER_FAILED_VERIFICATION:
      return verificationHint(options, to);
    case CURLE_SSL_CACERT_BADFILE:
      return "check the file of CA certificates, which must be PEM" +
             (options.settings.authorityFile.empty()
                  ? std::string()
                  : ": " + printable(options.settings.authorityFile));
    case CURLE_SSL_CRL_BADFILE:
      return "check the file of revocation lists, which must be PEM: " +
             printable(options.settings.revocationListFile);
    default:
      return {};
  }
}

}  // namespace

std::string transportHint(std::string_view message, const Options& options) {
  if (message.find("setResponseSizeLimit") != std::string_view::npos) {
    return "\nWith hcy, --max-reply sets this limit: --max-reply 256M";
  }
  const CURLcode code = codeOf(message);
  const std::string hint =
      code == CURLE_OK ? std::string() : hintFor(code, options, Endpoint(options.url));
  return hint.empty() ? hint : "\n" + hint;
}

}  // namespace hcy::tools
