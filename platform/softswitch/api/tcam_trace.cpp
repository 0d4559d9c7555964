/* TCAM policies in the trace of platform calls; see tcam_trace.h. */
#include "platform/softswitch/api/tcam_trace.h"

#include "platform/api/openapi_tcam.h"
#include "platform/softswitch/model/inet_address.h"

#include <algorithm>
#include <stddef.h>
#include <string.h>

namespace softswitch {

using record = open_tcamApiPolicy_t;
using action = OPEN_TCAM_ACTION_t;

/* --- Members as text ------------------------------------------------------------------------------------ */

/* Reads a number of the machine's byte order. */
template <typename T> static uint32_t number_at(const uint8_t *bytes) {
  T number;
  memcpy(&number, bytes, sizeof number);
  return number;
}

static std::string number_text(const uint8_t *bytes, size_t size) {
  if (size == sizeof(uint8_t)) return std::to_string(*bytes);
  return std::to_string(size == sizeof(uint16_t) ? number_at<uint16_t>(bytes) : number_at<uint32_t>(bytes));
}

static std::string ip_text(const uint8_t *bytes, size_t) {
  return inet_address_text(inet_ipv4(number_at<uint32_t>(bytes)));
}

static std::string hex_text(const uint8_t *bytes, size_t size) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (size_t index = 0; index < size; index++) {
    text += digits[bytes[index] >> 4];
    text += digits[bytes[index] & 15];
  }
  return text;
}

/* --- Members -------------------------------------------------------------------------------------------- */

struct member {
  const char *name;
  size_t offset;
  size_t size;
  std::string (*text)(const uint8_t *bytes, size_t size);
};

static constexpr size_t action_offset = offsetof(record, actionVal);

static constexpr member members[] = {
    {"versionMajor", offsetof(record, policyHeader.versionInfo.versionMajor), 4, number_text},
    {"versionMinor", offsetof(record, policyHeader.versionInfo.versionMinor), 4, number_text},
    {"headerLen", offsetof(record, policyHeader.headerLen), 4, number_text},
    {"policyType", offsetof(record, policyType), 4, number_text},
    {"policyPrio", offsetof(record, policyPrio), 4, number_text},
    {"ruleNum", offsetof(record, ruleNum), 4, number_text},
    {"rulePrio", offsetof(record, rulePrio), 4, number_text},
    {"matchDstMac", offsetof(record, matchDstMac), 6, hex_text},
    {"matchSrcMac", offsetof(record, matchSrcMac), 6, hex_text},
    {"matchVlanVal", offsetof(record, matchVlanVal), 2, number_text},
    {"matchVlanPrio", offsetof(record, matchVlanPrio), 1, number_text},
    {"matchEthType", offsetof(record, matchEthType), 2, number_text},
    {"matchDstIp", offsetof(record, matchDstIp), 4, ip_text},
    {"matchDstIpMask", offsetof(record, matchDstIpMask), 4, ip_text},
    {"matchSrcIp", offsetof(record, matchSrcIp), 4, ip_text},
    {"matchSrcIpMask", offsetof(record, matchSrcIpMask), 4, ip_text},
    {"matchIpProto", offsetof(record, matchIpProto), 4, number_text},
    {"matchIpProtoMask", offsetof(record, matchIpProtoMask), 4, number_text},
    {"matchIpDscp", offsetof(record, matchIpDscp), 4, number_text},
    {"matchIpDscpMask", offsetof(record, matchIpDscpMask), 1, number_text},
    {"matchSrcPortIcmpType", offsetof(record, matchSrcPortIcmpType), 2, number_text},
    {"matchSrcPortIcmpTypeMask", offsetof(record, matchSrcPortIcmpTypeMask), 2, number_text},
    {"matchDstPortIcmpCode", offsetof(record, matchDstPortIcmpCode), 2, number_text},
    {"matchDstPortIcmpCodeMask", offsetof(record, matchDstPortIcmpCodeMask), 2, number_text},
    {"matchSrcIpv6Addr", offsetof(record, matchSrcIpv6Addr), 16, hex_text},
    {"matchSrcIpv6Mask", offsetof(record, matchSrcIpv6Mask), 16, hex_text},
    {"matchDstIpv6Addr", offsetof(record, matchDstIpv6Addr), 16, hex_text},
    {"matchDstIpv6Mask", offsetof(record, matchDstIpv6Mask), 16, hex_text},
    {"actionType", offsetof(record, actionType), 4, number_text},
    {"ifNum", action_offset + offsetof(action, ifNum), 4, number_text},
    {"srcMac", action_offset + offsetof(action, srcMac), 6, hex_text},
    {"dstMac", action_offset + offsetof(action, dstMac), 6, hex_text},
    {"etherType", action_offset + offsetof(action, etherType), 4, number_text},
    {"vlanVal", action_offset + offsetof(action, vlanVal), 2, number_text},
    {"vlanPrio", action_offset + offsetof(action, vlanPrio), 1, number_text},
    {"dscp", action_offset + offsetof(action, dscp), 1, number_text},
};

std::string tcam_record_trace(const void *policy) {
  std::string text;
  for (const member &row : members) {
    const uint8_t *bytes = static_cast<const uint8_t *>(policy) + row.offset;
    if (std::all_of(bytes, bytes + row.size, [](uint8_t byte) { return byte == 0; })) continue;
    text += text.empty() ? '{' : ' ';
    text += std::string(row.name) + '=' + row.text(bytes, row.size);
  }
  return text.empty() ? "{}" : text + '}';
}

} // namespace softswitch
