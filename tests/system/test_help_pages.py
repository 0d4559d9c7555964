"""The help pages as people see them: in a browser, from page to page. With KESTREL_SCREENSHOTS in the
environment, pictures of them are left in the folder that it names."""

import json
import os

import harness
from browser import Browser
from harness import DaemonTest
from help_text import NAMES

# The cells of the table as they are displayed; an entry of a list is a line of its own.
ROWS = "return [...document.querySelector('table').rows].map(row => [...row.cells].map(cell => cell.innerText))"
HEADINGS = "return [...document.querySelectorAll('h1, h2')].map(heading => heading.innerText)"
ITEMS = "return [...document.querySelectorAll('tr')].map(row => row.querySelectorAll('li').length)"
COLOURS = """return ['th', 'td'].map(
    tag => getComputedStyle(document.querySelector(tag)).backgroundColor)"""
IS_SHOWN = """return [...document.querySelectorAll('th, td')].every(
    cell => cell.offsetWidth > 0 && cell.offsetHeight > 0)"""

API_COLUMNS = ["API Name", "Description", "Method", "URI", "Paramters"]


class HelpPages(DaemonTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        self.daemon = self.start_daemon()
        self.start = f"http://127.0.0.1:{self.daemon.port}/help"

    def told(self, path):
        """The data that programs are told."""
        answer = json.loads(self.client(self.daemon).ask("GET", f"{path}?format=json").body)
        return answer["result"]["rlt_data"]

    def told_rows(self, name):
        """The rows of a module's page as programs are told them."""
        return [[api["api_name"], api["api_desc"], api["api_method"], api["api_uri"],
                 "\n".join(f"{p['param_name']}: {p['param_desc']}" for p in api["parameters"].values())]
                for api in self.told(f"/help/{name}")["module"]["apis"].values()]

    def assert_nothing_is_missing(self):
        """The page was all there was to load, the browser has no complaint, and styles are in force."""
        asked = [url for url in self.browser.requests() if not url.endswith("/favicon.ico")]
        self.assertEqual([url for url in asked if not url.startswith(self.start)], [])
        self.assertGreater(len(asked), 0)
        self.assertEqual([m for m in self.browser.messages() if "/favicon.ico" not in m], [])
        self.assertTrue(self.browser.run(IS_SHOWN))
        self.assertEqual(self.browser.run(COLOURS), ["rgb(0, 102, 170)", "rgb(221, 238, 255)"])

    def take_picture(self, name):
        folder = os.environ.get("KESTREL_SCREENSHOTS")
        if folder:
            with open(os.path.join(folder, f"{name}.png"), "wb") as file:
                file.write(self.browser.screenshot())

    def check_list(self):
        modules = self.told("/help")["modules"].values()
        rows = [[f"[{module['module_name']}]", module["module_desc"]] for module in modules]
        self.assertEqual(self.browser.address(), f"{self.start}?format=html")
        self.assertEqual(self.browser.run(HEADINGS), ["RESTful API Help Document", "Module List"])
        self.assertEqual(self.browser.run(ROWS), [["Module Name", "Module Description"], *rows])
        self.assertEqual([row[0] for row in rows], [f"[{name}]" for name in NAMES])

    def check_module(self, name):
        module = self.told(f"/help/{name}")["module"]
        rows = self.told_rows(name)
        self.assertEqual(self.browser.address(), f"{self.start}/{name}?format=html")
        self.assertEqual(self.browser.run(HEADINGS),
                         ["RESTful API Help Document", f"API List of Module [{name}]: {module['module_desc']}"])
        self.assertEqual(self.browser.run(ROWS), [API_COLUMNS, *rows])
        self.assertEqual(self.browser.run(ITEMS), [0, *(len(row[4].split("\n")) for row in rows)])

    def test_each_module_is_a_click_away(self):
        self.browser.open(f"{self.start}?format=html")
        self.check_list()
        self.assert_nothing_is_missing()
        self.take_picture("list")
        for name in NAMES:
            with self.subTest(module=name):
                self.browser.click_link(name)
                self.check_module(name)
                self.assert_nothing_is_missing()
                self.take_picture(name)
                self.browser.back()
                self.check_list()

    def test_pages_load_over_an_address_of_their_own(self):
        self.browser.open(f"{self.start}/vlans?format=HTML")
        self.assertEqual(self.browser.run(ROWS), [API_COLUMNS, *self.told_rows("vlans")])
        self.assert_nothing_is_missing()


if __name__ == "__main__":
    harness.main()
