/* A small document of an API, and its commands. */
#ifndef KESTREL_TESTS_UNIT_TOOLS_KESTRELCTL_SAMPLE_H
#define KESTREL_TESTS_UNIT_TOOLS_KESTRELCTL_SAMPLE_H

#include "tools/api/api_description.h"
#include "tools/kestrelctl/commands.h"

#include <string>
#include <vector>

/* One API of the sample: name, URI, method, and its parameters as lines "name@description". */
struct sample_api {
  const char *name, *uri, *method;
  std::vector<const char *> parameters;
};

inline std::string sample_module(const char *name, const std::vector<sample_api> &apis) {
  std::string text =
      std::string("===MODULE-START\n    module_name=") + name + "\n    module_desc=All of " + name + ".\n";
  for (const sample_api &api : apis) {
    text += std::string("==API-START\n    api_name=") + api.name +
            "\n    api_desc=Does it.\n    api_uri=" + api.uri + "\n    api_method=" + api.method +
            "\n=API-PARAM-START\n";
    for (const char *parameter : api.parameters) text += std::string("    param=") + parameter + "\n";
    text += "    param=sessionkey@Session key that logging in returned. [String of 32 characters]\n"
            "    param=format@Specified return format. {xml | json}\n=API-PARAM-END\n==API-END\n";
  }
  return text + "===MODULE-END\n";
}

inline const std::vector<api_module> &sample_modules() {
  static const char *vlan = "vlanId@VLAN ID, in the URI. [Integer from 1 to 4094]";
  static const char *port = "ifNum@Number of the port, in the URI. [Interface number]";
  static const char *acl = "name@Name, in the URI. [String from 1 to 31 characters]";
  static const std::string document =
      sample_module("vlans", {{"List the VLANs", "/vlans", "GET", {}},
                              {"List the pending changes", "/vlans/pendingChanges", "GET", {}},
                              {"Show a VLAN", "/vlans/{vlanId}", "GET", {vlan}},
                              {"Create a VLAN", "/vlans/{vlanId}", "POST", {vlan}},
                              {"Delete a VLAN", "/vlans/{vlanId}", "DELETE", {vlan}},
                              {"Set the name of a VLAN",
                               "/vlans/{vlanId}/name",
                               "PUT",
                               {vlan, "value@Name. [String from 1 to 8 characters]"}}}) +
      sample_module("if", {{"Set the administrative state",
                            "/if/{ifNum}/adminState",
                            "PUT",
                            {port, "value@State. {0 = disable | 1 = enable}"}},
                           {"Set the size",
                            "/if/{ifNum}/mtuSize",
                            "PUT",
                            {port, "value@Bytes. [Integer from 1518 to 12270, or -1 for the default]"}}}) +
      sample_module(
          "acl",
          {{"List the ACLs of a type", "/acl/{type}", "GET", {"type@Type, in the URI. {mac | ip}"}},
           {"Show an ACL", "/acl/ip/name/{name}", "GET", {acl}},
           {"Add a rule",
            "/acl/ip/name/{name}/rule",
            "POST",
            {acl, "action@What happens. {permit | deny}", "protocol@Protocol. [String up to 8 characters]",
             "log@Optional. Whether it is logged. {0 = no | 1 = yes}"}}}) +
      sample_module("transfer", {{"Show the status", "/download/status", "GET", {}},
                                 {"Start a download", "/download/script", "POST", {"url@URL. [URL]"}}}) +
      sample_module("script",
                    {{"Apply a script", "/script/apply", "POST", {"scr@Name. [String up to 96 characters]"}},
                     {"Delete a script", "/script", "DELETE", {"scr@Name. [String up to 96 characters]"}}}) +
      sample_module("login",
                    {{"Open a session", "/login", "POST", {"user@User name. [String up to 255 characters]"}},
                     {"End the session", "/login", "DELETE", {}},
                     {"Show the limits", "/login", "GET", {}}});
  static std::string error;
  static const std::vector<api_module> modules = describe_api(document.c_str(), &error);
  if (!error.empty()) abort();
  return modules;
}

inline const std::vector<command> &sample_commands() {
  static const std::vector<command> commands = make_commands(sample_modules());
  return commands;
}

#endif
