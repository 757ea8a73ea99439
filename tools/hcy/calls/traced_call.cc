// SPDX-License-Identifier: Apache-2.0

#include "calls/traced_call.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

#include "bodies/codec.h"
#include "bodies/exchange.h"
#include "calls/retry.h"
#include "calls/shown_url.h"
#include "output/display.h"
#include "output/terminal.h"
#include "text/file_replacement.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

constexpr std::size_t kShownWidth = 72;

std::string bytesText(std::size_t bytes) {
  return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

std::string milliseconds(double seconds) {
  std::array<char, 64> text{};
  static_cast<void>(std::snprintf(text.data(), text.size(), "%.1f ms", seconds * 1e3));
  return text.data();
}

void showRequest(const std::vector<hcyclient::Array>& inputs, const EncodedRequest& request,
                 const Options& options) {
  std::string text = "> POST " + shownUrl(options.url) + "\n";
  for (const std::string& header : request.headers) text += "> " + printable(header) + "\n";
  text += "> " + bytesText(request.body.size()) + ", " + std::to_string(options.nargout) +
          (options.nargout == 1 ? " output" : " outputs") + " requested\n";
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    // The first line has class and shape, and a single value.
    const std::string shown =
        display("argument " + std::to_string(i + 1), inputs[i], {kShownWidth, 1});
    text += ">   " + shown.substr(0, shown.find('\n')) + "\n";
  }
  std::cerr << text;
}

void showReply(const Exchange& exchange) {
  std::cerr << "< HTTP " << exchange.status << (exchange.reason.empty() ? "" : " ")
            << printable(exchange.reason) << ", " << bytesText(exchange.reply.size())
            << (exchange.problem.empty() ? "" : " before it breaks off") << '\n'
            << "< connected after " << milliseconds(exchange.connected) << ", first byte after "
            << milliseconds(exchange.firstByte) << ", all after " << milliseconds(exchange.total)
            << '\n';
}

constexpr std::size_t kMostLines = 10;

// Shows the beginning of a reply that is no result, if it is text.
void showText(std::string_view body) {
  std::string_view rest = body.substr(0, kMostLines * kShownWidth);
  while (rest.size() > 3) {  // the cut may go through a character
    const auto codePoint = takeCodePoint(rest);
    if (!codePoint || *codePoint == U'\0') return;
  }
  for (std::size_t lines = 0; lines < kMostLines && !body.empty(); ++lines) {
    const std::size_t end = std::min(body.find('\n'), body.size());
    std::string_view line = body.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    const std::string_view start = line.substr(0, 4 * kShownWidth);
    std::cerr << "<   " << cutToWidth(printable(start), kShownWidth) << '\n';
    body.remove_prefix(std::min(end + 1, body.size()));
  }
  if (!body.empty()) std::cerr << "<   …\n";
}

// Saves what came of the reply; throws if it breaks off.
void saveReply(const Exchange& exchange, const std::string& file) {
  const bool isWhole = exchange.problem.empty();
  const bool isSaved = !file.empty() && (isWhole || !exchange.reply.empty());
  if (isSaved) writeFile(file, exchange.reply);
  if (isWhole) return;
  throw hcyclient::TransportError(
      exchange.problem + (isSaved ? "\nOnly the first " + bytesText(exchange.reply.size()) +
                                        " of the reply arrived and were saved in " + file + "."
                                  : ""));
}

// Whether a page came, as gateways and web servers send it. No message begins like that: its first
// byte would end a group.
bool isHtml(std::string_view body) {
  body.remove_prefix(std::min(body.find_first_not_of(" \t\r\n"), body.size()));
  const std::string beginning(body.substr(0, std::string_view("<!doctype html").size()));
  return ::strncasecmp(beginning.c_str(), "<!doctype html", 14) == 0 ||
         ::strncasecmp(beginning.c_str(), "<html", 5) == 0;
}

// With -v, shows why TLS failed.
Exchange postShown(const hcyclient::Config& config, const EncodedRequest& request,
                   const Options& options, double seconds) {
  try {
    return post(config, options.url, request.headers, request.body, seconds);
  } catch (const NoReply& failure) {
    if (options.isVerbose && failure.reason() == hcyclient::Reason::tls) {
      std::cerr << "* " << printable(failure.details()) << '\n';
    }
    throw;
  }
}

}  // namespace

std::vector<hcyclient::Array> tracedCall(const hcyclient::Library& library,
                                         const hcyclient::Config& config,
                                         const std::vector<hcyclient::Array>& inputs,
                                         const Options& options) {
  const EncodedRequest request = requestOf(library, inputs, options.nargout);
  if (options.isVerbose) showRequest(inputs, request, options);
  if (!options.requestFile.empty()) writeFile(options.requestFile, request.body);
  const double seconds =
      options.settings.timeout.value_or(library.runtime()->getTimeOut(config.get()));
  const Exchange exchange = postShown(config, request, options, seconds);
  if (options.isVerbose) showReply(exchange);
  const bool isPage = isHtml(exchange.reply);
  if (options.isVerbose && (exchange.status != 200 || isPage)) showText(exchange.reply);
  saveReply(exchange, options.replyFile);
  if (exchange.status != 200) {
    throw Postponed(exchange.status, exchange.reason, exchange.retryAfter);
  }
  if (isPage) {
    throw hcyclient::TransportError(
        "an HTML page came instead of a reply; check the URL, and what is between here and the "
        "server");
  }
  try {
    return outputsOf(library, exchange.reply, options.nargout,
                     library.runtime()->getResponseSizeLimit(config.get()));
  } catch (const hcyclient::TransportError&) {
    if (options.isVerbose) showText(exchange.reply);
    throw;
  }
}

}  // namespace hcy::tools
