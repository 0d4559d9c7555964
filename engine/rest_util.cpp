#include "engine/rest_util.h"

#include <arpa/inet.h>
#include <ctype.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static_assert(IP_TEXT_SIZE >= INET6_ADDRSTRLEN);

const char *find_text_by_enum(std::span<const enum_text> table, int32_t value) {
  for (const enum_text &row : table) {
    if (row.value == value) return row.text;
  }
  return nullptr;
}

RC_t find_enum_by_text(std::span<const enum_text> table, const char *text, int32_t *value) {
  if (text == nullptr || value == nullptr) return RC_FALSE;
  for (const enum_text &row : table) {
    if (strcmp(row.text, text) == 0) {
      *value = row.value;
      return RC_TRUE;
    }
  }
  return RC_FALSE;
}

RC_t copy_text_by_enum(std::span<const enum_text> table, int32_t value, char *out) {
  if (out == nullptr) return RC_FALSE;
  const char *text = find_text_by_enum(table, value);
  strcpy(out, text == nullptr ? "" : text);
  return text == nullptr ? RC_FALSE : RC_TRUE;
}

int32_t text_to_int(const char *text) {
  long number = strtol(text, nullptr, 10); /* saturates by itself beyond a long */
  if (number > INT_MAX) return INT_MAX;
  if (number < INT_MIN) return INT_MIN;
  return static_cast<int32_t>(number);
}

RC_t check_string_is_number(const char *str, int32_t *number) {
  if (str == nullptr || number == nullptr || str[0] == '\0') return RC_FALSE;
  const char *digits = str[0] == '-' ? str + 1 : str;
  if (digits[strspn(digits, "0123456789")] != '\0') return RC_FALSE;
  *number = text_to_int(str);
  return RC_TRUE;
}

RC_t check_string_is_number_within_rest_control(const char *str, int32_t *number) {
  if (check_string_is_number(str, number) != RC_TRUE) return RC_FALSE;
  return *number == OPEN_DISABLE || *number == OPEN_ENABLE ? RC_TRUE : RC_FALSE;
}

RC_t check_uint16_range(int32_t number) {
  return number < 0 || number >= 65536 ? RC_FALSE : RC_TRUE;
}

RC_t convert_to_32bit_uint(const char *buf, uint32_t *localPref) {
  if (buf == nullptr || localPref == nullptr) return RC_FALSE;
  size_t length = strlen(buf);
  if (length > 10 || buf[strspn(buf, "0123456789")] != '\0') return RC_FALSE;
  uint64_t number = strtoull(buf, nullptr, 10); /* ten digits always fit */
  if (number > UINT32_MAX) return RC_FALSE;
  *localPref = static_cast<uint32_t>(number);
  return RC_TRUE;
}

RC_t convert_inet_addr_to_ip_string(openapiClientHandle_t *, const open_inet_addr_t *ipAddr,
                                    char *out_ipStr) {
  if (ipAddr == nullptr || out_ipStr == nullptr) return RC_FALSE;
  if (ipAddr->family == OPEN_AF_INET)
    return convert_ipv4_with_uint32_to_ip_string(ipAddr->addr.ipv4, out_ipStr);
  if (ipAddr->family == OPEN_AF_INET6)
    return convert_ipv6_with_in6_addr_to_ip_string(&ipAddr->addr.ipv6, out_ipStr);
  return RC_FALSE;
}

RC_t convert_ipv6_with_in6_addr_to_ip_string(const open_in6_addr_t *addr, char *out_ipStr) {
  if (addr == nullptr || out_ipStr == nullptr) return RC_FALSE;
  return inet_ntop(AF_INET6, addr->addr8, out_ipStr, IP_TEXT_SIZE) == nullptr ? RC_FALSE : RC_TRUE;
}

RC_t convert_ipv4_with_uint32_to_ip_string(uint32_t addr, char *out_ipStr) {
  if (out_ipStr == nullptr) return RC_FALSE;
  in_addr network_order = {htonl(addr)};
  return inet_ntop(AF_INET, &network_order, out_ipStr, INET_ADDRSTRLEN) == nullptr ? RC_FALSE : RC_TRUE;
}

RC_t convert_ip_string_to_inet_addr(openapiClientHandle_t *client_handle, const char *ipStr,
                                    open_inet_addr_t *out_ipAddr) {
  if (ipStr == nullptr || out_ipAddr == nullptr || strlen(ipStr) >= IP_TEXT_SIZE) return RC_FALSE;
  char text[IP_TEXT_SIZE] = {};
  strcpy(text, ipStr);
  open_buffdesc desc = {static_cast<uint32_t>(strlen(text) + 1), text};
  return rpcclt_openapiInetAddrGet(client_handle, &desc, out_ipAddr) == OPEN_E_NONE ? RC_TRUE : RC_FALSE;
}

RC_t convert_mac_string_to_uchar_ary(const char *macStr, unsigned char *out_macAddr, uint32_t macAddrSize) {
  if (macStr == nullptr || out_macAddr == nullptr || macAddrSize < 6) return RC_FALSE;
  memset(out_macAddr, 0, macAddrSize);
  char group[6][3] = {};
  char rest[2] = {}; /* its first character says enough: something follows the address */
  int count =
      sscanf(macStr, "%2[A-Za-z0-9]:%2[A-Za-z0-9]:%2[A-Za-z0-9]:%2[A-Za-z0-9]:%2[A-Za-z0-9]:%2[A-Za-z0-9]%1s",
             group[0], group[1], group[2], group[3], group[4], group[5], rest);
  if (count != 6) {
    count =
        sscanf(macStr, "%2[A-Za-z0-9]%2[A-Za-z0-9]%2[A-Za-z0-9]%2[A-Za-z0-9]%2[A-Za-z0-9]%2[A-Za-z0-9]%1s",
               group[0], group[1], group[2], group[3], group[4], group[5], rest);
  }
  if (count != 6) return RC_FALSE;
  for (int i = 0; i < 6; i++) out_macAddr[i] = static_cast<unsigned char>(strtol(group[i], nullptr, 16));
  return RC_TRUE;
}

RC_t convert_uchar_ary_to_mac_string(const unsigned char *macAddr, char *out_macStr, int is_sign,
                                     int is_uppercase) {
  if (macAddr == nullptr || out_macStr == nullptr) return RC_FALSE;
  const char *format = is_sign == 1 ? "%x:%x:%x:%x:%x:%x" : "%x%x%x%x%x%x";
  sprintf(out_macStr, format, macAddr[0], macAddr[1], macAddr[2], macAddr[3], macAddr[4], macAddr[5]);
  if (is_uppercase == 1) upper(out_macStr, out_macStr);
  return RC_TRUE;
}

void upper(const char *in_str, char *out_str) {
  if (in_str == nullptr || out_str == nullptr) return;
  size_t i = 0;
  for (; in_str[i] != '\0'; i++)
    out_str[i] = static_cast<char>(toupper(static_cast<unsigned char>(in_str[i])));
  out_str[i] = '\0';
}

static time_t system_clock_seconds(void) {
  return time(nullptr);
}
static time_t (*current_clock)(void) = system_clock_seconds;

time_t rest_time(void) {
  return current_clock();
}

void rest_set_clock(time_t (*clock)(void)) {
  current_clock = clock == nullptr ? system_clock_seconds : clock;
}
