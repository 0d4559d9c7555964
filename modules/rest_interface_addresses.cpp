#include "modules/rest_interface_addresses.h"

#include "platform/api/openapi_routing.h"

#include <stdio.h>

/* An IPv4 address and its dotted mask. */
struct ipv4_texts {
  char address[IP_TEXT_SIZE]; /* empty when the platform gives an address of no known family */
  char mask[IP_TEXT_SIZE];    /* 0.0.0.0 for a length that no IPv4 prefix has */
};

static ipv4_texts texts_of(openapiClientHandle_t *client_handle, const open_inet_pfx_t &prefix) {
  uint32_t length = prefix.pfxLen;
  uint32_t mask = length == 0 || length > 32 ? 0 : UINT32_MAX << (32 - length);
  ipv4_texts texts = {};
  convert_inet_addr_to_ip_string(client_handle, &prefix.ipAddr, texts.address);
  convert_ipv4_with_uint32_to_ip_string(mask, texts.mask);
  return texts;
}

static void append_ipv4(openapiClientHandle_t *client_handle, const open_inet_pfx_t &prefix, node_t *tree,
                        const char *key, const char *tagname) {
  ipv4_texts texts = texts_of(client_handle, prefix);
  char text[2 * IP_TEXT_SIZE];
  snprintf(text, sizeof text, "%s/%s", texts.address, texts.mask);
  append_tree_string(tree, key, tagname, text);
}

void append_ipv4_and_mask(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree) {
  open_inet_pfx_t prefix = {};
  open_error_t rc = rpcclt_openapiRtrIntfIpAddrGet(client_handle, OPEN_AF_INET, ifNum, &prefix);
  if (rc != OPEN_E_NONE) return;
  ipv4_texts texts = texts_of(client_handle, prefix);
  append_tree_string(tree, "ipv4_address", "ipv4_address", texts.address);
  append_tree_string(tree, "subnet_mask", "subnet_mask", texts.mask);
}

void append_primary_ipv4(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree,
                         const char *key) {
  open_inet_pfx_t prefix = {};
  open_error_t rc = rpcclt_openapiRtrIntfIpAddrGet(client_handle, OPEN_AF_INET, ifNum, &prefix);
  if (rc == OPEN_E_NONE) append_ipv4(client_handle, prefix, tree, key, key);
}

void append_secondary_ipv4(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree,
                           const char *key) {
  open_inet_pfx_t prefix = {};
  uint32_t index = 0;
  node_t *list = nullptr;
  for (int listed = 0; listed < MAX_LIST_ENTRIES; listed++) {
    open_error_t rc = rpcclt_openapiRtrIntfSecIpAddrGet(client_handle, OPEN_AF_INET, ifNum, &prefix, &index);
    if (rc != OPEN_E_NONE) return;
    if (list == nullptr) list = append_branch(tree, key);
    char position[16];
    snprintf(position, sizeof position, "%u", index);
    append_ipv4(client_handle, prefix, list, position, "secondary_ipv4_address");
  }
}

void append_ipv6(openapiClientHandle_t *client_handle, uint32_t ifNum, node_t *tree) {
  open_inet_pfx_t prefix = {};
  node_t *list = nullptr;
  for (uint32_t position = 1; position <= MAX_LIST_ENTRIES; position++) {
    open_error_t rc = rpcclt_openapiRtrIntfIpAddrGet(client_handle, OPEN_AF_INET6, ifNum, &prefix);
    if (rc != OPEN_E_NONE) return;
    if (list == nullptr) list = append_branch(tree, "ipv6_addresses");
    char key[16], address[IP_TEXT_SIZE] = {}, text[IP_TEXT_SIZE + 16];
    snprintf(key, sizeof key, "%u", position);
    convert_inet_addr_to_ip_string(client_handle, &prefix.ipAddr, address);
    snprintf(text, sizeof text, "%s/%d", address, static_cast<int>(prefix.pfxLen));
    append_tree_string(list, key, "prefix_and_prefix_length", text);
  }
}
