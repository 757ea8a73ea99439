/* SPDX-License-Identifier: Apache-2.0
 *
 * Calls a server that requires a client certificate: with a certificate, without one, and without
 * trusting the server's authority.
 *
 * Usage: tls SERVER_URL AUTHORITY_FILE CERTIFICATE_FILE KEY_FILE PASS_PHRASE
 */
#include <hcy/hcyclient.h>
#include <stdio.h>
#include <stdlib.h>

enum { URL_LENGTH = 512 };

/* A context copies the current settings of the configuration, and connects at its first
 * call. */
static void call(const hcyClientRuntime* runtime, const hcyClientConfig* config, const char* url) {
  hcyClientContext* context = NULL;
  hcyArray *number = hcyCreateDoubleScalar(42.0), *echoed = NULL;
  const hcyArray* inputs[] = {number};
  if (runtime->createContext(&context, config) == 0) {
    if (runtime->feval(context, url, 1, &echoed, 1, inputs) == 0) {
      printf("%g\n", hcyGetScalar(echoed));
    } else {
      hcyErrorInfo info;
      runtime->getLastErrorInfo(context, &info);
      printf("%s\n", info.kind == HCY_GENERIC_ERROR ? info.details.generic.details : info.message);
      runtime->destroyLastErrorInfo(&info);
    }
    runtime->destroyContext(context);
  }
  hcyDestroyArray(number), hcyDestroyArray(echoed);
}

int main(int argc, char** argv) {
  char url[URL_LENGTH];
  hcyClientConfig* config = NULL;
  hcyClientRuntime* runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  if (argc != 6 || runtime == NULL || runtime->createConfig(&config) != 0) return EXIT_FAILURE;
  snprintf(url, sizeof url, "%s/echo", argv[1]);

  runtime->setCAFile(config, argv[2]);
  runtime->setClientCertFile(config, argv[3]);
  runtime->setClientPrivateKeyFile(config, argv[4]);
  runtime->setPrivateKeyPasswd(config, argv[5]);
  printf("with a certificate: ");
  call(runtime, config, url);

  runtime->setClientCertFile(config, "");
  runtime->setClientPrivateKeyFile(config, "");
  printf("without a certificate: ");
  call(runtime, config, url);

  runtime->setCAFile(config, "");
  printf("without the authority: ");
  call(runtime, config, url);

  runtime->destroyConfig(config);
  hcyTerminate();
  return EXIT_SUCCESS;
}
