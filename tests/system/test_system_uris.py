"""Every URI of the modules system, ssh and logging: whole replies, as XML and as JSON, over both ports."""



import harness
from system import INVALID, SEVERITIES, SystemTest, logging, logging_host, logging_hosts, ssh, system, updated
from wire import ALREADY_SET, FAILED, GOT, REFUSED


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
            self.check_refused("GET", "/system/", "/system/hostname", "/system/reload",
                               "/system/networkport/ipv4",
                               "/system/x/hostname", "/system/prompt")
            self.check_refused("POST", "/system", "/system/hostname", "/system/reload/1", "/system/reloadx")
            self.check_refused("PUT", "/system", "/system/reload", "/system/hostnames", "/system/hostname/x",
                               "/system/prompt", "/system/networkport/ipv4",
                               "/system/networkport/ipv4/protocolMode")
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
                                ("maxSessions", ("-2", "6", "2147483647")), ("timeout",
                                                                             ("-1", "0", "161", "x"))):
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
            for uri, value, function in (("adminMode", "1", "AdminModeSet"),
                                         ("maxSessions", "1", "MaxSessionsSet"),
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
                self.put("/logging/console/severityLevel", level,
                         updated("severity level of Console logging"))
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
            self.check_refused("GET", "/logging/", "/logging/x", "/logging/hosts/",
                               "/logging/hosts/10.1.1.1/port",
                               "/logging/hosts/10.1.1.1/", "/logging/cli/mode")
            self.check_refused("POST", "/logging", "/logging/hosts", "/logging/hosts/", "/logging/hosts/a/b")
            self.check_refused("PUT", "/logging", "/logging/hosts", "/logging/hosts/10.1.1.1",
                               "/logging/cli/modes",
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
            self.check("GET", "/logging/hosts", GOT,
                       logging_hosts())  # the end of the walk, whatever its code
            for uri, function in (("cli/mode", "CliCmdLoggingModeSet"),
                                  ("console/mode", "ConsoleLoggingModeSet"),
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


if __name__ == "__main__":
    harness.main()
