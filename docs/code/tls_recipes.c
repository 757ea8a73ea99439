/* SPDX-License-Identifier: Apache-2.0
 *
 * One call for each recipe. Usage: tls SERVER_URL, in a directory with the files of tls.sh.
 */
#include <hcy/hcyclient.h>
#include <stdio.h>

static const hcyClientRuntime* runtime;
static const char* server;

/* Calls the server with these settings and destroys them. */
static void call(const char* recipe, hcyClientConfig* config) {
  char url[512];
  hcyErrorInfo info;
  hcyClientContext* context = NULL;
  hcyArray *input = hcyCreateDoubleScalar(42.0), *output = NULL;
  const hcyArray* inputs[] = {input};
  snprintf(url, sizeof url, "%s/echo", server);
  if (runtime->createContext(&context, config) == 0) {
    if (runtime->feval(context, url, 1, &output, 1, inputs) == 0) {
      printf("%s: %g\n", recipe, hcyGetScalar(output));
    } else {
      runtime->getLastErrorInfo(context, &info);
      printf("%s: %s\n", recipe,
             info.kind == HCY_GENERIC_ERROR ? info.details.generic.details : info.message);
      runtime->destroyLastErrorInfo(&info);
    }
    runtime->destroyContext(context);
  }
  hcyDestroyArray(input), hcyDestroyArray(output);
  runtime->destroyConfig(config);
}

static hcyClientConfig* newConfig(void) {
  hcyClientConfig* config = NULL;
  return runtime->createConfig(&config) == 0 ? config : NULL;
}

/* The settings that this server requires from every client. */
static hcyClientConfig* trustedConfig(void) {
  hcyClientConfig* config = newConfig();
  runtime->setCAFile(config, "ca.pem");
  runtime->setClientCertFile(config, "client.pem");
  runtime->setClientPrivateKeyFile(config, "client.key");
  return config;
}

static hcyClientConfig* withPassPhrase(void) {
  hcyClientConfig* config = trustedConfig();
  runtime->setClientPrivateKeyFile(config, "locked.key");
  runtime->setPrivateKeyPasswd(config, "four words");
  return config;
}

static hcyClientConfig* withRevocationList(const char* list) {
  hcyClientConfig* config = trustedConfig();
  runtime->setRevocationListFile(config, list);
  return config;
}

/* For tests only: anyone can answer in place of the server. */
static hcyClientConfig* withoutVerification(void) {
  hcyClientConfig* config = trustedConfig();
  runtime->setCAFile(config, "");
  runtime->setPeerVerification(config, false);
  runtime->setHostnameVerification(config, false);
  return config;
}

int main(int argc, char** argv) {
  runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  if (argc != 2 || runtime == NULL) return 1;
  server = argv[1];
  call("nothing set", newConfig());
  call("authority and certificate", trustedConfig());
  call("key with a pass phrase", withPassPhrase());
  call("empty revocation list", withRevocationList("none.crl"));
  call("server revoked", withRevocationList("server.crl"));
  call("no verification", withoutVerification());
  hcyTerminate();
  return 0;
}
