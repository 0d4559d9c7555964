#include "tools/api/text_forms.h"

static const text_form text_forms[] = {
    {"[Condition on ports from 0 to 65535]", nullptr, "^((eq|neq|lt|gt):[0-9]+|range:[0-9]+:[0-9]+)$"},
    {"[IPv4 address]", "ipv4", nullptr},
    {"[IPv4 address from 224.0.1.0 to 239.255.255.255]", "ipv4", nullptr},
    {"[IPv4 address or any]", nullptr, "^(any|[0-9]+(\\.[0-9]+){3})$"},
    {"[IPv4 mask]", "ipv4", nullptr},
    {"[IPv4 or IPv6 address]", nullptr, "^([0-9]+(\\.[0-9]+){3}|[0-9A-Fa-f:.]*:[0-9A-Fa-f:.]*)$"},
    {"[IPv6 address]", "ipv6", nullptr},
    {"[IPv6 address or any]", nullptr, "^(any|[0-9A-Fa-f:.]*:[0-9A-Fa-f:.]*)$"},
    {"[Keyword, or integer from 0 to 256]", nullptr, "^([a-z][a-z0-9-]*|[0-9]+)$"},
    {"[Keyword, or integer from 1536 to 65535]", nullptr, "^([a-z][a-z0-9-]*|[0-9]+)$"},
    {"[List of VLAN IDs]", nullptr, "^[0-9]+(-[0-9]+)?(,[0-9]+(-[0-9]+)?)*$"},
    {"[MAC address]", nullptr, "^([0-9A-Fa-f]{1,2}(:[0-9A-Fa-f]{1,2}){5}|[0-9A-Fa-f]{12})$"},
    {"[MAC address or any]", nullptr, "^(any|[0-9A-Fa-f]{2}(:[0-9A-Fa-f]{2}){5})$"},
    {"[MAC address, any or bpdu]", nullptr, "^(any|bpdu|[0-9A-Fa-f]{2}(:[0-9A-Fa-f]{2}){5})$"},
    {"[MAC mask]", nullptr, "^[0-9A-Fa-f]{2}(:[0-9A-Fa-f]{2}){5}$"},
    {"[String of letters]", nullptr, "^[A-Za-z]+$"},
    {"[Two hexadecimal digits]", nullptr, "^[0-9A-Fa-f]{2}$"},
    {"[URL]", "uri", nullptr},
};

const text_form *find_text_form(std::string_view range) {
  for (const text_form &form : text_forms) {
    if (range == form.range) return &form;
  }
  return nullptr;
}
