"""What the API answers about system management (outcomes, and the data of whole answers as wire.py takes
them), and scenes about it."""

from scenes import UriTest
from wire import ALREADY_SET, BAD_REQUEST, FAILED, INTERNAL, REFUSED, Nodes, numbered

INVALID = (1, "The value of parameter is invalid.")
STARTING = (0, "File transfer is starting.")
BUSY = (1, "Another Transfer is in Progress.")
NOT_STARTED = (2, "Failed to start a transfer.")
APPLIED = (0, "Script transfer and apply successfully.")
RELOADING = (0, "Reset the system is starting.")
LISTED = (0, "Get script file list successfully.")

SEVERITIES = ("Emergency conditions.", "Alert conditions.", "Critical conditions.", "Error conditions.",
              "Warning conditions.", "Normal but significant conditions.", "Informational messages.",
              "Debug-level messages.")


def updated(what, default=False):
    return (0, f"Update {what} {'to default ' if default else ''}successfully.")


# --- system and ssh --------------------------------------------------------------------------------------

def system(**differences):
    """GET /system in factory state, but for the differences."""
    facts = {"hostname": "kestrel", "serial_timeout": 5, "telnet_srver_admin_mode": "disable",
             "service_port_mask": "255.255.255.0"}
    return {"infomation": {**facts, **differences}}


def ssh(**differences):
    """GET /ssh in factory state, but for the differences."""
    facts = {"admin_mode": "disable", "version": "2", "active_sessions": 0, "max_sessions": 5, "timeout": 5}
    return {"infomation": {**facts, **differences}}


# --- boxs ------------------------------------------------------------------------------------------------

def counts(sensors, fans, supplies):
    """GET /boxs."""
    return {"infomation": {"temp_sensors_number": sensors, "fans_number": fans,
                           "power_supplies_number": supplies}}


def fan(state, kind, speed="-", duty="-"):
    return {"state": state, "type": kind, "speed": str(speed), "duty_cycle": str(duty)}


def supply(state, kind):
    return {"state": state, "type": kind}


def sensor(state, temperature, description):
    return {"state": state, "temperature": temperature, "description": description}


def transceiver(port, kind, vendor, revision, at_50um, at_62_5um, serial, part, rate, compliance):
    return {"port": port, "module_type": kind, "vendor_name": vendor, "vendor_revision": revision,
            "link_length_50um": at_50um, "link_length_62_5um": at_62_5um, "serial_number": serial,
            "part_number": part, "nominal_signal_rate": rate, "compliance": compliance}


def box_list(top, entry, *entries):
    return {top: numbered(entry, entries)}


# --- logging ---------------------------------------------------------------------------------------------

def logging(cli="disable", console="enable", severity=4, syslog="disable", port=514, hosts=8):
    """GET /logging; what is not given is as in factory state."""
    return {"logging": {"cli": {"logging_mode": cli},
                        "console": {"logging_mode": console, "severity_level": SEVERITIES[severity]},
                        "syslog": {"logging_mode": syslog, "port": port}, "max_logging_hosts": hosts}}


def logging_hosts(*addresses):
    return {"logging_hosts": numbered("logging_host", [{"address": address} for address in addresses])}


def logging_host(address, port=514, severity=SEVERITIES[6]):
    return {"logging_host": {"address": address, "port": port, "severity_level": severity}}


# --- transfers and scripts ---------------------------------------------------------------------------------

def download_status(status, progress):
    return {"information": {"status": status, "progress": f"{progress}%"}}


def upload_status(status, progress, serial):
    return {"information": {"status": status, "progress": f"{progress}%", "cfg_upload_sn": str(serial)}}


def startup_info(made="", updated_at="", modified="no"):
    return {"information": {"cfg_time": made, "cfg_update": updated_at, "cfg_modified": modified}}


def scripts(*names):
    """GET /script/list."""
    rows = [(str(at), "script_file", {"filename": name}) for at, name in enumerate(names, 1)]
    return {"script_files": Nodes([("count_of_files", "count_of_files", len(names)), *rows])}


# --- Scenes --------------------------------------------------------------------------------------------

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
