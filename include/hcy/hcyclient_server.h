/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient_server.h
 * @brief Serves functions of a program: the C interface of libhcyclient-server, which
 *        hcyclient_server.hpp wraps. It uses the arrays of libhcyclient.
 */
#ifndef HCY_HCYCLIENT_SERVER_H
#define HCY_HCYCLIENT_SERVER_H

#include <hcy/hcyclient.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A running server. Any thread may call hcyServerUrl() for it; only one may stop it. */
typedef struct hcyServer hcyServer;

/** One call of a function. The call and its arrays are valid until the function returns. Only the
 *  thread that called the function may use them. */
typedef struct hcyServedCall {
  int32_t nargout;   /**< how many outputs are wanted, 0 or more */
  size_t nargin;     /**< how many inputs there are */
  hcyArray** inputs; /**< the inputs; to take ownership of one, set its pointer here to null */
  void* internal;    /**< for internal use by the server */
} hcyServedCall;

/** A function that is served. */
typedef struct hcyServedFunction {
  const char* name; /**< path of its URL, without a leading slash */
  /** Answers a call with hcyServedOutput() or hcyServedError(). The threads of the server call this
   * function, several at a time if there are several. It must not throw. */
  void (*call)(void* context, hcyServedCall* call);
  void* context; /**< passed to each call; must be valid until hcyServerStop() returns */
} hcyServedFunction;

/**
 * Starts a server that answers calls of these functions until hcyServerStop().
 *
 * @param functions  the functions, which are copied with their names.
 * @param count      how many functions there are; 0 or more.
 * @param threads    how many calls of functions may run at a time; 1 or more.
 * @param noptions   how many options there are; 0 or more.
 * @param options    options of the program hcy-local-server, such as "--port", "0"; not kept.
 * @param message    must not be null. Receives null on success, and the reason on failure (null if
 *                   memory runs out). Release it with hcyFree().
 * @return the server, or null if an option is wrong (the standard error says which), the server
 *         cannot listen, a thread cannot be started, or libhcyclient is of another version.
 */
HCY_API hcyServer* hcyServerStart(const hcyServedFunction* functions, size_t count,
                                  unsigned threads, int noptions, const char* const* options,
                                  char** message);

/** Returns the URL of the server, without a slash at its end; valid until hcyServerStop(). */
HCY_API const char* hcyServerUrl(const hcyServer* server);

/** Stops and destroys a server, and returns when no function is running any more. Calls in progress
 *  fail. Null is ignored. A served function must not call it. */
HCY_API void hcyServerStop(hcyServer* server);

/**
 * Adds an output to a call. Extra outputs are dropped. If there are too few, the call fails.
 *
 * @param call    the call.
 * @param output  the array. The call takes ownership of it, even on failure. Null means that memory
 *                has run out.
 * @return 0 on success; 1 if memory runs out, and then the call fails for that reason.
 */
HCY_API int hcyServedOutput(hcyServedCall* call, hcyArray* output);

/**
 * Makes a call fail with an error, whatever outputs it has. The last of several errors counts.
 *
 * @param call        the call.
 * @param identifier  identifies the error, such as "my:error". Any bytes; copied, like all strings.
 * @param message     says what is wrong. Any bytes.
 * @param depth       number of stack frames; 0 stands for one frame with the name of the function.
 * @param stack       the frames, innermost first; may be null if there are none.
 * @return 0 on success; 1 if memory runs out, and then the call fails for that reason.
 */
HCY_API int hcyServedError(hcyServedCall* call, const char* identifier, const char* message,
                           size_t depth, const hcyErrorStackFrame* stack);

#ifdef __cplusplus
}
#endif

#endif
