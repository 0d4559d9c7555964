/* The platform client library: what every family shares.
 *
 * Conventions that hold for all families:
 * - Each call takes the client handle first and returns an open_error_t, save where it is said otherwise.
 * - Every call answers OPEN_E_PARAM for a null handle or pointer, OPEN_E_RPC for a handle that was never
 *   registered, and any other code only as its own comment says.
 * - Outputs come last and hold nothing defined unless the call returned OPEN_E_NONE.
 * - Text travels in an open_buffdesc. Going in, `size` may count the terminator or not. Coming out, at most
 *   `size` bytes are written, the terminator among them, and `size` is set to the length without it.
 * - Numbers are 32-bit unsigned; interface numbers count from 1.
 * - Calls may be made from one thread at a time.
 *
 * All headers compile as C11 and as C++. */
#ifndef OPENAPI_COMMON_H
#define OPENAPI_COMMON_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Results of platform calls. */
typedef enum {
  OPEN_E_NONE = 0,        /* success */
  OPEN_E_RPC = -20,       /* no connection to the configuration service */
  OPEN_E_INTERNAL = -21,  /* internal fault */
  OPEN_E_PARAM = -22,     /* argument invalid or out of range */
  OPEN_E_FULL = -23,      /* table full */
  OPEN_E_EXISTS = -24,    /* exists already */
  OPEN_E_TIMEOUT = -25,   /* timed out */
  OPEN_E_FAIL = -26,      /* refused, or the end of a first/next walk */
  OPEN_E_DISABLED = -27,  /* feature disabled */
  OPEN_E_UNAVAIL = -28,   /* not supported here */
  OPEN_E_NOT_FOUND = -29, /* no such object */
  OPEN_E_EMPTY = -30,     /* table empty */
  OPEN_E_ERROR = -31      /* any other error */
} open_error_t;

typedef uint32_t OPEN_CONTROL_t;
enum { OPEN_DISABLE = 0, OPEN_ENABLE = 1 };

typedef uint32_t OPEN_BOOL_t;
enum { OPEN_FALSE = 0, OPEN_TRUE = 1 };

/* Text or bytes handed over. */
typedef struct {
  uint32_t size; /* bytes at pstart; see the conventions above */
  void *pstart;
} open_buffdesc;

/* A registered client; opaque, owned by the library. */
typedef struct openapiClientHandle_s {
  uint8_t opaque[256];
} openapiClientHandle_t;

typedef uint32_t OPEN_AF_t;
enum { OPEN_AF_NONE = 0, OPEN_AF_INET = 1, OPEN_AF_INET6 = 2 };

typedef struct {
  uint8_t addr8[16]; /* network byte order */
} open_in6_addr_t;

/* An IPv4 or IPv6 address. */
typedef struct open_inet_addr_s {
  OPEN_AF_t family;
  union {
    uint32_t ipv4;        /* host byte order */
    open_in6_addr_t ipv6; /* network byte order */
  } addr;
} open_inet_addr_t;

/* Registers the calling program. Must be the first call; brings the configuration service up when it lives in
 * this process.
 *   name    the program's name, 1..63 characters
 *   handle  filled on success
 * OPEN_E_PARAM   null or empty argument
 * OPEN_E_FAIL    the service cannot start; the reason is on standard error */
open_error_t openapiClientRegister(const char *name, openapiClientHandle_t *handle);

/* Says whether the configuration service answers.
 * OPEN_E_RPC     it does not, or the handle is not registered */
open_error_t rpcclt_openapiConnectivityCheck(openapiClientHandle_t *handle);

/* Parses an address in text form.
 *   text    IPv4 dotted quad of four decimal numbers, or IPv6 text (RFC 4291 section 2.2); not empty, no
 *           blanks, no prefix length, no zone
 *   addr    the address, family set
 * OPEN_E_PARAM   null argument
 * OPEN_E_FAIL    the text is no address */
open_error_t rpcclt_openapiInetAddrGet(openapiClientHandle_t *handle, open_buffdesc *text,
                                       open_inet_addr_t *addr);

#ifdef __cplusplus
}
#endif
#endif
