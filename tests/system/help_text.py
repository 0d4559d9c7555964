"""The help document, read from its sources in modules/help independently of the daemon, and the answers and
pages that the help module makes of it."""

import os
import re

from wire import GOT, numbered, rest_reply

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.environ.get("KESTREL_SOURCE") or os.path.join(HERE, "..", "..")

# The modules in the order in which they are listed.
NAMES = ("login", "help", "base", "bgp", "boxs", "if", "lag", "logging", "routing", "system", "tcam", "vlans",
         "transfer", "ssh", "script", "vxlan", "process", "acl")
API_KEYS = ("api_name", "api_desc", "api_uri", "api_method")


def read_module(name):
    """A module as the answers hold it."""
    with open(os.path.join(SOURCE, "modules", "help", f"{name}.txt"), encoding="latin-1") as file:
        text = re.sub(r"(?m)^#.*\n", "", file.read())
    head, *apis = text.split("\n==API-START\n")
    module = dict(re.findall(r"(?m)^ +(module_name|module_desc)=(.*)$", head))
    return {**module, "apis": numbered("api", [read_api(api) for api in apis])}


def read_api(text):
    values = dict(re.findall(r"(?m)^ +(api_\w+)=(.*)$", text))
    parameters = [{"param_name": name, "param_desc": description}
                  for name, description in re.findall(r"(?m)^ +param=([^@\n]+)@+(.*)$", text)]
    return {**{key: values[key] for key in API_KEYS}, "parameters": numbered("param", parameters)}


def read_modules():
    return [read_module(name) for name in NAMES]


# --- Answers -------------------------------------------------------------------------------------------

def list_reply(modules, form):
    rows = [{key: module[key] for key in ("module_name", "module_desc")} for module in modules]
    return rest_reply(*GOT, {"modules": numbered("module", rows)}, form)


def module_reply(module, form):
    return rest_reply(*GOT, {"module": module}, form)


# --- Pages ---------------------------------------------------------------------------------------------

STYLE = ("<html><style>table, tr, td, th{    border-collapse:collapse;    border:1px solid #FFF;    padding: 5px;"
         "    background-color: #DDEEFF;}th{    background-color: #0066AA;    color: #FFF;}")
BODY = "</style><body>    <h1>RESTful API Help Document</h1>    "
FOOT = "</table></body></html>"
LONGEST_PARAMETERS = 16383


def page_reply(page):
    """All bytes of the reply that brings a page."""
    body = page.encode("latin-1") + b"\n"
    return (b"HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nTransfer-Encoding: chunked\r\n\r\n" +
            f"{len(body):X}\r\n".encode() + body + b"\r\n0\r\n\r\n")


def list_page(modules):
    rows = [f"<tr/><td class='mod_name'/>[<a href='/help/{module['module_name']}?format=html'>"
            f"{module['module_name']}</a>]<td class='mod_desc'/>{module['module_desc']}" for module in modules]
    return (STYLE + ".mod_name{ width:120px;  text-align:center; }.mod_desc{ width:350px; }"
            "td.mod_name{ font-size:larger; font-weight:bold; }" + BODY +
            "<h2>Module List</h2>    <table>       <tr/>           <th class='mod_name'/>Module Name"
            "           <th class='mod_desc'/>Module Description" + "".join(rows) + FOOT)


def parameter_list(api):
    entries = [f"<li>{parameter['param_name']}: {parameter['param_desc']}</li>"
               for _, parameter in api["parameters"]]
    return ("<ul>" + "".join(entries) + "</ul>")[:LONGEST_PARAMETERS]


def module_page(module):
    rows = [f"<tr/>      <td class='api_name'/>{api['api_name']}      <td class='api_desc'/>{api['api_desc']}"
            f"      <td class='api_method'/>{api['api_method']}      <td class='api_uri'/>{api['api_uri']}"
            f"      <td class='api_param'/>{parameter_list(api)}" for _, api in module["apis"]]
    return (STYLE + "/*.api_name{ width:200px; }*/td.api_name{ font-weight:bold; }.api_desc{ width:300px; }"
            ".api_method{ width:80px; }.api_uri{ width:300px; }.api_param{ width:500px; }" + BODY +
            f"<h2>API List of Module [{module['module_name']}]: {module['module_desc']}</h2>   <table>"
            "       <tr/>           <th class='api_name'/>API Name           <th class='api_desc'/>Description"
            "           <th class='api_method'/>Method           <th class='api_uri'/>URI"
            "           <th class='api_param'/>Paramters" + "".join(rows) + FOOT)
