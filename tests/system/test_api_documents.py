"""The documents made of the help document: that docs/ holds what the build writes, that openapi.json is right by
what others say of such documents, and that the daemon serves all that it tells of.

Takes besides what harness.py does
    KESTREL_APIDOC      the program kestrel-apidoc
    KESTREL_DOCUMENTS   the folder with the documents that it wrote when all was built"""

import copy
import json
import os
import re
import subprocess
import tempfile
import unittest
from urllib.parse import quote

import jsonschema

import harness
from harness import DaemonTest
from help_text import NAMES, SOURCE

BUILT = os.environ.get("KESTREL_DOCUMENTS", "")
SCHEMA_OF_OPENAPI = "/usr/share/openapi-specification/schemas/v3.0/schema.json"
METHODS = ("get", "post", "put", "delete")


def read(folder, name):
    with open(os.path.join(folder, name), encoding="utf-8") as file:
        return file.read()


def openapi():
    return json.loads(read(BUILT, "openapi.json"))


def operations(document):
    """(method, path, operation) of every operation."""
    return [(method, path, item[method]) for path, item in document["paths"].items() for method in METHODS
            if method in item]


def everywhere(value):
    """Every object inside a value, itself included."""
    if isinstance(value, dict):
        yield value
    for part in value.values() if isinstance(value, dict) else value if isinstance(value, list) else ():
        yield from everywhere(part)


def resolve(document, value):
    """What a reference stands for; anything else stands for itself."""
    while "$ref" in value:
        target = document
        for word in value["$ref"].removeprefix("#/").split("/"):
            target = target[word]
        value = target
    return value


def parameters(document, operation):
    return [resolve(document, parameter) for parameter in operation["parameters"]]


def body_schema(operation):
    """The schema of the body's variables; one without any when there is no body."""
    if "requestBody" not in operation:
        return {"properties": {}, "required": []}
    return operation["requestBody"]["content"]["application/x-www-form-urlencoded"]["schema"]


# --- The documents alone -------------------------------------------------------------------------------

class Copies(unittest.TestCase):
    def test_docs_hold_what_the_build_writes(self):
        for name in ("api.md", "openapi.json"):
            self.assertEqual(read(os.path.join(SOURCE, "docs"), name), read(BUILT, name),
                             f"docs/{name} is out of date: build the target update_api_documents and commit it")


class Program(unittest.TestCase):
    def run_program(self, *arguments):
        """Exit status, and what it says on standard error."""
        done = subprocess.run([harness.program("KESTREL_APIDOC"), *arguments], capture_output=True, text=True,
                              check=False)
        self.assertEqual(done.stdout, "")
        return done.returncode, done.stderr

    def test_it_writes_the_same_every_time(self):
        with tempfile.TemporaryDirectory(prefix="kestrel-apidoc-") as folder:
            self.assertEqual(self.run_program(folder), (0, ""))
            self.assertEqual(sorted(os.listdir(folder)), ["api.md", "openapi.json"])
            for name in os.listdir(folder):
                self.assertEqual(read(folder, name), read(BUILT, name))

    def test_what_it_cannot_write_is_an_error(self):
        status, said = self.run_program("/nowhere")
        self.assertEqual((status, said), (1, "/nowhere/openapi.json: No such file or directory\n"))
        status, said = self.run_program()
        self.assertEqual(status, 2)
        self.assertRegex(said, "^usage: .*kestrel-apidoc FOLDER\n$")


class Links(unittest.TestCase):
    """In the pages for people, the generated one among them."""

    def anchors(self, path):
        """Those that a page's headings have, as the forges make them."""
        headings = re.findall(r"(?m)^#+ (.*)$", re.sub(r"(?ms)^```.*?^```", "", read(SOURCE, path)))
        return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in headings}

    def test_links_lead_somewhere(self):
        pages = ["README.md", "CONTRIBUTING.md", *(os.path.join("docs", name) for name in
                                                   os.listdir(os.path.join(SOURCE, "docs")) if name.endswith(".md"))]
        broken, seen = [], 0
        for page in pages:
            for target in re.findall(r"\]\(([^)\s]+)\)", read(SOURCE, page)):
                if re.match("https?:", target):
                    continue
                seen += 1
                file, _, anchor = target.partition("#")
                path = os.path.normpath(os.path.join(os.path.dirname(page), file)) if file else page
                if not os.path.exists(os.path.join(SOURCE, path)) or anchor and anchor not in self.anchors(path):
                    broken.append(f"{page}: {target}")
        self.assertEqual(broken, [])
        self.assertGreater(seen, 40)


class OpenApi(unittest.TestCase):
    def setUp(self):
        self.document = openapi()
        self.operations = operations(self.document)

    def test_operations_are_told_apart(self):
        names = [operation["operationId"] for _, _, operation in self.operations]
        self.assertEqual(len(names), len(set(names)))
        self.assertGreater(len(names), 150)
        self.assertEqual([name for name in names if not re.fullmatch("[a-z]+[A-Za-z0-9]*", name)], [])
        shapes = [re.sub(r"\{.*?\}", "{}", path) for path in self.document["paths"]]
        self.assertEqual(len(shapes), len(set(shapes)))

    def test_modules_are_tags(self):
        self.assertEqual([tag["name"] for tag in self.document["tags"]], list(NAMES))
        used = [operation["tags"] for _, _, operation in self.operations]
        self.assertEqual([tags for tags in used if len(tags) != 1 or tags[0] not in NAMES], [])
        self.assertEqual({tags[0] for tags in used}, set(NAMES))

    def test_references_lead_somewhere(self):
        found = [value for value in everywhere(self.document) if "$ref" in value]
        self.assertGreater(len(found), 2 * len(self.operations) - 1)
        for value in found:
            self.assertTrue(value["$ref"].startswith("#/components/"), value)
            self.assertIsInstance(resolve(self.document, value), dict)

    def test_placeholders_are_path_parameters(self):
        for method, path, operation in self.operations:
            told = [p["name"] for p in parameters(self.document, operation) if p["in"] == "path"]
            self.assertEqual(told, re.findall(r"\{(\w+)\}", path), f"{method} {path}")

    def test_names_of_parameters_differ(self):
        for method, path, operation in self.operations:
            names = [p["name"] for p in parameters(self.document, operation)] + list(
                body_schema(operation)["properties"])
            self.assertEqual(len(names), len(set(names)), f"{method} {path}")
            self.assertNotIn("sessionkey", names)

    def test_only_logging_in_and_help_need_no_session(self):
        free = [(method, path) for method, path, operation in self.operations if "security" in operation]
        self.assertEqual(free, [("post", "/login"), ("get", "/help"), ("get", "/help/{module}")])


class Schemas(unittest.TestCase):
    """What others say: the schema of OpenAPI documents, and the schema of schemas."""

    def in_older_words(self, document):
        """The document in OpenAPI 3.0, whose schema knows no `const`."""
        older = copy.deepcopy(document)
        older["openapi"] = "3.0.3"
        for value in everywhere(older):
            if "const" in value:
                value["enum"] = [value.pop("const")]
        return older

    def complaints(self, document):
        with open(SCHEMA_OF_OPENAPI, encoding="utf-8") as file:
            validator = jsonschema.Draft4Validator(json.load(file))
        return [error.message for error in validator.iter_errors(self.in_older_words(document))]

    def test_document_is_an_openapi_document(self):
        document = openapi()
        self.assertEqual(document["openapi"], "3.1.0")
        self.assertEqual(self.complaints(document), [])

    def test_faults_of_documents_are_found(self):
        def without_responses(document):
            del document["paths"]["/vlans"]["get"]["responses"]

        def with_unknown_member(document):
            document["paths"]["/vlans"]["get"]["returns"] = {}

        def with_path_parameter_not_required(document):
            del document["paths"]["/vlans/{vlanId}"]["get"]["parameters"][0]["required"]

        for spoil in (without_responses, with_unknown_member, with_path_parameter_not_required):
            document = openapi()
            spoil(document)
            self.assertNotEqual(self.complaints(document), [], spoil.__name__)

    def test_schemas_are_json_schemas(self):
        found = [value["schema"] for value in everywhere(openapi()) if isinstance(value.get("schema"), dict)]
        self.assertGreater(len(found), 200)
        for schema in [*found, *openapi()["components"]["schemas"].values()]:
            jsonschema.Draft202012Validator.check_schema(schema)
            for part in everywhere(schema):
                if isinstance(part.get("pattern"), str):
                    re.compile(part["pattern"])


# --- The daemon, asked as the document says ------------------------------------------------------------

SAMPLES = ("a", "1", "10-20,30", "10.0.0.1", "2001:db8::1", "02:00:00:00:00:01", "ff", "eq:80")
FORMATS = {"ipv4": "10.0.0.1", "ipv6": "2001:db8::1", "uri": "tftp://127.0.0.1/a"}
HOSTILE = ("", "-", "-1", "99999999999999999999", "%00", "' OR 1", "<x>", "\u00e4" * 40, "x" * 300)


def sample(schema):
    """A value that a schema allows."""
    for several in ("anyOf", "oneOf"):
        if several in schema:
            return sample(schema[several][0])
    if "const" in schema or "enum" in schema:
        return str(schema.get("const", schema.get("enum", [None])[0]))
    if schema["type"] == "integer":
        return str(schema.get("minimum", 1))
    if "format" in schema:
        return FORMATS[schema["format"]]
    if "pattern" in schema:
        return next(value for value in SAMPLES if re.search(schema["pattern"], value))
    return "s" * max(schema.get("minLength", 0), min(3, schema.get("maxLength", 3)))


class Served(DaemonTest):
    def setUp(self):
        self.document = openapi()
        self.daemon = self.start_daemon()
        self.logged_in = self.session(self.daemon)
        validated = {**self.document["components"]["schemas"]["document"],
                     "components": self.document["components"]}
        self.answers = jsonschema.Draft202012Validator(validated)

    def uri(self, path, operation):
        """The URI with samples in its places."""
        values = {p["name"]: sample(p["schema"]) for p in parameters(self.document, operation)
                  if p["in"] == "path"}
        return re.sub(r"\{(\w+)\}", lambda match: quote(values[match.group(1)], safe=""), path)

    def query(self, operation, make):
        """Pairs of the query string, `format` apart; `make` gives the value for a schema."""
        return [f"{p['name']}={quote(make(p['schema']))}" for p in parameters(self.document, operation)
                if p["in"] == "query" and p["name"] != "format"]

    def code(self, method, uri, query, body=None):
        """The code of the answer, which is valid by the document."""
        reply = self.logged_in.ask(method.upper(), uri, "format=json", *query, body=body)
        self.assertEqual(reply.status, 200, f"{method} {uri}")
        answer = json.loads(reply.text())
        self.assertEqual([error.message for error in self.answers.iter_errors(answer)], [], f"{method} {uri}")
        return answer["result"]["rlt_code"]

    def assert_routed(self, code, what):
        """The module has taken the request and done or refused it."""
        self.assertTrue(0 <= code <= 12 or 96 <= code <= 99, f"{what}: {code}")

    def test_every_get_is_served(self):
        asked = [(path, operation) for method, path, operation in operations(self.document) if method == "get"]
        self.assertGreater(len(asked), 50)
        for path, operation in asked:
            uri = self.uri(path, operation)
            self.assert_routed(self.code("get", uri, self.query(operation, sample)), uri)

    def test_every_list_and_overview_succeeds(self):
        """Where nothing is missing that could be named in the URI, there is an answer in factory state; but for
        the two lists that are refused when they are empty."""
        failed = []
        for method, path, operation in operations(self.document):
            if method == "get" and "{" not in path and self.code("get", path, self.query(operation, sample)):
                failed.append(path)
        self.assertEqual(failed, ["/routing/if", "/routing/vlanRtrIf"])

    def changes(self):
        """All operations but GET. Reloading the switch has tests of its own, and who logs out is out."""
        return [(method, path, operation) for method, path, operation in operations(self.document)
                if method != "get" and (method, path) not in (("post", "/system/reload"), ("delete", "/login"))]

    def test_every_change_is_routed_when_its_variables_are_missing(self):
        for method, path, operation in self.changes():
            uri = self.uri(path, operation)
            code = self.code(method, uri, ())
            self.assert_routed(code, f"{method} {uri}")
            needs = [p["name"] for p in parameters(self.document, operation)
                     if p["in"] == "query" and p.get("required")] + body_schema(operation).get("required", [])
            if needs and path != "/login":
                self.assertNotEqual(code, 0, f"{method} {uri} does without {needs}")

    def test_every_change_is_routed_when_its_variables_are_hostile(self):
        for hostile in HOSTILE:
            for method, path, operation in self.changes():
                body = "&".join(f"{name}={quote(hostile)}" for name in body_schema(operation)["properties"])
                uri = self.uri(path, operation)
                code = self.code(method, uri, self.query(operation, lambda _, text=hostile: text), body or None)
                self.assert_routed(code, f"{method} {uri} {hostile!r}")

    def test_logging_out_is_served(self):
        self.assertEqual(self.code("delete", "/login", ()), 0)

    def test_pages_are_served_as_html(self):
        for method, path, operation in operations(self.document):
            content = resolve(self.document, operation["responses"]["200"])["content"]
            if "text/html" not in content:
                continue
            reply = self.logged_in.ask(method.upper(), path.replace("{module}", "vlans"), "format=html")
            self.assertEqual(dict(reply.headers)["Content-Type"], "text/html; charset=utf-8")
            self.assertTrue(reply.text().startswith("<html>"))


if __name__ == "__main__":
    harness.main()
