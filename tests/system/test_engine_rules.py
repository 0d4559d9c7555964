"""Rules of the engine itself: who may do what, which method and format count, sessions, what is logged."""

import os
import re
import time

import harness
import wire
from harness import DaemonTest
from wire import BAD_REQUEST, ENDED, GOT, NO_KEY, UNKNOWN_MODULE, Client, log_in, request, session_key

CREATED_5 = (0, "Create VLAN 5 successfully.")


class Authorisation(DaemonTest):
    def setUp(self):
        self.daemon = self.start_daemon()

    def test_without_a_key_everything_but_logging_in_answers_905(self):
        client = self.client(self.daemon)
        for method, uri in (("GET", "/vlans"), ("POST", "/vlans/5"), ("GET", "/login"), ("DELETE", "/login"),
                            ("PUT", "/login/RESTTimeout"), ("GET", "/base"), ("GET", "/nothing"),
                            ("GET", "/"), ("GET", "/vlans?sessionkey="), ("GET", "/vlans?sessionkey"),
                            ("GET", "/vlans?format=xml"), ("GET", "/vlans?xsessionkey=1")):
            self.assert_answers(client.ask(method, uri), NO_KEY)
        self.assert_answers(client.ask("GET", "/vlans?format=json"), NO_KEY, form="json")

    def test_with_an_unknown_key_everything_but_logging_in_answers_900(self):
        client = self.client(self.daemon)
        key = "0" * 32
        for method, uri in (("GET", "/vlans"), ("POST", "/vlans/5"), ("GET", "/login"), ("DELETE", "/login"),
                            ("GET", "/base"), ("GET", "/nothing"), ("GET", "/")):
            self.assert_answers(client.ask(method, f"{uri}?sessionkey={key}"), ENDED)

    def test_help_needs_no_key(self):
        client = self.client(self.daemon)
        for uri in ("/help", "/help/vlans"):
            self.assertNotIn(client.ask("GET", uri).code(), (NO_KEY[0], ENDED[0]))

    def test_a_key_counts_only_from_the_address_that_logged_in(self):
        session = self.session(self.daemon)
        stranger = self.client(self.daemon, source="127.0.0.2")
        self.assert_answers(stranger.ask("GET", session.target("/vlans")), ENDED)
        own_key = log_in(stranger)
        self.assertNotEqual(own_key, session.key)
        self.assert_answers(stranger.ask("GET", f"/vlans?sessionkey={own_key}"), GOT, wire.vlan_list([1]))
        self.assert_answers(session.client.ask("GET", f"/vlans?sessionkey={own_key}"), ENDED)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))

    def test_a_key_counts_on_any_connection(self):
        session = self.session(self.daemon)
        for tls in (False, True):
            reply = self.client(self.daemon, tls=tls).ask("GET", session.target("/vlans"))
            self.assert_answers(reply, GOT, wire.vlan_list([1]))

    def test_a_key_is_compared_exactly(self):
        session = self.session(self.daemon)
        client = self.client(self.daemon)
        for key in (session.key[:-1], session.key.upper() + "x", " " + session.key[:-1]):
            self.assertNotEqual(client.ask("GET", f"/vlans?sessionkey={key.replace(' ', '+')}").code(), 0)

    def test_a_key_of_more_than_32_characters_is_no_key(self):
        session = self.session(self.daemon)
        reply = self.client(self.daemon).ask("GET", f"/vlans?sessionkey={session.key}0")
        self.assert_answers(reply, NO_KEY)

    def test_a_key_in_the_body_comes_too_late(self):
        """Requests are authorised by their head; the body is not there yet."""
        session = self.session(self.daemon)
        reply = self.client(self.daemon).ask("POST", "/vlans/5", body=f"sessionkey={session.key}")
        self.assert_answers(reply, ENDED)
        self.assertEqual(self.vlan_ids(session), [1])

    def test_the_name_of_a_variable_counts_in_any_case_and_the_first_one_wins(self):
        session = self.session(self.daemon)
        client = self.client(self.daemon)
        self.assert_answers(client.ask("GET", f"/vlans?SessionKEY={session.key}&sessionkey=0"), GOT,
                            wire.vlan_list([1]))
        self.assert_answers(client.ask("GET", f"/vlans?sessionkey=0&sessionkey={session.key}"), ENDED)

    def test_module_names_count_in_their_own_case_only(self):
        session = self.session(self.daemon)
        for uri in ("/Vlans", "/VLANS", "/Login", "/nothing", "/"):
            self.assert_answers(session.ask("GET", uri), UNKNOWN_MODULE)

    def test_a_module_answers_902_for_what_it_does_not_serve(self):
        session = self.session(self.daemon)
        for method in ("HEAD", "OPTIONS", "CONNECT", "PROPFIND", "MKCOL", "PUT", "DELETE"):
            self.assert_answers(session.ask(method, "/vlans"), BAD_REQUEST)

    def test_formats(self):
        session = self.session(self.daemon)
        for word, form in (("xml", "xml"), ("XML", "xml"), ("html", "xml"), ("xmljson", "xml"), ("", "xml"),
                           ("js", "xml"), ("json", "json"), ("JSON", "json"), ("JSONP", "json"),
                           ("jsonxml", "json")):
            reply = session.ask("GET", "/vlans", f"format={word}")
            self.assert_answers(reply, GOT, wire.vlan_list([1]), form)


    def known_client(self):
        """A client whose connection the daemon has accepted, so that what it sends is read before what
        others send later."""
        client = self.client(self.daemon)
        self.assert_answers(client.ask("GET", "/vlans"), NO_KEY)
        return client

    def test_a_request_whose_body_is_late_keeps_its_own_authorisation(self):
        """Requests of others that come in between neither lend it theirs nor take its own away."""
        session = self.session(self.daemon)
        intruder, guest, stranger = (self.known_client() for _ in range(3))
        intruder.send(b"POST /vlans/66 HTTP/1.1\r\nContent-Length: 1\r\n\r\n")
        guest.send(request("POST", session.target("/vlans/5"), "x")[:-1])
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        intruder.send(b"x")
        self.assert_answers(intruder.read_reply(), NO_KEY)
        self.assert_answers(stranger.ask("GET", "/vlans"), NO_KEY)
        guest.send(b"x")
        self.assert_answers(guest.read_reply(), CREATED_5)
        self.assertEqual(self.vlan_ids(session), [1, 5])

    def test_a_request_whose_session_ends_before_its_body_comes_is_refused(self):
        session = self.session(self.daemon)
        client = self.known_client()
        client.send(request("POST", session.target("/vlans/5"), "x")[:-1])
        self.assert_answers(session.ask("DELETE", "/login"), (0, "Log out successfully."))
        client.send(b"x")
        self.assert_answers(client.read_reply(), (1, "Authentication failed."))


class Methods(DaemonTest):
    def setUp(self):
        self.daemon = self.start_daemon()

    def test_the_method_variable_overrides_the_method(self):
        session = self.session(self.daemon)
        deleted = (0, "Delete VLAN 5 successfully.")
        for sent in ("GET", "PUT", "HEAD"):
            self.assert_answers(session.ask(sent, "/vlans/5", "method=post"), CREATED_5)
            self.assert_answers(session.ask(sent, "/vlans/5/name", "method=PUT", "value=a"),
                                (0, "Update name of VLAN 5 successfully."))
            self.assert_answers(session.ask(sent, "/vlans/5", "method=Deleted"), deleted)
            self.assert_answers(session.ask(sent, "/vlans", "method=getAll"), GOT, wire.vlan_list([1]))

    def test_an_unknown_word_leaves_the_method_as_it_is(self):
        session = self.session(self.daemon)
        for word in ("", "remove", "xGET", "PU", "G%20ET"):
            self.assert_answers(session.ask("GET", "/vlans", f"method={word}"), GOT, wire.vlan_list([1]))

    def test_a_method_in_the_body_counts_for_the_module(self):
        session = self.session(self.daemon)
        self.assert_answers(session.ask("GET", "/vlans/5", body="method=POST"), CREATED_5)

    def test_logging_in_by_an_overridden_method_needs_no_key(self):
        client = self.client(self.daemon)
        reply = client.ask("GET", f"/login?method=POST&user=admin&password={wire.PASSWORD.replace(' ', '+')}")
        key = re.search("[0-9a-f]{32}", reply.text()).group(0)
        self.assert_answers(reply, (0, "Log in successfully."), {"sessionKey": key})
        reply = client.ask("GET", f"/login?method=delete&sessionkey={key}")
        self.assert_answers(reply, (0, "Log out successfully."))

    def test_a_post_of_login_that_is_overridden_needs_a_key(self):
        self.assert_answers(self.client(self.daemon).ask("POST", "/login?method=GET"), NO_KEY)


class Sessions(DaemonTest):
    def setUp(self):
        self.daemon = self.start_daemon()

    def status_rows(self):
        """The lines of the status file, split; the file as a whole must be what these rows give."""
        text = harness.read_text(self.daemon.session_file)
        rows = [line.split(";") for line in text.splitlines()]
        for row in rows:
            self.assertEqual(len(row), 6, text)
        self.assertEqual("".join(";".join(row) + "\n" for row in rows), text)
        return rows

    def test_the_status_file_mirrors_the_table(self):
        before = int(time.time())
        session = self.session(self.daemon)
        after = int(time.time())
        (row,) = self.status_rows()
        self.assertEqual(row[:4], ["1", session.key, "admin", "127.0.0.1"])
        self.assertTrue(before <= int(row[4]) <= after, row)
        self.assertEqual(row[5], row[4])
        self.assertEqual(session.key, session_key("127.0.0.1", row[4]))

        other = self.session(self.daemon, source="127.0.0.2")
        rows = self.status_rows()
        self.assertEqual([r[:4] for r in rows], [["1", session.key, "admin", "127.0.0.1"],
                                                 ["2", other.key, "admin", "127.0.0.2"]])
        self.assert_answers(session.ask("DELETE", "/login"), (0, "Log out successfully."))
        self.assertEqual(self.status_rows(), rows[1:])
        self.assert_answers(other.ask("DELETE", "/login"), (0, "Log out successfully."))
        self.assertEqual(harness.read_text(self.daemon.session_file), "")

    def test_the_status_file_is_written_again_when_somebody_removed_it(self):
        session = self.session(self.daemon)
        rows = self.status_rows()
        os.remove(self.daemon.session_file)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        self.assertEqual([row[:5] for row in self.status_rows()], [row[:5] for row in rows])

    def test_the_sixth_login_is_refused_until_a_slot_is_free(self):
        sessions = [self.session(self.daemon, source=f"127.0.0.{i + 1}") for i in range(5)]
        client = self.client(self.daemon, source="127.0.0.6")
        login = f"/login?user=admin&password={wire.PASSWORD.replace(' ', '+')}"
        full = (2, "The Number of sessions has reached the upper limit. Please try later.")
        self.assert_answers(client.ask("POST", login), full)
        self.assert_answers(client.ask("POST", login), full)
        self.assertEqual([row[0] for row in self.status_rows()], ["1", "2", "3", "4", "5"])

        self.assert_answers(sessions[2].ask("DELETE", "/login"), (0, "Log out successfully."))
        key = log_in(client)
        rows = self.status_rows()
        self.assertEqual([row[0] for row in rows], ["1", "2", "6", "4", "5"])
        self.assertEqual(rows[2][1:4], [key, "admin", "127.0.0.6"])
        self.assert_answers(sessions[2].ask("GET", "/vlans"), ENDED)
        self.assert_answers(client.ask("POST", login), full)

    def test_a_restart_ends_all_sessions(self):
        session = self.session(self.daemon)
        self.daemon.restart()
        self.assert_answers(self.client(self.daemon).ask("GET", session.target("/vlans")), ENDED)
        self.assertEqual(harness.read_text(self.daemon.session_file), "")


class Audit(DaemonTest):
    def test_changes_are_logged_and_questions_are_not(self):
        daemon = self.start_daemon()
        session = self.session(daemon)
        key = session.key
        for method, uri, variables in (
                ("POST", "/vlans/5", ()), ("GET", "/vlans", ()),
                ("PUT", "/vlans/5/name", ("value=%25s%25n",)),
                ("GET", "/vlans/5", ("method=delete", "format=json")), ("POST", "/vlans/1", ()),
                ("HEAD", "/vlans", ()), ("PUT", "/nothing", ("a=b",)), ("POST", "/base", ()),
                ("DELETE", "/vlans/9%0A2026-01-01", ())):
            session.ask(method, uri, *variables)
        with Client(daemon, source="127.0.0.2") as stranger:
            stranger.ask("DELETE", "/vlans/5?x=1")
            stranger.ask("GET", "/vlans")
            stranger.ask("POST", "/login?user=admin&password=secret")
        session.ask("DELETE", "/login")

        def line(address, request, message, code):
            return f"RESTful API Engine: User from [{address}] accesses API [{request}]: {message} ({code})"
        us, them = "127.0.0.1", "127.0.0.2"
        self.assertEqual(daemon.audit_lines(), [
            line(us, "POST /login?", "Log in successfully.", 0),
            line(us, f"POST /vlans/5?sessionkey={key}", "Create VLAN 5 successfully.", 0),
            line(us, f"PUT /vlans/5/name?sessionkey={key}&value=%25s%25n",
                 "Update name of VLAN 5 successfully.", 0),
            line(us, f"DELETE /vlans/5?sessionkey={key}&method=delete&format=json",
                 "Delete VLAN 5 successfully.", 0),
            line(us, f"POST /vlans/1?sessionkey={key}", "VLAN 1 exist.", 1),
            line(us, f"PUT /nothing?sessionkey={key}&a=b", UNKNOWN_MODULE[1], UNKNOWN_MODULE[0]),
            line(us, f"POST /base?sessionkey={key}", BAD_REQUEST[1], BAD_REQUEST[0]),
            line(us, f"DELETE /vlans/9 2026-01-01?sessionkey={key}", BAD_REQUEST[1], BAD_REQUEST[0]),
            line(them, "DELETE /vlans/5?x=1", NO_KEY[1], NO_KEY[0]),
            line(them, "POST /login?", "Authentication failed.", 1),
            line(us, f"DELETE /login?sessionkey={key}", "Log out successfully.", 0),
        ])
        self.assertNotIn("secret", harness.read_text(os.path.join(daemon.state_dir, "log")) + daemon.stderr())

    def test_a_query_as_long_as_a_head_may_be_is_logged_cut(self):
        daemon = self.start_daemon()
        session = self.session(daemon)
        padding = "p" * 16000
        self.assert_answers(session.ask("POST", "/vlans/5", padding), CREATED_5)
        whole = (f"RESTful API Engine: User from [127.0.0.1] accesses API [POST /vlans/5?sessionkey="
                 f"{session.key}&{padding}]: Create VLAN 5 successfully. (0)")
        self.assertEqual(daemon.audit_lines()[-1], whole[:16383])


if __name__ == "__main__":
    harness.main()
