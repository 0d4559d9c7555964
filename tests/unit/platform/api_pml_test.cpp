/* Tests of the port MAC locking functions of the C interface: every result code of every function, and what
 * they do. */
#include "platform/api/openapi_pml.h"

#include "tests/support/full_disk.h"
#include "tests/unit/platform/softswitch_test_support.h"

#include <string.h>

namespace {

const char *const no_macs[] = {"",
                               "0",
                               "00:11:22:33:44",
                               "00:11:22:33:44:",
                               "00:11:22:33:44:5",
                               "00:11:22:33:44:5 ",
                               "00:11:22:33:44:5g",
                               "00:11:22:33:44:555",
                               "00:11:22:33:44:55:",
                               "00:11:22:33:44:55:66",
                               " 00:11:22:33:44:55",
                               "00:11:22:33:44:55 ",
                               "00-11-22-33-44-55",
                               "00:11:22:33:44-55",
                               "001122334455",
                               "0011.2233.4455",
                               "0x:11:22:33:44:55",
                               "+0:11:22:33:44:55",
                               "-1:11:22:33:44:55",
                               "00:11:22:33:44:\n5",
                               "g0:11:22:33:44:55",
                               "00:00:00:00:00:00",
                               "01:00:5E:00:00:01",
                               "03:00:00:00:00:00",
                               "33:33:00:00:00:01",
                               "FF:FF:FF:FF:FF:FF"};

class PortMacLocking : public SoftSwitch {
protected:
  void SetUp() override {
    SoftSwitch::SetUp();
    ASSERT_EQ(commit("vlan 10,20"), OPEN_E_NONE);
  }

  open_error_t add(uint32_t interface, std::string mac, uint32_t vlan, uint32_t sticky = 0) {
    open_buffdesc text = {static_cast<uint32_t>(mac.size()), mac.data()};
    return rpcclt_openapiPmlIntfStaticEntryAdd(&handle, interface, &text, vlan, sticky);
  }

  open_error_t remove(uint32_t interface, std::string mac, uint32_t vlan) {
    open_buffdesc text = {static_cast<uint32_t>(mac.size()), mac.data()};
    return rpcclt_openapiPmlIntfStaticEntryDelete(&handle, interface, &text, vlan);
  }

  /* What follows an entry, as "MAC VLAN sticky"; the code in its place when nothing does. */
  std::string next(uint32_t interface, const char *mac, uint32_t vlan, uint32_t size = 18) {
    char buffer[256] = {0};
    strcpy(buffer, mac);
    open_buffdesc text = {size, buffer};
    uint32_t sticky;
    open_error_t rc = rpcclt_openapiPmlIntfStaticEntryGetNext(&handle, interface, &text, &vlan, &sticky);
    return rc == OPEN_E_NONE ? entry(text, vlan, sticky) : std::to_string(rc);
  }

  std::vector<std::string> walk(uint32_t interface) {
    std::vector<std::string> found;
    char buffer[256];
    open_buffdesc text = {sizeof buffer, buffer};
    uint32_t vlan, sticky;
    open_error_t rc = rpcclt_openapiPmlIntfStaticEntryGetFirst(&handle, interface, &text, &vlan, &sticky);
    while (rc == OPEN_E_NONE) {
      found.push_back(entry(text, vlan, sticky));
      text.size = sizeof buffer;
      rc = rpcclt_openapiPmlIntfStaticEntryGetNext(&handle, interface, &text, &vlan, &sticky);
    }
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  uint32_t sticky_mode(uint32_t interface) {
    uint32_t mode = 99;
    EXPECT_EQ(rpcclt_openapiPmlIntfStickyModeGet(&handle, interface, &mode), OPEN_E_NONE);
    return mode;
  }

  open_error_t set_sticky_mode(uint32_t interface, uint32_t mode) {
    return rpcclt_openapiPmlIntfStickyModeSet(&handle, interface, mode);
  }

  using list = std::vector<std::string>;
  const std::string station = "00:11:22:AA:BB:CC";

private:
  static std::string entry(const open_buffdesc &text, uint32_t vlan, uint32_t sticky) {
    const char *start = static_cast<const char *>(text.pstart);
    EXPECT_EQ(text.size, strlen(start));
    return std::string(start) + " " + std::to_string(vlan) + " " + std::to_string(sticky);
  }
};

TEST_F(PortMacLocking, FactorySwitchHasNothingLocked) {
  for (uint32_t interface = 1; interface <= 119; interface++) {
    if (interface == 55) continue;
    EXPECT_EQ(sticky_mode(interface), 0u) << interface;
    EXPECT_EQ(walk(interface), list()) << interface;
  }
}

TEST_F(PortMacLocking, OnlyPortsAndLagsCanBeLocked) {
  for (const auto &[interface, result] : not_switching) {
    char buffer[256] = "00:11:22:AA:BB:CC";
    open_buffdesc text = {sizeof buffer, buffer};
    uint32_t vlan = 10, sticky = 0;
    EXPECT_EQ(rpcclt_openapiPmlIntfStickyModeGet(&handle, interface, &sticky), result) << interface;
    EXPECT_EQ(set_sticky_mode(interface, 1), result) << interface;
    EXPECT_EQ(set_sticky_mode(interface, 0), result) << interface;
    EXPECT_EQ(add(interface, station, 10), result) << interface;
    EXPECT_EQ(remove(interface, station, 10), result) << interface;
    EXPECT_EQ(rpcclt_openapiPmlIntfStaticEntryGetFirst(&handle, interface, &text, &vlan, &sticky), result);
    EXPECT_EQ(rpcclt_openapiPmlIntfStaticEntryGetNext(&handle, interface, &text, &vlan, &sticky), result);
  }
}

/* --- Sticky mode ---------------------------------------------------------------------------------------- */

TEST_F(PortMacLocking, OnlyOneTurnsStickyModeOn) {
  for (uint32_t mode : {1u, 0u, 1u, 2u, 1u, UINT32_MAX, 1u, 255u}) {
    ASSERT_EQ(set_sticky_mode(119, mode), OPEN_E_NONE);
    EXPECT_EQ(sticky_mode(119), mode == 1 ? 1u : 0u) << mode;
    EXPECT_EQ(sticky_mode(118), 0u);
  }
  ASSERT_EQ(set_sticky_mode(1, 1), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "vlan 10,20\ninterface 0/1 mac-locking sticky\n");
}

/* --- Adding and deleting -------------------------------------------------------------------------------- */

TEST_F(PortMacLocking, AddedAddressIsListedInUpperCaseAndKept) {
  ASSERT_EQ(add(1, "00:11:22:aa:bB:Cc", 10, 0), OPEN_E_NONE);
  ASSERT_EQ(add(119, "fe:ff:ff:ff:ff:ff", 1, 1), OPEN_E_NONE);
  EXPECT_EQ(walk(1), list{"00:11:22:AA:BB:CC 10 0"});
  EXPECT_EQ(walk(119), list{"FE:FF:FF:FF:FF:FF 1 1"});
  EXPECT_EQ(softswitch::running_config(),
            "vlan 10,20\n"
            "interface 0/1 mac-locking address 00:11:22:AA:BB:CC vlan 10 static\n"
            "interface 3/64 mac-locking address FE:FF:FF:FF:FF:FF vlan 1 sticky\n");
  restart();
  EXPECT_EQ(walk(1), list{"00:11:22:AA:BB:CC 10 0"});
  EXPECT_EQ(walk(119), list{"FE:FF:FF:FF:FF:FF 1 1"});
}

TEST_F(PortMacLocking, AddressIsReadWithAndWithoutTheTerminatorCounted) {
  char buffer[256] = "00:11:22:aa:bb:cc";
  for (uint32_t size : {17u, 18u, 256u}) {
    open_buffdesc text = {size, buffer};
    ASSERT_EQ(rpcclt_openapiPmlIntfStaticEntryAdd(&handle, 1, &text, 10, 0), OPEN_E_NONE) << size;
    EXPECT_EQ(walk(1), list{"00:11:22:AA:BB:CC 10 0"});
    ASSERT_EQ(rpcclt_openapiPmlIntfStaticEntryDelete(&handle, 1, &text, 10), OPEN_E_NONE) << size;
    EXPECT_EQ(walk(1), list());
  }
  open_buffdesc text = {16, buffer};
  EXPECT_EQ(rpcclt_openapiPmlIntfStaticEntryAdd(&handle, 1, &text, 10, 0), OPEN_E_PARAM);
}

TEST_F(PortMacLocking, WhatIsNoStationsAddressIsRefused) {
  ASSERT_EQ(add(1, station, 10), OPEN_E_NONE);
  for (const char *bad : no_macs) {
    EXPECT_EQ(add(1, bad, 10), OPEN_E_PARAM) << bad;
    EXPECT_EQ(remove(1, bad, 10), OPEN_E_PARAM) << bad;
    EXPECT_EQ(next(1, bad, 10), std::to_string(OPEN_E_PARAM)) << bad;
  }
  EXPECT_EQ(walk(1), list{"00:11:22:AA:BB:CC 10 0"});
}

TEST_F(PortMacLocking, SmallestAndLargestStationAddressesAreTaken) {
  for (const char *good : {"00:00:00:00:00:01", "00:00:00:01:00:00", "02:00:00:00:00:00", "FE:FF:FF:FF:FF:FF",
                           "00:01:00:00:00:00"}) {
    EXPECT_EQ(add(1, good, 10), OPEN_E_NONE) << good;
    EXPECT_EQ(walk(1), list{std::string(good) + " 10 0"});
    EXPECT_EQ(remove(1, good, 10), OPEN_E_NONE) << good;
  }
}

TEST_F(PortMacLocking, VlanMustExist) {
  for (const auto &[vlan, result] : absent_vlans) {
    EXPECT_EQ(add(1, station, vlan), result) << vlan;
    EXPECT_EQ(remove(1, station, vlan), result) << vlan;
  }
}

TEST_F(PortMacLocking, StickyFlagIsZeroOrOne) {
  for (uint32_t sticky : {2u, UINT32_MAX}) EXPECT_EQ(add(1, station, 10, sticky), OPEN_E_PARAM) << sticky;
  EXPECT_EQ(walk(1), list());
}

TEST_F(PortMacLocking, AddressIsLockedInAVlanOnOneInterfaceOnly) {
  ASSERT_EQ(add(1, station, 10, 0), OPEN_E_NONE);
  EXPECT_EQ(add(1, station, 10, 0), OPEN_E_EXISTS);
  EXPECT_EQ(add(1, station, 10, 1), OPEN_E_EXISTS) << "adding does not change the flag either";
  EXPECT_EQ(add(2, station, 10, 0), OPEN_E_EXISTS);
  EXPECT_EQ(add(2, "00:11:22:aa:bb:cc", 10, 0), OPEN_E_EXISTS);
  EXPECT_EQ(add(2, station, 20, 1), OPEN_E_NONE) << "another VLAN";
  EXPECT_EQ(add(2, "00:11:22:AA:BB:CD", 10, 0), OPEN_E_NONE) << "another address";
  EXPECT_EQ(walk(1), list{"00:11:22:AA:BB:CC 10 0"});
  EXPECT_EQ(walk(2), (list{"00:11:22:AA:BB:CC 20 1", "00:11:22:AA:BB:CD 10 0"}));
  ASSERT_EQ(remove(1, station, 10), OPEN_E_NONE);
  EXPECT_EQ(add(2, station, 10, 0), OPEN_E_NONE);
}

TEST_F(PortMacLocking, DeletingNeedsTheAddressLockedHereInThisVlan) {
  ASSERT_EQ(add(1, station, 10), OPEN_E_NONE);
  EXPECT_EQ(remove(1, station, 20), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove(2, station, 10), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove(1, "00:11:22:AA:BB:CD", 10), OPEN_E_NOT_FOUND);
  EXPECT_EQ(remove(1, "00:11:22:aa:bb:cc", 10), OPEN_E_NONE);
  EXPECT_EQ(remove(1, station, 10), OPEN_E_NOT_FOUND);
  EXPECT_EQ(walk(1), list());
}

TEST_F(PortMacLocking, TwentyAddressesFitOnAnInterface) {
  char next_mac[] = "00:00:00:00:00:10";
  for (int count = 0; count < 20; count++) {
    snprintf(next_mac + 15, 3, "%02X", 0x10 + count);
    ASSERT_EQ(add(3, next_mac, 10), OPEN_E_NONE) << count;
  }
  EXPECT_EQ(add(3, station, 10), OPEN_E_FULL);
  EXPECT_EQ(walk(3).size(), 20u);
  EXPECT_EQ(add(4, station, 10), OPEN_E_NONE) << "each interface has a table of its own";
}

TEST_F(PortMacLocking, FullInterfaceRefusesOneMoreUntilOneIsDeleted) {
  ASSERT_TRUE(softswitch::set_limit("static-macs", 2));
  EXPECT_FALSE(softswitch::set_limit("static-macs", 21));
  ASSERT_EQ(add(1, "00:00:00:00:00:01", 10), OPEN_E_NONE);
  ASSERT_EQ(add(1, "00:00:00:00:00:01", 20), OPEN_E_NONE);
  EXPECT_EQ(add(1, "00:00:00:00:00:02", 10), OPEN_E_FULL);
  EXPECT_EQ(add(1, "00:00:00:00:00:01", 20), OPEN_E_EXISTS) << "what is locked is not one more";
  EXPECT_EQ(add(2, "00:00:00:00:00:02", 10), OPEN_E_NONE);
  ASSERT_EQ(remove(1, "00:00:00:00:00:01", 10), OPEN_E_NONE);
  EXPECT_EQ(add(1, "00:00:00:00:00:03", 10), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::set_limit("static-macs", 0));
  EXPECT_EQ(add(3, station, 10), OPEN_E_FULL);
  EXPECT_EQ(walk(1), (list{"00:00:00:00:00:01 20 0", "00:00:00:00:00:03 10 0"})) << "what is there stays";
}

/* --- Walks ---------------------------------------------------------------------------------------------- */

TEST_F(PortMacLocking, WalkGoesByAddressThenByVlanWithinTheInterface) {
  ASSERT_EQ(add(2, "FE:00:00:00:00:00", 1), OPEN_E_NONE);
  ASSERT_EQ(add(2, "00:00:00:00:00:02", 20, 1), OPEN_E_NONE);
  ASSERT_EQ(add(2, "00:00:00:00:00:0A", 1), OPEN_E_NONE);
  ASSERT_EQ(add(2, "00:00:00:00:00:02", 1), OPEN_E_NONE);
  ASSERT_EQ(add(2, "00:00:00:00:00:02", 10), OPEN_E_NONE);
  ASSERT_EQ(add(1, "00:00:00:00:00:03", 1), OPEN_E_NONE);
  ASSERT_EQ(add(3, "00:00:00:00:00:01", 1), OPEN_E_NONE);
  EXPECT_EQ(walk(1), list{"00:00:00:00:00:03 1 0"});
  EXPECT_EQ(walk(2), (list{"00:00:00:00:00:02 1 0", "00:00:00:00:00:02 10 0", "00:00:00:00:00:02 20 1",
                           "00:00:00:00:00:0A 1 0", "FE:00:00:00:00:00 1 0"}));
  EXPECT_EQ(walk(3), list{"00:00:00:00:00:01 1 0"});
}

TEST_F(PortMacLocking, WalkGoesOnAfterAnEntryThatIsGoneOrWasNever) {
  for (const char *each : {"00:00:00:00:00:02", "00:00:00:00:00:04", "00:00:00:00:00:06"})
    ASSERT_EQ(add(1, each, 10), OPEN_E_NONE);
  ASSERT_EQ(remove(1, "00:00:00:00:00:04", 10), OPEN_E_NONE);
  const std::string end = std::to_string(OPEN_E_FAIL);
  EXPECT_EQ(next(1, "00:00:00:00:00:04", 10), "00:00:00:00:00:06 10 0");
  EXPECT_EQ(next(1, "00:00:00:00:00:01", 4094), "00:00:00:00:00:02 10 0");
  EXPECT_EQ(next(1, "00:00:00:00:00:02", 9), "00:00:00:00:00:02 10 0");
  EXPECT_EQ(next(1, "00:00:00:00:00:02", 10), "00:00:00:00:00:06 10 0");
  EXPECT_EQ(next(1, "00:00:00:00:00:02", 4094), "00:00:00:00:00:06 10 0");
  EXPECT_EQ(next(1, "00:00:00:00:00:06", 9), "00:00:00:00:00:06 10 0");
  EXPECT_EQ(next(1, "00:00:00:00:00:06", 10), end);
  EXPECT_EQ(next(1, "fe:ff:ff:ff:ff:ff", 4094), end);
  EXPECT_EQ(next(2, "00:00:00:00:00:01", 1), end) << "an interface without entries";
  ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(next(1, "00:00:00:00:00:02", 10), end);
}

TEST_F(PortMacLocking, WalkRefusesAVlanIdOutsideTheRange) {
  ASSERT_EQ(add(1, station, 10), OPEN_E_NONE);
  for (uint32_t vlan : {0u, 4095u, UINT32_MAX})
    EXPECT_EQ(next(1, "00:00:00:00:00:01", vlan), std::to_string(OPEN_E_PARAM)) << vlan;
}

TEST_F(PortMacLocking, AddressNeedsABufferOf18Bytes) {
  ASSERT_EQ(add(1, station, 10, 1), OPEN_E_NONE);
  uint32_t vlan, sticky;
  for (uint32_t size : {0u, 1u, 17u}) {
    char buffer[18] = "untouched";
    open_buffdesc text = {size, buffer};
    EXPECT_EQ(rpcclt_openapiPmlIntfStaticEntryGetFirst(&handle, 1, &text, &vlan, &sticky), OPEN_E_PARAM);
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_EQ(text.size, size);
  }
  char buffer[18];
  open_buffdesc text = {sizeof buffer, buffer};
  ASSERT_EQ(rpcclt_openapiPmlIntfStaticEntryGetFirst(&handle, 1, &text, &vlan, &sticky), OPEN_E_NONE);
  EXPECT_STREQ(buffer, "00:11:22:AA:BB:CC");
  EXPECT_EQ(text.size, 17u);
  EXPECT_EQ(vlan, 10u);
  EXPECT_EQ(sticky, 1u);
}

TEST_F(PortMacLocking, WalkWantsTheBufferSizeSetAnewForEachStep) {
  ASSERT_EQ(add(1, "00:00:00:00:00:01", 10), OPEN_E_NONE);
  ASSERT_EQ(add(1, "00:00:00:00:00:02", 10), OPEN_E_NONE);
  EXPECT_EQ(next(1, "00:00:00:00:00:01", 10, 17), std::to_string(OPEN_E_PARAM));
  EXPECT_EQ(next(1, "00:00:00:00:00:01", 10, 18), "00:00:00:00:00:02 10 0");
  EXPECT_EQ(next(1, "00:00:00:00:00:01", 10, 256), "00:00:00:00:00:02 10 0");
}

/* --- What else releases addresses, and pending changes -------------------------------------------------- */

TEST_F(PortMacLocking, DeletingAVlanReleasesWhatIsLockedInIt) {
  ASSERT_EQ(add(1, station, 10), OPEN_E_NONE);
  ASSERT_EQ(add(1, station, 20), OPEN_E_NONE);
  ASSERT_EQ(add(2, "00:00:00:00:00:02", 10), OPEN_E_NONE);
  ASSERT_EQ(add(3, "00:00:00:00:00:03", 20), OPEN_E_NONE);
  ASSERT_EQ(set_sticky_mode(2, 1), OPEN_E_NONE);
  take_and_hold();
  ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{1, 2}));
  EXPECT_EQ(walk(1), list{"00:11:22:AA:BB:CC 20 0"});
  EXPECT_EQ(walk(2), list());
  EXPECT_EQ(sticky_mode(2), 1u);
  ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 10), OPEN_E_NONE);
  EXPECT_EQ(walk(2), list()) << "creating it again brings nothing back";
  EXPECT_EQ(add(4, station, 10), OPEN_E_NONE);
}

TEST_F(PortMacLocking, ChangesMakeTheirInterfacePending) {
  take_and_hold();
  ASSERT_EQ(set_sticky_mode(5, 1), OPEN_E_NONE);
  ASSERT_EQ(add(119, station, 10), OPEN_E_NONE);
  ASSERT_EQ(add(7, "00:00:00:00:00:07", 10), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{5, 7, 119}));
  softswitch::hold_apply(false);
  take_and_hold();
  ASSERT_EQ(remove(7, "00:00:00:00:00:07", 10), OPEN_E_NONE);
  ASSERT_EQ(set_sticky_mode(5, 0), OPEN_E_NONE);
  EXPECT_EQ(pending_interfaces(), (std::vector<int>{5, 7}));
}

TEST_F(PortMacLocking, SettingWhatIsSetAlreadyIsNoChange) {
  ASSERT_EQ(set_sticky_mode(1, 1), OPEN_E_NONE);
  ASSERT_EQ(add(1, station, 10, 1), OPEN_E_NONE);
  take_and_hold();
  std::string journal = file_content(dir.path + "/journal-1");
  EXPECT_EQ(set_sticky_mode(1, 1), OPEN_E_NONE);
  EXPECT_EQ(set_sticky_mode(2, 0), OPEN_E_NONE);
  EXPECT_EQ(commit("interface 0/1 mac-locking address 00:11:22:aa:bb:cc vlan 10 sticky"), OPEN_E_NONE);
  EXPECT_EQ(add(1, station, 10, 1), OPEN_E_EXISTS);
  EXPECT_EQ(remove(1, station, 20), OPEN_E_NOT_FOUND);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(file_content(dir.path + "/journal-1"), journal);
}

TEST_F(PortMacLocking, ChangeThatCannotBeStoredIsRefused) {
  ASSERT_EQ(set_sticky_mode(1, 1), OPEN_E_NONE);
  ASSERT_EQ(add(1, station, 10), OPEN_E_NONE);
  take_and_hold();
  std::string before = softswitch::running_config();
  {
    full_disk full(file_content(dir.path + "/journal-1").size());
    EXPECT_EQ(set_sticky_mode(1, 0), OPEN_E_FAIL);
    EXPECT_EQ(set_sticky_mode(2, 1), OPEN_E_FAIL);
    EXPECT_EQ(add(1, "00:00:00:00:00:01", 10), OPEN_E_FAIL);
    EXPECT_EQ(remove(1, station, 10), OPEN_E_FAIL);
  }
  EXPECT_EQ(softswitch::running_config(), before);
  EXPECT_EQ(pending_interfaces(), std::vector<int>());
  EXPECT_EQ(remove(1, station, 10), OPEN_E_NONE);
}

TEST_F(PortMacLocking, ReloadReturnsToWhatWasSaved) {
  ASSERT_EQ(add(1, station, 10), OPEN_E_NONE);
  std::string error;
  ASSERT_TRUE(softswitch::save_startup_config(&error)) << error;
  std::string saved = softswitch::running_config();
  ASSERT_EQ(remove(1, station, 10), OPEN_E_NONE);
  ASSERT_EQ(add(2, station, 10, 1), OPEN_E_NONE);
  ASSERT_EQ(set_sticky_mode(2, 1), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(softswitch::running_config(), saved);
}

} // namespace
