"""Every URI of the modules system, boxs, logging, ssh, process, script, download and upload but what takes a
file server: whole replies, as XML and as JSON, over both ports."""

import json
import re
import subprocess
import sys

import harness
from harness import eventually
from scenes import UriTest
from system import (BUSY, INVALID, LISTED, NOT_STARTED, SEVERITIES, box_list, counts,
                    download_status, fan, logging, logging_host, logging_hosts, scripts, sensor, ssh,
                    startup_info, supply, system, transceiver, updated, upload_status)
from wire import ALREADY_SET, BAD_REQUEST, FAILED, GOT, INTERNAL, REFUSED, document, numbered



class SystemTest(UriTest):
    def check_refused(self, method, *uris):
        """None of the URIs is served with the method."""
        for uri in uris:
            self.check(method, uri, BAD_REQUEST, variables=("value=1",))

    def fault(self, function, code, *more):
        self.daemon.lab("fault", function, code, *more)

    def check_faults(self, uri, *functions):
        """The first platform call that fails ends a request with its own result."""
        codes = {"OPEN_E_TIMEOUT": INTERNAL, "OPEN_E_INTERNAL": INTERNAL, "OPEN_E_ERROR": FAILED,
                 "OPEN_E_EXISTS": ALREADY_SET, "OPEN_E_NOT_FOUND": REFUSED}
        for code, outcome in codes.items():
            self.fault(f"rpcclt_openapi{functions[0]}", code)
            self.check("GET", uri, outcome)
        for function in functions:
            self.fault(f"rpcclt_openapi{function}", "OPEN_E_FAIL")
            self.check("GET", uri, FAILED)


class System(SystemTest):
    def test_settings(self):
        def scene():
            self.check("GET", "/system", GOT, system())
            name = "Leaf-7_a.example." + "x" * 47
            for given in ("leaf1", "0", name):
                self.put("/system/hostname", given, updated("system hostname"))
                self.check("GET", "/system", GOT, system(hostname=given))
            for value, shown in (("30", 30), ("160", 160), ("0", 0), ("7 minutes", 7), ("x", 0)):
                self.put("/system/serialTimeout", value.replace(" ", "+"), updated("system serial timeout"))
                self.check("GET", "/system", GOT, system(hostname=name, serial_timeout=shown))
            self.put("/system/serialTimeout", "-1", updated("system serial timeout", default=True))
            self.check("GET", "/system", GOT, system(hostname=name))
            for value, word in (("1", "enable"), ("0", "disable"), ("1x", "enable"), ("on", "disable")):
                self.put("/system/telnetServerAdminMode", value, updated("system telnet server admin mode"))
                self.check("GET", "/system", GOT, system(hostname=name, telnet_srver_admin_mode=word))
        self.each_way(scene)

    def test_what_is_refused_changes_nothing(self):
        def scene():
            for name in ("-leaf", ".leaf", "_leaf", "a+b", "a%2Fb", "a%0Ab", "%C3%A4", "x" * 65, "x" * 255):
                self.put("/system/hostname", name, REFUSED)
            for minutes in ("161", "-2", "2147483647", "99999999999"):
                self.put("/system/serialTimeout", minutes, REFUSED)
            for mode in ("2", "-1"):
                self.put("/system/telnetServerAdminMode", mode, REFUSED)
            for mode in ("0", "4", "-1", "x"):
                self.check("POST", "/system/reload", REFUSED, variables=(f"value={mode}",))
            for uri in ("hostname", "serialTimeout", "telnetServerAdminMode"):
                self.assert_missing_value_is_refused("PUT", f"/system/{uri}")
            self.assert_missing_value_is_refused("POST", "/system/reload")
            self.check("GET", "/system", GOT, system())
        self.each_way(scene)

    def test_a_body_serves_as_well(self):
        def scene():
            self.check("PUT", "/system/hostname", updated("system hostname"), body="value=leaf2")
            self.check("GET", "/system", GOT, system(hostname="leaf2"))
        self.each_way(scene)

    def test_what_is_not_served(self):
        def scene():
            self.check_refused("GET", "/system/", "/system/hostname", "/system/reload", "/system/networkport/ipv4",
                               "/system/x/hostname", "/system/prompt")
            self.check_refused("POST", "/system", "/system/hostname", "/system/reload/1", "/system/reloadx")
            self.check_refused("PUT", "/system", "/system/reload", "/system/hostnames", "/system/hostname/x",
                               "/system/prompt", "/system/networkport/ipv4", "/system/networkport/ipv4/protocolMode")
            self.check_refused("DELETE", "/system", "/system/hostname", "/system/networkport/ipv4")
            self.check("GET", "/system", GOT, system())
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/system", "SystemHostnameSizeGet", "SystemHostnameGet", "SerialTimeoutGet",
                              "TelnetServerAdminModeGet", "ServicePortMaskGet")
            for uri, value, function in (("hostname", "a", "SystemHostnameSet"),
                                         ("serialTimeout", "3", "SerialTimeoutSet"),
                                         ("serialTimeout", "-1", "SerialTimeoutDefaultSet"),
                                         ("telnetServerAdminMode", "1", "TelnetServerAdminModeSet")):
                self.fault(f"rpcclt_openapi{function}", "OPEN_E_FAIL")
                self.put(f"/system/{uri}", value, FAILED)
            self.fault("rpcclt_openapiSystemReloadSet", "OPEN_E_ERROR")
            self.check("POST", "/system/reload", FAILED, variables=("value=1",))
            self.check("GET", "/system", GOT, system())
        self.each_way(scene)


class Ssh(SystemTest):
    def test_settings(self):
        def scene():
            self.check("GET", "/ssh", GOT, ssh())
            for value, word in (("1", "enable"), ("abc", "disable"), ("1x", "enable"), ("0", "disable")):
                self.ssh("adminMode", value, "admin mode")
                self.check("GET", "/ssh", GOT, ssh(admin_mode=word))
            for value, shown in (("1", "1"), ("3", "1 and 2"), ("2", "2"), ("3x", "1 and 2")):
                self.ssh("protoVersion", value, "protocol version")
                self.check("GET", "/ssh", GOT, ssh(version=shown))
            self.ssh("protoVersion", "2", "protocol version")
            for value, shown in (("0", 0), ("3", 3), ("5", 5), ("1", 1), ("x", 0)):
                self.ssh("maxSessions", value, "maximum sessions")
                self.check("GET", "/ssh", GOT, ssh(max_sessions=shown))
            self.ssh("maxSessions", "-1", "maximum sessions")
            for value in ("1", "160", "60"):
                self.ssh("timeout", value, "session timeout")
                self.check("GET", "/ssh", GOT, ssh(timeout=int(value)))
        self.each_way(scene)

    def ssh(self, uri, value, what):
        """An update, whose answer has empty data."""
        self.check("PUT", f"/ssh/{uri}", (0, f"Update SSH {what} successfully."), {}, (f"value={value}",))

    def test_what_is_refused_changes_nothing(self):
        def scene():
            for uri, values in (("adminMode", ("2", "-1")), ("protoVersion", ("0", "4", "x", "-1")),
                                ("maxSessions", ("-2", "6", "2147483647")), ("timeout", ("-1", "0", "161", "x"))):
                for value in values:
                    self.put(f"/ssh/{uri}", value, REFUSED)
                self.assert_missing_value_is_refused("PUT", f"/ssh/{uri}")
            self.check("GET", "/ssh", GOT, ssh())
        self.each_way(scene)

    def test_what_is_not_served(self):
        def scene():
            self.check_refused("GET", "/ssh/", "/ssh/adminMode", "/ssh/x")
            self.check_refused("POST", "/ssh", "/ssh/adminMode")
            self.check_refused("PUT", "/ssh", "/ssh/adminModes", "/ssh/adminMode/x", "/ssh/timeout/1")
            self.check_refused("DELETE", "/ssh", "/ssh/timeout")
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/ssh", "SSHAdminModeGet", "SSHProtocolVersionGet", "SSHActiveSessionsGet",
                              "SSHMaxSessionsGet", "SSHSessionTimeoutGet")
            for uri, value, function in (("adminMode", "1", "AdminModeSet"), ("maxSessions", "1", "MaxSessionsSet"),
                                         ("maxSessions", "-1", "MaxSessionsDefaultSet"),
                                         ("protoVersion", "1", "ProtocolVersionSet"),
                                         ("timeout", "1", "SessionTimeoutSet")):
                self.fault(f"rpcclt_openapiSSH{function}", "OPEN_E_FAIL")
                self.put(f"/ssh/{uri}", value, FAILED)
            self.check("GET", "/ssh", GOT, ssh())
        self.each_way(scene)


class Logging(SystemTest):
    def test_settings(self):
        def scene():
            self.check("GET", "/logging", GOT, logging())
            self.put("/logging/cli/mode", "1", updated("mode of CLI logging"))
            self.check("GET", "/logging", GOT, logging(cli="enable"))
            self.put("/logging/cli/mode", "0", updated("mode of CLI logging"))
            for value, word in (("0", "disable"), ("01", "enable"), ("x", "disable"), ("1x", "enable")):
                self.put("/logging/console/mode", value, updated("mode of Console logging"))
                self.check("GET", "/logging", GOT, logging(console=word))
            for level in range(8):
                self.put("/logging/console/severityLevel", level, updated("severity level of Console logging"))
                self.check("GET", "/logging", GOT, logging(severity=level))
            self.put("/logging/console/severityLevel", "4", updated("severity level of Console logging"))
            for value, word in (("1", "enable"), ("x", "disable")):
                self.put("/logging/syslog/mode", value, updated("mode of Syslog"))
                self.check("GET", "/logging", GOT, logging(syslog=word))
            for value, port in (("1", 1), ("65535", 65535), ("5514x", 5514)):
                self.put("/logging/syslog/port", value, updated("port of Syslog"))
                self.check("GET", "/logging", GOT, logging(port=port))
            self.put("/logging/syslog/port", "-1", updated("port of Syslog", default=True))
            self.check("GET", "/logging", GOT, logging())
        self.each_way(scene)

    def host(self, method, address, outcome=None):
        word = "Create" if method == "POST" else "Delete"
        self.check(method, f"/logging/hosts/{address}",
                   outcome or (0, f"{word} a logging host {address} successfully."))

    def test_hosts(self):
        def scene():
            self.check("GET", "/logging/hosts", GOT, logging_hosts())
            for address in ("syslog.example", "10.1.1.2", "10.1.1.1", "2001:db8::1"):
                self.host("POST", address)
            for address in ("10.1.1.1", "syslog.example"):
                self.host("POST", address, ALREADY_SET)
            self.check("GET", "/logging/hosts", GOT,
                       logging_hosts("10.1.1.1", "10.1.1.2", "2001:db8::1", "syslog.example"))
            self.host("DELETE", "10.1.1.2")
            self.host("DELETE", "10.1.1.2", REFUSED)
            self.check("GET", "/logging/hosts", GOT,
                       logging_hosts("10.1.1.1", "2001:db8::1", "syslog.example"))
            for address in ("10.1.1.2", "nowhere", "-x", "a_b", "1.2.3.256", "x" * 220):
                self.check("GET", f"/logging/hosts/{address}", REFUSED)
                self.host("DELETE", address, REFUSED)
                self.put(f"/logging/hosts/{address}/port", "1", REFUSED)
                self.put(f"/logging/hosts/{address}/severityLevel", "1", REFUSED)
            for address in ("-x", "a_b", "x" * 64, "%3A", "a%20b", "1.2.3.256", "x..y"):
                self.host("POST", address, REFUSED)
            for address in ("10.1.1.1", "2001:db8::1", "syslog.example"):
                self.host("DELETE", address)
            self.check("GET", "/logging/hosts", GOT, logging_hosts())
        self.each_way(scene)

    def test_settings_of_a_host(self):
        def scene():
            uri, what = "/logging/hosts/10.1.1.1", "of logging host 10.1.1.1"
            self.host("POST", "10.1.1.1")
            self.check("GET", uri, GOT, logging_host("10.1.1.1"))
            for value, port in (("1", 1), ("65535", 65535), ("5514x", 5514)):
                self.put(f"{uri}/port", value, updated(f"port {what}"))
                self.check("GET", uri, GOT, logging_host("10.1.1.1", port))
            self.put(f"{uri}/port", "-1", updated(f"port {what}", default=True))
            self.put("/logging/syslog/port", "1514", updated("port of Syslog"))
            self.check("GET", uri, GOT, logging_host("10.1.1.1", 1514))
            for level, sentence in enumerate(SEVERITIES):
                self.put(f"{uri}/severityLevel", level, updated(f"severity level {what}"))
                self.check("GET", uri, GOT, logging_host("10.1.1.1", 1514, sentence))
            self.put(f"{uri}/severityLevel", "x", updated(f"severity level {what}"))
            self.check("GET", uri, GOT, logging_host("10.1.1.1", 1514, SEVERITIES[0]))
        self.each_way(scene)

    def test_there_is_room_for_eight_hosts(self):
        def scene():
            addresses = [f"10.1.1.{number}" for number in range(1, 9)]
            for address in addresses:
                self.host("POST", address)
            self.host("POST", "10.1.1.9", REFUSED)
            self.check("GET", "/logging/hosts", GOT, logging_hosts(*addresses))
        self.each_way(scene)

    def test_what_is_refused_changes_nothing(self):
        def scene():
            self.host("POST", "10.1.1.1")
            for value in ("01", "2", "-1", "x", "1x", "%201"):
                self.put("/logging/cli/mode", value, REFUSED)
            for uri in ("console/mode", "syslog/mode"):
                for value in ("2", "-1"):
                    self.put(f"/logging/{uri}", value, REFUSED)
            for uri in ("syslog", "hosts/10.1.1.1"):
                for value in ("0", "65536", "-2", "x", "99999999999"):
                    self.put(f"/logging/{uri}/port", value, INVALID)
            for uri in ("console", "hosts/10.1.1.1"):
                for value in ("8", "-1"):
                    self.put(f"/logging/{uri}/severityLevel", value, REFUSED)
            for uri in ("cli/mode", "console/mode", "console/severityLevel", "syslog/mode", "syslog/port",
                        "hosts/10.1.1.1/port", "hosts/10.1.1.1/severityLevel"):
                self.assert_missing_value_is_refused("PUT", f"/logging/{uri}")
            self.check("GET", "/logging", GOT, logging())
            self.check("GET", "/logging/hosts/10.1.1.1", GOT, logging_host("10.1.1.1"))
        self.each_way(scene)

    def test_what_is_not_served(self):
        def scene():
            self.host("POST", "10.1.1.1")
            self.check_refused("GET", "/logging/", "/logging/x", "/logging/hosts/", "/logging/hosts/10.1.1.1/port",
                               "/logging/hosts/10.1.1.1/", "/logging/cli/mode")
            self.check_refused("POST", "/logging", "/logging/hosts", "/logging/hosts/", "/logging/hosts/a/b")
            self.check_refused("PUT", "/logging", "/logging/hosts", "/logging/hosts/10.1.1.1", "/logging/cli/modes",
                               "/logging/hosts/10.1.1.1/ports", "/logging/hosts/10.1.1.1/por",
                               "/logging/hosts/10.1.1.1/severityLevels", "/logging/hosts/10.1.1.1/port/1")
            self.check_refused("DELETE", "/logging", "/logging/hosts", "/logging/hosts/10.1.1.1/port")
            self.check("GET", "/logging/hosts/10.1.1.1", GOT, logging_host("10.1.1.1"))
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/logging", "CliCmdLoggingModeGet", "ConsoleLoggingModeGet",
                              "ConsoleLoggingSeverityGet", "SysLogModeGet", "SysLogPortGet",
                              "MaxLoggingHostsSupportedGet")
            self.host("POST", "10.1.1.1")
            self.check_faults("/logging/hosts/10.1.1.1", "LoggingHostPortGet", "LoggingHostSeverityGet")
            self.fault("rpcclt_openapiLoggingHostIpAddrNextGet", "OPEN_E_INTERNAL")
            self.check("GET", "/logging/hosts", GOT, logging_hosts())  # the end of the walk, whatever its code
            for uri, function in (("cli/mode", "CliCmdLoggingModeSet"), ("console/mode", "ConsoleLoggingModeSet"),
                                  ("console/severityLevel", "ConsoleLoggingSeveritySet"),
                                  ("syslog/mode", "SysLogModeSet"), ("syslog/port", "SysLogPortSet"),
                                  ("hosts/10.1.1.1/port", "LoggingHostPortSet"),
                                  ("hosts/10.1.1.1/severityLevel", "LoggingHostSeveritySet")):
                self.fault(f"rpcclt_openapi{function}", "OPEN_E_FAIL")
                self.put(f"/logging/{uri}", "1", FAILED)
            for method, function in (("POST", "Add"), ("DELETE", "Remove")):
                self.fault(f"rpcclt_openapiLoggingHost{function}", "OPEN_E_FAIL")
                self.host(method, "10.1.1.1", FAILED)
            self.check("GET", "/logging/hosts", GOT, logging_hosts("10.1.1.1"))
        self.each_way(scene)


BUILT_IN = [(1, "SFP+", "Sample Optics", "A1", 300, 33, "SO100001", "SO-10G-SR", 10300, "10GBASE-SR"),
            (2, "SFP+", "Sample Optics", "A1", 300, 33, "SO100002", "SO-10G-SR", 10300, "10GBASE-SR"),
            (3, "SFP+", "Sample Optics", "A1", 0, 0, "SO200001", "SO-10G-LR", 10300, "10GBASE-LR"),
            (4, "SFP", "Sample Optics", "A3", 550, 275, "SO300001", "SO-1G-SX", 1300, "1000BASE-SX"),
            (5, "Direct Attach Cable", "Sample Cables", "B2", 0, 0, "SC100001", "SC-10G-3M", 10300, "10GBASE-CR"),
            (49, "QSFP", "Sample Optics", "A1", 100, 0, "SO400001", "SO-40G-SR4", 41200, "40GBASE-SR4"),
            (50, "QSFP", "Sample Optics", "A2", 0, 0, "SO500001", "SO-40G-LR4", 41200, "40GBASE-LR4"),
            (51, "Direct Attach Cable", "Sample Cables", "B1", 0, 0, "SC400001", "SC-40G-1M", 41200,
             "40GBASE-CR4")]
ITEM_STATES = (("none", "None"), ("not-present", "Not present"), ("operational", "Operational"), ("failed", "Failed"),
               ("powering", "Powering"), ("not-powered", "Not powered"), ("not-powering", "Not powering"),
               ("incompatible", "Incompatible"), ("8", "Unknown"), ("99", "Unknown"))
ITEM_TYPES = (("none", "None"), ("fixed", "Fixed"), ("removable", "Removable"), ("3", "Unknown"))
SENSOR_STATES = (("none", "Not applicable"), ("normal", "Normal"), ("warning", "Warning"), ("critical", "Critical"),
                 ("shutdown", "Shutdown"), ("not-present", "Not present"), ("not-operational", "Not operational"),
                 ("7", "Unknown"))


class Chassis(SystemTest):
    def fans(self, first, *others):
        self.check("GET", "/boxs/fans", GOT, box_list("fans", "fan", first, *(others or [self.FAN] * 4)))

    FAN = fan("Operational", "Removable", 7200, 45)
    SUPPLY = supply("Operational", "Removable")
    SENSORS = [sensor("Normal", 52, "Switch chip"), sensor("Normal", 44, "Processor"),
               sensor("Normal", 24, "Air inlet"), sensor("Normal", 36, "Air outlet")]

    def supplies(self, first):
        self.check("GET", "/boxs/powSupplies", GOT,
                   box_list("power_supplies", "power_supply", first, self.SUPPLY))

    def sensors(self, first):
        self.check("GET", "/boxs/tempSensors", GOT,
                   box_list("temp_sensors", "temp_sensor", first, *self.SENSORS[1:]))

    def transceivers(self, rows):
        self.check("GET", "/boxs/sfp", GOT,
                   box_list("sfp_transceivers", "sfp", *(transceiver(*row) for row in rows)))

    def test_the_built_in_one(self):
        def scene():
            self.check("GET", "/boxs", GOT, counts(4, 5, 2))
            self.fans(self.FAN)
            self.supplies(self.SUPPLY)
            self.sensors(self.SENSORS[0])
            self.transceivers(BUILT_IN)
        self.each_way(scene)

    def test_states_and_types(self):
        def scene():
            for word, text in ITEM_STATES:
                self.daemon.lab("fan", "1", "state", word)
                self.fans(fan(text, "Removable", *((7200, 45) if word == "operational" else ())))
                self.daemon.lab("power-supply", "1", "state", word)
                self.supplies(supply(text, "Removable"))
            for word, text in ITEM_TYPES:
                self.daemon.lab("fan", "1", "state", "operational", "type", word, "speed", "100", "duty-cycle", "0")
                self.fans(fan("Operational", text, 100, 0))
                self.daemon.lab("power-supply", "1", "state", "operational", "type", word)
                self.supplies(supply("Operational", text))
            self.daemon.lab("fan", "1", "type", "removable", "speed", "7200", "duty-cycle", "45")
            self.daemon.lab("power-supply", "1", "type", "removable")
        self.each_way(scene)

    def test_temperatures(self):
        def scene():
            name = "temperature-sensor"
            for word, text in SENSOR_STATES:
                self.daemon.lab(name, "1", "state", word)
                self.sensors(sensor(text, 52, "Switch chip"))
            self.daemon.lab(name, "1", "state", "auto")
            for degrees, text in ((-100, "Normal"), (84, "Normal"), (85, "Warning"), (95, "Critical"),
                                  (105, "Shutdown"), (300, "Shutdown")):
                self.daemon.lab(name, "1", "temperature", str(degrees))
                self.sensors(sensor(text, degrees, "Switch chip"))
            self.daemon.lab(name, "1", "temperature", "52", "description", "x" * 64)
            self.sensors(sensor("Normal", 52, "x" * 64))
            self.daemon.lab(name, "1", "description", "Switch chip")
        self.each_way(scene)

    def test_transceivers_come_and_go(self):
        def scene():
            self.daemon.lab("transceiver", "out", "0/1")
            self.transceivers(BUILT_IN[1:])
            for word, text in (("none", "None"), ("SFP", "SFP"), ("SFP+", "SFP+"), ("QSFP", "QSFP"),
                               ("direct-attach", "Direct Attach Cable"), ("10", "Unknown")):
                self.daemon.lab("transceiver", "in", "0/20", "module-type", word, "vendor-name", "Another maker",
                                "nominal-signal-rate", "25000")
                row = (20, text, "Another maker", "", 0, 0, "", "", 25000, "")
                self.transceivers([*BUILT_IN[1:5], row, *BUILT_IN[5:]])
            self.daemon.lab("transceiver", "out", "0/20")
            self.daemon.lab("transceiver", "in", "0/1")
            self.transceivers(BUILT_IN)
        self.each_way(scene)

    def test_what_is_not_served(self):
        def scene():
            uris = ("/boxs", "/boxs/fans", "/boxs/powSupplies", "/boxs/tempSensors", "/boxs/sfp")
            for method in ("POST", "PUT", "DELETE"):
                self.check_refused(method, *uris)
            self.check_refused("GET", *(f"{uri}/1" for uri in uris), *(f"{uri}/" for uri in uris), "/boxs/fan",
                               "/boxs/fansx", "/boxs/Fans")
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/boxs", *(f"BoxsNumOf{what}Get" for what in ("TempSensors", "Fans", "PowSupplies")))
            self.check_faults("/boxs/fans", "BoxsNumOfFansGet", "BoxsFanStateGet", "BoxsFanTypeGet", "BoxsFanSpeedGet",
                              "BoxsFanDutyCycleGet")
            self.check_faults("/boxs/powSupplies", "BoxsNumOfPowSuppliesGet", "BoxsPowSupplyStateGet",
                              "BoxsPowSupplyTypeGet")
            self.check_faults("/boxs/tempSensors", "BoxsNumOfTempSensorsGet", "BoxsTempSensorStatusGet", "BoxsTempGet",
                              "BoxsTempSensorDescripSizeGet", "BoxsTempSensorDescripGet")
            self.check_faults("/boxs/sfp", "IfFirstGet", "BoxsSfpTypeGet", "BoxsSfpVendorNameSizeGet",
                              "BoxsSfpVendorNameGet", "BoxsSfpVendorRevSizeGet", "BoxsSfpVendorRevisionGet",
                              "BoxsSfpLinkLength50umGet", "BoxsSfpLinkLength62_5umGet", "BoxsSfpSerialNumberSizeGet",
                              "BoxsSfpSerialNumberGet", "BoxsSfpPartNumberSizeGet", "BoxsSfpPartNumberGet",
                              "BoxsSfpComplianceSizeGet", "BoxsSfpComplianceGet")
            self.fault("rpcclt_openapiBoxsFanStateGet", "OPEN_E_FAIL", "1", "3")  # the fourth fan
            self.check("GET", "/boxs/fans", FAILED)
        self.each_way(scene)


CHASSIS = """{
  "ports": [{"name": "0/1"}, {"name": "0/2"}, {"name": "0/3"}],
  "fans": [], "power_supplies": [], "temperature_sensors": [], "transceivers": []
}"""


class EmptyChassis(SystemTest):
    profile = CHASSIS

    def test_lists_are_empty(self):
        def scene():
            self.check("GET", "/boxs", GOT, counts(0, 0, 0))
            for uri, top in (("fans", "fans"), ("powSupplies", "power_supplies"),
                             ("tempSensors", "temp_sensors"), ("sfp", "sfp_transceivers")):
                self.check("GET", f"/boxs/{uri}", GOT, {top: {}})
        self.each_way(scene)


class Process(SystemTest):
    def ask(self, uri):
        return self.session_in_use.ask("GET", uri, f"format={self.form}").text()

    def check_text(self, text, data):
        """The text is an answer with the data, which were read out of it."""
        self.assertEqual(text, document(*GOT, data, self.form).decode("latin-1"))

    def test_memory(self):
        def scene():
            text = self.ask("/process/memory")
            total, alloc, free = map(int, re.findall(r'_memory(?:>|": )(\d+)', text))
            self.check_text(text, {"total_memory": total, "alloc_memory": alloc, "free_memory": free})
            self.assertEqual(alloc + free, total)
            installed = int(re.search(r"MemTotal:\s+(\d+) kB", harness.read_text("/proc/meminfo"))[1])
            self.assertEqual(total, installed)
            self.assertGreater(alloc, 0)
        self.each_way(scene)

    def cpu(self):
        """(text, [(period, text)], [(PID, name, [(period, text)])]) of GET /process/cpu."""
        text = self.ask("/process/cpu")
        if self.form == "json":
            data = json.loads(text)["result"]["rlt_data"]
            processes = [(entry.pop("PID"), entry.pop("name"), list(entry.items()))
                         for entry in data["processes_CPU_utilization"].values()]
            return text, list(data["total_CPU_utilization"].items()), processes
        total = re.search("<total_CPU_utilization>(.*)</total_CPU_utilization>", text)[1]
        processes = re.findall(r"<process><PID>(\d+)</PID><name>([^<]*)</name>(.*?)</process>", text)
        values = re.compile(r"<([^<>/]+)>([^<]*)</\1>")
        return (text, values.findall(total),
                [(int(pid), name, values.findall(rest)) for pid, name, rest in processes])

    def test_cpu(self):
        def scene():
            text, total, processes = self.cpu()
            rows = [{"PID": pid, "name": name, **dict(values)} for pid, name, values in processes]
            self.check_text(text, {"total_CPU_utilization": dict(total),
                                   "processes_CPU_utilization": numbered("process", rows)})
            periods = [period for period, _ in total]
            self.assertEqual(len(periods), len(set(periods)))
            self.assertGreater(len(periods), 0)
            for _, value in total:
                self.assertRegex(value, r"^: +\d+(\.\d+)?%$")  # the colon belongs to the text
                self.assertLessEqual(float(value.strip(" :%")), 100)
            for pid, name, values in processes:
                self.assertEqual([period for period, _ in values], periods, (pid, name))
                for _, value in values:
                    self.assertRegex(value, r"^ *\d+(\.\d+)?%$")
                    self.assertLessEqual(float(value.strip(" %")), 100)
            pids = [pid for pid, _, _ in processes]
            self.assertEqual(pids, sorted(set(pids)))
            self.assertIn((self.daemon.process.pid, "restful_api_eng"), [entry[:2] for entry in processes])
        self.each_way(scene)

    def test_a_busy_process_shows(self):
        with subprocess.Popen([sys.executable, "-c", "while True: pass"]) as busy:
            try:
                self.form, self.daemon = "json", self.daemons["json", False]
                self.session_in_use = self.session(self.daemon)
                eventually(lambda: self.is_busy(busy.pid), "a process that never rests is seen")
            finally:
                busy.kill()
                self.tidy_up()

    def is_busy(self, wanted):
        return any(pid == wanted and float(values[0][1].strip(" %")) > 0 for pid, _, values in self.cpu()[2])

    def test_what_is_not_served(self):
        def scene():
            self.check_refused("GET", "/process", "/process/", "/process/cpu/", "/process/cpux", "/process/memory/1")
            for method in ("POST", "PUT", "DELETE"):
                self.check_refused(method, "/process/cpu", "/process/memory")
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/process/memory", "ProcMemInfoGet")
            self.check_faults("/process/cpu", "ProcTotalCpuUtilGet", "ProcTaskCpuUtilGet")
        self.each_way(scene)


class Scripts(SystemTest):
    def script(self, method, uri, name, outcome, data=None):
        self.check(method, uri, outcome, data, (f"scr={name}",))

    def test_there_are_none_at_first(self):
        def scene():
            self.check("GET", "/script/list", LISTED, scripts())
            for name in ("a.scr", "x" * 92 + ".scr", "a.txt", "a", "..%2Fa.scr", ".scr", ".a.scr", "a%20b.scr",
                         "x" * 97, "x" * 300):
                self.script("POST", "/script/apply", name, REFUSED)
                self.script("DELETE", "/script", name, REFUSED)
            for method, uri in (("POST", "/script/apply"), ("DELETE", "/script")):
                self.assert_missing_value_is_refused(method, uri, "scr")
        self.each_way(scene)

    def test_what_is_not_served(self):
        def scene():
            self.check_refused("GET", "/script", "/script/list/x", "/script/apply", "/script/lists")
            self.check_refused("POST", "/script", "/script/list", "/script/apply/x")
            self.check_refused("PUT", "/script", "/script/list", "/script/apply")
            self.check_refused("DELETE", "/script/apply", "/script/list", "/script/")
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/script/list", "TxtCfgFilesListGet")
            for code, outcome in (("OPEN_E_FAIL", FAILED), ("OPEN_E_INTERNAL", INTERNAL)):
                self.fault("rpcclt_openapiTxtCfgValidateAndApply", code)
                self.script("POST", "/script/apply", "a.scr", outcome)
                self.fault("rpcclt_openapiTxtCfgFileDelete", code)
                self.script("DELETE", "/script", "a.scr", outcome)
        self.each_way(scene)


URL = "url=http%3A%2F%2F127.0.0.1%3A1%2Ffile"
# Each POST with variables that are complete, and the platform call that it makes first.
TRANSFERS = {
    "/download/image": (URL, "img=active", "auto=n"),
    "/download/config": (URL, "cfg=2", "auto=n"),
    "/upload/config": (URL, "cfg=3", "sn=1"),
    "/download/script": (URL, "scr=a.scr", "act=n"),
    "/upload/script": (URL, "scr=a.scr"),
}


def call_of(uri):
    return f"rpcclt_openapiTransferFile{'Download' if uri.startswith('/download') else 'Upload'}"


class Transfers(SystemTest):
    def test_what_the_platform_says_of_starting_one(self):
        def scene():
            for uri, variables in TRANSFERS.items():
                for code, outcome, data in (
                        ("OPEN_E_ERROR", NOT_STARTED, {}), ("OPEN_E_UNAVAIL", BUSY, {}),
                        ("OPEN_E_FAIL", REFUSED, None), ("OPEN_E_INTERNAL", REFUSED, None),
                        ("OPEN_E_EXISTS", REFUSED, None), ("OPEN_E_FULL", REFUSED, None)):
                    self.fault(call_of(uri), code)
                    self.check("POST", uri, outcome, data, variables)
                    self.fault(call_of(uri), code)
                    self.check("POST", uri, outcome, data, body="&".join(variables))
        self.each_way(scene)

    def test_every_variable_is_needed(self):
        def scene():
            for uri, variables in TRANSFERS.items():
                for at, given in enumerate(variables):
                    name, others = given.split("=")[0], variables[:at] + variables[at + 1:]
                    for instead in ((), (f"{name}=",)):
                        self.check("POST", uri, REFUSED, variables=(*others, *instead))
        self.each_way(scene)

    def test_what_they_may_be(self):
        def scene():
            rows = {"/download/image": {"img": ("Active", "activex", "1"), "auto": ("Y", "yes", "1", "0")},
                    "/download/config": {"cfg": ("0", "3", "x", "1x", "0001", "-1"), "auto": ("Y", "no")},
                    "/upload/config": {"cfg": ("0", "5", "x", "1x"), "sn": ("x", "%20")},
                    "/download/script": {"scr": ("x" * 97, "a", "..%2Fa.scr", "a%2Fb.scr"), "act": ("Y", "yes")},
                    "/upload/script": {"scr": ("a", "..%2Fa.scr", "a%2Fb.scr", "x" * 97 + ".scr")}}
            for uri, wrong in rows.items():
                for name, values in wrong.items():
                    for value in values:
                        others = tuple(given for given in TRANSFERS[uri] if not given.startswith(f"{name}="))
                        self.check("POST", uri, REFUSED, variables=(*others, f"{name}={value}"))
                for url in ("file:///etc/passwd", "gopher://127.0.0.1/", "127.0.0.1/file", "http:", "x" * 1024):
                    self.check("POST", uri, REFUSED, variables=(*TRANSFERS[uri][1:], f"url={url}"))
        self.each_way(scene)

    def test_nothing_was_transferred_yet(self):
        def scene():
            self.check("GET", "/download/status", GOT, download_status("No download so far.", 0))
            self.check("GET", "/download/startupCfgInfo", GOT, startup_info())
        self.each_way(scene)

    def test_the_serial_number_of_an_upload(self):
        def scene():
            for given, shown in (("1", 1), ("4294967295", 4294967295), ("4294967297", 1), ("12ab", 12),
                                 ("18446744073709551615", 4294967295), ("0", 0), ("-1", 4294967295)):
                self.fault(call_of("/upload/config"), "OPEN_E_ERROR")
                self.check("POST", "/upload/config", NOT_STARTED, {}, (URL, "cfg=1", f"sn={given}"))
                self.check("GET", "/upload/status", GOT, upload_status("No upload so far.", 0, shown))
        self.each_way(scene)

    def test_what_is_not_served(self):
        def scene():
            served = {"GET": ("/download/status", "/upload/status", "/download/startupCfgInfo"),
                      "POST": tuple(TRANSFERS)}
            for method in ("GET", "POST", "PUT", "DELETE"):
                for uris in served.values():
                    for uri in uris:
                        others = (uri,) if uri not in served.get(method, ()) else ()
                        self.check_refused(method, *others, f"{uri}x", f"{uri}/x", f"{uri}/")
                self.check_refused(method, "/download", "/upload", "/upload/image", "/upload/startupCfgInfo")
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/download/status", "TransferDownloadStatusGet", "TransferProgressGet")
            self.check_faults("/upload/status", "TransferUploadStatusGet", "TransferProgressGet")
            self.check_faults("/download/startupCfgInfo", "SystemUnsavedConfigStatusGet")
        self.each_way(scene)

    def test_what_the_platform_says_of_a_script_that_is_to_be_applied(self):
        def scene():
            variables = (URL, "scr=a.scr", "act=y")
            for code, outcome in (("OPEN_E_ERROR", FAILED), ("OPEN_E_UNAVAIL", REFUSED), ("OPEN_E_FAIL", FAILED),
                                  ("OPEN_E_INTERNAL", INTERNAL), ("OPEN_E_FULL", REFUSED)):
                self.fault(call_of("/download/script"), code)
                self.check("POST", "/download/script", outcome, variables=variables)
            for function in ("InProgressGet", "ResultCodeGet"):
                self.fault(f"rpcclt_openapiTransfer{function}", "OPEN_E_INTERNAL")
                self.check("POST", "/download/script", INTERNAL, variables=variables)
                eventually(self.is_idle, "the transfer has failed")
            self.check("POST", "/download/script", NOT_STARTED, {}, variables)  # nobody listens there
        self.each_way(scene)

    def is_idle(self):
        return "Failed: " in self.session_in_use.ask("GET", "/download/status").text()


if __name__ == "__main__":
    harness.main()
