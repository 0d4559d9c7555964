#include "tools/api/text_forms.h"

static const text_form text_forms[] = {
    {"[IPv4 address]", "ipv4", nullptr},
    {"[IPv4 mask]", "ipv4", nullptr},
    {"[IPv4 or IPv6 address]", nullptr, "^([0-9]+(\\.[0-9]+){3}|[0-9A-Fa-f:.]*:[0-9A-Fa-f:.]*)$"},
    {"[IPv6 address]", "ipv6", nullptr},
    {"[List of VLAN IDs]", nullptr, "^[0-9]+(-[0-9]+)?(,[0-9]+(-[0-9]+)?)*$"},
    {"[MAC address]", nullptr, "^([0-9A-Fa-f]{1,2}(:[0-9A-Fa-f]{1,2}){5}|[0-9A-Fa-f]{12})$"},
    {"[String of letters]", nullptr, "^[A-Za-z]+$"},
    {"[URL]", "uri", nullptr},
};

const text_form *find_text_form(std::string_view range) {
  for (const text_form &form : text_forms) {
    if (range == form.range) return &form;
  }
  return nullptr;
}
