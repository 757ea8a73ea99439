// SPDX-License-Identifier: Apache-2.0
//
// Each option reaches what it is for.

#include "settings/options.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "results/exit_status.h"
#include "settings/pass_phrase.h"
#include "settings/settings.h"
#include "support/pki.h"
#include "text/source_text.h"

namespace hcy::test {
namespace {

tools::CommandLine parse(std::vector<std::string> words) {
  words.insert(words.begin(), "hcy");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  return tools::parseCommandLine(static_cast<int>(argv.size()), argv.data());
}

TEST(Options, argumentsMayLookLikeListsAndNegativeNumbersAndStandAnywhere) {
  const auto parsed = parse(
      {"call", "--json", "url", "[1,2]", "-5", "-n", "2", "-", "--", "-1e3", "-.5", "--width=9"});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->url, "url");
  EXPECT_EQ(parsed.options->arguments,
            (std::vector<std::string>{"[1,2]", "-5", "-", "-1e3", "-.5"}));
  EXPECT_EQ(parsed.options->nargout, 2);
  EXPECT_EQ(parsed.options->output.width, 9U);
  EXPECT_EQ(parsed.options->output.form, tools::Form::kJson);
}

TEST(Options, everyWordBehindTheUrlIsAnInput) {
  const auto parsed = parse({"bench", "url", "2", "3", "4"});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->url, "url");
  EXPECT_EQ(parsed.options->arguments, (std::vector<std::string>{"2", "3", "4"}));
}

TEST(Options, theHelpOfCommandsThatCallNamesTheInputs) {
  for (const std::string command : {"call", "bench", "list", "encode", "show"}) {
    testing::internal::CaptureStdout();
    const auto parsed = parse({command, "--help"});
    const std::string help = testing::internal::GetCapturedStdout();
    EXPECT_FALSE(parsed.options);
    EXPECT_EQ(parsed.exitStatus, 0);
    EXPECT_EQ(help.find(" URL [ARG]...\n") != help.npos, command == "call" || command == "bench")
        << help;
    EXPECT_EQ(help.find("\n  ARG                         Inputs of the function\n") != help.npos,
              command != "show" && command != "list")
        << help;
    // A heading, whose letters depend on the version of CLI11.
    EXPECT_TRUE(help.find("\nPositionals:\n  ") != help.npos ||
                help.find("\nPOSITIONALS:\n  ") != help.npos)
        << help;
  }
}

TEST(Options, anUnknownCommandIsNamed) {
  testing::internal::CaptureStderr();
  const auto parsed = parse({"fo\no", "url"});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "hcy: there is no command fo\\no\nRun \"hcy help\" to list the options.\n");
  EXPECT_EQ(parsed.exitStatus, tools::kUsage);
}

TEST(Options, allNineSettingsReachTheConfiguration) {
  const TestDirectory files;
  const std::string pass = files.write("pass", "four words\r\nnot this\n");
  std::vector<std::string> words = {"bench",
                                    "url",
                                    "--timeout",
                                    "7",
                                    "--max-reply",
                                    "8",
                                    "--key-pass-file",
                                    pass,
                                    "--no-verify-host",
                                    "--no-verify-peer"};
  for (const std::string name : {"cert", "key", "ca", "crl"}) {
    words.push_back("--" + name);
    words.push_back(files.write(name, ""));
  }
  for (const std::string& file : {pass, files.file("key")})
    ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
  const auto parsed = parse(words);
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->command, tools::Command::kBench);

  const hcyclient::Library library;
  const auto config = tools::configFrom(library, parsed.options->settings);
  const hcyClientRuntime& runtime = *library.runtime();
  EXPECT_EQ(runtime.getTimeOut(config.get()), 7U);
  EXPECT_EQ(runtime.getResponseSizeLimit(config.get()), 8U);
  EXPECT_EQ(runtime.getClientCertFile(config.get()), files.file("cert"));
  EXPECT_EQ(runtime.getClientPrivateKeyFile(config.get()), files.file("key"));
  EXPECT_STREQ(runtime.getPrivateKeyPasswd(config.get()), "four words");
  EXPECT_EQ(runtime.getCAFile(config.get()), files.file("ca"));
  EXPECT_EQ(runtime.getRevocationListFile(config.get()), files.file("crl"));
  EXPECT_FALSE(runtime.getHostnameVerification(config.get()));
  EXPECT_FALSE(runtime.getPeerVerification(config.get()));
}

TEST(Options, whatIsNotSaidStaysAsTheLibraryHasIt) {
  const auto parsed = parse({"call", "url"});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->nargout, 1);
  const hcyclient::Library library;
  const auto config = tools::configFrom(library, parsed.options->settings);
  EXPECT_EQ(library.runtime()->getTimeOut(config.get()), 120U);
  EXPECT_EQ(library.runtime()->getResponseSizeLimit(config.get()), 67108864U);
  EXPECT_TRUE(library.runtime()->getHostnameVerification(config.get()));
  EXPECT_TRUE(library.runtime()->getPeerVerification(config.get()));
}

TEST(Options, settingsHaveTheNamesOfCurlToo) {
  const TestDirectory files;
  const std::string file = files.write("a.pem", "");
  ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
  const auto parsed = parse({"call", "url", "-m", "0.25", "--cacert", file, "--crlfile", file, "-E",
                             file, "--key", file, "-k"});
  ASSERT_TRUE(parsed.options);
  const tools::Settings& settings = parsed.options->settings;
  EXPECT_EQ(settings.timeout, 0.25);
  EXPECT_EQ(settings.authorityFile, file);
  EXPECT_EQ(settings.revocationListFile, file);
  EXPECT_EQ(settings.certificateFile, file);
  EXPECT_FALSE(settings.verifiesHost);
  EXPECT_FALSE(settings.verifiesPeer);
  EXPECT_EQ(parse({"call", "url", "--max-time", "2"}).options->settings.timeout, 2);
  const hcyclient::Library library;
  EXPECT_EQ(library.runtime()->getTimeOut(tools::configFrom(library, settings).get()), 1U);
}

TEST(Options, mistakesAreMistakesOfUsage) {
  const TestDirectory files;
  const std::string key = files.write("key", "");
  const std::vector<std::vector<std::string>> mistakes = {
      {},
      {"cal", "url"},
      {"call"},
      {"call", "url", "--jsn"},
      {"call", "url", "-x"},
      {"call", "url", "--nargout", "-1"},
      {"call", "url", "--nargout", "2147483647"},
      {"call", "url", "--timeout", "4294967296"},
      {"call", "url", "--timeout", "-1"},
      {"call", "url", "--timeout", "1s"},
      {"call", "url", "--timeout", "nan"},
      {"call", "url", "--delimiter", "ab"},
      {"call", "url", "--csv", "--raw"},
      {"call", "url", "--ca", files.file("none")},
      {"call", "url", "--ask-key-pass"},
      {"call", "url", "--key-pass", "secret"},
      {"call", "url", "--key", key, "--key-pass-file", key, "--ask-key-pass"},
      {"bench", "url", "--calls", "0"},
      {"bench", "url", "--threads", "1025"},
      {"show"},
      {"show", "a", "b"},
      {"show", "a", "--request", "--reply"}};
  for (const auto& words : mistakes) {
    testing::internal::CaptureStderr();
    const auto parsed = parse(words);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_FALSE(parsed.options) << testing::PrintToString(words);
    EXPECT_EQ(parsed.exitStatus, tools::kUsage);
    EXPECT_TRUE(said.starts_with("hcy: ")) << said;
  }
}

TEST(PassPhrase, isTheFirstLineOfAFile) {
  const TestDirectory files;
  EXPECT_EQ(tools::passPhraseOfFile(files.write("a", "one")).text(), "one");
  EXPECT_EQ(tools::passPhraseOfFile(files.write("b", " two words \n3")).text(), " two words ");
  EXPECT_THROW(tools::passPhraseOfFile(files.write("c", "\nx")), tools::BadInput);
  EXPECT_THROW(tools::passPhraseOfFile(files.write("d", std::string("a\0b", 3))), tools::BadInput);
  EXPECT_THROW(tools::passPhraseOfFile(files.write("e", std::string(2000, 'x'))), tools::BadInput);
  EXPECT_THROW(tools::passPhraseOfFile(files.file("none")), tools::BadInput);
  EXPECT_THROW(tools::passPhraseOfFile(files.path()), tools::BadInput);
}

TEST(FileAccess, filesOfOtherUsersAreRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  const TestDirectory files;
  tools::Settings settings;
  settings.keyFile = files.write("key", "");
  ASSERT_EQ(::chmod(settings.keyFile.c_str(), 0600), 0);
  const hcyclient::Library library;
  EXPECT_NO_THROW(static_cast<void>(tools::configFrom(library, settings)));
  ASSERT_EQ(::chown(settings.keyFile.c_str(), 65534, 65534), 0);
  try {
    static_cast<void>(tools::configFrom(library, settings));
    ADD_FAILURE();
  } catch (const tools::BadInput& problem) {
    EXPECT_EQ(problem.what(), settings.keyFile + " belongs to another user");
  }
}

TEST(PassPhrase, isNotAskedForIfPromptsAreForbidden) {
  ASSERT_EQ(::setenv("HCY_NO_PROMPT", "1", 1), 0);
  const hcyclient::Library library;
  tools::Settings settings;
  EXPECT_EQ(tools::configFrom(library, settings).privateKeyPassPhrase(), "");
  // With a pass phrase, OpenSSL does not ask for one.
  settings.certificateFile = "/dev/null";
  EXPECT_NE(tools::configFrom(library, settings).privateKeyPassPhrase(), "");
  settings.asksPassPhrase = true;
  try {
    static_cast<void>(tools::configFrom(library, settings));
    ADD_FAILURE();
  } catch (const tools::BadInput& problem) {
    EXPECT_STREQ(problem.what(), "cannot ask for the pass phrase: HCY_NO_PROMPT is set");
  }
  ::unsetenv("HCY_NO_PROMPT");
}

}  // namespace
}  // namespace hcy::test
