// SPDX-License-Identifier: Apache-2.0
#include "nginx.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace hcy::test {
namespace {

std::string configuration(const NginxSettings& settings, const std::string& directory,
                          std::uint16_t port) {
  std::string text = "daemon off;\npid " + directory + "/nginx.pid;\nlock_file " + directory +
                     "/lock;\nevents {}\n";
  // A worker of root's master is given away to another user unless told otherwise.
  if (::geteuid() == 0) text += "user root;\n";
  text += "http {\naccess_log off;\n";
  for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
    text += std::string(kind) + "_temp_path " + directory + "/" + kind + ";\n";
  }
  text += "server {\nlisten 127.0.0.1:" + std::to_string(port) + " ssl" +
          (settings.http2 ? " http2" : "") + ";\nssl_certificate " +
          settings.certificate.certificateFile + ";\n" + "ssl_certificate_key " +
          settings.certificate.keyFile + ";\n" + "ssl_protocols " + settings.protocols + ";\n";
  // OpenSSL offers the versions before 1.2 at its lowest security level only.
  if (settings.protocols == "TLSv1.1") text += "ssl_ciphers ALL:@SECLEVEL=0;\n";
  if (!settings.clientAuthorityFile.empty()) {
    text += "ssl_client_certificate " + settings.clientAuthorityFile + ";\nssl_verify_client on;\n";
  }
  return text + R"(location / {
proxy_http_version 1.1;
proxy_set_header X-Tls-Version $ssl_protocol;
proxy_set_header X-Protocol $server_protocol;
proxy_set_header X-Client $ssl_client_s_dn;
proxy_set_header X-Connection-Requests $connection_requests;
proxy_pass )" +
         settings.upstream + ";\n}\n}\n}\n";
}

// Becomes nginx, which takes over the listening socket. Runs between fork and exec: no memory is
// allocated here.
[[noreturn]] void becomeNginx(char* const* arguments, char* const* environment, int listener,
                              pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  ::fcntl(listener, F_SETFD, 0);
  if (::getppid() == parent) ::execve(HCY_NGINX, arguments, environment);
  ::_exit(127);
}

}  // namespace

// The socket listens before nginx runs: clients wait in its queue until nginx takes them, and are
// refused when nginx ends instead.
Nginx::Nginx(const NginxSettings& settings) {
  std::string file =
      directory_.write("nginx.conf", configuration(settings, directory_.path(), port_.number()));
  std::string program = HCY_NGINX, p = "-p", c = "-c", e = "-e";
  std::string prefix = directory_.path(), errors = directory_.file("error.log");
  const FileDescriptor listener = listenOn(port_.number(), 64);
  std::string inherited = "NGINX=" + std::to_string(listener.get()) + ";";
  const std::array<char*, 8> arguments = {program.data(), p.data(), prefix.data(), c.data(),
                                          file.data(),    e.data(), errors.data(), nullptr};
  const std::array<char*, 2> environment = {inherited.data(), nullptr};
  const pid_t parent = ::getpid();
  pid_ = ::fork();
  if (pid_ < 0) throw std::system_error(errno, std::system_category(), "fork");
  if (pid_ == 0) becomeNginx(arguments.data(), environment.data(), listener.get(), parent);
}

Nginx::~Nginx() {
  ::kill(pid_, SIGTERM);
  int status = 0;
  while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) continue;
  // The signal itself ends an nginx that has not come to the point of taking it.
  if (status == 0 || (WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM)) return;
  std::fprintf(stderr, "nginx ended with status %d.\n%s", status,
               contentsOf(directory_.file("error.log")).c_str());
  std::abort();
}

}  // namespace hcy::test
