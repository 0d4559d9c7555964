"""A first session as a user has it: log in, make a VLAN, name it, read it, lose power, find it again."""

import harness
import wire
from harness import DaemonTest
from wire import GOT, log_in


def vlan(name):
    return {"vlan": {"id": 10, "name": name, "type": "static", "interfaces": wire.Rows("interface")}}


class FirstSession(DaemonTest):
    def run_session(self, tls):
        daemon = self.start_daemon()
        session = self.session(daemon, tls=tls)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        self.assert_answers(session.ask("POST", "/vlans/10"), (0, "Create VLAN 10 successfully."))
        self.assert_answers(session.ask("GET", "/vlans/10"), GOT, vlan(""))
        self.assert_answers(session.ask("PUT", "/vlans/10/name", "value=servers"),
                            (0, "Update name of VLAN 10 successfully."))
        self.assert_answers(session.ask("GET", "/vlans/10"), GOT, vlan("servers"))
        self.assert_answers(session.ask("GET", "/vlans/10", "format=json"), GOT, vlan("servers"), "json")
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1, 10]))

        daemon.restart()
        self.assert_answers(self.client(daemon, tls=tls).ask("GET", session.target("/vlans")), wire.ENDED)
        again = self.session(daemon, tls=tls)
        self.assert_answers(again.ask("GET", "/vlans"), GOT, wire.vlan_list([1, 10]))
        self.assert_answers(again.ask("GET", "/vlans/10"), GOT, vlan("servers"))

    def test_over_http(self):
        self.run_session(tls=False)

    def test_over_https(self):
        self.run_session(tls=True)

    def test_bytes_of_the_first_replies(self):
        """Spelled out once, so that the helpers of all other tests have something to be measured by."""
        daemon = self.start_daemon()
        client = self.client(daemon)
        key = log_in(client)
        self.assertEqual(client.ask("POST", f"/vlans/10?sessionkey={key}").raw,
                         b"HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\n"
                         b"Transfer-Encoding: chunked\r\n\r\n"
                         b"59\r\n<result><rlt_code>0</rlt_code><rlt_mesg>Create VLAN 10 successfully."
                         b"</rlt_mesg></result>\n\r\n0\r\n\r\n")
        self.assertEqual(client.ask("GET", f"/vlans?format=json&sessionkey={key}").raw,
                         b"HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\n"
                         b"Transfer-Encoding: chunked\r\n\r\n"
                         b'88\r\n{ "result": { "rlt_code": 0, "rlt_mesg": "Get data successfully.", '
                         b'"rlt_data": { "vlans": { "1": { "id": 1 }, "2": { "id": 10 } } } } }\n'
                         b'\r\n0\r\n\r\n')

    def test_standard_output_is_one_newline(self):
        daemon = self.start_daemon()
        self.assertEqual(daemon.stdout(), "\n")
        starts = [line for line in daemon.log_lines() if line[1].startswith("rest_web_request_hdr.c:")]
        self.assertEqual(starts, [("INFO", "rest_web_request_hdr.c:251",
                                   "Starting RESTful API Engine application")])

    def test_both_ports_show_the_same_switch(self):
        daemon = self.start_daemon()
        plain = self.session(daemon)
        self.assert_answers(plain.ask("POST", "/vlans/20"), (0, "Create VLAN 20 successfully."))
        over_tls = self.client(daemon, tls=True).ask("GET", plain.target("/vlans"))
        self.assert_answers(over_tls, GOT, wire.vlan_list([1, 20]))


if __name__ == "__main__":
    harness.main()
