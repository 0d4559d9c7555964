/* The chassis profile: what the switch is made of. Built in, or read from a JSON file. */
#ifndef KESTREL_SOFTSWITCH_PROFILE_H
#define KESTREL_SOFTSWITCH_PROFILE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

struct port_profile {
  std::string name;            /* "0/1" */
  uint32_t speed_mbps = 10000; /* 100, 1000, 10000 or 40000 */
  bool copper = false;         /* fixed copper connector; otherwise a transceiver cage */
  bool cabled = true;          /* a cable is in at start */
};

struct chassis_profile {
  std::string model;
  std::string serial;
  std::string mac; /* burned-in MAC, "02:00:5E:10:00:01" */
  std::string description;
  std::string os_version;
  std::string storage;
  uint32_t service_port_mask = 0xffffff00; /* network mask of the service port, in host byte order */
  std::vector<port_profile> ports;         /* ports 1..54 at most, in order of interface number */
};

/* 48 x 10G "0/1".."0/48" and 6 x 40G "0/49".."0/54", all cages, all cabled. */
chassis_profile built_in_profile();

/* Reads a profile; what the file leaves out is as built in. False with "FILE:LINE: reason" on any mistake
 * (unknown member, wrong type, value out of range, duplicate port name, ...); `profile` is then untouched. */
bool load_profile(const std::string &path, chassis_profile *profile, std::string *error);
/* The same for a text that is in memory already; `name` stands for the file in errors. */
bool parse_profile(const std::string &text, const std::string &name, chassis_profile *profile,
                   std::string *error);

} // namespace softswitch

#endif
