/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient.h
 * @brief Call functions deployed on a Halcyon compute server.
 *
 * An application builds arrays of the VORTEN language, evaluates a function named by its URL, and
 * gets arrays back, or a structured account of what went wrong. The header is C99 and C++11 and
 * includes only standard headers.
 *
 * @par Rules for the whole header
 * - **Threads.** The library starts no threads and takes no locks. Any number of threads may read
 *   one array at once, elements of containers included: every function that takes a const array
 *   only reads it, with one exception, hcyDuplicateArray(), and so does a call that sends it. While
 *   an array is changed, by a setter or through a data pointer, no other thread may use it or any
 *   array that shares elements with it. One configuration and one context are used by one thread at
 *   a time. Different arrays, configurations and contexts may be used on different threads at once.
 *   hcyInitialize(), hcyInitializeEx() and hcyTerminate() must not overlap any other use of the
 *   runtime. Do not cancel a thread (pthread_cancel) during a call: its context cannot be used
 *   afterwards. libcurl changes the process's action for SIGPIPE during a transfer: a program that
 *   calls on several threads ignores SIGPIPE.
 * - **Handles.** A handle passed in is not tested for null, except where a function says so.
 * - **Failures.** The operations of the runtime table never throw. The array functions answer a
 *   wrong class or index with a neutral result (null, 0, false, -1, the largest size), which each
 *   function names. Exceptions leave the library only where a function lists them; they derive
 *   from std::exception and are meant for C++ callers. A C program that asks only for sizes that
 *   exist and fit its memory never meets one.
 * - **Sizes.** A count or dimension that the library must hold in a signed 32-bit size is at most
 *   2147483647; a larger one is the failure "bad numeric conversion: positive overflow", thrown as
 *   a std::bad_cast whose what() is this text (called *positive overflow* below).
 * - **Order of elements.** Arrays are column-major: the element with zero-based subscripts (i, j)
 *   of an m-by-n array has the linear index i + j * m.
 * - **Since.** Everything here is part of interface version 1.0, except where 1.1 is named.
 */
#ifndef HCY_HCYCLIENT_H
#define HCY_HCYCLIENT_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

/** Marks what the shared library exports. */
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

/** An array. Every function that returns a pointer to one gives the caller a handle of its own,
 *  to be released with hcyDestroyArray(). */
typedef struct hcyArray hcyArray;

/** The settings of a connection: see hcyClientRuntime::createConfig. */
typedef struct hcyClientConfig hcyClientConfig;

/** One connection to a server and the account of its last failed call: see
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
  hcySTRUCT_CLASS = 12,  /**< "struct", named fields in every element */
  hcyCELL_CLASS = 13     /**< "cell", an array in every element */
};

/** Whether a new array has imaginary parts. Only hcyCOMPLEX means yes; every other value is
 *  taken as hcyREAL. */
typedef int32_t hcyComplexity;
enum {
  hcyREAL = 0,   /**< real parts only */
  hcyCOMPLEX = 1 /**< real and imaginary parts, each in storage of its own */
};

/** The kind of a failed call: one of the constants below, 32 bits wide. */
typedef int32_t hcyErrorType;
enum {
  HCY_HTTP_ERROR = 0,   /**< the server answered with an HTTP status other than 200 */
  HCY_VORTEN_ERROR = 1, /**< the function ran on the server and raised an error */
  HCY_GENERIC_ERROR = 2 /**< anything else: transport, memory, a number of outputs that differs */
};

/** Interface versions: major number in the upper 16 bits, minor number in the lower 16. */
enum {
  HCY_CLIENT_RUNTIME_1_0 = 0x10000, /**< slots 0 to 10 of the runtime table */
  HCY_CLIENT_RUNTIME_1_1 = 0x10001  /**< all 25 slots */
};

/** One frame of the stack of an error that a function raised. The texts belong to the context,
 *  are NUL-terminated and never null; an absent text is empty and an absent line is 0. */
typedef struct hcyErrorStackFrame {
  const char* file; /**< file of the function */
  const char* name; /**< name of the function */
  int32_t line;     /**< line in the file */
} hcyErrorStackFrame;

/**
 * The account of a failed call, filled by hcyClientRuntime::getLastErrorInfo. `kind` tells which
 * member of `details` is valid. All texts belong to the context and stay valid until its next
 * failed call or its destruction; texts of the server are handed on byte for byte.
 */
typedef struct hcyErrorInfo {
  hcyErrorType kind;   /**< which of the three kinds */
  const char* message; /**< the fixed text of the kind: "A non-200 HTTP response was received",
                            "Error was thrown while executing VORTEN code" or
                            "A generic error was thrown"; empty before the first failure */
  union {
    /** Valid for HCY_HTTP_ERROR. */
    struct {
      uint32_t statusCode;       /**< the HTTP status (RFC 9110), 0 before the first failure */
      const char* statusMessage; /**< everything behind the status code and its blank in the first
                                      status line of the exchange, line end included; that line
                                      may be an interim reply's or a proxy's answer to CONNECT,
                                      so rely on statusCode; empty if nothing follows the code */
    } http;
    /** Valid for HCY_VORTEN_ERROR. */
    struct {
      const char* message;       /**< message of the error */
      const char* identifier;    /**< identifier of the error, such as `halcyon:argument:size` */
      hcyErrorStackFrame* stack; /**< stackDepth frames in the server's order; null when there are
                                      none, and also when memory for them could not be had, so
                                      test it; released by destroyLastErrorInfo */
      size_t stackDepth;         /**< number of frames */
    } vorten;
    /** Valid for HCY_GENERIC_ERROR. */
    struct {
      const char* details; /**< what happened, for a person */
    } generic;
  } details; /**< what the kind tells, in the member that belongs to it */
} hcyErrorInfo;

/** @} */

/**
 * @defgroup runtime Client runtime
 * @brief Start, configure, call, read what failed, stop.
 *
 * hcyInitializeEx() hands out a table of 25 functions. A configuration (createConfig) holds the
 * settings; a context (createContext) copies them, keeps one connection alive between calls, and
 * evaluates functions (feval). The library reads no configuration file and no environment
 * variable; libcurl and OpenSSL read some: the proxy variables (`http_proxy` and the like),
 * SSLKEYLOGFILE and OPENSSL_CONF.
 *
 * Only the runtime needs initialisation: the array functions work without it.
 * @{
 */

/**
 * The runtime table: 25 function pointers in this order, which never changes. A table obtained
 * for version 1.0 holds null in the slots of version 1.1.
 *
 * An operation that returns int gives 0 for success and 1 for failure; none of them throws.
 * Texts are NUL-terminated. A text getter's result belongs to the configuration and stays valid
 * until the same setting is set again or the configuration is destroyed. Setters store what they
 * get, unchanged and unchecked; a null text counts as the empty one. A text that memory cannot be
 * had for leaves the setting as it was, which its getter tells. A change reaches only contexts
 * that are created afterwards.
 */
typedef struct hcyClientRuntime {
  /** Creates a configuration with the defaults named below, stores it in `*config` and returns
   *  0; release it with destroyConfig. Returns 1 when memory is exhausted; set `*config` to null
   *  before the call, and when it is not null after a failure, destroy it. */
  int (*createConfig)(hcyClientConfig** config);

  /** Destroys a configuration. Contexts made from it are not affected. */
  void (*destroyConfig)(hcyClientConfig* config);

  /** Sets how many whole seconds one call may take, connection and transfer together. Default
   *  120. 0 means no limit, and so does a number that libcurl refuses (over 2147483, which is
   *  nearly 25 days). The look-up of a host name is not interrupted: a call may outlast the limit
   *  until the system's resolver gives up. */
  void (*setTimeOut)(hcyClientConfig* config, uint32_t seconds);

  /** Returns the time-out in seconds. */
  uint32_t (*getTimeOut)(const hcyClientConfig* config);

  /** Sets the size in bytes of the largest reply body that is accepted. Default 67108864 (64
   *  MiB). A reply that declares more fails as a generic error as soon as its body begins. A reply
   *  that declares no length (chunked, or with a Content-Length that is spelled otherwise) is
   *  received whole, but no more than the limit of it is kept and read: what lies behind is as if
   *  it had not been sent. A body over 2147483647 bytes fails the call, whatever the limit. 0
   *  refuses every reply that declares a body; the limit cannot be switched off.
   *  In memory, a reply takes about its size on the wire, and small elements of a container that
   *  are read take up to 400 bytes for each of their bytes. */
  void (*setResponseSizeLimit)(hcyClientConfig* config, uint32_t bytes);

  /** Returns the response size limit in bytes. */
  uint32_t (*getResponseSizeLimit)(const hcyClientConfig* config);

  /** Creates a context from a copy of the settings of `config`, stores it in `*context` and
   *  returns 0; release it with destroyContext. It opens no connection yet. Between calls it keeps
   *  its connection, the account of the last failure, and up to 4 MiB each of memory for the next
   *  request and reply. Returns 1 when memory or a transfer handle cannot be had, or for a
   *  configuration that createConfig failed to make; set `*context` to null before the call, and
   *  when it is not null after a failure, destroy it. */
  int (*createContext)(hcyClientContext** context, const hcyClientConfig* config);

  /** Closes the connection of a context and destroys it, with all texts of its error records.
   *  Arrays that its calls returned are not affected. */
  void (*destroyContext)(hcyClientContext* context);

  /** Fills `*info` with the account of the last failed call of the context. A call that succeeds
   *  leaves the account as it is; before any failure it is kind 0 with empty texts and status 0.
   *  Give the record back with destroyLastErrorInfo, before it is filled again too. */
  void (*getLastErrorInfo)(const hcyClientContext* context, hcyErrorInfo* info);

  /** Frees the stack frames of a record and sets `stack` to null; the depth and all else stay.
   *  A record may be given back twice, and after its context has been destroyed. */
  void (*destroyLastErrorInfo)(hcyErrorInfo* info);

  /**
   * Evaluates a function on a server: one HTTP/1.1 POST (RFC 9110, RFC 9112), which blocks until
   * the reply, the time-out or a failure. A reply body that cannot be parsed to its end counts as
   * what could be read of it; arrays of which elements are missing do not hand out their data (see
   * hcyGetPr()). If the kept connection turns out to be closed before a reply has begun, the
   * request is sent once more on a new one: a function may then run twice. A kept connection on
   * which bytes have arrived that nobody asked for is not used again.
   *
   * @param context the context; after a failure it can be used for further calls.
   * @param url     full http or https URL of the function. It is passed to libcurl unchanged,
   *                which also serves file, ftp, telnet (which sends the process's standard input
   *                to the host) and more, and guesses a missing scheme: never take the scheme from
   *                outside. A name and password in it are sent as Basic credentials (RFC 7617).
   *                Redirections are not followed.
   * @param nargout number of outputs wanted; a negative number is never what arrives. With 0, any
   *                reply of status 200 that holds no outputs is a success, whatever else it holds.
   * @param outputs room for nargout handles; may be null when nargout is 0.
   * @param nargin  number of inputs; below 1, none are sent.
   * @param inputs  nargin handles, or null for none. An array may occur more than once. The
   *                arrays stay the caller's and unchanged, whatever the outcome; other threads may
   *                read and send them meanwhile.
   * @return 0 and nargout new handles in `outputs`, which the caller owns, each an array of its
   *         own; or 1, and the account of the failure in the context:
   *         HCY_HTTP_ERROR when the status is not 200; HCY_VORTEN_ERROR when the function raised
   *         an error; HCY_GENERIC_ERROR with the reason as text when the transfer failed, a
   *         Content-Length is no number ("bad lexical cast: source type value could not be
   *         interpreted as target", or libcurl's own text), the reply was over the size limit, its
   *         header lines and trailers were over 1 MiB, or there was no memory for it (one text for
   *         the three), the number of outputs
   *         differs from nargout, an output is of a class that the library does not serve
   *         ("dispatch_on_QXType"), the request or the reply body is over 2147483647 bytes
   *         (positive overflow), or memory is exhausted ("std::bad_alloc"). On
   *         failure `outputs` is not written, with one exception: when an output cannot be
   *         served, or memory for it cannot be had, those behind it have been stored already and
   *         are the caller's to destroy; so set `outputs` to null before the call.
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

  /** Since 1.1. Sets the pass phrase of the private key; empty (the default) for none. Where an
   *  encrypted key meets none, OpenSSL asks for it on the terminal of the process, if it has one,
   *  and the call waits for the answer. */
  void (*setPrivateKeyPasswd)(hcyClientConfig* config, const char* passPhrase);
  /** Since 1.1. Returns the pass phrase of the private key. */
  const char* (*getPrivateKeyPasswd)(const hcyClientConfig* config);

  /** Since 1.1. Sets the file (PEM) of the certificate authorities that the server's certificate
   *  is checked against; empty (the default) for those of the system. */
  void (*setCAFile)(hcyClientConfig* config, const char* file);
  /** Since 1.1. Returns the file of the certificate authorities. */
  const char* (*getCAFile)(const hcyClientConfig* config);

  /** Since 1.1. Sets the file (PEM) of certificate revocation lists; empty (the default) for no
   *  check of revocation. It has to hold a current list of every authority in the server's chain:
   *  where one is missing, every call is refused. Nothing is checked with peer verification off,
   *  though the file must be readable then too. */
  void (*setRevocationListFile)(hcyClientConfig* config, const char* file);
  /** Since 1.1. Returns the file of the certificate revocation list. */
  const char* (*getRevocationListFile)(const hcyClientConfig* config);

  /** Since 1.1. Sets whether the server's certificate must name the host of the URL. Default
   *  true. */
  void (*setHostnameVerification)(hcyClientConfig* config, bool verify);
  /** Since 1.1. Returns whether the host name is verified. */
  bool (*getHostnameVerification)(const hcyClientConfig* config);

  /** Since 1.1. Sets whether the server's certificate chain is verified. Default true. */
  void (*setPeerVerification)(hcyClientConfig* config, bool verify);
  /** Since 1.1. Returns whether the certificate chain is verified. */
  bool (*getPeerVerification)(const hcyClientConfig* config);
} hcyClientRuntime;

/** Initialises the library for interface version 1.0: the same as
 *  `hcyInitializeEx(HCY_CLIENT_RUNTIME_1_0)`. */
HCY_API hcyClientRuntime* hcyInitialize(void);

/**
 * Initialises the library, libcurl's process-wide part included.
 *
 * @param version HCY_CLIENT_RUNTIME_1_0 or HCY_CLIENT_RUNTIME_1_1.
 * @return the runtime table, which belongs to the library and lives until hcyTerminate(). When
 *         the library is initialised already, the same table as before, whatever the version: a
 *         table made for 1.0 keeps null in the slots of 1.1. Null on failure, with the reason in
 *         hcyGetInitializationErrorMessage(): "Invalid version number.",
 *         "Global initialization of QXHttpClient failed", or the text of an allocation failure.
 */
HCY_API hcyClientRuntime* hcyInitializeEx(int version);

/** Ends the initialised state, however often the library was initialised: frees the table,
 *  performs libcurl's process-wide clean-up and empties the initialisation error message. Does
 *  nothing at all when the library is not initialised. Destroy all contexts and configurations
 *  before. The library may be initialised again, for another version too. */
HCY_API void hcyTerminate(void);

/** Returns why the last failed initialisation failed; the empty text, never null, when none has.
 *  A success does not clear it. The text belongs to the library and stays valid until the next
 *  failed initialisation or hcyTerminate(). */
HCY_API const char* hcyGetInitializationErrorMessage(void);

/** @} */

/**
 * @defgroup lifetime Arrays: lifetime
 * @brief Who owns what.
 *
 * The caller owns every handle that a function returns. An array that is stored in a cell or a
 * struct is shared with it, not copied: the handle stays the caller's to destroy, and the element
 * lives on in the container. A handle may outlive the container that it was got from. A container
 * of a reply keeps its elements in one block of memory until they are asked for. A container in it
 * that is asked for, and outlives it, keeps all of that block.
 * @{
 */

/** Destroys a handle; null is ignored. Elements that a container or another handle shares live
 *  on there. */
HCY_API void hcyDestroyArray(hcyArray* array);

/** Returns a new array that is a deep copy: later changes to either do not reach the other. If the
 *  array is shared (it is an element of a container, or there is another handle over it) and of
 *  class int16, uint16, char, struct or cell, what this handle holds is brought into the shared
 *  element first, as by storing it: then no other thread may use the element at the same time.
 *  Throws std::bad_alloc when memory is exhausted. */
HCY_API hcyArray* hcyDuplicateArray(const hcyArray* array);

/** Frees memory that the library allocated for the caller, such as the text of
 *  hcyArrayToString(); null is ignored. */
HCY_API void hcyFree(void* memory);

/** @} */

/**
 * @defgroup creation Arrays: creation
 * @brief New arrays, each a handle that the caller owns.
 *
 * New contents are zero: elements 0, false or NUL, cells and fields never set (they read as
 * 0-by-0 double arrays). A shape given as (ndim, dims) becomes 0-by-0 for ndim 0 (dims may then be
 * null), dims[0]-by-1 for ndim 1, and is taken as it is for 2 and more.
 *
 * An array without elements is real, whatever complexity was asked for.
 *
 * @par Failures
 * Positive overflow when a dimension, the number of elements (of slots, for a struct: fields times
 * elements), the nzmax of a sparse array or its columns plus one is over 2147483647; the number of
 * elements of a sparse array may be larger. std::bad_alloc when memory is exhausted. Nothing is
 * left behind by either. Null only where a function says so. Texts and arrays of texts must not
 * be null.
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

/** Creates a 1-by-length char array from a NUL-terminated text; 0-by-0 from the empty one. Each
 *  byte becomes one code unit, sign-extended (bytes 0x80 to 0xFF become 0xFF80 to 0xFFFF): pass
 *  ASCII, and fill other text through hcyGetChars(). */
HCY_API hcyArray* hcyCreateString(const char* str);

/** Creates an m-by-longest char array whose row i is the text strs[i], each byte taken as by
 *  hcyCreateString(). Shorter rows are padded with NUL. */
HCY_API hcyArray* hcyCreateCharMatrixFromStrings(size_t m, const char* const* strs);

/** Creates an m-by-n cell array. */
HCY_API hcyArray* hcyCreateCellMatrix(size_t m, size_t n);

/** Creates a cell array of ndim dimensions. */
HCY_API hcyArray* hcyCreateCellArray(size_t ndim, const size_t* dims);

/** Creates an m-by-n struct array with nfields fields, named in order by fieldnames. The names
 *  are copied, and not tested for duplicates or form. nfields 0 and less gives no fields. */
HCY_API hcyArray* hcyCreateStructMatrix(size_t m, size_t n, int nfields,
                                        const char* const* fieldnames);

/** Creates a struct array of ndim dimensions; the fields as in hcyCreateStructMatrix(). */
HCY_API hcyArray* hcyCreateStructArray(size_t ndim, const size_t* dims, int nfields,
                                       const char* const* fieldnames);

/** Creates an m-by-n sparse double array in compressed column form with room for nzmax stored
 *  elements: nzmax row indices (hcyGetIr()) and values (hcyGetPr(), hcyGetPi()), n + 1 column
 *  starts (hcyGetJc()), all 0. One that is created complex with nzmax 0 has no imaginary parts,
 *  and gets none later. */
HCY_API hcyArray* hcyCreateSparse(size_t m, size_t n, size_t nzmax, hcyComplexity complexity);

/** Creates an m-by-n sparse logical array with room for nzmax stored elements; as
 *  hcyCreateSparse(), with the values at hcyGetLogicals(), all false. */
HCY_API hcyArray* hcyCreateSparseLogicalMatrix(size_t m, size_t n, size_t nzmax);

/** @} */

/**
 * @defgroup data Arrays: element data
 * @brief Pointers into the array's own storage, to read and to write.
 *
 * A data pointer stays valid until the number of elements changes (hcySetM(), hcySetN(),
 * hcySetDimensions(), hcySetNzmax(), through any handle over the same element) or the array is
 * destroyed; that of an int16, uint16 or char array also ends with the handle that gave it. Reading
 * it twice gives the same pointer. Elements lie in column-major order, without gaps. Of a sparse
 * array the functions give the stored values. Null also if the array has no elements.
 *
 * What did not arrive is not handed out. An array of a reply whose storage holds fewer elements
 * than its dimensions say (the response size limit cut it, or the server broke its own rules)
 * answers null, and so does an element of a container of a reply. So behind a pointer that is not
 * null there are as many elements as hcyGetNumberOfElements() says. Setting the dimensions
 * (hcySetM(), hcySetN(), hcySetDimensions()) completes the storage with zeros: the pointers come
 * back, and nothing tells any more which elements arrived. What is sent, duplicated and stored is
 * what arrived.
 *
 * A sparse array of a reply hands out its indices only if they describe a compressed-column matrix
 * of its dimensions: columns + 1 starts that begin with 0, do not fall, and do not lead beyond the
 * row indices, and rows inside the matrix. Otherwise its indices and values are null and
 * hcyGetNzmax() is 0. If only the values are fewer than the last column start, they alone are null.
 * This is looked at once, when the handle is made; an array that the program makes is never
 * checked.
 *
 * A complex array that is resized to no elements and back to some may have lost its imaginary
 * parts: hcyIsComplex() stays true, and hcyGetPi() and hcyGetImagData() tell by null.
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
 *  cell. 0.0 may also stand for an element of a reply that did not arrive; the pointer of
 * hcyGetPr() or hcyGetData() is null then. A uint8 element is read as a signed byte: 200 gives
 * -56.0. */
HCY_API double hcyGetScalar(const hcyArray* array);

/** Returns the row indices (zero-based) of the stored elements of a sparse array, hcyGetNzmax()
 *  of them; null for another array, and if there are none. The pointer stays valid as a data
 *  pointer does. */
HCY_API size_t* hcyGetIr(const hcyArray* array);

/** Returns the column starts of a sparse array, columns + 1 of them: the stored elements of column
 * j are those from jc[j] to jc[j + 1] - 1. Null for another array. The pointer stays valid until
 *  hcySetM(), hcySetN() or hcySetDimensions() is called, even if the number of elements stays the
 *  same, or the array is destroyed. */
HCY_API size_t* hcyGetJc(const hcyArray* array);

/** Returns how many elements a sparse array has room for; (size_t)-1 for another array. In a reply,
 *  no more than there are values for, if these are handed out. */
HCY_API size_t hcyGetNzmax(const hcyArray* array);

/** Gives a sparse array room for nzmax stored elements (at least 1); new ones are 0. Contents are
 *  kept up to the new number; the column starts are not touched. Ignored for another array, and
 *  when nzmax exceeds the number of elements. Throws positive overflow and std::bad_alloc; the
 *  contents are as before then, but read data pointers again. */
HCY_API void hcySetNzmax(hcyArray* array, size_t nzmax);

/** @} */

/**
 * @defgroup shape Arrays: shape
 * @brief Dimensions and linear indices.
 * @{
 */

/** Returns the first dimension: the number of rows. 0 when the array has no dimensions. */
HCY_API size_t hcyGetM(const hcyArray* array);

/** Returns the second dimension alone, also of an array of three dimensions and more. 0 when the
 *  array has none. */
HCY_API size_t hcyGetN(const hcyArray* array);

/** Returns the number of dimensions: 2 or more for every array that was created here. */
HCY_API size_t hcyGetNumberOfDimensions(const hcyArray* array);

/** Returns the dimensions, hcyGetNumberOfDimensions() of them, in the array's own storage; valid
 *  until the shape changes or the array is destroyed. Null when there are none. */
HCY_API const size_t* hcyGetDimensions(const hcyArray* array);

/** Sets the first dimension and gives the array that many elements. Elements keep their linear
 *  index, so the rows of a matrix of several columns move; new elements are zero or never set. A
 *  sparse array keeps its stored elements, and gets as many column starts as its columns need: new
 *  ones are 0, so that the starts fall until the program writes them. Throws positive overflow when
 * the number of elements (also that of slots, for a struct; of columns plus one, for a sparse
 * array) is over 2147483647: the dimension stays set, and the storage is as before. Throws
 * std::bad_alloc: shape and contents are as before, but read data pointers again. Ignored for an
 * array without dimensions. */
HCY_API void hcySetM(hcyArray* array, size_t m);

/** Sets the second dimension; all else as hcySetM(). Ignored for an array with fewer than two
 *  dimensions. */
HCY_API void hcySetN(hcyArray* array, size_t n);

/** Sets all dimensions; ndim 1 means dims[0]-by-1. Contents as in hcySetM(). Returns 0, or 1 when
 *  ndim is 0 or memory is exhausted (shape and contents are as before), or the number of elements
 * is too large as in hcySetM() (the dimensions stay set, and the storage is as before). Does not
 * throw. */
HCY_API int hcySetDimensions(hcyArray* array, const size_t* dims, size_t ndim);

/** Returns the linear index of the element with the given zero-based subscripts: the sum of
 *  subs[i] times the product of the dimensions before i. Subscripts are not checked; nsubs must
 *  not exceed the number of dimensions (what is beyond is not read). 0 for nsubs 0. */
HCY_API size_t hcyCalcSingleSubscript(const hcyArray* array, size_t nsubs, const size_t* subs);

/** @} */

/**
 * @defgroup containers Arrays: cells and structs
 * @brief Elements that are arrays.
 *
 * A getter returns a new handle over the element itself, which the caller destroys; the element
 * is not copied. Two handles over one element share it: what is written through the data pointer
 * of one is seen through the other. The classes int16, uint16, char, struct and cell are the
 * exception: each handle works on contents of its own, which reach the element when the handle is
 * stored with a setter or duplicated; the last one to do so wins. Sending the handle sends its own
 * contents and changes nothing; a container behind it among the inputs of the same call shows the
 * element with these contents. The shape of an element,
 * the names of its fields included, is always shared: once it has been changed through one handle,
 * destroy the others over the element, whose contents no longer fit it. A struct or cell element
 * whose shape or fields were changed so has to be stored again: until then the container shows, and
 * sends, the new shape with the old contents.
 *
 * Containers may be nested as deep as memory allows. Storing a container copies what has been read
 * or changed in it, at every level; a handle over a container in a container copies nothing. A
 * reply is read to a depth of 49 nested containers.
 *
 * A setter shares the value with the container; the caller still owns and destroys the value's
 * handle. A value may be stored in several places and containers. Storing an array into itself is
 * the caller's error, at any depth; the direct case is defined: hcySetCell(a, i, a) and
 * hcySetField(a, i, name, a) store a snapshot of the array as it was.
 *
 * An element that was never set reads as a 0-by-0 double array, and is sent as one. If an array of
 * a reply holds fewer elements than its dimensions say, the missing ones read as null and are not
 * set. An element of a class that the library does not serve reads as null too.
 *
 * Handles and elements are allocated: getters and setters of elements throw std::bad_alloc when
 * memory is exhausted. A setter of an element throws positive overflow if the value is a container
 * that takes more than 2147483647 bytes on the wire.
 * @{
 */

/** Returns a new handle over the element of a cell array with the given linear index; null if the
 *  array is not a cell array or the index is not below the number of elements. */
HCY_API hcyArray* hcyGetCell(const hcyArray* array, size_t index);

/** Stores `value` as the element of a cell array with the given linear index. Ignored if the
 *  array is not a cell array or the index is not below the number of elements. */
HCY_API void hcySetCell(hcyArray* array, size_t index, hcyArray* value);

/** Returns the number of fields of a struct array; 0 for another array. */
HCY_API int hcyGetNumberOfFields(const hcyArray* array);

/** Returns the name of field n (zero-based) of a struct array, in the array's own storage; valid
 *  until a field is added or removed or the array is destroyed. Null for another array or n. */
HCY_API const char* hcyGetFieldNameByNumber(const hcyArray* array, int n);

/** Returns the number of the first field whose name equals `name` byte for byte; -1 if the array
 *  is not a struct array, `name` is null, or there is no such field. */
HCY_API int hcyGetFieldNumber(const hcyArray* array, const char* name);

/** Returns a new handle over the field `name` of the element with the given linear index; null if
 *  the array is not a struct array, there is no such field, or the index is not below the number
 *  of elements. */
HCY_API hcyArray* hcyGetField(const hcyArray* array, size_t index, const char* name);

/** Stores `value` as the field `name` of the element with the given linear index. Ignored where
 *  hcyGetField() gives null. */
HCY_API void hcySetField(hcyArray* array, size_t index, const char* name, hcyArray* value);

/** hcyGetField() with the name of field n: where two fields have the same name, the first one.
 *  Null also for another n. */
HCY_API hcyArray* hcyGetFieldByNumber(const hcyArray* array, size_t index, int n);

/** hcySetField() with the name of field n. Ignored where hcyGetFieldByNumber() gives null. */
HCY_API void hcySetFieldByNumber(hcyArray* array, size_t index, int n, hcyArray* value);

/** Adds a field behind the others, never set in any element, and returns its number; the number
 *  that it has if it exists already. -1, and nothing has changed, if the array is not a struct
 *  array, `name` is null, there would be more than 2147483647 values, a reply has named more than
 *  65536 elements without fields, or memory is exhausted. Does not throw. */
HCY_API int hcyAddField(hcyArray* array, const char* name);

/** Removes field n (zero-based) from every element. Ignored if the array is not a struct array or
 *  has no field n, and if memory is exhausted. Does not throw. */
HCY_API void hcyRemoveField(hcyArray* array, int n);

/** @} */

/**
 * @defgroup queries Arrays: class, size and text
 * @brief What an array is.
 *
 * A sparse array has no class of its own: its class is that of its values, double or logical. The
 * predicates that name one class exactly are false for every sparse array. None of these
 * functions throws.
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

/** Whether the array was created complex, or came or was copied with imaginary parts. */
HCY_API bool hcyIsComplex(const hcyArray* array);

/** Whether the array has no dimensions or any of them is 0. */
HCY_API bool hcyIsEmpty(const hcyArray* array);

/** Whether the array is logical (full or sparse) and exactly 1-by-1. */
HCY_API bool hcyIsLogicalScalar(const hcyArray* array);

/** Whether hcyIsLogicalScalar() holds and the one element is true. A sparse array answers by its
 *  stored element; when it stores none, false. */
HCY_API bool hcyIsLogicalScalarTrue(const hcyArray* array);

/** Whether `name`, which must not be null, equals the name of the array's class byte for byte. */
HCY_API bool hcyIsClass(const hcyArray* array, const char* name);

/** Returns the class of the array. */
HCY_API hcyClassID hcyGetClassID(const hcyArray* array);

/** Returns the name of the array's class: a static text. */
HCY_API const char* hcyGetClassName(const hcyArray* array);

/** Returns the bytes that one element takes behind its data pointer; 8 for a struct or cell. */
HCY_API size_t hcyGetElementSize(const hcyArray* array);

/** Returns the product of the dimensions, or 0 when there are none. A product that does not fit
 *  reads as the largest size. */
HCY_API size_t hcyGetNumberOfElements(const hcyArray* array);

/** Returns the text of a char array, read in column-major order, as a new NUL-terminated UTF-8
 *  text, to be released with hcyFree(). Well-formed UTF-16 (RFC 2781) gives well-formed UTF-8 (RFC
 *  3629). A surrogate is combined with whatever unit follows it, by the formula for a pair, so that
 *  text which is not well-formed may give bytes that are not. Null if the array is not a char
 *  array, has no code units, ends in a surrogate without a unit behind it, or memory is exhausted.
 *  A NUL among the code units ends the text for whoever reads it as a C string. */
HCY_API char* hcyArrayToString(const hcyArray* array);

/** Copies the code units of a char array into `buf`, in column-major order, the low byte of each,
 * and a NUL behind them: the rows of a matrix of several rows are interleaved. A code unit that the
 *  storage of a reply does not hold is copied as NUL.
 *  @param array  the array.
 *  @param buf    room for buflen bytes.
 *  @param buflen size of buf; 0 returns 0 and writes nothing.
 *  @return 0 when all fitted; 1 when the text was cut to buflen - 1 bytes, or when the array is
 *          not a char array (nothing is written then). */
HCY_API int hcyGetString(const hcyArray* array, char* buf, size_t buflen);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* HCY_HCYCLIENT_H */
