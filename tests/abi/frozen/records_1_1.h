// SPDX-License-Identifier: Apache-2.0
//
// The records of the public header as version 1.1.0 released them. Programs were compiled with
// these: nothing here is ever changed. What a later version adds goes to a file of its own.

#pragma once

#include <cstddef>
#include <cstdint>

#include "hcy/hcyclient.h"

namespace hcy::abi::frozen_1_1 {

struct ErrorStackFrame {
  const char* file;
  const char* name;
  int32_t line;
};

struct ErrorInfo {
  int32_t kind;
  const char* message;
  union {
    struct {
      uint32_t statusCode;
      const char* statusMessage;
    } http;
    struct {
      const char* message;
      const char* identifier;
      hcyErrorStackFrame* stack;
      size_t stackDepth;
    } vorten;
    struct {
      const char* details;
    } generic;
  } details;
};

struct ClientRuntime {
  int (*createConfig)(hcyClientConfig** config);
  void (*destroyConfig)(hcyClientConfig* config);
  void (*setTimeOut)(hcyClientConfig* config, uint32_t seconds);
  uint32_t (*getTimeOut)(const hcyClientConfig* config);
  void (*setResponseSizeLimit)(hcyClientConfig* config, uint32_t bytes);
  uint32_t (*getResponseSizeLimit)(const hcyClientConfig* config);
  int (*createContext)(hcyClientContext** context, const hcyClientConfig* config);
  void (*destroyContext)(hcyClientContext* context);
  void (*getLastErrorInfo)(const hcyClientContext* context, hcyErrorInfo* info);
  void (*destroyLastErrorInfo)(hcyErrorInfo* info);
  int (*feval)(hcyClientContext* context, const char* url, int32_t nargout, hcyArray** outputs,
               int32_t nargin, const hcyArray* const* inputs);
  void (*setClientCertFile)(hcyClientConfig* config, const char* file);
  const char* (*getClientCertFile)(const hcyClientConfig* config);
  void (*setClientPrivateKeyFile)(hcyClientConfig* config, const char* file);
  const char* (*getClientPrivateKeyFile)(const hcyClientConfig* config);
  void (*setPrivateKeyPasswd)(hcyClientConfig* config, const char* passPhrase);
  const char* (*getPrivateKeyPasswd)(const hcyClientConfig* config);
  void (*setCAFile)(hcyClientConfig* config, const char* file);
  const char* (*getCAFile)(const hcyClientConfig* config);
  void (*setRevocationListFile)(hcyClientConfig* config, const char* file);
  const char* (*getRevocationListFile)(const hcyClientConfig* config);
  void (*setHostnameVerification)(hcyClientConfig* config, bool verify);
  bool (*getHostnameVerification)(const hcyClientConfig* config);
  void (*setPeerVerification)(hcyClientConfig* config, bool verify);
  bool (*getPeerVerification)(const hcyClientConfig* config);
};

}  // namespace hcy::abi::frozen_1_1

// Every member with its offset and size: HCY_FROZEN_MEMBER(record, member, offset, size).
#define HCY_FROZEN_MEMBERS_1_1(HCY_FROZEN_MEMBER)                   \
  HCY_FROZEN_MEMBER(ErrorStackFrame, file, 0, 8)                    \
  HCY_FROZEN_MEMBER(ErrorStackFrame, name, 8, 8)                    \
  HCY_FROZEN_MEMBER(ErrorStackFrame, line, 16, 4)                   \
  HCY_FROZEN_MEMBER(ErrorInfo, kind, 0, 4)                          \
  HCY_FROZEN_MEMBER(ErrorInfo, message, 8, 8)                       \
  HCY_FROZEN_MEMBER(ErrorInfo, details.http.statusCode, 16, 4)      \
  HCY_FROZEN_MEMBER(ErrorInfo, details.http.statusMessage, 24, 8)   \
  HCY_FROZEN_MEMBER(ErrorInfo, details.vorten.message, 16, 8)       \
  HCY_FROZEN_MEMBER(ErrorInfo, details.vorten.identifier, 24, 8)    \
  HCY_FROZEN_MEMBER(ErrorInfo, details.vorten.stack, 32, 8)         \
  HCY_FROZEN_MEMBER(ErrorInfo, details.vorten.stackDepth, 40, 8)    \
  HCY_FROZEN_MEMBER(ErrorInfo, details.generic.details, 16, 8)      \
  HCY_FROZEN_MEMBER(ClientRuntime, createConfig, 0, 8)              \
  HCY_FROZEN_MEMBER(ClientRuntime, destroyConfig, 8, 8)             \
  HCY_FROZEN_MEMBER(ClientRuntime, setTimeOut, 16, 8)               \
  HCY_FROZEN_MEMBER(ClientRuntime, getTimeOut, 24, 8)               \
  HCY_FROZEN_MEMBER(ClientRuntime, setResponseSizeLimit, 32, 8)     \
  HCY_FROZEN_MEMBER(ClientRuntime, getResponseSizeLimit, 40, 8)     \
  HCY_FROZEN_MEMBER(ClientRuntime, createContext, 48, 8)            \
  HCY_FROZEN_MEMBER(ClientRuntime, destroyContext, 56, 8)           \
  HCY_FROZEN_MEMBER(ClientRuntime, getLastErrorInfo, 64, 8)         \
  HCY_FROZEN_MEMBER(ClientRuntime, destroyLastErrorInfo, 72, 8)     \
  HCY_FROZEN_MEMBER(ClientRuntime, feval, 80, 8)                    \
  HCY_FROZEN_MEMBER(ClientRuntime, setClientCertFile, 88, 8)        \
  HCY_FROZEN_MEMBER(ClientRuntime, getClientCertFile, 96, 8)        \
  HCY_FROZEN_MEMBER(ClientRuntime, setClientPrivateKeyFile, 104, 8) \
  HCY_FROZEN_MEMBER(ClientRuntime, getClientPrivateKeyFile, 112, 8) \
  HCY_FROZEN_MEMBER(ClientRuntime, setPrivateKeyPasswd, 120, 8)     \
  HCY_FROZEN_MEMBER(ClientRuntime, getPrivateKeyPasswd, 128, 8)     \
  HCY_FROZEN_MEMBER(ClientRuntime, setCAFile, 136, 8)               \
  HCY_FROZEN_MEMBER(ClientRuntime, getCAFile, 144, 8)               \
  HCY_FROZEN_MEMBER(ClientRuntime, setRevocationListFile, 152, 8)   \
  HCY_FROZEN_MEMBER(ClientRuntime, getRevocationListFile, 160, 8)   \
  HCY_FROZEN_MEMBER(ClientRuntime, setHostnameVerification, 168, 8) \
  HCY_FROZEN_MEMBER(ClientRuntime, getHostnameVerification, 176, 8) \
  HCY_FROZEN_MEMBER(ClientRuntime, setPeerVerification, 184, 8)     \
  HCY_FROZEN_MEMBER(ClientRuntime, getPeerVerification, 192, 8)

// Every constant.
#define HCY_FROZEN_CONSTANTS_1_1(HCY_FROZEN_CONSTANT)  \
  HCY_FROZEN_CONSTANT(hcyUINT8_CLASS, 0)               \
  HCY_FROZEN_CONSTANT(hcyINT8_CLASS, 1)                \
  HCY_FROZEN_CONSTANT(hcyUINT16_CLASS, 2)              \
  HCY_FROZEN_CONSTANT(hcyINT16_CLASS, 3)               \
  HCY_FROZEN_CONSTANT(hcyUINT32_CLASS, 4)              \
  HCY_FROZEN_CONSTANT(hcyINT32_CLASS, 5)               \
  HCY_FROZEN_CONSTANT(hcyUINT64_CLASS, 6)              \
  HCY_FROZEN_CONSTANT(hcyINT64_CLASS, 7)               \
  HCY_FROZEN_CONSTANT(hcySINGLE_CLASS, 8)              \
  HCY_FROZEN_CONSTANT(hcyDOUBLE_CLASS, 9)              \
  HCY_FROZEN_CONSTANT(hcyLOGICAL_CLASS, 10)            \
  HCY_FROZEN_CONSTANT(hcyCHAR_CLASS, 11)               \
  HCY_FROZEN_CONSTANT(hcySTRUCT_CLASS, 12)             \
  HCY_FROZEN_CONSTANT(hcyCELL_CLASS, 13)               \
  HCY_FROZEN_CONSTANT(hcyREAL, 0)                      \
  HCY_FROZEN_CONSTANT(hcyCOMPLEX, 1)                   \
  HCY_FROZEN_CONSTANT(HCY_HTTP_ERROR, 0)               \
  HCY_FROZEN_CONSTANT(HCY_VORTEN_ERROR, 1)             \
  HCY_FROZEN_CONSTANT(HCY_GENERIC_ERROR, 2)            \
  HCY_FROZEN_CONSTANT(HCY_CLIENT_RUNTIME_1_0, 0x10000) \
  HCY_FROZEN_CONSTANT(HCY_CLIENT_RUNTIME_1_1, 0x10001)
