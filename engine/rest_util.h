/* Small things that all units share: the helper result type, tables of numbers and words, checks and
 * conversions of values between their text form and the platform's, and the clock. */
#ifndef KESTREL_ENGINE_REST_UTIL_H
#define KESTREL_ENGINE_REST_UTIL_H

#include "platform/api/openapi_common.h"

#include <memory>
#include <span>
#include <stdint.h>
#include <stdlib.h>
#include <time.h>

/* Result of helpers. Note that 0 is success. */
typedef enum { RC_TRUE = 0, RC_FALSE = 1 } RC_t;

/* --- Memory -------------------------------------------------------------------------------------------- */

/* A block from malloc(3) or calloc(3), null when there was no memory; freed at the end of its scope. */
struct free_memory {
  void operator()(void *memory) const { free(memory); }
};
template <typename T> using heap_array = std::unique_ptr<T[], free_memory>;

/* --- Numbers and words --------------------------------------------------------------------------------- */

/* One row of a table that names the values of a platform type. */
struct enum_text {
  int32_t value;
  const char *text;
};

/* The word of a value; null when the table has no such value. */
const char *find_text_by_enum(std::span<const enum_text> table, int32_t value);
/* Looks a word up, exactly. RC_FALSE when the table has no such word; *value is then untouched. */
RC_t find_enum_by_text(std::span<const enum_text> table, const char *text, int32_t *value);
/* Copies the word of a value into `out`. RC_FALSE with an empty text when there is none, or for a null `out`.
 */
RC_t copy_text_by_enum(std::span<const enum_text> table, int32_t value, char *out);

/* --- Numbers in text ----------------------------------------------------------------------------------- */

/* The number at the start of a text as atoi(3) reads it, but what does not fit an int is the nearest int. */
int32_t text_to_int(const char *text);
/* RC_TRUE for an optional "-" followed by digits only; *number is then the value (text_to_int). RC_FALSE for
 * anything else, the empty text included. */
RC_t check_string_is_number(const char *str, int32_t *number);
/* The same, and the value must be 0 or 1 (OPEN_CONTROL_t). *number is set even when it is not. */
RC_t check_string_is_number_within_rest_control(const char *str, int32_t *number);
/* RC_TRUE for 0..65535. */
RC_t check_uint16_range(int32_t number);
/* Decimal text to an unsigned 32-bit number. RC_FALSE for a sign, anything but digits, or a value above
 * 4294967295; the empty text is 0. */
RC_t convert_to_32bit_uint(const char *buf, uint32_t *localPref);

/* --- Addresses ----------------------------------------------------------------------------------------- */

/* Texts of addresses need at most this many bytes. */
enum { IP_TEXT_SIZE = 48 };

/* Address to text (inet_ntop(3), IPv6 as RFC 5952 has it) in a buffer of IP_TEXT_SIZE bytes. RC_FALSE for a
 * null pointer or another family. The handle is not used. */
RC_t convert_inet_addr_to_ip_string(openapiClientHandle_t *client_handle, const open_inet_addr_t *ipAddr,
                                    char *out_ipStr);
RC_t convert_ipv6_with_in6_addr_to_ip_string(const open_in6_addr_t *addr, char *out_ipStr);
/* `addr` is in host byte order. */
RC_t convert_ipv4_with_uint32_to_ip_string(uint32_t addr, char *out_ipStr);
/* Text to address, as the platform parses it. RC_FALSE when the platform refuses it or it is longer than 47
 * characters. */
RC_t convert_ip_string_to_inet_addr(openapiClientHandle_t *client_handle, const char *ipStr,
                                    open_inet_addr_t *out_ipAddr);
/* MAC address text to bytes: six groups of one or two letters or digits separated by colons, or twelve
 * without separators. A group is read as hexadecimal as far as it goes (zz is 0, 1g is 1). `macAddrSize` (at
 * least 6) bytes of the output are cleared first. */
RC_t convert_mac_string_to_uchar_ary(const char *macStr, unsigned char *out_macAddr, uint32_t macAddrSize);
/* Six bytes to text in a buffer of 18 bytes: hexadecimal without leading zeros, with colons when `is_sign` is
 * 1, upper case when `is_uppercase` is 1. */
RC_t convert_uchar_ary_to_mac_string(const unsigned char *macAddr, char *out_macStr, int is_sign,
                                     int is_uppercase);
/* Upper-case copy of a text; empty for an empty one. The buffers may be the same. */
void upper(const char *in_str, char *out_str);

/* --- Time ---------------------------------------------------------------------------------------------- */

/* Seconds since the Unix epoch. */
time_t rest_time(void);
/* Replaces the clock (for tests); null puts the system's back. */
void rest_set_clock(time_t (*clock)(void));

#endif
