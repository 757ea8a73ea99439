/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient_server.h
 * @brief Serves functions of a program: the C interface of libhcyclient-server, which
 *        hcyclient_server.hpp wraps. Arrays are those of libhcyclient.
 */
#ifndef HCY_HCYCLIENT_SERVER_H
#define HCY_HCYCLIENT_SERVER_H

#include <hcy/hcyclient.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A server that runs. */
typedef struct hcyServer hcyServer;

/** One call of a function. It and its arrays are valid until the function returns. */
typedef struct hcyServedCall {
  int32_t nargout;   /**< how many outputs are wanted, 0 or more */
  size_t nargin;     /**< how many inputs there are */
  hcyArray** inputs; /**< the inputs; the function may take one over, and sets its place to null */
  void* internal;    /**< of the library */
} hcyServedCall;

/** A function that is served. */
typedef struct hcyServedFunction {
  const char* name; /**< path of its URL, without a slash before it */
  /** Is called by threads of the server, several at a time if the server has several. It must not
   *  throw. */
  void (*call)(void* context, hcyServedCall* call);
  void* context; /**< passed to it */
} hcyServedFunction;

/**
 * Starts a server that answers calls of these functions until hcyServerStop().
 *
 * @param functions  count functions, whose names are copied.
 * @param threads    how many of them may run at a time; 1 or more.
 * @param options    noptions options of the program hcy-local-server, such as "--port", "0".
 * @param message    receives null, or why there is no server: to be released by hcyFree().
 * @return the server, or null if an option is wrong (the standard error says which) or the server
 *         cannot listen.
 */
HCY_API hcyServer* hcyServerStart(const hcyServedFunction* functions, size_t count,
                                  unsigned threads, int noptions, const char* const* options,
                                  char** message);

/** Returns the URL of the server, without a slash at its end; valid until hcyServerStop(). */
HCY_API const char* hcyServerUrl(const hcyServer* server);

/** Stops and destroys a server, and returns when no function runs any more. Calls that are being
 *  answered fail. Null is ignored. Must not be called by a function that is served. */
HCY_API void hcyServerStop(hcyServer* server);

/** Adds an output to a call, and takes the array over. Returns 0, or 1 if memory runs out; the
 *  array has been destroyed then. */
HCY_API int hcyServedOutput(hcyServedCall* call, hcyArray* output);

/**
 * Makes a call fail with an error, whatever outputs it has. The strings, which are copied, may hold
 * any bytes. Returns 0, or 1 if memory runs out; the call fails for that reason then.
 *
 * @param depth number of stack frames, innermost first; without any, there is one with the name of
 *              the function.
 */
HCY_API int hcyServedError(hcyServedCall* call, const char* identifier, const char* message,
                           size_t depth, const hcyErrorStackFrame* stack);

#ifdef __cplusplus
}
#endif

#endif
