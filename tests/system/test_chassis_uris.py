"""Every URI of the modules boxs and process: whole replies, as XML and as JSON, over both ports."""

import json
import re
import subprocess
import sys

import harness
from harness import eventually
from system import SystemTest, box_list, counts, fan, sensor, supply, transceiver
from wire import FAILED, GOT, document, numbered


BUILT_IN = [(1, "SFP+", "Sample Optics", "A1", 300, 33, "SO100001", "SO-10G-SR", 10300, "10GBASE-SR"),
            (2, "SFP+", "Sample Optics", "A1", 300, 33, "SO100002", "SO-10G-SR", 10300, "10GBASE-SR"),
            (3, "SFP+", "Sample Optics", "A1", 0, 0, "SO200001", "SO-10G-LR", 10300, "10GBASE-LR"),
            (4, "SFP", "Sample Optics", "A3", 550, 275, "SO300001", "SO-1G-SX", 1300, "1000BASE-SX"),
            (5, "Direct Attach Cable", "Sample Cables", "B2", 0, 0, "SC100001", "SC-10G-3M", 10300,
             "10GBASE-CR"),
            (49, "QSFP", "Sample Optics", "A1", 100, 0, "SO400001", "SO-40G-SR4", 41200, "40GBASE-SR4"),
            (50, "QSFP", "Sample Optics", "A2", 0, 0, "SO500001", "SO-40G-LR4", 41200, "40GBASE-LR4"),
            (51, "Direct Attach Cable", "Sample Cables", "B1", 0, 0, "SC400001", "SC-40G-1M", 41200,
             "40GBASE-CR4")]
ITEM_STATES = (("none", "None"), ("not-present", "Not present"), ("operational", "Operational"),
               ("failed", "Failed"),
               ("powering", "Powering"), ("not-powered", "Not powered"), ("not-powering", "Not powering"),
               ("incompatible", "Incompatible"), ("8", "Unknown"), ("99", "Unknown"))
ITEM_TYPES = (("none", "None"), ("fixed", "Fixed"), ("removable", "Removable"), ("3", "Unknown"))
SENSOR_STATES = (("none", "Not applicable"), ("normal", "Normal"), ("warning", "Warning"),
                 ("critical", "Critical"),
                 ("shutdown", "Shutdown"), ("not-present", "Not present"), ("not-operational",
                                                                            "Not operational"),
                 ("7", "Unknown"))
MODULE_TYPES = (("none", "None"), ("SFP", "SFP"), ("SFP+", "SFP+"), ("QSFP", "QSFP"),
                ("direct-attach", "Direct Attach Cable"), ("XFP-module", "10G XFP Plug-in Module KM-10XFP"),
                ("stacking-module", "Stacking Module KM-STK"),
                ("SFP+-module", "SFP+ Plug-in Module KM-10SFP"), ("CX4-module",
                                                                  "CX4 Plug-in Module KM-10CX4"),
                ("copper-module", "10G Copper Plug-in Module KM-10GT"), ("10", "Unknown"))


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
                self.daemon.lab("fan", "1", "state", "operational", "type", word, "speed", "100",
                                "duty-cycle", "0")
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
            for word, text in MODULE_TYPES:
                self.daemon.lab("transceiver", "in", "0/20", "module-type", word, "vendor-name",
                                "Another maker",
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
            self.check_refused("GET", *(f"{uri}/1" for uri in uris), *(f"{uri}/" for uri in uris),
                               "/boxs/fan",
                               "/boxs/fansx", "/boxs/Fans")
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/boxs", *(f"BoxsNumOf{what}Get" for what in ("TempSensors", "Fans",
                                                                            "PowSupplies")))
            self.check_faults("/boxs/fans", "BoxsNumOfFansGet", "BoxsFanStateGet", "BoxsFanTypeGet",
                              "BoxsFanSpeedGet",
                              "BoxsFanDutyCycleGet")
            self.check_faults("/boxs/powSupplies", "BoxsNumOfPowSuppliesGet", "BoxsPowSupplyStateGet",
                              "BoxsPowSupplyTypeGet")
            self.check_faults("/boxs/tempSensors", "BoxsNumOfTempSensorsGet", "BoxsTempSensorStatusGet",
                              "BoxsTempGet",
                              "BoxsTempSensorDescripSizeGet", "BoxsTempSensorDescripGet")
            self.check_faults("/boxs/sfp", "IfFirstGet", "BoxsSfpTypeGet", "BoxsSfpVendorNameSizeGet",
                              "BoxsSfpVendorNameGet", "BoxsSfpVendorRevSizeGet", "BoxsSfpVendorRevisionGet",
                              "BoxsSfpLinkLength50umGet", "BoxsSfpLinkLength62_5umGet",
                              "BoxsSfpSerialNumberSizeGet",
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
            self.check_refused("GET", "/process", "/process/", "/process/cpu/", "/process/cpux",
                               "/process/memory/1")
            for method in ("POST", "PUT", "DELETE"):
                self.check_refused(method, "/process/cpu", "/process/memory")
        self.each_way(scene)

    def test_platform_failures(self):
        def scene():
            self.check_faults("/process/memory", "ProcMemInfoGet")
            self.check_faults("/process/cpu", "ProcTotalCpuUtilGet", "ProcTaskCpuUtilGet")
        self.each_way(scene)


if __name__ == "__main__":
    harness.main()
