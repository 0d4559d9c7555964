"""Every URI of the modules script, download and upload, but for what takes a file server: whole replies, as
XML and as JSON, over both ports."""



import harness
from harness import eventually
from system import (BUSY, LISTED, NOT_STARTED, SystemTest, download_status, scripts, startup_info,
                    upload_status)
from wire import FAILED, GOT, INTERNAL, REFUSED


class Scripts(SystemTest):
    def script(self, method, uri, name, outcome, data=None):
        self.check(method, uri, outcome, data, (f"scr={name}",))

    def test_there_are_none_at_first(self):
        def scene():
            self.check("GET", "/script/list", LISTED, scripts())
            for name in ("a.scr", "x" * 92 + ".scr", "a.txt", "a", "..%2Fa.scr", ".scr", ".a.scr",
                         "a%20b.scr",
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
                    "/download/script": {"scr": ("x" * 97, "a", "..%2Fa.scr", "a%2Fb.scr"),
                                         "act": ("Y", "yes")},
                    "/upload/script": {"scr": ("a", "..%2Fa.scr", "a%2Fb.scr", "x" * 97 + ".scr")}}
            for uri, wrong in rows.items():
                for name, values in wrong.items():
                    for value in values:
                        others = tuple(given for given in TRANSFERS[uri] if not given.startswith(f"{name}="))
                        self.check("POST", uri, REFUSED, variables=(*others, f"{name}={value}"))
                for url in ("file:///etc/passwd", "gopher://127.0.0.1/", "127.0.0.1/file", "http:",
                            "x" * 1024):
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
            for code, outcome in (("OPEN_E_ERROR", FAILED), ("OPEN_E_UNAVAIL", REFUSED),
                                  ("OPEN_E_FAIL", FAILED),
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
