/* MAC addresses of stations, as bytes and as text. */
#ifndef KESTREL_SOFTSWITCH_MODEL_MAC_ADDRESS_H
#define KESTREL_SOFTSWITCH_MODEL_MAC_ADDRESS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace softswitch {

using mac_address = std::array<uint8_t, 6>; /* in the order of transmission */

/* Reads six groups of two hexadecimal digits of any case, separated by colons. False for anything else. */
bool mac_read(std::string_view text, mac_address *mac);
/* The same; false also for an address that no station bears: zero, or a group address (IEEE 802 section 8.2).
 */
bool station_mac_read(std::string_view text, mac_address *mac);

/* The text of an address, in upper case. */
std::string mac_text(const mac_address &mac);

} // namespace softswitch

#endif
