"""Lab control through kestrel-lab, and what clients of the API see of it."""

import harness
import wire
from harness import DaemonTest
from wire import ALREADY_SET, FAILED, GOT, INTERNAL, REFUSED, Rows


class LabTest(DaemonTest):
    def setUp(self):
        self.daemon = self.start_daemon()
        self.logged_in = self.session(self.daemon)

    def check(self, method, uri, outcome, data=None):
        self.assert_answers(self.logged_in.ask(method, uri), outcome, data)

    def assert_pending(self, *entries):
        rows = [(i, {"id": vid, "pending_type": kind}) for i, (vid, kind) in enumerate(entries, 1)]
        self.check("GET", "/vlans/pendingChanges", GOT, {"pending_vlans": Rows("vlan", rows)})


class PendingChanges(LabTest):
    def test_held_changes_are_pending_until_they_are_released(self):
        self.daemon.lab("hold")
        for vid in (10, 20):
            self.check("POST", f"/vlans/{vid}", (0, f"Create VLAN {vid} successfully."))
        self.assert_pending((10, "pending change"), (20, "pending change"))
        self.daemon.lab("release")
        self.daemon.lab("wait")
        self.assert_pending()

        self.daemon.lab("hold")
        self.check("DELETE", "/vlans/10", (0, "Delete VLAN 10 successfully."))
        self.assert_pending((10, "pending deletion"))
        self.check("GET", "/vlans", GOT, wire.vlan_list([1, 20]))
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
        self.assert_pending((10, "pending change"))
        self.daemon.lab("release")
        self.daemon.lab("wait")
        self.assert_pending()

    def test_changes_are_taken_by_themselves(self):
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
        self.daemon.lab("wait")
        self.assert_pending()

    def test_waiting_for_held_changes_gives_up(self):
        self.daemon.lab("hold")
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
        done = self.daemon.try_lab("wait", "50")
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (1, "", "kestrel-lab: error: changes are still pending\n"))
        self.assert_pending((10, "pending change"))

    def test_held_changes_survive_a_crash(self):
        self.daemon.lab("hold")
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
        self.daemon.restart()
        self.assertEqual(self.vlan_ids(self.session(self.daemon)), [1, 10])


class Faults(LabTest):
    CODES = (("OPEN_E_ERROR", FAILED), ("OPEN_E_FAIL", FAILED), ("OPEN_E_TIMEOUT", INTERNAL),
             ("OPEN_E_INTERNAL", INTERNAL), ("OPEN_E_EXISTS", ALREADY_SET), ("OPEN_E_PARAM", REFUSED),
             ("OPEN_E_NOT_FOUND", REFUSED), ("OPEN_E_RPC", REFUSED), ("OPEN_E_FULL", REFUSED),
             ("OPEN_E_DISABLED", REFUSED), ("OPEN_E_UNAVAIL", REFUSED), ("OPEN_E_EMPTY", REFUSED),
             ("-5", REFUSED))

    def test_every_platform_code_has_its_answer(self):
        for code, outcome in self.CODES:
            with self.subTest(code=code):
                self.daemon.lab("fault", "rpcclt_openapiVlanCreate", code)
                self.check("POST", "/vlans/10", outcome)
        self.check("GET", "/vlans", GOT, wire.vlan_list([1]))
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))

    def test_the_first_failure_of_a_chain_is_answered_and_partial_data_is_not(self):
        base = ("rpcclt_openapiNetworkOSVersionGet", "rpcclt_openapiSwStorageGet",
                "rpcclt_openapiApiVersionGet", "rpcclt_openapiCpuIntfGet", "openapiMaxInterfaceCountGet",
                "rpcclt_openapiOspfEqualCostRoutesMax", "openapiSystemReadyStateGet")
        identity = ("rpcclt_openapiSwDevInfoSerialNumGet", "rpcclt_openapiBurnedInMacAddrGet",
                    "rpcclt_openapiMachineModelNameGet", "rpcclt_openapiSystemDescrGet")
        vlan = ("rpcclt_openapiVlanNameLenGet", "rpcclt_openapiVlanNameGet", "rpcclt_openapiIfFirstGet",
                "openapiVlanIfParticipationStatusGet", "rpcclt_openapiVlanIfParticipationGet",
                "openapiVlanIfTaggingGet")
        for uri, functions in (("/base", base), ("/base/idname", identity), ("/vlans/1", vlan)):
            for function in functions:
                with self.subTest(uri=uri, function=function):
                    self.daemon.lab("fault", function, "OPEN_E_TIMEOUT")
                    self.check("GET", uri, INTERNAL)
        self.assertEqual(self.daemon.lab("fault", "list"), "")

    def test_failed_changes_change_nothing(self):
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
        self.daemon.lab("fault", "rpcclt_openapiVlanDelete", "OPEN_E_FAIL")
        self.check("DELETE", "/vlans/10", FAILED)
        self.daemon.lab("fault", "rpcclt_openapiVlanNameSet", "OPEN_E_FULL")
        self.assert_answers(self.logged_in.ask("PUT", "/vlans/10/name", "value=a"), REFUSED)
        self.check("GET", "/vlans/10", GOT, {"vlan": {"id": 10, "name": "", "type": "static",
                                                      "interfaces": Rows("interface")}})

    def test_faults_count_and_skip(self):
        self.daemon.lab("fault", "rpcclt_openapiVlanCreate", "OPEN_E_FAIL", "2", "1")
        self.assertEqual(self.daemon.lab("fault", "list"), "rpcclt_openapiVlanCreate OPEN_E_FAIL 2 1\n")
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
        self.check("POST", "/vlans/11", FAILED)
        self.check("POST", "/vlans/11", FAILED)
        self.check("POST", "/vlans/11", (0, "Create VLAN 11 successfully."))
        self.daemon.lab("fault", "rpcclt_openapiVlanCreate", "OPEN_E_FAIL", "9")
        self.daemon.lab("fault", "clear")
        self.check("POST", "/vlans/12", (0, "Create VLAN 12 successfully."))

    def test_a_vlan_without_a_readable_maximum_cannot_be_made(self):
        self.daemon.lab("fault", "rpcclt_openapiDot1VlanMaxGet", "OPEN_E_FAIL")
        self.check("POST", "/vlans/10", (2, "VLAN ID not valid."))

    def test_a_failing_authentication_is_a_refused_login(self):
        self.daemon.lab("fault", "rpcclt_openapiAuthenticateUser", "OPEN_E_TIMEOUT")
        reply = self.client(self.daemon).ask("POST", "/login?user=admin&password=correct+horse")
        self.assert_answers(reply, (1, "Authentication failed."))
        self.session(self.daemon)


class Surroundings(LabTest):
    def ready(self):
        text = self.logged_in.ask("GET", "/base").text()
        return text[text.index("<system_is_ready>") + 17:text.index("</system_is_ready>")]

    def test_a_switch_that_is_not_ready_says_so(self):
        self.assertEqual(self.ready(), "Yes")
        whole = self.logged_in.ask("GET", "/base").raw
        self.daemon.lab("ready", "no")
        self.assertEqual(self.logged_in.ask("GET", "/base").body, self.body_of(whole).replace(b"Yes", b"No"))
        self.daemon.lab("ready", "yes")
        self.assertEqual(self.logged_in.ask("GET", "/base").raw, whole)

    @staticmethod
    def body_of(raw):
        return raw.split(b"\r\n\r\n", 1)[1].split(b"\r\n")[1]

    def test_a_full_table_of_vlans(self):
        self.daemon.lab("limit", "vlans", "2")
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
        self.check("POST", "/vlans/11", REFUSED)
        self.check("DELETE", "/vlans/10", (0, "Delete VLAN 10 successfully."))
        self.check("POST", "/vlans/11", (0, "Create VLAN 11 successfully."))

    def test_the_running_configuration_and_reload(self):
        factory = self.daemon.lab("show", "running-config")
        self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
        self.daemon.lab("save")
        saved = self.daemon.lab("show", "running-config")
        self.assertNotEqual(saved, factory)
        self.check("POST", "/vlans/20", (0, "Create VLAN 20 successfully."))
        self.daemon.lab("reload")
        self.assertEqual(self.daemon.lab("show", "running-config"), saved)
        self.check("GET", "/vlans", GOT, wire.vlan_list([1, 10]))
        self.daemon.restart()
        self.assertEqual(self.vlan_ids(self.session(self.daemon)), [1, 10])

    def test_wrong_commands_are_refused(self):
        for words in (("nonsense",), ("fault", "printf", "OPEN_E_FAIL"),
                      ("fault", "rpcclt_openapiVlanCreate", "x"), ("limit", "vlans", "9999"),
                      ("limit", "nothing", "1"), ("cable", "out", "9/9"), ("ready",)):
            done = self.daemon.try_lab(*words)
            self.assertEqual((done.returncode, done.stdout), (1, ""), words)
            self.assertRegex(done.stderr, r"\Akestrel-lab: error: .+\n\Z")
        self.assert_serves(self.daemon)

    def test_words_with_blanks_arrive_whole(self):
        text = 'Rack 7, "third" \\ from above'
        self.daemon.lab("identity", "description", text)
        self.assertIn(r'description "Rack 7, \"third\" \\ from above" os-version', self.daemon.lab("chassis"))
        self.assertEqual(self.daemon.lab('transceiver in 0/9 vendor-name "A B" serial-number ""'), "")
        self.daemon.lab("transceiver", "in", "0/10", "vendor-name", "", "part-number", "C D")
        listed = self.daemon.lab("chassis")
        self.assertIn('in 0/9 module-type SFP+ vendor-name "A B" vendor-revision ""', listed)
        self.assertIn('in 0/10 module-type SFP+ vendor-name "" vendor-revision ""', listed)
        self.assertIn(' part-number "C D" ', listed)

    def test_without_a_switch_the_tool_says_so(self):
        self.daemon.kill()
        done = self.daemon.try_lab("wait")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertRegex(done.stderr,
                         r"\Akestrel-lab: cannot reach the switch at .*: no switch is running there\n\Z")
        self.daemon.start()

    def test_help_lists_the_commands(self):
        commands = [line.split()[0] for line in self.daemon.lab().splitlines()]
        for word in ("hold", "release", "wait", "fault", "ready", "limit"):
            self.assertIn(word, commands)


if __name__ == "__main__":
    harness.main()
