"""System management over time: reloading, syslog to real receivers, and the chassis as lab control changes
it."""

import contextlib
import re
import socket

import harness
from harness import DaemonTest, eventually
from scenes import FlowTest
from system import (RELOADING, box_list, counts, fan, logging_host, logging_hosts, sensor, startup_info,
                    supply, system, transceiver)
from wire import GOT, PATIENCE


def a_name_of_this_machine():
    """One that is looked up; an address where the machine knows no name at all, as a bare one does."""
    try:
        socket.getaddrinfo("localhost", None)
        return "localhost"
    except socket.gaierror:
        return "127.0.0.3"


class ManagementTest(FlowTest):
    def read(self, uri, data):
        self.assert_answers(self.logged_in.ask("GET", uri), GOT, data)

    def configuration(self):
        return self.daemon.lab("show", "running-config")

    def is_ready(self):
        return "<system_is_ready>Yes<" in self.ask("GET", "/base")

    def reload(self, mode):
        """Asks for a reload; the answer comes before it."""
        self.assert_answers(self.logged_in.ask("POST", "/system/reload", f"value={mode}"), RELOADING)


class Reload(ManagementTest):
    def setUp(self):
        super().setUp()
        self.ask("POST", "/vlans/10")
        self.ask("PUT", "/system/hostname", "value=leaf1")
        self.daemon.lab("save")
        self.saved = self.configuration()
        self.ask("POST", "/vlans/20")
        self.ask("PUT", "/ssh/adminMode", "value=1")
        self.changed = self.configuration()
        self.assertNotEqual(self.changed, self.saved)

    def wait_until_configured(self, configuration):
        eventually(lambda: self.configuration() == configuration and self.is_ready(),
                   "the switch has reloaded")

    def test_reload_begins_anew_with_the_startup_configuration(self):
        with self.session(self.daemon, tls=True) as other:
            self.reload(1)
            self.wait_until_configured(self.saved)
            self.read("/system", system(hostname="leaf1"))
            self.assertEqual(self.vlan_ids(other), [1, 10])  # sessions go on
        self.read("/download/startupCfgInfo", startup_info())
        self.restart()
        self.assertEqual(self.configuration(), self.saved)

    def test_warm_reload_keeps_the_running_configuration(self):
        self.daemon.lab("counter", "set", "0/1", "CTR_RX_TOTAL_BYTES", "7")
        self.reload(2)
        eventually(self.is_ready, "the switch is ready")
        self.wait_until_configured(self.changed)
        self.read("/download/startupCfgInfo", startup_info(modified="yes"))
        self.restart()
        self.assertEqual(self.configuration(), self.changed)
        self.reload(1)
        self.wait_until_configured(self.saved)

    def test_reload_to_factory_state_forgets_everything(self):
        self.reload(3)
        self.wait_until_configured("")
        self.read("/system", system())
        self.assertEqual(self.vlan_ids(self.logged_in), [1])
        self.ask("POST", "/vlans/30")
        self.reload(1)  # the startup configuration is gone, too
        self.wait_until_configured("")
        self.restart()
        self.assertEqual(self.configuration(), "")

    def test_reloads_that_overlap(self):
        for mode in (2, 1, 2, 1, 1):
            self.reload(mode)
        self.wait_until_configured(self.saved)
        self.assert_serves(self.daemon)

    def test_unsaved_changes_show(self):
        self.read("/download/startupCfgInfo", startup_info(modified="yes"))
        self.ask("DELETE", "/vlans/20")
        self.ask("PUT", "/ssh/adminMode", "value=0")
        self.read("/download/startupCfgInfo", startup_info())  # as it was saved, again
        self.ask("POST", "/vlans/20")
        self.daemon.lab("save")
        self.read("/download/startupCfgInfo", startup_info())
        self.restart()
        self.read("/download/startupCfgInfo", startup_info())


class NotReady(ManagementTest):
    def test_the_switch_is_not_ready_while_it_reloads(self):
        def is_seen():
            self.reload(2)
            return not self.is_ready()
        eventually(is_seen, "the switch reloads")
        eventually(self.is_ready, "the switch is ready again")


class SyslogReceiver:
    """A logging host: takes frames strictly as RFC 5424 has them."""

    FRAME = re.compile(r"<(0|[1-9]\d{0,2})>1 (\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3,6}Z) ([!-~]{1,255}) "
                       r"([!-~]{1,48}) ([!-~]{1,128}) ([!-~]{1,32}) - (.*)", re.S)

    def __init__(self, address):
        self.socket = socket.socket(socket.AF_INET6 if ":" in address else socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind((address, 0))
        self.socket.settimeout(PATIENCE)
        self.port = self.socket.getsockname()[1]

    def frame(self):
        """(severity, host name, text) of the next one."""
        data = self.socket.recv(65536)
        match = self.FRAME.fullmatch(data.decode())
        if match is None or int(match[1]) > 191:
            raise AssertionError(f"no frame of RFC 5424: {data!r}")
        return int(match[1]) % 8, match[3], match[7]


class Syslog(ManagementTest):
    def receiver(self, address, name=None, severity=7):
        """A receiver that the switch knows as a logging host."""
        receiver = SyslogReceiver(address)
        self.addCleanup(receiver.socket.close)
        self.add_host(name or address, receiver.port, severity)
        return receiver

    def add_host(self, name, port, severity=7):
        for method, uri, *variables in (("POST", f"/logging/hosts/{name}"),
                                        ("PUT", f"/logging/hosts/{name}/port", f"value={port}"),
                                        ("PUT", f"/logging/hosts/{name}/severityLevel", f"value={severity}")):
            self.ask(method, uri, *variables)

    def switch_syslog(self, mode):
        self.ask("PUT", "/logging/syslog/mode", f"value={mode}")

    def say(self, hostname):
        """Sets the host name, which leaves a warning in the log; returns its text."""
        self.ask("PUT", "/system/hostname", f"value={hostname}")
        return self.said()[-1]

    def said(self):
        """The texts that changes have left so far, as hosts get them."""
        return [f"{harness.AUDIT} {text}" for text in self.daemon.audit_lines()]

    def hear(self, receiver, hostname, text):
        """Takes frames until the one with the text has come, all from the host name."""
        while True:
            severity, name, heard = receiver.frame()
            if heard == text:
                self.assertEqual((severity, name), (4, hostname))
                return

    def test_each_host_gets_what_is_severe_enough_for_it(self):
        all_of_it = self.receiver("127.0.0.1", severity=7)
        warnings = self.receiver("127.0.0.2", severity=4)
        name = a_name_of_this_machine()
        errors = self.receiver("127.0.0.1" if name == "localhost" else name, name, severity=3)
        self.switch_syslog(1)
        for receiver in (all_of_it, warnings):
            self.hear(receiver, "kestrel", self.said()[-1])
        text = self.say("leaf1")
        for receiver in (all_of_it, warnings):
            self.hear(receiver, "leaf1", text)
        self.ask("PUT", f"/logging/hosts/{name}/severityLevel", "value=4")
        text = self.say("leaf2")
        for receiver in (all_of_it, warnings):
            self.hear(receiver, "leaf2", text)
        self.assertIn(errors.frame()[2], self.said()[-2:])  # nothing before

    def test_mode_and_hosts_can_change_at_any_time(self):
        receiver = self.receiver("127.0.0.1")
        unheard = self.say("leaf1")  # the mode is off
        self.switch_syslog(1)
        self.hear(receiver, "leaf1", self.said()[-1])
        self.switch_syslog(0)
        unheard_too = self.say("leaf2")
        self.switch_syslog(1)
        heard = []
        while not heard or heard[-1] != self.said()[-1]:
            heard.append(receiver.frame()[2])
        self.assertNotIn(unheard, heard)
        self.assertNotIn(unheard_too, heard)
        moved = SyslogReceiver("127.0.0.1")
        self.addCleanup(moved.socket.close)
        self.ask("PUT", "/logging/hosts/127.0.0.1/port", f"value={moved.port}")
        self.hear(moved, "leaf3", self.say("leaf3"))
        self.ask("DELETE", "/logging/hosts/127.0.0.1")
        other = self.receiver("127.0.0.2")
        text = self.say("leaf4")
        self.hear(other, "leaf4", text)
        moved.socket.setblocking(False)
        with contextlib.suppress(BlockingIOError):
            while True:
                self.assertNotEqual(moved.frame()[2], text)

    def test_hosts_that_do_not_answer_keep_nobody_waiting(self):
        self.daemon.expect_log(r"nothing can be sent to the logging host a-name\.invalid")
        closed = SyslogReceiver("127.0.0.3")
        closed.socket.close()
        self.add_host("a-name.invalid", 514)
        self.add_host("127.0.0.3", closed.port)
        receiver = self.receiver("127.0.0.1")
        self.switch_syslog(1)
        for number in range(50):
            hostname = f"leaf{number}"
            self.hear(receiver, hostname, self.say(hostname))
        for name in ("a-name.invalid", "127.0.0.3"):
            self.ask("DELETE", f"/logging/hosts/{name}")
        self.hear(receiver, "leaf", self.say("leaf"))

    def test_hosts_and_mode_survive_a_restart(self):
        receiver = self.receiver("127.0.0.1", severity=4)
        self.switch_syslog(1)
        self.restart()
        self.hear(receiver, "leaf1", self.say("leaf1"))
        self.read("/logging/hosts", logging_hosts("127.0.0.1"))
        self.read("/logging/hosts/127.0.0.1", logging_host("127.0.0.1", receiver.port, "Warning conditions."))

    def test_ipv6(self):
        try:
            receiver = self.receiver("::1")
        except OSError:
            self.skipTest("this machine has no IPv6 loopback")
        self.switch_syslog(1)
        self.hear(receiver, "leaf1", self.say("leaf1"))


class Profiles(DaemonTest):
    """What the profile says of the chassis, and mistakes in it, which refuse the start."""

    PORTS = '"ports": [{"name": "0/1"}, {"name": "0/2", "copper": true}]'

    def test_a_profile(self):
        daemon = self.new_daemon()
        daemon.use_profile("{" + self.PORTS + """,
            "fans": [{"type": "fixed", "state": "failed"}, {"speed": 900, "duty_cycle": 10}],
            "power_supplies": [{"state": "not-powered"}],
            "temperature_sensors": [{"description": "Case", "temperature": 71}],
            "transceivers": [{"port": "0/1", "module_type": "SFP", "vendor_name": "A maker"}]}""")
        session = self.session(daemon.start())
        for uri, data in (
                ("", counts(1, 2, 1)),
                ("/fans", box_list("fans", "fan", fan("Failed", "Fixed"),
                                   fan("Operational", "Removable", 900, 10))),
                ("/powSupplies", box_list("power_supplies", "power_supply",
                                          supply("Not powered", "Removable"))),
                ("/tempSensors", box_list("temp_sensors", "temp_sensor", sensor("Warning", 71, "Case"))),
                ("/sfp", box_list("sfp_transceivers", "sfp",
                                  transceiver(1, "SFP", "A maker", "", 0, 0, "", "", 0, "")))):
            self.assert_answers(session.ask("GET", f"/boxs{uri}"), GOT, data)

    def test_mistakes_refuse_the_start(self):
        for member in ('"fans": {}', '"fans": [{"state": "broken"}]', '"fans": [{"speed": -1}]',
                       '"fans": [{"colour": "red"}]', '"power_supplies": [{"type": 1.5}]',
                       '"temperature_sensors": [{"description": "x", "warning": 90, "critical": 80}]',
                       '"transceivers": [{"port": "0/2"}]', '"transceivers": [{"port": "0/9"}]',
                       '"transceivers": [{"port": "0/1"}, {"port": "0/1"}]', '"fans": [], "fans": []'):
            with self.subTest(member):
                daemon = self.new_daemon()
                daemon.use_profile("{" + self.PORTS + ", " + member + "}")
                daemon.expect_log("profile|Failed to initiali")
                daemon.launch()
                self.assertEqual(daemon.wait_for_exit(), 2)
                self.assertRegex(daemon.stderr(), r"profile\.json:\d+: \S")

    def test_what_lab_control_changed_is_gone_after_a_restart(self):
        daemon = self.start_daemon()
        daemon.lab("fan", "1", "state", "failed")
        daemon.lab("transceiver", "out", "0/1")
        before = daemon.lab("chassis")
        daemon.lab("reload")
        self.assertEqual(daemon.lab("chassis"), before)  # it is no configuration
        daemon.restart()
        self.assertIn("fan 1 type removable state operational", daemon.lab("chassis"))


if __name__ == "__main__":
    harness.main()
