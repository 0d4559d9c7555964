/* The OpenAPI document: what each piece of the help document becomes, and what cannot be expressed. */
#include "tests/unit/tools/sample_document.h"
#include "tools/api/json_text.h"
#include "tools/api/openapi_document.h"

#include <string.h>

/* A value inside the document, as JSON with blanks; the path's words are separated by bars. "(none)" when
 * there is no such member. */
static std::string value_in(const std::string &help, const std::string &path) {
  std::string error;
  const std::string document = openapi_document(described(help), "1.2.3", &error);
  EXPECT_EQ(error, "");
  const json_owner root(json_tokener_parse(document.c_str()));
  json_object *value = root.get();
  for (size_t begin = 0; begin <= path.size();) {
    const size_t end = std::min(path.find('|', begin), path.size());
    const std::string word = path.substr(begin, end - begin);
    if (json_object_is_type(value, json_type_array)) {
      value = json_object_array_get_idx(value, static_cast<size_t>(atoi(word.c_str())));
    } else if (!json_object_object_get_ex(value, word.c_str(), &value)) {
      return "(none)";
    }
    begin = end + 1;
  }
  return json_object_to_json_string_ext(value, JSON_C_TO_STRING_SPACED | JSON_C_TO_STRING_NOSLASHESCAPE);
}

/* The schema of a variable with this bracket. */
static std::string schema_with(const std::string &range) {
  const std::string help = module_text("a", api_text("List them", "GET", "/a", {"value@Value. " + range}));
  return value_in(help, "paths|/a|get|parameters|0|schema");
}

TEST(OpenApiDocument, RangesBecomeSchemas) {
  const struct {
    const char *range, *schema;
  } rows[] = {
      {"[Integer from 1 to 4094]", R"({ "type": "integer", "minimum": 1, "maximum": 4094 })"},
      {"[Integer from 0 to 4294967295]", R"({ "type": "integer", "minimum": 0, "maximum": 4294967295 })"},
      {"[Integer from 1 to 160, or -1 for the default]",
       R"({ "anyOf": [ { "type": "integer", "minimum": 1, "maximum": 160 }, )"
       R"({ "const": -1, "title": "the default" } ] })"},
      {"[Interface number]", R"({ "type": "integer", "title": "Interface number" })"},
      {"[String up to 32 characters]", R"({ "type": "string", "maxLength": 32 })"},
      {"[String from 2 to 32 characters]", R"({ "type": "string", "minLength": 2, "maxLength": 32 })"},
      {"[String of 32 characters]", R"({ "type": "string", "minLength": 32, "maxLength": 32 })"},
      {"[IPv6 address]", R"({ "type": "string", "title": "IPv6 address", "format": "ipv6" })"},
      {"[Two hexadecimal digits]",
       R"({ "type": "string", "title": "Two hexadecimal digits", "pattern": "^[0-9A-Fa-f]{2}$" })"},
      {"{in | out}", R"({ "type": "string", "enum": [ "in", "out" ] })"},
      {"{-1 | 7}", R"({ "type": "integer", "enum": [ -1, 7 ] })"},
      {"{1 | 7b}", R"({ "type": "string", "enum": [ "1", "7b" ] })"},
      {"{0 = disable | 1 = enable}", R"({ "type": "integer", "oneOf": [ { "const": 0, "title": "disable" }, )"
                                     R"({ "const": 1, "title": "enable" } ] })"},
      {"{y = yes | n = no}", R"({ "type": "string", "oneOf": [ { "const": "y", "title": "yes" }, )"
                             R"({ "const": "n", "title": "no" } ] })"},
  };
  for (const auto &row : rows) EXPECT_EQ(schema_with(row.range), row.schema) << row.range;
}

static const char ID[] = "id@Number, in the URI. [Integer from 1 to 4]";
static const char NAME[] = "name@Name. [String up to 8 characters]";
static const char MODE[] = "mode@Optional. Mode. {in | out}";

static const char NAME_IN_QUERY[] =
    R"({ "name": "name", "in": "query", "required": true, )"
    R"("description": "Name.", "schema": { "type": "string", "maxLength": 8 } })";
static const char MODE_IN_QUERY[] = R"({ "name": "mode", "in": "query", "description": "Mode.", )"
                                    R"("schema": { "type": "string", "enum": [ "in", "out" ] } })";
static const char ID_IN_PATH[] =
    R"({ "name": "id", "in": "path", "required": true, "description": "Number.", )"
    R"("schema": { "type": "integer", "minimum": 1, "maximum": 4 } })";
static const char FORMAT[] = R"({ "$ref": "#/components/parameters/format" })";

TEST(OpenApiDocument, VariablesOfGetAndDeleteAreInTheQuery) {
  for (const char *method : {"GET", "DELETE"}) {
    const bool get = strcmp(method, "GET") == 0;
    const std::string help =
        module_text("a", api_text(get ? "List them" : "Delete it", method, "/a/{id}", {ID, NAME, MODE}));
    const std::string operation = std::string("paths|/a/{id}|") + (get ? "get" : "delete");
    EXPECT_EQ(value_in(help, operation + "|parameters"), std::string("[ ") + ID_IN_PATH + ", " +
                                                             NAME_IN_QUERY + ", " + MODE_IN_QUERY + ", " +
                                                             FORMAT + " ]");
    EXPECT_EQ(value_in(help, operation + "|requestBody"), "(none)");
  }
}

TEST(OpenApiDocument, VariablesOfPostAndPutAreInTheBody) {
  for (const char *method : {"POST", "PUT"}) {
    const bool put = strcmp(method, "PUT") == 0;
    const std::string help =
        module_text("a", api_text(put ? "Set it" : "Add it", method, "/a/{id}", {ID, NAME, MODE}));
    const std::string operation = std::string("paths|/a/{id}|") + (put ? "put" : "post");
    EXPECT_EQ(value_in(help, operation + "|parameters"),
              std::string("[ ") + ID_IN_PATH + ", " + FORMAT + " ]");
    EXPECT_EQ(value_in(help, operation + "|requestBody"),
              R"({ "required": true, "content": { "application/x-www-form-urlencoded": { "schema": )"
              R"({ "type": "object", "properties": { )"
              R"("name": { "type": "string", "maxLength": 8, "description": "Name." }, )"
              R"("mode": { "type": "string", "enum": [ "in", "out" ], "description": "Mode." } }, )"
              R"("required": [ "name" ] } } } })");
  }
}

TEST(OpenApiDocument, BodyIsNeededForNeededVariablesAlone) {
  const std::string optional = module_text("a", api_text("Set it", "PUT", "/a", {MODE}));
  EXPECT_EQ(value_in(optional, "paths|/a|put|requestBody|required"), "(none)");
  EXPECT_EQ(value_in(optional,
                     "paths|/a|put|requestBody|content|application/x-www-form-urlencoded|schema|required"),
            "(none)");
  EXPECT_EQ(value_in(module_text("a", api_text("Set it", "PUT", "/a")), "paths|/a|put|requestBody"),
            "(none)");
}

TEST(OpenApiDocument, SessionKeyIsNeededUnlessItIsOptional) {
  const std::string help =
      module_text("a", api_text("List them", "GET", "/a") +
                           api_text("Show it", "GET", "/a/it", {}, "Optional. Key.", "{xml | json | html}"));
  EXPECT_EQ(value_in(help, "security"), R"([ { "sessionkey": [ ] } ])");
  EXPECT_EQ(value_in(help, "paths|/a|get|security"), "(none)");
  EXPECT_EQ(value_in(help, "paths|/a/it|get|security"), R"([ { }, { "sessionkey": [ ] } ])");
}

TEST(OpenApiDocument, PagesAreAnswersOfWhatHasTheFormatHtml) {
  const std::string help =
      module_text("a", api_text("List them", "GET", "/a") +
                           api_text("Show it", "GET", "/a/it", {}, "Optional. Key.", "{xml | json | html}"));
  EXPECT_EQ(value_in(help, "paths|/a|get|responses"),
            R"({ "200": { "$ref": "#/components/responses/result" } })");
  EXPECT_EQ(value_in(help, "paths|/a/it|get|responses"),
            R"({ "200": { "$ref": "#/components/responses/resultOrPage" } })");
  EXPECT_EQ(value_in(help, "paths|/a/it|get|parameters"),
            R"([ { "$ref": "#/components/parameters/formatOfHelp" } ])");
}

/* What stands around the schema pieces of an operation, and where it stands. */
TEST(OpenApiDocument, OperationsOfOneUriShareItsItem) {
  const std::string help =
      module_text("a", api_text("List them", "GET", "/a") + api_text("Log off", "POST", "/b") +
                           api_text("Delete all", "DELETE", "/a")) +
      module_text("b", "");
  EXPECT_EQ(value_in(help, "tags"), R"([ { "name": "a", "description": "About | a." }, )"
                                    R"({ "name": "b", "description": "About | b." } ])");
  EXPECT_EQ(value_in(help, "info|version"), R"("1.2.3")");
  const auto operation = [](const std::string &identifier, const std::string &name) {
    return R"({ "tags": [ "a" ], "operationId": ")" + identifier + R"(", "summary": ")" + name +
           R"(", "description": "Does it: )" + name + R"(.", "parameters": [ )" + FORMAT +
           R"( ], "responses": { "200": { "$ref": "#/components/responses/result" } } })";
  };
  EXPECT_EQ(value_in(help, "paths"), R"({ "/a": { "get": )" + operation("listA", "List them") +
                                         R"(, "delete": )" + operation("deleteA", "Delete all") +
                                         R"( }, "/b": { "post": )" + operation("logB", "Log off") + " } }");
}

TEST(OpenApiDocument, IdentifiersAreVerbAndUri) {
  const struct {
    const char *name, *uri, *identifier;
  } rows[] = {
      {"Start it", "/a", "\"startA\""},          {"Start it", "/a/{id}/nextHop", "\"startAByIdNextHop\""},
      {"Start it", "/a/start", "\"startA\""},    {"Start it", "/a/RESTStart", "\"startARESTStart\""},
      {"Start it", "/a/{id}", "\"startAById\""},
  };
  for (const auto &row : rows) {
    const bool has_id = strstr(row.uri, "{id}") != nullptr;
    const std::string api =
        has_id ? api_text(row.name, "POST", row.uri, {ID}) : api_text(row.name, "POST", row.uri);
    EXPECT_EQ(value_in(module_text("a", api), std::string("paths|") + row.uri + "|post|operationId"),
              row.identifier);
  }
}

/* The error for a document. */
static std::string mistake_in(const std::string &help) {
  std::string error;
  EXPECT_EQ(openapi_document(described(help), "1", &error), "");
  return error;
}

TEST(OpenApiDocument, WhatOpenApiCannotExpressIsRefused) {
  const std::string other_id = "other@Number, in the URI. [Integer from 1 to 4]";
  EXPECT_EQ(mistake_in(module_text("a", api_text("Show it", "GET", "/a/{id}/x", {ID}) +
                                            api_text("Delete it", "DELETE", "/a/{other}/x", {other_id}))),
            "/a/{other}/x and /a/{id}/x differ in the names of placeholders only");
  EXPECT_EQ(mistake_in(module_text("a", api_text("Show it", "GET", "/a/byId") +
                                            api_text("Show that", "GET", "/a/ById"))),
            "GET /a/ById has the identifier of another operation: showAById");
  EXPECT_EQ(mistake_in(module_text("a", api_text("Show it", "GET", "/a")) +
                       module_text("b", api_text("List it", "GET", "/a"))),
            "GET /a stands in two modules");
}

TEST(JsonText, WhatFitsStaysOnOneLine) {
  const std::string text = R"({"a":[],"b":{},"c":{"d":[1,"x/y",true,null]},"long":[")" +
                           std::string(90, 'x') + R"(",{"e\n":"\""}]})";
  const json_owner value(json_tokener_parse(text.c_str()));
  EXPECT_EQ(json_text(value.get()), "{\n"
                                    "  \"a\": [ ],\n"
                                    "  \"b\": { },\n"
                                    "  \"c\": { \"d\": [ 1, \"x/y\", true, null ] },\n"
                                    "  \"long\": [\n"
                                    "    \"" +
                                        std::string(90, 'x') +
                                        "\",\n"
                                        "    { \"e\\n\": \"\\\"\" }\n"
                                        "  ]\n"
                                        "}\n");
  const json_owner number(json_object_new_int(7));
  EXPECT_EQ(json_text(number.get()), "7\n");
}
