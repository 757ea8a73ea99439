/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient.h
 * @brief Call functions deployed on a Halcyon compute server.
 *
 * An application builds arrays of the VORTEN language, evaluates a function named by its URL, and
 * gets arrays back, or a structured record of what went wrong. The header compiles as C99 and as
 * C++11 and includes only standard headers.
 *
 * @par Rules for the whole header
 * - **Threads.** The library starts no threads and takes no locks. Any number of threads may read
 *   one array at once, including the elements of a container. Every function that takes a const
 *   array only reads it, except hcyDuplicateArray(); a call only reads the arrays that it sends.
 *   While an array is changed, by a setter or through a data pointer, no other thread may use it or
 *   any array that shares elements with it. Use each configuration and each context on one thread
 *   at a time. Different arrays, configurations and contexts may be used on different threads at
 *   once. hcyInitialize(), hcyInitializeEx() and hcyTerminate() must not overlap any other use of
 *   the runtime. Do not cancel a thread (pthread_cancel) during a call: its context cannot be used
 *   afterwards. libcurl changes the process's action for SIGPIPE during a transfer, so a program
 *   that makes calls on several threads must ignore SIGPIPE.
 * - **Handles.** Functions do not check handles for null, except where they say so.
 * - **Failures.** The operations of the runtime table never throw. If an array is of the wrong
 *   class or an index is out of range, an array function returns a neutral value (null, 0, false,
 *   -1, the largest size), which its description names. A function throws only the exceptions that
 *   its description lists; they derive from std::exception and are meant for C++ callers. A C
 *   program that requests only valid sizes, and does not run out of memory, never sees an
 *   exception.
 * - **Sizes.** A count or dimension that the library must hold in a signed 32-bit size is at
 *   most 2147483647. A larger one fails with "bad numeric conversion: positive overflow" (called
 *   *positive overflow* below). Array functions throw it as a std::bad_cast whose what() returns
 *   this string.
 * - **Order of elements.** Arrays are column-major: the element with zero-based subscripts (i, j)
 *   of an m-by-n array has the linear index i + j * m.
 * - **Since.** Everything here is part of interface version 1.0, except what is marked 1.1.
 */
#ifndef HCY_HCYCLIENT_H
#define HCY_HCYCLIENT_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

/** Marks the functions that the shared library exports. */
#if defined(__GNUC__)
#define HCY_API __attribute__((visibility("default")))
#else
#define HCY_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup types Types
 * @brief Handles and enumerations.
 * @{
 */

/** An array. Every function that returns a pointer to one returns a new handle, which the caller
 *  owns and releases with hcyDestroyArray(). */
typedef struct hcyArray hcyArray;

/** The settings of a connection: see hcyClientRuntime::createConfig. */
typedef struct hcyClientConfig hcyClientConfig;

/** One connection to a server, with the error record of its last failed call: see
 *  hcyClientRuntime::createContext. */
typedef struct hcyClientContext hcyClientContext;

/** The class of an array: one of the constants below, 32 bits wide. */
typedef int32_t hcyClassID;
enum {
  hcyUINT8_CLASS = 0,    /**< "uint8", unsigned 8-bit integers */
  hcyINT8_CLASS = 1,     /**< "int8", signed 8-bit integers */
  hcyUINT16_CLASS = 2,   /**< "uint16", unsigned 16-bit integers */
  hcyINT16_CLASS = 3,    /**< "int16", signed 16-bit integers */
  hcyUINT32_CLASS = 4,   /**< "uint32", unsigned 32-bit integers */
  hcyINT32_CLASS = 5,    /**< "int32", signed 32-bit integers */
  hcyUINT64_CLASS = 6,   /**< "uint64", unsigned 64-bit integers */
  hcyINT64_CLASS = 7,    /**< "int64", signed 64-bit integers */
  hcySINGLE_CLASS = 8,   /**< "single", 32-bit IEEE 754 numbers */
  hcyDOUBLE_CLASS = 9,   /**< "double", 64-bit IEEE 754 numbers, dense or sparse */
  hcyLOGICAL_CLASS = 10, /**< "logical", dense or sparse */
  hcyCHAR_CLASS = 11,    /**< "char", UTF-16 code units */
  hcySTRUCT_CLASS = 12,  /**< "struct", whose elements have named fields */
  hcyCELL_CLASS = 13     /**< "cell", whose elements are arrays */
};

/** Whether a new array has imaginary parts. Only hcyCOMPLEX means yes; any other value means
 *  hcyREAL. */
typedef int32_t hcyComplexity;
enum {
  hcyREAL = 0,   /**< real parts only */
  hcyCOMPLEX = 1 /**< real and imaginary parts, in separate storage */
};

/** The kind of failure of a call: one of the constants below, 32 bits wide. */
typedef int32_t hcyErrorType;
enum {
  HCY_HTTP_ERROR = 0,   /**< the server answered with an HTTP status other than 200 */
  HCY_VORTEN_ERROR = 1, /**< the function ran on the server and raised an error */
  HCY_GENERIC_ERROR = 2 /**< anything else: transport, memory, a wrong number of outputs */
};

/** Interface versions: major number in the upper 16 bits, minor number in the lower 16. */
enum {
  HCY_CLIENT_RUNTIME_1_0 = 0x10000, /**< slots 0 to 10 of the runtime table */
  HCY_CLIENT_RUNTIME_1_1 = 0x10001  /**< all 25 slots */
};

/** One stack frame of an error that a function raised. The strings belong to the context. They are
 *  NUL-terminated and never null; a missing string is empty, and a missing line is 0. */
typedef struct hcyErrorStackFrame {
  const char* file; /**< file that defines the function */
  const char* name; /**< name of the function */
  int32_t line;     /**< line in the file */
} hcyErrorStackFrame;

/**
 * The record of a failed call, filled in by hcyClientRuntime::getLastErrorInfo. `kind` says which
 * member of `details` is valid. All strings belong to the context and stay valid until its next
 * failed call or its destruction. Strings from the server are passed on byte for byte.
 */
typedef struct hcyErrorInfo {
  hcyErrorType kind;   /**< which of the three kinds */
  const char* message; /**< the fixed message of the kind: "A non-200 HTTP response was received",
                            "Error was thrown while executing VORTEN code" or
                            "A generic error was thrown"; empty before the first failure */
  union {
    /** Valid for HCY_HTTP_ERROR. */
    struct {
      uint32_t statusCode;       /**< the HTTP status (RFC 9110), 0 before the first failure */
      const char* statusMessage; /**< everything after the status code and the space that follows
                                      it in the first status line of the exchange, including the
                                      line end; empty if nothing follows the code. That line may
                                      belong to an interim reply or to a proxy's reply to CONNECT,
                                      so rely on statusCode */
    } http;
    /** Valid for HCY_VORTEN_ERROR. */
    struct {
      const char* message;       /**< message of the error */
      const char* identifier;    /**< identifier of the error, such as `halcyon:argument:size` */
      hcyErrorStackFrame* stack; /**< stackDepth frames, in the server's order. Null if there are
                                      none, and also if they could not be allocated, so check it.
                                      Released by destroyLastErrorInfo */
      size_t stackDepth;         /**< number of frames */
    } vorten;
    /** Valid for HCY_GENERIC_ERROR. */
    struct {
      const char* details; /**< what happened, for people to read */
    } generic;
  } details; /**< the details, in the member for the kind */
} hcyErrorInfo;

/** @} */

/**
 * @defgroup runtime Client runtime
 * @brief Start the library, configure it, call functions, read errors, stop.
 *
 * hcyInitializeEx() returns a table of 25 functions. A configuration (createConfig) holds the
 * settings. A context (createContext) copies them, keeps one connection alive between calls, and
 * evaluates functions (feval). The library itself reads no configuration files and no environment
 * variables, but libcurl and OpenSSL do: the proxy variables (`http_proxy` and the like),
 * SSLKEYLOGFILE and OPENSSL_CONF.
 *
 * Only the runtime needs initialization; the array functions work without it.
 * @{
 */

/**
 * The runtime table: 25 function pointers in this order, which never changes. In a table obtained
 * for version 1.0, the slots of version 1.1 are null.
 *
 * An operation that returns int returns 0 for success and 1 for failure. No operation throws.
 * Strings are NUL-terminated. A string that a getter returns belongs to the configuration and stays
 * valid until the same setting is set again or the configuration is destroyed. Setters store a
 * copy of their argument, unchanged and unchecked; null means the empty string. If a string cannot
 * be allocated, the setting keeps its old value, which the getter returns. A change affects only
 * contexts that are created afterwards.
 */
typedef struct hcyClientRuntime {
  /** Creates a configuration with the defaults named below, stores it in `*config` and returns 0;
   *  release it with destroyConfig. Returns 1 if memory is exhausted. Set `*config` to null before
   *  the call; if it is not null after a failure, destroy it. */
  int (*createConfig)(hcyClientConfig** config);

  /** Destroys a configuration. Contexts made from it are not affected. */
  void (*destroyConfig)(hcyClientConfig* config);

  /** Sets how many whole seconds one call may take, connection and transfer together. The default
   *  is 120. 0 means no limit, and so does a number that libcurl refuses (over 2147483, which is
   *  nearly 25 days). The lookup of a host name is not interrupted: a call may exceed the limit
   *  until the system's resolver gives up. */
  void (*setTimeOut)(hcyClientConfig* config, uint32_t seconds);

  /** Returns the timeout in seconds. */
  uint32_t (*getTimeOut)(const hcyClientConfig* config);

  /** Sets the size in bytes of the largest reply body that is accepted. The default is 67108864
   *  (64 MiB). If a reply declares a longer body, the call fails with a generic error as soon as
   *  the body begins. A reply that declares no length (because it is chunked, or spells the name of
   *  the field differently, such as content-length) is received to its end, but only as many bytes
   *  as the limit allows are kept and read; the rest is treated as if it had not been sent. If a
   *  body is over 2147483647 bytes, the call fails, whatever the limit. With 0, every reply that
   *  declares a body is refused; the limit cannot be switched off. In memory, a reply takes about
   *  its size on the wire. Once they are read, small elements of a container take up to 400 bytes
   *  of memory for each byte on the wire. */
  void (*setResponseSizeLimit)(hcyClientConfig* config, uint32_t bytes);

  /** Returns the response size limit in bytes. */
  uint32_t (*getResponseSizeLimit)(const hcyClientConfig* config);

  /** Creates a context from a copy of the settings of `config`, stores it in `*context` and
   *  returns 0; release it with destroyContext. It opens no connection yet. Between calls it keeps
   *  its connection, the record of the last failure, and up to 4 MiB of memory each for the next
   *  request and the next reply. Returns 1 if memory or a transfer handle cannot be allocated, or
   *  if createConfig failed to make `config`. Set `*context` to null before the call; if it is not
   *  null after a failure, destroy it. */
  int (*createContext)(hcyClientContext** context, const hcyClientConfig* config);

  /** Destroys a context: closes its connection and frees all strings of its error records. Arrays
   *  that its calls returned are not affected. */
  void (*destroyContext)(hcyClientContext* context);

  /** Fills `*info` with the record of the last failed call of the context. A call that succeeds
   *  does not change the record. Before the first failure, the record is of kind 0, with empty
   *  strings and status 0. Release it with destroyLastErrorInfo, also before you fill it again. */
  void (*getLastErrorInfo)(const hcyClientContext* context, hcyErrorInfo* info);

  /** Frees the stack frames of a record and sets `stack` to null; stackDepth and the other members
   *  keep their values. A record may be released twice, and after its context has been
   *  destroyed. */
  void (*destroyLastErrorInfo)(hcyErrorInfo* info);

  /**
   * Evaluates a function on a server with one HTTP/1.1 POST (RFC 9110, RFC 9112). It blocks until
   * the reply has arrived, the timeout has expired, or the call has failed. If a reply body cannot
   * be parsed to its end, the part that could be read is treated as the reply; an array with
   * missing elements has no data pointers (see hcyGetPr()). If the kept connection turns out to be
   * closed before a reply has begun, the request is sent once more on a new connection, so a
   * function may run twice. A kept connection on which unexpected bytes have arrived is not used
   * again.
   *
   * @param context the context; it can be used for further calls after a failure.
   * @param url     full http or https URL of the function. It is passed to libcurl unchanged.
   *                libcurl also supports file, ftp, telnet (which sends the process's standard
   *                input to the host) and more, and guesses a missing scheme, so never take the
   *                scheme from untrusted input. A name and password in the URL are sent as Basic
   *                credentials (RFC 7617). Redirects are not followed.
   * @param nargout number of outputs wanted; a call with a negative number fails. With 0, any reply
   *                with status 200 and no outputs is a success, whatever else it contains.
   * @param outputs room for nargout handles; may be null if nargout is 0.
   * @param nargin  number of inputs; if it is less than 1, none are sent.
   * @param inputs  nargin handles, or null for none. An array may occur more than once. The call
   *                neither changes the arrays nor takes ownership of them, whatever the outcome;
   *                other threads may read and send them meanwhile.
   * @return 0, with nargout new handles in `outputs`, which the caller owns, each to a separate
   *         array; or 1, with the record of the failure in the context:
   *         - HCY_HTTP_ERROR if the status is not 200.
   *         - HCY_VORTEN_ERROR if the function raised an error.
   *         - HCY_GENERIC_ERROR, with a message, if the transfer failed; a Content-Length is not a
   *           number ("bad lexical cast: source type value could not be interpreted as target", or
   *           libcurl's own message); the reply was over the size limit, its header lines and
   *           trailers were over 1 MiB, or it could not be allocated (one message for these three);
   *           the number of outputs differs from nargout; an output is of a class that the library
   *           does not support ("dispatch_on_QXType"); the request or the reply body is over
   *           2147483647 bytes (positive overflow); or memory is exhausted ("std::bad_alloc").
   *         .
   *         On failure `outputs` is not written, with one exception: if an output is of an
   *         unsupported class or cannot be allocated, the outputs after it have been stored already
   *         and are the caller's to destroy. So set `outputs` to null before the call.
   */
  int (*feval)(hcyClientContext* context, const char* url, int32_t nargout, hcyArray** outputs,
               int32_t nargin, const hcyArray* const* inputs);

  /** Since 1.1. Sets the file (PEM) of the client's TLS certificate; empty (the default) for
   *  none. */
  void (*setClientCertFile)(hcyClientConfig* config, const char* file);
  /** Since 1.1. Returns the file of the client's certificate. */
  const char* (*getClientCertFile)(const hcyClientConfig* config);

  /** Since 1.1. Sets the file (PEM) of the private key of the client's certificate; empty (the
   *  default) for none. */
  void (*setClientPrivateKeyFile)(hcyClientConfig* config, const char* file);
  /** Since 1.1. Returns the file of the private key. */
  const char* (*getClientPrivateKeyFile)(const hcyClientConfig* config);

  /** Since 1.1. Sets the pass phrase of the private key; empty (the default) for none. If the key
   *  is encrypted and no pass phrase is set, OpenSSL asks for it on the terminal of the process, if
   *  it has one, and the call waits for the answer. */
  void (*setPrivateKeyPasswd)(hcyClientConfig* config, const char* passPhrase);
  /** Since 1.1. Returns the pass phrase of the private key. */
  const char* (*getPrivateKeyPasswd)(const hcyClientConfig* config);

  /** Since 1.1. Sets the file (PEM) of the certificate authorities to check the server's
   *  certificate against; empty (the default) for those of the system. */
  void (*setCAFile)(hcyClientConfig* config, const char* file);
  /** Since 1.1. Returns the file of the certificate authorities. */
  const char* (*getCAFile)(const hcyClientConfig* config);

  /** Since 1.1. Sets the file (PEM) of certificate revocation lists; empty (the default) for no
   *  revocation check. It must hold a current list for every authority in the server's chain: if
   *  one is missing, every call fails. With peer verification off, nothing is checked, but the file
   *  must still be readable. */
  void (*setRevocationListFile)(hcyClientConfig* config, const char* file);
  /** Since 1.1. Returns the file of the certificate revocation lists. */
  const char* (*getRevocationListFile)(const hcyClientConfig* config);

  /** Since 1.1. Sets whether the server's certificate must name the host of the URL. The default
   *  is true. */
  void (*setHostnameVerification)(hcyClientConfig* config, bool verify);
  /** Since 1.1. Returns whether the host name is verified. */
  bool (*getHostnameVerification)(const hcyClientConfig* config);

  /** Since 1.1. Sets whether the server's certificate chain is verified. The default is true. */
  void (*setPeerVerification)(hcyClientConfig* config, bool verify);
  /** Since 1.1. Returns whether the certificate chain is verified. */
  bool (*getPeerVerification)(const hcyClientConfig* config);
} hcyClientRuntime;

/** Initializes the library for interface version 1.0: the same as
 *  `hcyInitializeEx(HCY_CLIENT_RUNTIME_1_0)`. */
HCY_API hcyClientRuntime* hcyInitialize(void);

/**
 * Initializes the library, including libcurl's process-wide part.
 *
 * @param version HCY_CLIENT_RUNTIME_1_0 or HCY_CLIENT_RUNTIME_1_1.
 * @return the runtime table, which belongs to the library and stays valid until hcyTerminate(). If
 *         the library is initialized already, the same table as before, whatever the version: in a
 *         table made for 1.0, the slots of 1.1 stay null. Null on failure, with the reason in
 *         hcyGetInitializationErrorMessage(): "Invalid version number.",
 *         "Global initialization of QXHttpClient failed", or the message of an allocation failure.
 */
HCY_API hcyClientRuntime* hcyInitializeEx(int version);

/** Shuts the library down, however often it was initialized: frees the table, performs libcurl's
 *  process-wide cleanup and clears the initialization error message. Does nothing if the library is
 *  not initialized. Destroy all contexts and configurations first. The library may be initialized
 *  again afterwards, for another version too. */
HCY_API void hcyTerminate(void);

/** Returns the message of the last failed initialization; an empty string, never null, if none has
 *  failed. A success does not clear it. The string belongs to the library and stays valid until the
 *  next failed initialization or hcyTerminate(). */
HCY_API const char* hcyGetInitializationErrorMessage(void);

/** @} */

/**
 * @defgroup lifetime Arrays: lifetime
 * @brief Ownership of arrays.
 *
 * The caller owns every handle that a function returns. A container (a cell or struct array) shares
 * the arrays that are stored in it; it does not copy them. The caller still destroys its own
 * handle, and the element lives on in the container. A handle may outlive the container that it
 * came from. A container in a reply keeps its elements in one block of memory until they are read.
 * If a container inside it has been read and outlives it, the whole block stays allocated.
 * @{
 */

/** Destroys a handle; null is ignored. Elements that are shared with a container or another handle
 *  live on there. */
HCY_API void hcyDestroyArray(hcyArray* array);

/** Returns a new array that is a deep copy: later changes to one do not affect the other. If the
 *  array is shared (it is an element of a container, or there is another handle to it) and of
 *  class int16, uint16, char, struct or cell, the contents of this handle are first written to the
 *  shared element, as if the handle were stored; no other thread may use the element during that
 *  time. Throws std::bad_alloc if memory is exhausted. */
HCY_API hcyArray* hcyDuplicateArray(const hcyArray* array);

/** Frees memory that the library allocated for the caller, such as the string that
 *  hcyArrayToString() returns; null is ignored. */
HCY_API void hcyFree(void* memory);

/** @} */

/**
 * @defgroup creation Arrays: creation
 * @brief New arrays, each a handle that the caller owns.
 *
 * New elements are 0, false or NUL; new cells and fields are unset, and read as 0-by-0 double
 * arrays. A shape given as (ndim, dims) is 0-by-0 for ndim 0 (dims may then be null) and
 * dims[0]-by-1 for ndim 1; for 2 and more, dims is used as it is.
 *
 * An array without elements is real, whatever complexity was requested.
 *
 * @par Failures
 * Throws positive overflow if a dimension, the number of elements (for a struct, fields times
 * elements), the nzmax of a sparse array or its columns plus one is over 2147483647; the number of
 * elements of a sparse array may be larger. Throws std::bad_alloc if memory is exhausted. Neither
 * leaks anything. A function returns null only if its description says so. Strings and arrays of
 * strings must not be null.
 * @{
 */

/** Creates an m-by-n double array of zeros. */
HCY_API hcyArray* hcyCreateDoubleMatrix(size_t m, size_t n, hcyComplexity complexity);

/** Creates an m-by-n array of zeros of a numeric class: classid 0 to 9. Null for a classid above
 *  9; a negative one must not be passed. */
HCY_API hcyArray* hcyCreateNumericMatrix(size_t m, size_t n, hcyClassID classid,
                                         hcyComplexity complexity);

/** Creates an array of zeros of ndim dimensions and a numeric class: classid 0 to 9. Null for a
 *  classid above 9; a negative one must not be passed. */
HCY_API hcyArray* hcyCreateNumericArray(size_t ndim, const size_t* dims, hcyClassID classid,
                                        hcyComplexity complexity);

/** Creates a 1-by-1 real double array that holds `value`. */
HCY_API hcyArray* hcyCreateDoubleScalar(double value);

/** Creates an m-by-n logical array, all false. */
HCY_API hcyArray* hcyCreateLogicalMatrix(size_t m, size_t n);

/** Creates a logical array of ndim dimensions, all false. */
HCY_API hcyArray* hcyCreateLogicalArray(size_t ndim, const size_t* dims);

/** Creates a 1-by-1 logical array that holds `value`. */
HCY_API hcyArray* hcyCreateLogicalScalar(bool value);

/** Creates a char array of ndim dimensions, all NUL. */
HCY_API hcyArray* hcyCreateCharArray(size_t ndim, const size_t* dims);

/** Creates a 1-by-length char array from a NUL-terminated string; 0-by-0 from an empty string. Each
 *  byte becomes one code unit, sign-extended (bytes 0x80 to 0xFF become 0xFF80 to 0xFFFF), so pass
 *  only ASCII, and write other text through hcyGetChars(). */
HCY_API hcyArray* hcyCreateString(const char* str);

/** Creates a char array of m rows, as wide as the longest string; row i holds strs[i], whose bytes
 *  are converted as in hcyCreateString(). Shorter rows are padded with NUL. */
HCY_API hcyArray* hcyCreateCharMatrixFromStrings(size_t m, const char* const* strs);

/** Creates an m-by-n cell array. */
HCY_API hcyArray* hcyCreateCellMatrix(size_t m, size_t n);

/** Creates a cell array of ndim dimensions. */
HCY_API hcyArray* hcyCreateCellArray(size_t ndim, const size_t* dims);

/** Creates an m-by-n struct array with nfields fields, named in order by fieldnames. The names
 *  are copied; they are not checked for duplicates or form. If nfields is 0 or less, there are no
 *  fields. */
HCY_API hcyArray* hcyCreateStructMatrix(size_t m, size_t n, int nfields,
                                        const char* const* fieldnames);

/** Creates a struct array of ndim dimensions; the fields are as in hcyCreateStructMatrix(). */
HCY_API hcyArray* hcyCreateStructArray(size_t ndim, const size_t* dims, int nfields,
                                       const char* const* fieldnames);

/** Creates an m-by-n sparse double array in compressed column form with room for nzmax stored
 *  elements: nzmax row indices (hcyGetIr()) and values (hcyGetPr(), hcyGetPi()), n + 1 column
 *  starts (hcyGetJc()), all 0. If it is created complex with nzmax 0, it has no imaginary parts,
 *  and gets none later. */
HCY_API hcyArray* hcyCreateSparse(size_t m, size_t n, size_t nzmax, hcyComplexity complexity);

/** Creates an m-by-n sparse logical array with room for nzmax stored elements. Its layout is that
 *  of hcyCreateSparse(), except that hcyGetLogicals() returns the values, which are all false. */
HCY_API hcyArray* hcyCreateSparseLogicalMatrix(size_t m, size_t n, size_t nzmax);

/** @} */

/**
 * @defgroup data Arrays: element data
 * @brief Pointers into the array's own storage, for reading and writing.
 *
 * A data pointer stays valid until the number of elements changes (by hcySetM(), hcySetN(),
 * hcySetDimensions() or hcySetNzmax(), through any handle to the same element) or the array is
 * destroyed. A data pointer of an int16, uint16 or char array is also invalid once the handle that
 * returned it is destroyed. A function returns the same pointer each time it is called. Elements
 * are stored in column-major order, without gaps. For a sparse array, the functions return the
 * stored values. They also return null if the array has no elements.
 *
 * If an array in a reply holds fewer elements than its dimensions say (because it was truncated at
 * the response size limit, or the server sent too few), the functions return null for it. This also
 * applies to the elements of a container in a reply. So if a pointer to the data of an array that
 * is not sparse is not null, it points to as many elements as hcyGetNumberOfElements() says.
 * Setting the dimensions (hcySetM(), hcySetN(), hcySetDimensions()) fills the missing elements with
 * zeros; the pointers are then available, and you can no longer tell which elements arrived. If
 * such an array is sent, duplicated or stored, only the elements that arrived are included.
 *
 * The indices of a sparse array in a reply are available only if they describe a compressed-column
 * matrix of its dimensions: there are columns + 1 column starts, which begin with 0, never decrease
 * and do not exceed the number of row indices, and all row indices are inside the matrix. Otherwise
 * its indices and values are null, and hcyGetNzmax() returns 0. If only values are missing (there
 * are fewer than the last column start says), only the values are null. This is checked once, when
 * the handle is made; an array that the program creates is never checked.
 *
 * A complex array that is resized to no elements and back to some may have lost its imaginary
 * parts: hcyIsComplex() still returns true, but hcyGetPi() and hcyGetImagData() return null.
 *
 * Only hcySetNzmax() throws.
 * @{
 */

/** Returns the real parts of a double array; null for another class. */
HCY_API double* hcyGetPr(const hcyArray* array);

/** Returns the imaginary parts of a double array; null for another class or a real array. */
HCY_API double* hcyGetPi(const hcyArray* array);

/** Returns the real parts of a numeric array, each of hcyGetElementSize() bytes; null for another
 *  class, logical and char included. */
HCY_API void* hcyGetData(const hcyArray* array);

/** Returns the imaginary parts of a numeric array; null for another class or a real array. */
HCY_API void* hcyGetImagData(const hcyArray* array);

/** Returns the elements of a logical array; null for another class. */
HCY_API bool* hcyGetLogicals(const hcyArray* array);

/** Returns the UTF-16 code units of a char array; null for another class. */
HCY_API uint16_t* hcyGetChars(const hcyArray* array);

/** Returns the first real element, converted to double; 0.0 if there is none, and for a struct or
 *  cell. 0.0 may also mean that the element of a reply did not arrive; hcyGetPr() or hcyGetData()
 *  returns null then. A uint8 element is read as a signed byte: 200 is returned as -56.0. */
HCY_API double hcyGetScalar(const hcyArray* array);

/** Returns the zero-based row indices of the stored elements of a sparse array, hcyGetNzmax() of
 *  them; null if the array is not sparse or there are none. The pointer is valid as long as a data
 *  pointer. */
HCY_API size_t* hcyGetIr(const hcyArray* array);

/** Returns the column starts of a sparse array, columns + 1 of them: the stored elements of column
 *  j are those from jc[j] to jc[j + 1] - 1. Null if the array is not sparse. The pointer stays
 *  valid until the array is destroyed or hcySetM(), hcySetN() or hcySetDimensions() is called, even
 *  if the number of elements stays the same. */
HCY_API size_t* hcyGetJc(const hcyArray* array);

/** Returns the number of elements that a sparse array has room for; (size_t)-1 if the array is not
 *  sparse. For an array in a reply whose values are available, it is at most their number. */
HCY_API size_t hcyGetNzmax(const hcyArray* array);

/** Sets how many stored elements a sparse array has room for; 0 counts as 1. New ones are 0.
 *  Existing ones are kept, up to the new number; the column starts do not change. Ignored if the
 *  array is not sparse or nzmax exceeds the number of elements. Throws positive overflow if nzmax
 *  is over 2147483647, and std::bad_alloc if memory is exhausted; in both cases the contents are
 *  unchanged, but get the data pointers again. */
HCY_API void hcySetNzmax(hcyArray* array, size_t nzmax);

/** @} */

/**
 * @defgroup shape Arrays: shape
 * @brief Dimensions and linear indices.
 * @{
 */

/** Returns the first dimension: the number of rows. 0 if the array has no dimensions. */
HCY_API size_t hcyGetM(const hcyArray* array);

/** Returns the second dimension alone, even if the array has three or more dimensions. 0 if there
 *  is no second dimension. */
HCY_API size_t hcyGetN(const hcyArray* array);

/** Returns the number of dimensions: 2 or more for every array that this library created. */
HCY_API size_t hcyGetNumberOfDimensions(const hcyArray* array);

/** Returns the dimensions, hcyGetNumberOfDimensions() of them, in the array's own storage; valid
 *  until the shape changes or the array is destroyed. Null if there are none. */
HCY_API const size_t* hcyGetDimensions(const hcyArray* array);

/** Sets the first dimension and resizes the array to match. Elements keep their linear index, so in
 *  a matrix of several columns they move to other rows; new elements are zero or unset. A sparse
 *  array keeps its stored elements, and gets as many column starts as its columns need. New column
 *  starts are 0, so the starts are not in order until the program writes them. Throws positive
 *  overflow if the number of elements (for a struct, fields times elements; for a sparse array,
 *  columns plus one) is over 2147483647; the dimension is set then, but the storage is unchanged.
 *  Throws std::bad_alloc if memory is exhausted; shape and contents are unchanged then, but get the
 *  data pointers again. Ignored if the array has no dimensions. */
HCY_API void hcySetM(hcyArray* array, size_t m);

/** Sets the second dimension; otherwise the same as hcySetM(). Ignored if the array has fewer than
 *  two dimensions. */
HCY_API void hcySetN(hcyArray* array, size_t n);

/** Sets all dimensions; ndim 1 means dims[0]-by-1. Contents are kept as by hcySetM(). Returns 0 on
 *  success. Returns 1 if ndim is 0 or memory is exhausted (shape and contents are unchanged), or if
 *  the number of elements is too large as for hcySetM() (the dimensions are set, but the storage is
 *  unchanged). Does not throw. */
HCY_API int hcySetDimensions(hcyArray* array, const size_t* dims, size_t ndim);

/** Returns the linear index of the element with the given zero-based subscripts: the sum of
 *  subs[i] times the product of the dimensions before i. Subscripts are not checked. nsubs must not
 *  exceed the number of dimensions; subscripts beyond that are not read. 0 if nsubs is 0. */
HCY_API size_t hcyCalcSingleSubscript(const hcyArray* array, size_t nsubs, const size_t* subs);

/** @} */

/**
 * @defgroup containers Arrays: cells and structs
 * @brief Elements that are arrays.
 *
 * A getter returns a new handle to the element itself, not a copy; the caller destroys the handle.
 * Two handles to one element share it: a write through a data pointer of one is visible through the
 * other. The classes int16, uint16, char, struct and cell are the exception: each handle has its
 * own contents, which are written to the element when the handle is stored with a setter or
 * duplicated; the last one written stays. Sending such a handle sends its own contents and changes
 * nothing; a container that comes after it among the inputs of the same call is sent with these
 * contents in the element. The shape of an element, including the names of its fields, is always
 * shared. Once one handle has changed it, destroy the other handles to the element: their contents
 * no longer fit. If the shape or the fields of a struct or cell element have been changed in this
 * way, store the element again; until then the container shows and sends the new shape with the old
 * contents.
 *
 * Containers may be nested as deep as memory allows. Storing a container copies the elements that
 * have been read or changed in it, at every level; getting a handle to a container in a container
 * copies nothing. Replies are read to a depth of 49 nested containers.
 *
 * A setter shares the value with the container; the caller still owns and destroys the value's
 * handle. A value may be stored in several places and containers. Do not store an array in itself,
 * at any depth. Only the direct case is defined: hcySetCell(a, i, a) and hcySetField(a, i, name, a)
 * store a snapshot of the array as it was.
 *
 * An unset element reads as a 0-by-0 double array, and is sent as one. If an array in a reply holds
 * fewer elements than its dimensions say, getters return null for the missing ones, and setters
 * store nothing in their place. Getters also return null for an element of a class that the library
 * does not support.
 *
 * Getters and setters of elements allocate, and throw std::bad_alloc if memory is exhausted. A
 * setter of an element throws positive overflow if the value is a container that takes more than
 * 2147483647 bytes on the wire.
 * @{
 */

/** Returns a new handle to the element of a cell array with the given linear index; null if the
 *  array is not a cell array or the index is not below the number of elements. */
HCY_API hcyArray* hcyGetCell(const hcyArray* array, size_t index);

/** Stores `value` as the element of a cell array with the given linear index. Ignored if the
 *  array is not a cell array or the index is not below the number of elements. */
HCY_API void hcySetCell(hcyArray* array, size_t index, hcyArray* value);

/** Returns the number of fields of a struct array; 0 if the array is not a struct array. */
HCY_API int hcyGetNumberOfFields(const hcyArray* array);

/** Returns the name of field n (zero-based) of a struct array, in the array's own storage; valid
 *  until a field is added or removed or the array is destroyed. Null if the array is not a struct
 *  array or has no field n. */
HCY_API const char* hcyGetFieldNameByNumber(const hcyArray* array, int n);

/** Returns the number of the first field whose name equals `name` byte for byte; -1 if the array
 *  is not a struct array, `name` is null, or there is no such field. */
HCY_API int hcyGetFieldNumber(const hcyArray* array, const char* name);

/** Returns a new handle to the field `name` of the element with the given linear index; null if
 *  the array is not a struct array, there is no such field, or the index is not below the number
 *  of elements. */
HCY_API hcyArray* hcyGetField(const hcyArray* array, size_t index, const char* name);

/** Stores `value` as the field `name` of the element with the given linear index. Ignored if the
 *  array is not a struct array, there is no such field, or the index is not below the number of
 *  elements. */
HCY_API void hcySetField(hcyArray* array, size_t index, const char* name, hcyArray* value);

/** The same as hcyGetField() with the name of field n (zero-based): if two fields have the same
 *  name, the first one. Also null if n is not the number of a field. */
HCY_API hcyArray* hcyGetFieldByNumber(const hcyArray* array, size_t index, int n);

/** The same as hcySetField() with the name of field n (zero-based): if two fields have the same
 *  name, the first one. Also ignored if n is not the number of a field. */
HCY_API void hcySetFieldByNumber(hcyArray* array, size_t index, int n, hcyArray* value);

/** Adds a field after the others, unset in every element, and returns its number (zero-based). If
 *  the field exists already, returns its number and changes nothing. Returns -1 and changes nothing
 *  if the array is not a struct array, `name` is null, there would be more than 2147483647 values,
 *  the array came in a reply that declares more than 65536 elements without fields, or memory is
 *  exhausted. Does not throw. */
HCY_API int hcyAddField(hcyArray* array, const char* name);

/** Removes field n (zero-based) from every element. Ignored if the array is not a struct array or
 *  has no field n, or if memory is exhausted. Does not throw. */
HCY_API void hcyRemoveField(hcyArray* array, int n);

/** @} */

/**
 * @defgroup queries Arrays: class, size and text
 * @brief Class, size and text of an array.
 *
 * The class of a sparse array is that of its values, double or logical. The predicates for full
 * arrays of one class are false for every sparse array. None of these functions throws.
 * @{
 */

/** Whether the array is a full uint8 array. */
HCY_API bool hcyIsUint8(const hcyArray* array);
/** Whether the array is a full int8 array. */
HCY_API bool hcyIsInt8(const hcyArray* array);
/** Whether the array is a full uint16 array. */
HCY_API bool hcyIsUint16(const hcyArray* array);
/** Whether the array is a full int16 array. */
HCY_API bool hcyIsInt16(const hcyArray* array);
/** Whether the array is a full uint32 array. */
HCY_API bool hcyIsUint32(const hcyArray* array);
/** Whether the array is a full int32 array. */
HCY_API bool hcyIsInt32(const hcyArray* array);
/** Whether the array is a full uint64 array. */
HCY_API bool hcyIsUint64(const hcyArray* array);
/** Whether the array is a full int64 array. */
HCY_API bool hcyIsInt64(const hcyArray* array);
/** Whether the array is a full single array. */
HCY_API bool hcyIsSingle(const hcyArray* array);
/** Whether the array is a char array. */
HCY_API bool hcyIsChar(const hcyArray* array);
/** Whether the array is a struct array. */
HCY_API bool hcyIsStruct(const hcyArray* array);
/** Whether the array is a cell array. */
HCY_API bool hcyIsCell(const hcyArray* array);
/** Whether the array is sparse. */
HCY_API bool hcyIsSparse(const hcyArray* array);

/** Whether the array is a full or sparse double array. */
HCY_API bool hcyIsDouble(const hcyArray* array);

/** Whether the array is a full or sparse logical array. */
HCY_API bool hcyIsLogical(const hcyArray* array);

/** Whether the array is of a numeric class (uint8 to double), or a sparse double array. */
HCY_API bool hcyIsNumeric(const hcyArray* array);

/** Whether the array was created complex, or was received or copied with imaginary parts. */
HCY_API bool hcyIsComplex(const hcyArray* array);

/** Whether the array has no dimensions or any of them is 0. */
HCY_API bool hcyIsEmpty(const hcyArray* array);

/** Whether the array is logical (full or sparse) and exactly 1-by-1. */
HCY_API bool hcyIsLogicalScalar(const hcyArray* array);

/** Whether hcyIsLogicalScalar() is true and the element is true. For a sparse array, the stored
 *  element counts; false if none is stored. */
HCY_API bool hcyIsLogicalScalarTrue(const hcyArray* array);

/** Whether `name`, which must not be null, is the name of the array's class, byte for byte. */
HCY_API bool hcyIsClass(const hcyArray* array, const char* name);

/** Returns the class of the array. */
HCY_API hcyClassID hcyGetClassID(const hcyArray* array);

/** Returns the name of the array's class: a static string. */
HCY_API const char* hcyGetClassName(const hcyArray* array);

/** Returns the size in bytes of one element in the storage that the data pointer points to; 8 for a
 *  struct or cell. */
HCY_API size_t hcyGetElementSize(const hcyArray* array);

/** Returns the product of the dimensions, or 0 if there are none. If the product does not fit a
 *  size_t, returns the largest size_t. */
HCY_API size_t hcyGetNumberOfElements(const hcyArray* array);

/** Returns the text of a char array, in column-major order, as a new NUL-terminated UTF-8 string;
 *  release it with hcyFree(). Well-formed UTF-16 (RFC 2781) becomes well-formed UTF-8 (RFC 3629). A
 *  surrogate is combined with the code unit that follows it, whatever that is, by the formula for a
 *  pair, so text that is not well-formed may become bytes that are not well-formed. Returns null if
 *  the array is not a char array, has no code units, or ends in a surrogate without a code unit
 *  after it, or if memory is exhausted. A NUL among the code units ends the text for code that
 *  reads it as a C string. */
HCY_API char* hcyArrayToString(const hcyArray* array);

/** Copies the low byte of each code unit of a char array into `buf`, in column-major order,
 *  followed by a NUL. The rows of a char matrix are therefore interleaved. A code unit that did not
 *  arrive in a reply is copied as NUL.
 *  @param array  the array.
 *  @param buf    room for buflen bytes.
 *  @param buflen size of buf; if it is 0, the function writes nothing and returns 0.
 *  @return 0 if the whole text fits; 1 if it was cut to buflen - 1 bytes, or if the array is not a
 *          char array (nothing is written then). */
HCY_API int hcyGetString(const hcyArray* array, char* buf, size_t buflen);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* HCY_HCYCLIENT_H */
